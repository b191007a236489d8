package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinProcess;
import com.qarvo.kel.util.WinProcessInfo;
import com.qarvo.kel.util.WindowsUtil;
import java.io.IOException;
import java.io.InputStream;
import java.util.List;

/** Processes as the native methods of {@link WindowsUtil} know them. */
final class WindowsNativeProcesses implements NativeProcesses {
    private final WindowsUtil util = new WindowsUtil();

    private record WindowsChild(WinProcess process) implements Child {
        @Override
        public InputStream output() {
            return process.getStandardOutput();
        }

        @Override
        public InputStream error() {
            return process.getStandardError();
        }

        @Override
        public int waitFor() throws IOException {
            return process.waitFor();
        }

        @Override
        public void end() throws IOException {
            process.end();
        }

        @Override
        public void close() {
            process.close();
        }
    }

    @Override
    public Child start(String commandLine, int session) throws IOException {
        return new WindowsChild(util.createProcessAsUserSession(null, commandLine, null, null, session));
    }

    @Override
    @SuppressWarnings("unchecked")
    public List<WinProcessInfo> list(String program) throws IOException {
        return util.getProcessInfo(program);
    }
}

package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WinProcessInfo;
import java.io.IOException;
import java.io.InputStream;
import java.util.List;

/** What this client asks of the system about processes; {@link WindowsNativeProcesses} passes it on. */
interface NativeProcesses {
    /** A program that was started; whoever started it closes it. */
    interface Child extends AutoCloseable {
        /** Gives what the program writes to its standard output, until it closes that. */
        InputStream output();

        /** Gives what the program writes to its standard error. */
        InputStream error();

        /** Waits until the program has ended, and gives its exit code. */
        int waitFor() throws IOException;

        /** Ends the program at once. */
        void end() throws IOException;

        /** Lets go of the program, which runs on if it has not ended. */
        @Override
        void close();
    }

    /** Starts a program as the user of a session. */
    Child start(String commandLine, int session) throws IOException;

    /** Gives the running processes of a program, in any case, or with an empty name all of them. */
    List<WinProcessInfo> list(String program) throws IOException;
}

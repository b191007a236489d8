package com.qarvo.winutil.backup;

import com.qarvo.kel.util.WindowsUtil;

/** The message pipe as the native methods of {@link WindowsUtil} give it. */
final class WindowsNativeMessages implements NativeMessages {
    private final WindowsUtil util = new WindowsUtil();

    @Override
    public String pipe() {
        return util.getMessagePipeSlotPath();
    }

    @Override
    public String serve() {
        return util.connectPipe(pipe());
    }

    @Override
    public boolean isRefused(String message) {
        return util.sendPipe(pipe(), message) == 1;
    }
}

package com.qarvo.winutil.backup;

import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.List;

/** A message pipe in memory. */
final class FakeMessages implements NativeMessages {
    /** What the clients that come leave, one after the other. */
    final Deque<String> arriving = new ArrayDeque<>();
    final List<String> sent = new ArrayList<>();
    boolean refuses;
    /** What happens while a call blocks. */
    Runnable meanwhile = () -> { };

    @Override
    public String pipe() {
        return "\\\\.\\pipe\\TEST";
    }

    @Override
    public String serve() {
        meanwhile.run();
        return arriving.remove();
    }

    @Override
    public boolean isRefused(String message) {
        meanwhile.run();
        sent.add(message);
        return refuses;
    }
}

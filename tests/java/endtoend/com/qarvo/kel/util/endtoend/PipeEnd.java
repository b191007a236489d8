package com.qarvo.kel.util.endtoend;

import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.platform.win32.Kernel32;

/** One end of a pipe in a process of its own: {@code serve NAME} or {@code send NAME MESSAGE}. */
final class PipeEnd {
    private static final int NOT_YET_LISTENING_MILLIS = 30;
    private static final int WAIT_MILLIS = 20_000;

    private PipeEnd() {
    }

    public static void main(String[] arguments) {
        if (arguments[0].equals("serve")) {
            System.out.println(serve(arguments[1]));
        } else {
            System.out.println(send(arguments[1], arguments[2]));
        }
    }

    /** Serves clients until one has sent something: one that comes before the server listens gets nowhere. */
    static String serve(String name) {
        WindowsUtil util = new WindowsUtil();
        String message;
        do {
            message = util.connectPipe(name);
        } while (message.isEmpty());
        return message;
    }

    /** Sends a message to a server that has made its pipe, or is about to. */
    static int send(String name, String message) {
        awaitServer(name);
        return new WindowsUtil().sendPipe(name, message);
    }

    static void awaitServer(String name) {
        long end = System.nanoTime() + WAIT_MILLIS * 1_000_000L;
        while (!Kernel32.INSTANCE.WaitNamedPipe(name, WAIT_MILLIS) && System.nanoTime() < end) {
            pause();
        }
        // The server has still a step to go before it listens.
        pause();
    }

    private static void pause() {
        try {
            Thread.sleep(NOT_YET_LISTENING_MILLIS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }
}

package com.qarvo.kel.util.endtoend;

import static org.junit.jupiter.api.Assertions.assertEquals;

import com.qarvo.kel.util.WindowsUtil;
import com.sun.jna.platform.win32.Kernel32;
import java.util.concurrent.CompletableFuture;
import java.util.concurrent.Executor;
import java.util.concurrent.Future;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.TimeoutException;

/** One end of a pipe in a process of its own: {@code serve NAME} or {@code send NAME MESSAGE}. */
final class PipeEnd {
    private static final int NOT_YET_LISTENING_MILLIS = 30;
    private static final int WAIT_MILLIS = 20_000;
    private static final int ARRIVAL_MILLIS = 200;

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

    /** Serves on a thread of the executor and sends until something has arrived. Gives what arrived. */
    static String exchange(String name, String message, Executor executor) throws Exception {
        CompletableFuture<String> served = CompletableFuture.supplyAsync(() -> serve(name), executor);
        do {
            assertEquals(0, send(name, message));
        } while (!arrived(served));
        return served.get();
    }

    static boolean arrived(Future<String> served) throws Exception {
        try {
            served.get(ARRIVAL_MILLIS, TimeUnit.MILLISECONDS);
            return true;
        } catch (TimeoutException e) {
            return false;
        }
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

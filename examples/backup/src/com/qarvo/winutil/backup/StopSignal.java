package com.qarvo.winutil.backup;

import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;

/**
 * Lets a job that the user interrupts clean up behind itself: the JVM's shutdown waits until the job has noticed,
 * which it does after each block.
 */
final class StopSignal {
    private static final long SECONDS_TO_CLEAN_UP = 15;

    private final CountDownLatch finished = new CountDownLatch(1);
    private volatile boolean stopped;

    /** Makes the JVM's shutdown stop the job and wait for it. */
    void listen() {
        Runtime.getRuntime().addShutdownHook(new Thread(this::stopAndWait, "stop"));
    }

    /** Stops the job, and gives it some time for that. */
    void stopAndWait() {
        stop();
        try {
            finished.await(SECONDS_TO_CLEAN_UP, TimeUnit.SECONDS);
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    void stop() {
        stopped = true;
    }

    /** Must be called when the job is over, or a shutdown waits in vain. */
    void finished() {
        finished.countDown();
    }

    /** Throws when the job is to end. */
    void check() {
        if (stopped) {
            throw new ClientException("Stopped before the end.");
        }
    }
}

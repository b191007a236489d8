package com.qarvo.kel.util;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.util.concurrent.CountDownLatch;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.atomic.AtomicInteger;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.Timeout;

class NativeResourceTest {
    private final AtomicInteger freed = new AtomicInteger();
    private final NativeResource resource = new NativeResource(freed::incrementAndGet);

    @Test
    void closingFreesAtOnceWhenNothingUsesIt() {
        resource.close();

        assertEquals(1, freed.get());
    }

    @Test
    void closingTwiceFreesOnce() {
        resource.close();
        resource.close();

        assertEquals(1, freed.get());
    }

    @Test
    void nothingCanUseItOnceClosed() {
        assertTrue(resource.enter());
        resource.leave();
        resource.close();

        assertFalse(resource.enter());
    }

    @Test
    void theLastUserFreesWhatWasClosedMeanwhile() {
        resource.enter();
        resource.enter();
        resource.close();
        resource.leave();
        assertEquals(0, freed.get());

        resource.leave();

        assertEquals(1, freed.get());
    }

    @Test
    void closingAgainWhileInUseFreesOnce() {
        resource.enter();
        resource.close();
        resource.close();
        resource.leave();
        resource.close();

        assertEquals(1, freed.get());
    }

    @Test
    void usingItWithoutClosingFreesNothing() {
        resource.enter();
        resource.leave();

        assertEquals(0, freed.get());
    }

    @Test
    @Timeout(30)
    void neverFreesUnderAUser() throws InterruptedException {
        for (int round = 0; round < 200; round++) {
            AtomicInteger users = new AtomicInteger();
            AtomicBoolean usedWhenFreed = new AtomicBoolean();
            AtomicInteger frees = new AtomicInteger();
            NativeResource shared = new NativeResource(() -> {
                frees.incrementAndGet();
                usedWhenFreed.set(users.get() != 0);
            });
            CountDownLatch start = new CountDownLatch(1);
            Thread[] threads = new Thread[4];
            for (int i = 0; i < threads.length; i++) {
                threads[i] = new Thread(() -> useUntilClosed(shared, users, start));
                threads[i].start();
            }

            start.countDown();
            Thread.yield();
            shared.close();
            for (Thread thread : threads) {
                thread.join();
            }

            assertEquals(1, frees.get());
            assertFalse(usedWhenFreed.get());
        }
    }

    private static void useUntilClosed(NativeResource shared, AtomicInteger users, CountDownLatch start) {
        try {
            start.await();
        } catch (InterruptedException e) {
            throw new IllegalStateException(e);
        }
        while (shared.enter()) {
            users.incrementAndGet();
            users.decrementAndGet();
            shared.leave();
        }
    }
}

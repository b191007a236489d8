package com.qarvo.kel.util.endtoend;

import java.util.concurrent.atomic.AtomicLong;

/** What the threads of a soak hold open by their own account. */
final class SoakLedger {
    private final AtomicLong open = new AtomicLong();

    /** Ends what a native has begun. */
    @FunctionalInterface
    interface End {
        void end();
    }

    /** Something open that closes itself at the end of a block. */
    interface Held extends AutoCloseable {
        @Override
        void close();
    }

    /** Enters what has been opened; its end is entered when it is closed. */
    Held hold(End end) {
        open.incrementAndGet();
        return () -> {
            end.end();
            open.decrementAndGet();
        };
    }

    /** The number of things open now. */
    long open() {
        return open.get();
    }
}

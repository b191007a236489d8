package com.qarvo.winutil.bench;

import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Random;

/**
 * Runs the contenders of a job: all of them once per round, in an order shuffled anew each time. What else goes on in
 * the machine then meets all of them alike, and the ratio of two times of one round means something where the times
 * themselves do not.
 */
final class Runner {
    /**
     * How long to go on.
     *
     * @param warmUps rounds off the record, for the JVM's compilers
     * @param minimum rounds that are run whatever they take
     * @param maximum rounds after which it is enough
     * @param seconds after which no further round begins
     */
    record Length(int warmUps, int minimum, int maximum, int seconds) {
    }

    private final Length length;
    private final Random random;

    Runner(Length length, long seed) {
        this.length = length;
        this.random = new Random(seed);
    }

    /** Checks what every contender does, then times them; fails when one does something else than it should. */
    JobResult run(Job job) throws Exception {
        long[] amounts = checkAll(job);
        List<long[]> rounds = new ArrayList<>();
        for (int i = 0; i < length.warmUps; i++) {
            runRound(job, amounts);
        }
        long end = System.nanoTime() + length.seconds * 1_000_000_000L;
        while (rounds.size() < length.minimum || rounds.size() < length.maximum && System.nanoTime() < end) {
            rounds.add(runRound(job, amounts));
        }
        return new JobResult(job, rounds);
    }

    private static long[] checkAll(Job job) throws Exception {
        long[] amounts = new long[job.contenders().size()];
        for (int i = 0; i < amounts.length; i++) {
            Contender contender = job.contenders().get(i);
            try {
                contender.check().run();
                amounts[i] = contender.pass().run();
            } catch (Contender.WrongResult e) {
                throw new Contender.WrongResult(job.name() + ", " + contender.name() + ": " + e.getMessage());
            }
        }
        return amounts;
    }

    private long[] runRound(Job job, long[] amounts) throws Exception {
        List<Integer> order = new ArrayList<>();
        for (int i = 0; i < amounts.length; i++) {
            order.add(i);
        }
        Collections.shuffle(order, random);
        long[] times = new long[amounts.length];
        for (int i : order) {
            times[i] = time(job, job.contenders().get(i), amounts[i]);
        }
        return times;
    }

    private static long time(Job job, Contender contender, long amount) throws Exception {
        // Every pass begins with an empty young generation: none pays for what another left behind.
        System.gc();
        long begin = System.nanoTime();
        long done = contender.pass().run();
        long time = System.nanoTime() - begin;
        if (job.clock() == Job.Clock.OWN) {
            return done;
        }
        Contender.expect(job.name() + ", " + contender.name() + ": the amount done", amount, done);
        return time;
    }
}

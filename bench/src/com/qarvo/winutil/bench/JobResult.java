package com.qarvo.winutil.bench;

import java.util.List;

/**
 * The times of a job.
 *
 * @param job the job
 * @param rounds per round the nanoseconds of each contender, in the order of the job's contenders
 */
record JobResult(Job job, List<long[]> rounds) {
    /** The time of a contender per unit of the job, in microseconds. */
    Quartiles timePerUnit(int contender) {
        return Quartiles.of(rounds.stream().mapToDouble(r -> r[contender] / 1000.0 / job.units()).toArray());
    }

    /** The time of the library over that of another contender, taken inside each round. */
    Quartiles ratio(int contender) {
        return Quartiles.of(rounds.stream().mapToDouble(r -> (double) r[0] / r[contender]).toArray());
    }
}

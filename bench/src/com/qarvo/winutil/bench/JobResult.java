package com.qarvo.winutil.bench;

import java.util.List;

/**
 * The times of a job.
 *
 * @param job the job
 * @param rounds per round the nanoseconds of each contender, in the order of the job's contenders
 */
record JobResult(Job job, List<long[]> rounds) {
    /** The time of a contender per unit of the job, in nanoseconds. */
    Quartiles timePerUnit(int contender) {
        return Quartiles.of(rounds.stream().mapToDouble(r -> (double) r[contender] / job.units()).toArray());
    }

    /** The time of the library over that of another contender, taken inside each round. */
    Quartiles ratio(int contender) {
        return Quartiles.of(rounds.stream().mapToDouble(r -> (double) r[0] / r[contender]).toArray());
    }
}

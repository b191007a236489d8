package com.qarvo.winutil.bench;

/**
 * A measured figure with what it should be.
 *
 * @param job the job it belongs to
 * @param what the contender compared with or timed, or the thing counted
 * @param unit "x" for a ratio of times, "us per ..." for a time
 * @param value median and quartiles
 * @param aim the most it may be, NaN where there is no aim
 * @param rounds how often it was taken
 */
record Figure(String job, String what, String unit, Quartiles value, double aim, int rounds) {
    boolean hasAim() {
        return !Double.isNaN(aim);
    }

    /** Whether the aim is met; compared as printed, so that no figure misses by a digit that nobody sees. */
    boolean met() {
        return Math.round(value.median() * 100) <= Math.round(aim * 100);
    }
}

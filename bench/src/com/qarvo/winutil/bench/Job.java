package com.qarvo.winutil.bench;

import java.util.List;

/**
 * What the contenders do.
 *
 * @param name what the tables call it
 * @param unit what the absolute figures are given for: an entry, a MiB, ...
 * @param units how many of them one pass does
 * @param clock how a pass is timed
 * @param contenders the ways to do it; the first is the library
 */
record Job(String name, String unit, long units, Clock clock, List<Contender> contenders) {
    /** Where the time of a pass comes from. */
    enum Clock {
        /** The runner's watch. */
        OUTSIDE,
        /** The pass itself, which answers nanoseconds: it measured in another process. */
        OWN
    }

    Job(String name, String unit, long units, List<Contender> contenders) {
        this(name, unit, units, Clock.OUTSIDE, contenders);
    }
}

package com.qarvo.winutil.bench;

import java.util.Arrays;

/** The middle of a sample and how far it scatters. */
record Quartiles(double lower, double median, double upper) {
    static Quartiles of(double[] sample) {
        double[] sorted = sample.clone();
        Arrays.sort(sorted);
        return new Quartiles(quantile(sorted, 0.25), quantile(sorted, 0.5), quantile(sorted, 0.75));
    }

    private static double quantile(double[] sorted, double part) {
        double index = part * (sorted.length - 1);
        int below = (int) Math.floor(index);
        int above = (int) Math.ceil(index);
        return sorted[below] + (index - below) * (sorted[above] - sorted[below]);
    }
}

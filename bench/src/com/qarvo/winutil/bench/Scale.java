package com.qarvo.winutil.bench;

/**
 * How large the jobs are.
 *
 * @param listed entries of the listed directory
 * @param withSecurity entries of the directory listed with descriptors
 * @param transferred bytes read and overwritten
 * @param smallFiles files opened, read and closed
 * @param manyEntries entries of the directory whose listing is watched for memory
 * @param loads fresh JVMs per contender, at most
 */
record Scale(int listed, int withSecurity, long transferred, int smallFiles, int manyEntries, int loads) {
    static final Scale FULL = new Scale(20_000, 2_000, 256L << 20, 2_000, 200_000, 25);
    static final Scale QUICK = new Scale(400, 100, 3L << 20, 100, 3_000, 1);
}

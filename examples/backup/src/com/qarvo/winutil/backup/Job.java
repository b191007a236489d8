package com.qarvo.winutil.backup;

/**
 * What every job needs.
 *
 * @param files the system
 * @param transfer moves the content of files
 * @param progress counts what was moved
 * @param report takes what was left out
 * @param stop tells when to end early
 */
record Job(NativeFiles files, Transfer transfer, Progress progress, Report report, StopSignal stop) {
}

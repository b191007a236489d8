#!/usr/bin/env python3
"""Runs a soak in a Windows JVM under Wine, with its natives checked, and judges it.

RESULTS/java-soak.xml says: all threads went on being answered what one alone was answered before, every exported native
was called, checked mode had no complaint about our class, what the threads opened they closed, and neither memory nor
handles nor references went on growing. The table of samples is left in LOGS/soak.csv.
"""

import argparse
import pathlib
import shutil
import sys
import tempfile

import checked_jni
import run_endtoend
import run_suite
import soak_verdict
from run_suite import Case

NAME = 'java-soak'
# Beyond the soak itself: the JVM's start, what one thread is answered, a machine that is busy.
SPARE_SECONDS = 240


def run(options, work, table):
    """Runs the JVM. Returns its exit code, its output and the log of the natives that were called."""
    log, natives = options.logs / f'{NAME}.log', options.logs / 'soak-natives.log'
    for old in (natives, table):
        old.unlink(missing_ok=True)
    windows = run_endtoend.windows
    command = run_endtoend.checked_java(options) + run_endtoend.FIXED_HEAP
    command += ['-XX:NativeMemoryTracking=summary', f'-XX:ErrorFile={windows(log)}.hs_err',
                f'-Xlog:jni+resolve=debug:file={windows(natives)[2:]}:none:filecount=0',
                f'-Dwinutil.library={windows(options.library)}',
                'com.qarvo.kel.util.endtoend.Soak', str(options.seconds), windows(work), windows(table)]
    env = run_endtoend.wine_environment(options.prefix)
    return run_suite.run(command, log, env, options.seconds + SPARE_SECONDS), log, natives


def judge(options, code, log, natives, table):
    found = checked_jni.complaints(log.read_text('utf-8', 'replace'))
    missing = run_endtoend.never_called(run_endtoend.exported_natives(options.objdump, options.library), [natives])
    rows = soak_verdict.read(table) if table.exists() else []
    cases = [
        Case('every answer stays what it was', None if code == 0 else f'exit code {code}\n{run_suite.tail(log)}'),
        Case('checked mode has no complaint about our class', checked_jni.digest(found) or None),
        Case('every exported native is called', f'never called: {missing}' if missing else None),
    ]
    if len(rows) < soak_verdict.FEWEST_SAMPLES:
        return [*cases, Case('there are samples to judge', f'only {len(rows)} in {table}')]
    held = [row['seconds'] for row in rows if row['ledger'] != 0]
    cases.append(Case('what is opened is closed', f'something is held after {held} seconds' if held else None))
    for series in soak_verdict.series(rows):
        print(f'{NAME}: {series.verdict}')
        cases.append(Case(f'{series.name}: no growth', None if series.flat else series.verdict))
    print(f'{NAME}: {rows[-1]["jobs"]} jobs in {rows[-1]["seconds"]} s')
    return cases


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--seconds', type=int, required=True)
    parser.add_argument('--java', required=True, help='java.exe of a Windows JDK or JRE')
    parser.add_argument('--library', required=True, help='WinUtil64.dll')
    parser.add_argument('--class-path', nargs='+', required=True)
    parser.add_argument('--objdump', required=True)
    parser.add_argument('--prefix', required=True, help='the Wine prefix, unless WINEPREFIX names one')
    options = run_suite.parse(parser)
    table = options.logs / 'soak.csv'
    work = pathlib.Path(tempfile.mkdtemp(prefix='soak-', dir=options.logs))
    try:
        cases = judge(options, *run(options, work, table), table)
    finally:
        shutil.rmtree(work)
    return 0 if run_suite.report(options.results, NAME, cases) else 1


if __name__ == '__main__':
    sys.exit(main())

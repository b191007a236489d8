#!/usr/bin/env python3
"""Calls every native method with what nobody should pass, in Windows JVMs under Wine with their natives checked.

RESULTS/java-hostile.xml says: every call returned, and gave what its Javadoc promises; checked mode had no complaint
about our class; what was left out is what hostile_left_out.txt lists. A JVM that dies is a finding about the call that
it died of, and another one goes on behind that.
"""

import argparse
import pathlib
import shutil
import sys
import tempfile

import checked_jni
import run_endtoend
import run_suite
from run_suite import Case

NAME = 'java-hostile'
LIST = pathlib.Path(__file__).with_name('hostile_left_out.txt')
LAST = 'the end'
MOST_JVMS = 20
HUNG = 77  # how a JVM ends that has reported a call which does not return
FEWEST_CALLS = 4000


def call(options, work, devices, env):
    """Makes all calls. Returns their number, the findings and the output of the JVMs."""
    windows = run_endtoend.windows
    with run_endtoend.small_volume(work / 'volume', devices, NAME) as volume:
        java = run_endtoend.checked_java(options) + run_endtoend.FIXED_HEAP
        java.append(f'-Dwinutil.library={windows(options.library)}')
        if volume:
            java.append(f'-Dwinutil.test.volume={volume}')
        calls = ['com.qarvo.kel.util.endtoend.HostileCalls', windows(options.source), windows(work)]
        deaths, output, following = [], '', 0
        for _ in range(MOST_JVMS):
            log = options.logs / f'{NAME}-{following}.log'
            command = [*java, f'-XX:ErrorFile={windows(log)}.hs_err', *calls, str(following)]
            # What a text without a folder in front names is made in a folder of its own.
            code = run_suite.run(command, log, env, folder=work / 'current')
            output += log.read_text('utf-8', 'replace')
            number, name = last_call(work)
            if name == LAST:
                break
            if code != HUNG:
                deaths.append(f'{name}\tends the JVM with code {code}')
            following = number + 1
    findings = work / 'findings'
    reported = findings.read_text('utf-8').splitlines() if findings.exists() else []
    return number if name == LAST else 0, reported + deaths, output


def last_call(work):
    calls = work / 'calls'
    if not calls.exists():
        return -1, 'the beginning'
    number, name = calls.read_text('utf-8').splitlines()[-1].split('\t')
    return int(number), name


def judge(work, count, findings, output):
    found = checked_jni.complaints(output)
    expected = LIST.read_text('utf-8').splitlines()
    list_made = work / 'left out'
    left_out = list_made.read_text('utf-8').splitlines() if list_made.exists() else []
    difference = [f'left out: {line}' for line in left_out if line not in expected]
    difference += [f'no longer left out: {line}' for line in expected if line not in left_out]
    print(f'{NAME}: {count} calls, {len(findings)} findings, {len(left_out)} left out')
    return [
        Case('all calls are made', None if count >= FEWEST_CALLS else f'{count} calls\n{output[-4000:]}'),
        Case('every call gives what its Javadoc promises', '\n'.join(findings) or None),
        Case('checked mode has no complaint about our class', checked_jni.digest(found) or None),
        Case(f'what is left out is what {LIST.name} lists', '\n'.join(difference) or None),
    ]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--java', required=True, help='java.exe of a Windows JDK or JRE')
    parser.add_argument('--library', required=True, help='WinUtil64.dll')
    parser.add_argument('--class-path', nargs='+', required=True)
    parser.add_argument('--source', required=True, help='WindowsUtil.java, for its Javadoc')
    parser.add_argument('--prefix', required=True, help='the Wine prefix, unless WINEPREFIX names one')
    options = run_suite.parse(parser)
    env = run_endtoend.wine_environment(options.prefix)
    devices = pathlib.Path(env['WINEPREFIX']) / 'dosdevices'
    work = pathlib.Path(tempfile.mkdtemp(prefix='hostile-', dir=options.logs))
    (work / 'current').mkdir()
    try:
        cases = judge(work, *call(options, work, devices, env))
    finally:
        shutil.rmtree(work)
    return 0 if run_suite.report(options.results, NAME, cases) else 1


if __name__ == '__main__':
    sys.exit(main())

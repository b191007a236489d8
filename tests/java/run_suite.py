#!/usr/bin/env python3
"""Runs one JUnit suite in a JVM of its own and keeps what it said.

The JUnit report goes to RESULTS/NAME.xml, the whole output to LOGS/NAME.log. A JVM that dies or hangs is a failed test
of that report, not a missing one.
"""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree

LIMIT_SECONDS = 360


class Case:
    """One result that does not come from JUnit: passed unless it has a failure text."""

    def __init__(self, name, failure=None):
        self.name = name
        self.failure = failure


def write_cases(path, suite, cases):
    """Writes results of our own in the form of JUnit's."""
    failed = sum(case.failure is not None for case in cases)
    root = ElementTree.Element('testsuite', name=suite, tests=str(len(cases)), failures=str(failed), errors='0',
                               skipped='0')
    for case in cases:
        element = ElementTree.SubElement(root, 'testcase', classname=suite, name=case.name)
        if case.failure is not None:
            text = ''.join(c if c in '\n\t' or ' ' <= c < '\ud800' else '?' for c in case.failure)
            ElementTree.SubElement(element, 'failure', message=text.splitlines()[0] if text else '').text = text
    ElementTree.ElementTree(root).write(path, encoding='utf-8', xml_declaration=True)


def console(tests, reports, classes='.*Test'):
    """The arguments that run the test classes of a jar, each method with a time limit of its own."""
    return ['org.junit.platform.console.ConsoleLauncher', 'execute', '--scan-class-path', tests,
            '--include-classname', classes, '--include-engine', 'junit-jupiter', '--fail-if-no-tests',
            '--details', 'tree', '--disable-banner', '--disable-ansi-colors', '--reports-dir', reports,
            '--config', 'junit.jupiter.execution.timeout.default=60 s']


def run(command, log, env=None, limit=LIMIT_SECONDS, folder=None):
    """Runs a command with its output in the log. Returns its exit code, None when it had to be stopped."""
    with open(log, 'wb') as out:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT, env=env,
                                   cwd=folder)
        try:
            return process.wait(limit)
        except subprocess.TimeoutExpired:
            # A JVM prints where each of its threads stands when it is asked to quit.
            process.send_signal(3)
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                pass
            process.kill()
            process.wait()
            return None


def tail(log, lines=60):
    return '\n'.join(log.read_text('utf-8', 'replace').splitlines()[-lines:])


def collect(reports, target, suite, code, log):
    """Puts the suite's report in its place; one with a single failure where the JVM left none. Returns whether all
    went well."""
    report = reports / 'TEST-junit-jupiter.xml'
    complete = report.exists() and code in (0, 1)
    if complete:
        tree = ElementTree.parse(report)
        tree.getroot().set('name', suite)
        tree.write(target, encoding='utf-8', xml_declaration=True)
        root = tree.getroot()
        skipped = int(root.get('skipped', 0))
        print(f'{suite}: {root.get("tests")} tests, {root.get("failures")} failed, {root.get("errors")} errors, '
              f'{skipped} skipped, {float(root.get("time", 0)):.1f} s')
        for case in root.iter('testcase'):
            if case.find('skipped') is not None:
                print(f'{suite}: skipped: {case.get("classname")}.{case.get("name")}')
    else:
        how = 'did not end in time' if code is None else f'ended with code {code} and without a report'
        write_cases(target, suite, [Case('the JVM runs to its end', f'The JVM {how}.\n{tail(log)}')])
        print(f'{suite}: the JVM {how}')
    if not complete or code != 0:
        print(f'{suite}: the end of {log}:\n{tail(log)}')
    return complete and code == 0


def parse(parser):
    """Parses the command line; the folders for results and logs, which it has to name, are there then."""
    parser.add_argument('--results', type=pathlib.Path, required=True)
    parser.add_argument('--logs', type=pathlib.Path, required=True)
    options = parser.parse_args()
    for folder in (options.results, options.logs):
        folder.mkdir(parents=True, exist_ok=True)
    return options


def report(folder, suite, cases):
    """Leaves results of our own in FOLDER/SUITE.xml and prints the failed ones. Returns whether all passed."""
    write_cases(folder / f'{suite}.xml', suite, cases)
    failed = [case for case in cases if case.failure is not None]
    print(f'{suite}: {len(cases)} checks, {len(failed)} failed')
    for case in failed:
        print(f'{suite}: FAILED: {case.name}\n{case.failure}')
    return not failed


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--name', required=True)
    parser.add_argument('--java', required=True)
    parser.add_argument('--tests', required=True, help='the jar with the test classes')
    parser.add_argument('--class-path', nargs='+', required=True)
    options = parse(parser)
    log = options.logs / f'{options.name}.log'
    reports = pathlib.Path(tempfile.mkdtemp(prefix='reports-', dir=options.logs))
    try:
        command = [options.java, '-ea', '-cp', os.pathsep.join(options.class_path)]
        code = run(command + console(options.tests, str(reports)), log)
        good = collect(reports, options.results / f'{options.name}.xml', options.name, code, log)
    finally:
        shutil.rmtree(reports)
    return 0 if good else 1


if __name__ == '__main__':
    sys.exit(main())

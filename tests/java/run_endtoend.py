#!/usr/bin/env python3
"""Runs the end-to-end tests in a Windows JVM under Wine, with its natives checked, and judges the run.

Beside the tests' own report, which run_suite.py describes, RESULTS/NAME-gate.xml says: the JVM did not crash,
checked mode had no complaint about our class, each exported native was called at least once, keys typed at a console
were read, and the gate sees complaints when there are some.
"""

import argparse
import contextlib
import ctypes
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import threading

import checked_jni
import run_suite
from run_suite import Case

ALL_CLASSES = '.*Test'
MANY_ENTRIES = 50000
VOLUME_BYTES = 1 << 20
VOLUME_NAMES = 64
# A Java heap that is all there from the beginning: what grows in the JVM's process is then what the natives leave.
FIXED_HEAP = ['-XX:+UseSerialGC', '-Xms256m', '-Xmx256m', '-XX:+AlwaysPreTouch']
NATIVE_PREFIX = 'Java_com_qarvo_kel_util_WindowsUtil_'
VIOLATIONS = {
    'exists': 'JNI call made without checking exceptions',
    'isDir': 'WARNING: JNI local refs',
    'mkdir': 'FATAL ERROR in native method',
    'getFileAttr': 'bad class descriptor',
}


def windows(path):
    """The name that a Windows program has for a file of this machine."""
    return 'Z:' + str(pathlib.Path(path).absolute()).replace('/', '\\')


def wine_environment(prefix):
    env = dict(os.environ)
    env.setdefault('WINEPREFIX', prefix)
    env.setdefault('WINEDEBUG', '-all')
    env.setdefault('WINEARCH', 'win64')
    env.setdefault('WINEDLLOVERRIDES', 'mscoree,mshtml=')
    # Without a UTF-8 locale Wine cannot name half of the files of the tests.
    env['LC_ALL'] = 'C.UTF-8'
    env.pop('DISPLAY', None)
    return env


def java_with(library, java, folder, env):
    """The same java.exe in a folder of links, beside a DLL that it is to load instead of the system's."""
    shutil.copytree(java.resolve().parents[1], folder, copy_function=os.symlink)
    (folder / 'bin' / library.name).symlink_to(library)
    env['WINEDLLOVERRIDES'] += f';{library.stem}=n,b'
    return folder / 'bin' / java.name


def checked_java(options):
    """The beginning of the command that runs a class in the Windows JVM, with its natives checked."""
    return ['wine', options.java, '-Xcheck:jni', '-ea', '-Dfile.encoding=UTF-8', '-cp',
            ';'.join(map(windows, options.class_path))]


def many_entries(folder):
    """Made from here: under Wine a new file costs in proportion to its directory."""
    folder.mkdir()
    for i in range(MANY_ENTRIES):
        os.mknod(f'{folder}/entry {i:05}.txt')


@contextlib.contextmanager
def link_in(devices, name, target):
    """A link in the prefix's folder of devices for as long as the run takes."""
    link = devices / name
    link.parent.mkdir(parents=True, exist_ok=True)
    link.symlink_to(target)
    try:
        yield
    finally:
        link.unlink()
        if link.parent != devices:
            link.parent.rmdir()


@contextlib.contextmanager
def small_volume(folder, devices, name):
    """A small file system as a drive of its own; gives its root, or None where mounting is not allowed."""
    folder.mkdir()
    libc = ctypes.CDLL(None, use_errno=True)
    size = f'size={VOLUME_BYTES},nr_inodes={VOLUME_NAMES}'
    if libc.mount(b'none', os.fsencode(folder), b'tmpfs', 0, size.encode()) != 0:
        print(f'{name}: no small volume, mounting failed: {os.strerror(ctypes.get_errno())}')
        yield None
        return
    try:
        taken = {entry.name.lower() for entry in devices.iterdir()}
        letter = next(letter for letter in 'vwxtsrqponmlkjihgfe' if f'{letter}:' not in taken)
        with link_in(devices, f'{letter}:', folder):
            yield f'{letter.upper()}:\\'
    finally:
        libc.umount2(os.fsencode(folder), 2)  # MNT_DETACH: a file that a dead JVM left open must not keep it


def exported_natives(objdump, library):
    """The names in the DLL's export table, without the prefix that all of them have."""
    text = subprocess.run([objdump, '-p', library], capture_output=True, text=True, check=True).stdout
    table = text[text.index('[Ordinal/Name Pointer] Table'):]
    names = re.findall(r'^\s*\[\s*\d+\](?:\s+\+base\[\s*\d+\])?(?:\s+[0-9a-f]+)?\s+(\S+)$', table, re.MULTILINE)
    return sorted(name[len(NATIVE_PREFIX):] for name in names if name.startswith(NATIVE_PREFIX))


def never_called(exported, logs):
    """The natives that no call ever bound, each with how many of its overloads were bound.

    The JVM tells of a binding by name alone, so that overloads can only be counted.
    """
    text = '\n'.join(log.read_text('utf-8', 'replace') for log in logs if log.exists())
    bound = re.findall(r'Dynamic-linking native method com\.qarvo\.kel\.util\.WindowsUtil\.(\w+) ', text)
    missing = {}
    for name in sorted({export.split('__')[0] for export in exported}):
        overloads = [export for export in exported if export.split('__')[0] == name]
        if bound.count(name) < len(overloads):
            missing[name] = f'{bound.count(name)} of {len(overloads)}'
    return missing


def gate_is_awake(java, options, env):
    """Has each deliberate violation committed in a JVM of its own and looks whether the gate reports it."""
    cases = []
    for native, expected in VIOLATIONS.items():
        if native in options.unseen:
            continue
        log = options.logs / f'violation-{native}.log'
        run_suite.run(java + [f'-Dwinutil.library={windows(options.violation)}', f'-XX:ErrorFile={windows(log)}.hs_err',
                              'com.qarvo.kel.util.endtoend.Violator', native], log, env, 60)
        found = checked_jni.complaints(log.read_text('utf-8', 'replace'))
        seen = len(found) == 1 and expected in found[0]
        cases.append(Case(f'the gate sees the violation in {native}',
                          None if seen else f'expected "{expected}" once, found {found}\n{run_suite.tail(log)}'))
    return cases


def reads_console_keys(java, options, env, work):
    """Has a JVM with a console of its own, a pseudo-terminal, read the keys that are typed there."""
    keys, result = 'yA7\t', work / 'keys.txt'
    terminal, console = os.openpty()
    try:
        process = subprocess.Popen(
            java + [f'-Dwinutil.library={windows(options.library)}', 'com.qarvo.kel.util.endtoend.ConsoleKeys',
                    windows(result), str(len(keys))], stdin=console, stdout=console, stderr=console, env=env)
        os.write(terminal, keys.encode())
        # What is shown has to be taken, or the program would wait for that.
        threading.Thread(target=drain, args=(terminal,), daemon=True).start()
        try:
            process.wait(60)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    finally:
        os.close(console)
    found = result.read_text('utf-8') if result.exists() else 'no keys'
    expected = ' '.join(str(ord(key)) for key in keys)
    return Case('the keys of a console are read', None if found == expected else f'expected {expected}, found {found}')


def drain(terminal):
    """Reads from a pseudo-terminal until its other end is closed."""
    with contextlib.suppress(OSError):
        while os.read(terminal, 4096):
            pass
    os.close(terminal)


def judge(options, log, resolve_log, crashes):
    output = log.read_text('utf-8', 'replace')
    found = checked_jni.complaints(output)
    # What happened, and where, stands at the beginning of what a JVM leaves behind.
    crash_text = '\n'.join(file.read_text('utf-8', 'replace')[:8000] for file in crashes)
    cases = [
        Case('the JVM does not crash', crash_text or None),
        Case('checked mode has no complaint about our class', checked_jni.digest(found) or None),
    ]
    if options.classes == ALL_CLASSES:
        exported = exported_natives(options.objdump, options.library)
        missing = never_called(exported, [resolve_log, log])
        cases += [
            Case('the export table is read', None if exported else f'no natives found in {options.library}'),
            Case('every exported native is called', f'never called: {missing}' if missing else None),
        ]
    return cases


def run_tests(options, env, java, work, devices):
    """Runs the suite with what it needs around it. Returns whether its tests passed, and the gate's cases."""
    log = options.logs / f'{options.name}.log'
    resolve_log = options.logs / 'natives-called.log'
    for old in [*options.logs.glob('hs_err_*.log'), resolve_log]:
        old.unlink(missing_ok=True)
    many_entries(work / 'many')
    (work / 'share').mkdir()
    (work / 'links' / 'target').mkdir(parents=True)
    (work / 'links' / 'link').symlink_to('target')
    server = f'winutil-{os.getpid()}'
    with small_volume(work / 'volume', devices, options.name) as volume, \
            link_in(devices, f'unc/{server}/share', work / 'share'):
        properties = {
            'winutil.library': windows(options.library),
            'winutil.test.work': windows(work),
            'winutil.test.many': windows(work / 'many'),
            'winutil.test.links': windows(work / 'links'),
            'winutil.test.share': f'\\\\{server}\\share',
            'winutil.test.variants': windows(options.variants),
            'winutil.test.interposer': windows(options.interposer),
        }
        if volume:
            properties['winutil.test.volume'] = volume
        command = java + FIXED_HEAP
        if options.verbose_jni:
            command.append('-verbose:jni')
        # The log's name without its drive: a colon separates the log's options.
        command += [f'-Xlog:jni+resolve=debug:file={windows(resolve_log)[2:]}:none:filecount=0',
                    f'-XX:ErrorFile={windows(options.logs)}\\hs_err_%p.log']
        command += [f'-D{key}={value}' for key, value in properties.items()]
        command += run_suite.console(windows(options.tests), windows(work / 'reports'), options.classes)
        code = run_suite.run(command, log, env, options.limit)
    good = run_suite.collect(work / 'reports', options.results / f'{options.name}.xml', options.name, code, log)
    return good, judge(options, log, resolve_log, list(options.logs.glob('hs_err_*.log')))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--name', default='java-endtoend', help='what the results are called')
    parser.add_argument('--java', required=True, type=pathlib.Path, help='java.exe of a Windows JDK or JRE')
    parser.add_argument('--beside-java', type=pathlib.Path,
                        help='a DLL that java.exe is to load instead of the system\'s')
    parser.add_argument('--verbose-jni', action='store_true',
                        help='for a JVM that tells of bound natives in its output alone')
    parser.add_argument('--unseen', nargs='*', default=[], choices=VIOLATIONS,
                        help='violations that the checked mode of this JVM does not look for')
    parser.add_argument('--limit', type=int, default=run_suite.LIMIT_SECONDS, help='seconds for all tests together')
    parser.add_argument('--classes', default=ALL_CLASSES, help='which test classes, as a regular expression')
    parser.add_argument('--library', required=True, help='WinUtil64.dll')
    parser.add_argument('--violation', required=True, help='the DLL that breaks the rules')
    parser.add_argument('--interposer', required=True, help='the DLL that replaces imports')
    parser.add_argument('--tests', required=True, help='the jar with the test classes')
    parser.add_argument('--class-path', nargs='+', required=True)
    parser.add_argument('--variants', required=True, help='folder of the jars that replace classes of the library')
    parser.add_argument('--objdump', required=True)
    parser.add_argument('--prefix', required=True, help='the Wine prefix, unless WINEPREFIX names one')
    options = run_suite.parse(parser)
    env = wine_environment(options.prefix)
    devices = pathlib.Path(env['WINEPREFIX']) / 'dosdevices'
    work = pathlib.Path(tempfile.mkdtemp(prefix='endtoend-', dir=options.logs))
    try:
        if options.beside_java:
            options.java = java_with(options.beside_java, options.java, work / 'java', env)
        java = checked_java(options)
        good, cases = run_tests(options, env, java, work, devices)
        cases.append(reads_console_keys(java, options, env, work))
        cases += gate_is_awake(java, options, env)
    finally:
        shutil.rmtree(work)
    passed = run_suite.report(options.results, f'{options.name}-gate', cases)
    return 0 if good and passed else 1


if __name__ == '__main__':
    sys.exit(main())

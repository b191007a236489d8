#!/usr/bin/env python3
"""Attacks the example client while it runs as a program in a Windows JVM under Wine.

A second process, another user of the machine or root, puts links in the place of folders, watches what can be read,
or kills the client; a link there is one of this machine's own. Judged is what it got: RESULTS/client-attacks.xml has a
case for each attack. Needs root, to become another user.
"""

import argparse
import multiprocessing
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import run_endtoend
import run_suite
from run_endtoend import windows
from run_suite import Case

NAME = 'client-attacks'
FOLDERS = 10
FILES = 1000
STRANGER = 65534  # "nobody": in no group that the files belong to
SECRET = b'secret of somebody else'
BIG = 48 << 20
KILLS = 5
ROUNDS = 4
SECONDS = 120
# How long root leaves a link in its place: long beside what the client does between two looks.
DWELL = 0.03
# The names are known: whoever may pass through a folder need not be able to list it.
PROBES = ('.', 'folder0', 'folder3/inner', 'folder9/inner', 'folder0/inner/file000.txt', 'folder5/inner/file050.txt')


class Client:
    """The client, run as a user would run it."""

    def __init__(self, options, env, log):
        self.env = env
        self.log = open(log, 'w', encoding='utf-8')
        self.command = ['wine', options.java, '-Xmx256m', f'-Dwinutil.library={windows(options.library)}', '-cp',
                        ';'.join(windows(jar) for jar in options.class_path), 'com.qarvo.winutil.backup.Main']

    def start(self, command, *paths, err=subprocess.DEVNULL):
        """Starts a command with paths of this machine."""
        words = command.split() + [windows(path) for path in paths]
        # No pipes: what Wine starts beside the client would hold them open.
        return subprocess.Popen(self.command + words, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=err,
                                env=self.env, start_new_session=True)

    def run(self, command, *paths):
        """Runs a command. Returns its exit code, None when it had to be stopped, and its standard error."""
        with tempfile.TemporaryFile() as err:
            process = self.start(command, *paths, err=err)
            try:
                code = process.wait(SECONDS)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                process.wait()
                code = None
            err.seek(0)
            text = err.read().decode('utf-8', 'replace')
        self.log.write(f'{process.args[len(self.command):]}: {code}\n{text}\n')
        self.log.flush()
        return code, text

    def must(self, command, *paths):
        code, err = self.run(command, *paths)
        if code != 0:
            raise AssertionError(f'{command} ended with {code}: {err}')


class Attack:
    """A function that is called again and again in a process of its own until it is told to stop."""

    def __init__(self, step, user=None):
        self.step = step
        self.user = user
        self.stop = multiprocessing.Event()
        self.tries = multiprocessing.Value('q', 0)
        self.hits = multiprocessing.Value('q', 0)
        self.process = multiprocessing.Process(target=self.loop, daemon=True)

    def loop(self):
        if self.user is not None:
            os.setgroups([])
            os.setgid(self.user)
            os.setuid(self.user)
        while not self.stop.is_set():
            self.tries.value += 1
            try:
                if self.step():
                    self.hits.value += 1
            except OSError:
                pass

    def __enter__(self):
        self.process.start()
        return self

    def __exit__(self, *_):
        self.stop.set()
        self.process.join(SECONDS)
        if self.process.is_alive():
            self.process.kill()


def require(condition, text):
    if not condition:
        raise AssertionError(text)


def make_tree(folder):
    """Many small files in a few folders, all of it open to everybody."""
    for i in range(FOLDERS):
        inner = folder / f'folder{i}' / 'inner'
        inner.mkdir(parents=True)
        for k in range(FILES // FOLDERS):
            file = inner / f'file{k:03}.txt'
            file.write_text(f'content of {i} {k}\n' * 20)
            os.utime(file, (1.7e9, 1.7e9))


def can_be_read(path):
    try:
        os.listdir(path) if path.suffix == '' else path.open('rb').close()
        return True
    except OSError:
        return False


def names_and_sizes(folder):
    found = {}
    for path, _, files in os.walk(folder):
        found[os.path.relpath(path, folder)] = None
        for name in files:
            file = os.path.join(path, name)
            found[os.path.relpath(file, folder)] = os.path.getsize(file)
    return found


def contents(folder):
    return {path: path.read_bytes() for path in pathlib.Path(folder).rglob('*') if path.is_file()}


def swap(folder, target):
    """Puts a link in the place of a folder, and the folder back after a while."""
    moved = f'{folder}.moved'
    os.rename(folder, moved)
    os.symlink(target, folder)
    time.sleep(random.uniform(DWELL, 2 * DWELL))
    os.unlink(folder)
    os.rename(moved, folder)
    time.sleep(random.uniform(0, DWELL))
    return True


class Attacks:
    """Each method is an attack of its own, in a folder of its own; what it finds wrong it raises."""

    def __init__(self, client, work):
        self.client = client
        self.work = work
        self.tree = work / 'tree'
        make_tree(self.tree)
        self.store = work / 'store'
        client.must('backup --share-store', self.tree, self.store)

    def victim(self, folder):
        """A folder with files of the same names as the tree's, which nobody must touch."""
        victim = folder / 'victim'
        shutil.copytree(self.tree / 'folder0', victim)
        for file in victim.rglob('*.txt'):
            if file.name < 'file050.txt':
                file.write_bytes(SECRET)
            else:
                file.unlink()
        return victim

    def another_user_sees_nothing_until_all_is_restored(self, folder):
        return self.watch(folder, existing=False)

    def another_user_sees_nothing_in_a_target_that_was_there(self, folder):
        return self.watch(folder, existing=True)

    def watch(self, folder, existing):
        out = folder / 'out'
        seen = multiprocessing.SimpleQueue()

        def look():
            # The names are known: whoever may pass through a folder need not be able to list it.
            if not any(can_be_read(out / path) for path in PROBES):
                return False
            found = names_and_sizes(out)
            if len(found) < 2:
                # The target that was there, before the restore had begun.
                return False
            if seen.empty():
                seen.put(found)
            return True

        if existing:
            out.mkdir()
        with Attack(look, STRANGER) as attack:
            code, err = self.client.run('restore', self.store, out)
            time.sleep(0.2)
        require(code == 0, f'restore ended with {code}: {err}')
        require(attack.tries.value > 1000, f'only {attack.tries.value} tries')
        require(not seen.empty(), 'the other user sees it in the end, or this test would show nothing')
        found, whole = seen.get(), names_and_sizes(self.tree)
        require(found == whole, f'seen too early, with {len(found)} entries of {len(whole)}')
        return f'{attack.tries.value} looks, the first that saw something saw all {len(found)} entries'

    def another_user_cannot_replace_a_folder_of_a_target_that_was_open(self, folder):
        out, mine = folder / 'out', folder / 'mine'
        (mine / 'inner').mkdir(parents=True)
        for path in (mine, mine / 'inner', out):
            path.mkdir(exist_ok=True)
            path.chmod(0o777)

        def replace():
            for i in range(FOLDERS):
                if (out / f'folder{i}').exists():
                    swap(out / f'folder{i}', mine)
            return True

        with Attack(replace, STRANGER) as attack:
            code, err = self.client.run('restore', self.store, out)
        leaked = contents(mine)
        require(not leaked, f'{len(leaked)} files were written into the folder of another user')
        require(code == 0, f'restore ended with {code}: {err[-2000:]}')
        require(attack.tries.value > 1000, f'{attack.tries.value} tries')
        return f'{attack.tries.value} tries, nothing led away'

    def the_owner_of_the_folder_above_replaces_the_target(self, folder):
        folder.chmod(0o777)
        out, mine = folder / 'out', folder / 'mine'
        mine.mkdir()
        mine.chmod(0o777)

        def replace():
            # Not before the restore has made a folder there.
            return os.stat(out).st_nlink > 2 and swap(out, mine)

        hits = 0
        for _ in range(ROUNDS):
            with Attack(replace, STRANGER) as attack:
                self.client.run('restore', self.store, out)
            leaked = {path: content for path, content in contents(mine).items() if content}
            require(not leaked, f'{len(leaked)} files with content were written into the folder of another user')
            hits += attack.hits.value
            shutil.rmtree(out)
        require(hits > 0, 'the target was never replaced')
        return f'replaced {hits} times, no content led away'

    def root_replaces_a_folder_of_the_target(self, folder):
        out, victim = folder / 'out', self.victim(folder)
        before = contents(victim)

        def replace():
            name = out / f'folder{random.randrange(FOLDERS)}'
            return swap(name, victim)

        with Attack(replace) as attack:
            code, err = self.client.run('restore', self.store, out)
        made = {path for path, content in contents(victim).items() if path not in before and content}
        require(not made, f'{len(made)} files with content were written where a link leads')
        changed = {path for path in before if not path.exists() or path.read_bytes() != before[path]}
        require(not changed, f'changed or removed where a link leads: {sorted(changed)[:5]}')
        require(code == 1 and 'was replaced meanwhile' in err, f'restore ended with {code}: {err[-2000:]}')
        return f'replaced {attack.hits.value} times, no content led away'

    def the_clean_up_removes_no_file_of_somebody_else(self, folder):
        tree, store, out, victim = (folder / name for name in ('tree', 'store', 'out', 'victim'))
        for place in (tree / 'sub', victim):
            place.mkdir(parents=True)
            (place / 'big').write_bytes(b'x' * BIG)
        self.client.must('backup', tree, store)
        content = next((store / 'data').rglob('0*1'))
        with open(content, 'r+b') as damaged:
            damaged.seek(BIG - 1)
            damaged.write(b'y')

        def replace():
            os.stat(out / 'sub' / 'big')
            os.rename(out / 'sub', out / 'moved')
            os.symlink(victim, out / 'sub')
            return True

        with Attack(replace) as attack:
            code, err = self.client.run('restore', store, out)
        require(attack.hits.value == 1, 'the folder was not replaced')
        require((victim / 'big').exists(), 'a file of somebody else was removed')
        require(code == 1 and 'what was begun of it cannot be removed' in err, f'{code}: {err}')
        return 'the file of the same name and size is still there'

    def the_backup_does_not_leave_the_tree(self, folder):
        store, secrets = folder / 'store', folder / 'secrets'
        tree = folder / 'tree'
        shutil.copytree(self.tree, tree)
        (secrets / 'inner').mkdir(parents=True)
        secrets.chmod(0o700)
        for k in range(FILES // FOLDERS):
            (secrets / 'inner' / f'file{k:03}.txt').write_bytes(SECRET)
        owned = [tree] + [tree / name for name in os.listdir(tree)]
        for path in owned:
            os.chown(path, STRANGER, STRANGER)

        def replace():
            return swap(tree / f'folder{random.randrange(FOLDERS)}', secrets)

        with Attack(replace, STRANGER) as attack:
            code, err = self.client.run('backup', tree, store)
        require(attack.hits.value > 0, 'no folder was replaced')
        require(code == 1 and 'was replaced meanwhile' in err, f'backup ended with {code}: {err[-2000:]}')
        stored = contents(store)
        require(len(stored) > FILES // 4, f'only {len(stored)} files are in the store')
        read = [path for path, content in stored.items() if SECRET in content]
        require(not read, f'{len(read)} files of somebody else were read into the store')
        return f'replaced {attack.hits.value} times, nothing of somebody else was read'

    def a_store_can_be_read_by_nobody_else(self, folder):
        store = folder / 'store'

        def look():
            os.listdir(store)
            return True

        with Attack(look, STRANGER) as attack:
            self.client.must('backup', self.tree, store)
            time.sleep(0.2)
        require(attack.hits.value == 0 and attack.tries.value > 1000, f'{attack.hits.value} of {attack.tries.value}')
        shared = Attack(lambda: os.listdir(self.store), STRANGER)
        with shared:
            time.sleep(0.2)
        require(shared.hits.value > 0, 'with --share-store the other user sees it, or this test would show nothing')
        return f'{attack.tries.value} looks saw nothing'

    def a_restore_that_is_killed_leaves_nothing_open(self, folder):
        marked = 0
        for kill in range(KILLS):
            out = folder / f'out{kill}'
            process = self.client.start('restore', self.store, out)
            while process.poll() is None and not (out / 'folder0' / 'inner').exists():
                time.sleep(0.001)
            time.sleep(0.25 * kill)
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            with Attack(lambda: os.listdir(out) or True, STRANGER) as attack:
                time.sleep(0.1)
            if not (out / 'restore-unfinished').exists():
                require(names_and_sizes(out) == names_and_sizes(self.tree), 'unfinished, and has no marker')
                continue
            marked += 1
            require(attack.hits.value == 0 and attack.tries.value > 0, 'what was killed is open to others')
            code, err = self.client.run('restore', self.store, out)
            require(code == 2 and 'holds a restore that was not finished' in err, f'{code}: {err}')
        code, err = self.client.run('verify', self.store, folder / 'out0')
        require(code == 1 and 'a restore into it was not finished' in err, f'{code}: {err[:500]}')
        require(marked > 1, f'only {marked} of {KILLS} were killed in the middle')
        return f'{marked} of {KILLS} killed before the end, all closed and recognised'


def run_attack(attacks, work, name):
    folder = work / name
    folder.mkdir()
    start = time.monotonic()
    try:
        outcome, failure = getattr(attacks, name)(folder), None
    except (AssertionError, OSError) as e:
        outcome, failure = 'FAILED', f'{type(e).__name__}: {e}'
    print(f'{NAME}: {name.replace("_", " ")}: {failure or outcome} ({time.monotonic() - start:.1f} s)', flush=True)
    shutil.rmtree(folder)
    return Case(name.replace('_', ' '), failure)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument('--java', required=True, help='java.exe of a Windows JDK or JRE')
    parser.add_argument('--library', required=True, help='WinUtil64.dll')
    parser.add_argument('--class-path', nargs='+', required=True)
    parser.add_argument('--prefix', required=True, help='the Wine prefix, unless WINEPREFIX names one')
    parser.add_argument('--only', default='', help='a part of the name of the attacks to run')
    options = run_suite.parse(parser)
    names = [name for name in Attacks.__dict__ if name.split('_')[0] in ('a', 'another', 'root', 'the')]
    os.umask(0o022)
    # Not below the build, where another user might see nothing for other reasons.
    work = pathlib.Path(tempfile.mkdtemp(prefix='winutil-attacks-'))
    work.chmod(0o755)
    try:
        client = Client(options, run_endtoend.wine_environment(options.prefix), options.logs / f'{NAME}.log')
        try:
            attacks = Attacks(client, work)
            cases = [run_attack(attacks, work, name) for name in names if options.only in name]
        except AssertionError as e:
            cases = [Case('a store to attack is made', str(e))]
    finally:
        shutil.rmtree(work)
    run_suite.write_cases(options.results / f'{NAME}.xml', NAME, cases)
    failed = [case for case in cases if case.failure is not None]
    print(f'{NAME}: {len(cases)} attacks, {len(failed)} succeeded')
    return 1 if failed or not cases else 0


if __name__ == '__main__':
    sys.exit(main())

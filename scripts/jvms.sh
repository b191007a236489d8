#!/usr/bin/env bash
# Runs the end-to-end suite in Windows JVMs of several versions (some minutes each) and writes what came of it into
# docs/jvms.csv and README.md. Installs what is missing (Debian 12, as root).
#
#   scripts/jvms.sh [VERSION...]           everything (default: 11 17 21 25)
#   scripts/jvms.sh --smoke [VERSION...]   a few classes, and nothing is written (default: 11 21 25)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh
kind=endtoend configuration=jvms versions=(11 17 21 25)
if [ "${1:-}" = --smoke ]; then
    kind=smoke configuration=smoke versions=(11 21 25)
    shift
fi
[ $# -gt 0 ] && versions=("$@")

scripts/setup.sh
for version in "${versions[@]}"; do
    scripts/windows-java.sh "$version"
done
scripts/build.sh WinUtil64 violation interposer iphlpapi endtoend_tests_jar older-record_jar unknown-record_jar \
    lowered_tests
build=build/mingw-release
status=0
for version in "${versions[@]}"; do
    # The JVM of one version at a time: all make the same links in the Wine prefix.
    (cd "$build" && ctest -C "$configuration" -R "^java-$kind-$version\$" --no-tests=error --output-on-failure) ||
        status=1
done
if [ $kind = endtoend ]; then
    python3 scripts/jvm_results.py "$build/jvms" "${versions[@]}"
    scripts/readme_tables.py --write
fi
exit $status

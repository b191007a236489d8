#!/usr/bin/env bash
# Measures the library against its alternatives (about 12 minutes) and writes docs/benchmark.csv, .md and .svg and the
# figures in README.md; those of every round are left in build/bench. Installs what is missing (Debian 12, as root).
#
#   scripts/bench.sh                     the whole benchmark
#   scripts/bench.sh --only REGEX ...    options for the benchmark itself (--help); these files are left alone then
#   BENCH_CPU=N                          the one CPU that everything is bound to (default: the last one allowed)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh --all
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

build=${WINUTIL_BUILD:-build/mingw-release}
results=$PWD/build/bench
cmake --preset mingw-release "${toolbox[@]}" -B "$build" >/dev/null
cmake --build "$build" --target WinUtil64 winutil_bench winutil_empty winutil_bench_jar
mkdir -p "$results"

# A prefix of its own, so that the wineserver too starts on the chosen CPU. It also holds the test files.
prefix=$(mktemp -d "$results/prefix.XXXXXX")
trap 'WINEPREFIX=$prefix wineserver -k 2>/dev/null || true; WINEPREFIX=$prefix wineserver -w; rm -rf "$prefix"' EXIT
cp -a "$WINEPREFIX/." "$prefix"
mkdir "$prefix/many"
(cd "$prefix/many" && seq -f 'entry %07.0f' 200000 | xargs -d '\n' touch)
allowed=$(taskset -cp $$ | sed 's/.*[:,-] *//')

if [ $# -eq 0 ]; then
    set -- --csv "Z:$results" --markdown "Z:$results/benchmark.md"
    full=yes
fi
WINEPREFIX=$prefix taskset -c "${BENCH_CPU:-$allowed}" \
    wine "$WINDOWS_JAVA_HOME/bin/java.exe" "@Z:$(realpath "$build")/bench/benchmark.args" \
    com.qarvo.winutil.bench.Benchmark --keep --many "Z:$prefix/many" "$@"

if [ "${full:-}" = yes ]; then
    cp "$results/results.csv" docs/benchmark.csv
    cp "$results/benchmark.md" docs/benchmark.md
    # Debian's own Python: the plotting library is one of its packages.
    /usr/bin/python3 bench/plot.py docs/benchmark.csv docs/benchmark.svg
    scripts/readme_tables.py --write
    echo "bench: wrote docs/benchmark.* and README.md; every round is in $results/rounds.csv"
fi

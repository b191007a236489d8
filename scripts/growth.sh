#!/usr/bin/env bash
# Measures how the cost of a listing grows with what is listed, directories of up to a million files among it (some
# minutes), and writes docs/growth.csv, .md and .svg. Installs what is missing (Debian 12, as root).
#
#   scripts/growth.sh
#   GROWTH_DOCS=FOLDER    where the files go (default: docs)
#   BENCH_CPU=N           the one CPU that everything is bound to (default: the last one allowed)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh --all
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

build=${WINUTIL_BUILD:-build/mingw-release}
docs=${GROWTH_DOCS:-docs}
sizes=(1000 10000 100000 1000000)
cmake --preset mingw-release "${toolbox[@]}" -B "$build" >/dev/null
cmake --build "$build" --target WinUtil64 winutil_bench winutil_bench_jar winutil_idle
folder=$(mktemp -d "$PWD/$build/growth.XXXXXX")
trap 'WINEPREFIX=$folder/prefix wineserver -k 2>/dev/null || true; rm -rf "$folder"' EXIT
# A prefix of its own, so that the wineserver too starts on the chosen CPU.
cp -a "$WINEPREFIX" "$folder/prefix"
# Made from here: under Wine a new file costs in proportion to its directory.
for size in "${sizes[@]}"; do
    mkdir "$folder/$size"
    (cd "$folder/$size" && seq -f 'entry %07.0f' "$size" | xargs -d '\n' touch)
done
allowed=$(taskset -cp $$ | sed 's/.*[:,-] *//')
WINEPREFIX=$folder/prefix taskset -c "${BENCH_CPU:-$allowed}" \
    wine "$WINDOWS_JAVA_HOME/bin/java.exe" "@Z:$(realpath "$build")/bench/benchmark.args" \
    com.qarvo.winutil.bench.Growth --folders "Z:$folder" --sizes "$(IFS=,; echo "${sizes[*]}")" \
    --csv "Z:$(realpath "$docs")/growth.csv" --idle "Z:$(realpath "$build")/bench/winutil-idle.exe"
# Debian's own Python: the plotting library is one of its packages.
/usr/bin/python3 bench/growth_report.py "$docs/growth.csv" "$docs" "$(wine --version), all on one CPU"
echo "growth: wrote $docs/growth.csv, $docs/growth.md and $docs/growth.svg"

#!/usr/bin/env bash
# Breaks one operator, constant, condition, statement or release of the library at a time and runs the native tests
# against it (about 6 s a mutant); the tests in the Windows JVM are left out. What no test notices and
# tests/mutants/accepted.txt does not explain is named at the end, below the shares of each room, and fails the run.
# Results stay in build/mutants/mutants/mutants.csv: a second run goes on there. Installs what is missing (Debian 12, as
# root).
#
#   scripts/mutants.sh                                     520 mutants, spread over the rooms by their size
#   scripts/mutants.sh --count 100 --seed 2 registry host  other ones, of some rooms
#   scripts/mutants.sh --check                             only the tool itself, and tests/mutants/accepted.txt
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

scripts/wheels.sh parser
export PYTHONPATH=$WINUTIL_CACHE/parser PYTHONDONTWRITEBYTECODE=1
if [[ " $* " == *" --check "* ]]; then
    python3 -m unittest discover --quiet -s tests/mutants -p "*_test.py"
    exec python3 tests/mutants/mutants.py "$@"
fi

# A build folder of its own: the DLL and some test programs in it are linked again for each mutant.
build=build/mutants
cmake --preset mingw-release "${toolbox[@]}" -B "$build" >/dev/null
mapfile -t programs < <(ctest --test-dir "$build" -N | grep -o '[a-z_]*_tests$')
cmake --build "$build" --target "${programs[@]}"
python3 tests/mutants/mutants.py --build "$build" "$@"

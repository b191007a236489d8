#!/usr/bin/env bash
# Runs the native tests on a WinUtil64.dll other than the one that was built with them, whose size is not judged, nor
# whether the fault matrix comes to each of its calls: another compiler makes other copies of them. The results are
# left in test-results below the build folder of that DLL. Build the tests first: scripts/build.sh.
# Usage: scripts/test_library.sh BUILD-FOLDER
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

build=$(realpath "$1")
results=$build/test-results
rm -rf "$results"
mkdir -p "$results"
export WINUTIL_LIBRARY=$build/src/WinUtil64.dll
[ -e "$WINUTIL_LIBRARY" ] || { echo "test_library: no $WINUTIL_LIBRARY" >&2; exit 1; }

label=$(basename "$build") gates=()
while read -r program; do
    name=$(basename "$program" .exe)
    # The suite of a DLL is not the one of its test bed: the results are named after both.
    (cd "$results" && timeout 600 wine "$program" --gtest_brief=1 --gtest_output="xml:$label-$name.xml" \
        --gtest_filter=-Artifact.StaysSmall:Faults.comeToEveryCallSite) </dev/null
    gates+=(--gate "$name on $label=$?")
done < <(find "$PWD/build/mingw-release/tests" -name '*_tests.exe' | sort)
python3 scripts/tally.py "${gates[@]}" "$results"

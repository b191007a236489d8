#!/usr/bin/env bash
# Fails every call that every native method makes, as CI does, and with each of them failing every call of what then
# happens (some minutes). The account is left in build/mingw-release/test-results/faults.txt. Installs what is missing
# (Debian 12, as root).
#
#   scripts/faults.sh                                    everything
#   scripts/faults.sh --gtest_filter='Faults.openFile_*'   some recipes
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

build=${WINUTIL_BUILD:-build/mingw-release}
cmake --preset mingw-release "${toolbox[@]}" -B "$build" >/dev/null
cmake --build "$build" --target fault_tests
cd "$build/test-results"
WINUTIL_FAULTS=pairs wine ../tests/faults/fault_tests.exe --gtest_brief=1 "$@"

#!/usr/bin/env bash
# Sets up what is missing and builds the release preset: the DLL, the jar, the example and the tests.
# Usage: scripts/build.sh [--all] [TARGET...]   (--all: set up the checks' tools too; targets: build only these)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh
setup=() targets=()
for argument in "$@"; do
    case $argument in
        --*) setup+=("$argument") ;;
        *) targets+=("$argument") ;;
    esac
done
scripts/setup.sh "${setup[@]}"
cmake --preset mingw-release "${toolbox[@]}" >build-configure.log 2>&1 || { cat build-configure.log; exit 1; }
rm -f build-configure.log
cmake --build --preset mingw-release ${targets:+--target "${targets[@]}"}

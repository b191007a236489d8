#!/usr/bin/env bash
# Builds the DLL with a second compiler, clang with its own C++ library and the universal C run time, and runs the
# native tests on that DLL too. Installs what is missing (Debian 12, as root).
# Usage: scripts/second-compiler.sh [PRESET]   (default: zig-release)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh
preset=${1:-zig-release}

scripts/build.sh
scripts/wheels.sh zig
export WINUTIL_ZIG=$WINUTIL_CACHE/zig/ziglang/zig ZIG_GLOBAL_CACHE_DIR=$WINUTIL_CACHE/zig-cache
export ZIG_LOCAL_CACHE_DIR=$ZIG_GLOBAL_CACHE_DIR
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
scripts/test_library.sh "build/$preset"

#!/usr/bin/env bash
# Builds the DLL so that undefined behaviour ends the process, once with each compiler, which do not look for the same,
# and runs the native tests on both. Installs what is missing (Debian 12, as root).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/build.sh
# Guarded blocks that begin anywhere would be misaligned, which no allocator's are.
export WINUTIL_ALIGNED_BLOCKS=1
cmake --preset mingw-undefined >/dev/null
cmake --build --preset mingw-undefined
status=0
scripts/test_library.sh build/mingw-undefined || status=1
scripts/second-compiler.sh zig-undefined || status=1
exit $status

#!/usr/bin/env bash
# Reads the library's sources with clang-tidy, as the second compiler beside GCC, one process per core.
# Usage: scripts/tidy.sh [BUILD-FOLDER]   (configured and built: the generated headers must be there)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1:-build/mingw-release}

# clang does not find the cross compiler's own C++ headers by itself.
gcc_headers=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")/include
extra=(
    --extra-arg=--target=x86_64-w64-mingw32
    --extra-arg=-isystem"$gcc_headers/c++"
    --extra-arg=-isystem"$gcc_headers/c++/x86_64-w64-mingw32"
    # Options of GCC's that clang does not have, or takes for the linker's.
    --extra-arg=-Wno-unused-command-line-argument
    --extra-arg=-Wno-unknown-warning-option
)
find src -name '*.cpp' -print0 | sort -z |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy-19 --quiet -p "$build" "${extra[@]}" 2> >(grep -v 'warnings generated' >&2)

#!/usr/bin/env bash
# Checks that every C++ source is formatted as .clang-format says; with --fix, formats it.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run --Werror)
[ "${1:-}" = --fix ] && mode=(-i)
git ls-files -z --cached --others --exclude-standard '*.cpp' '*.h' | xargs -0 clang-format-19 "${mode[@]}"

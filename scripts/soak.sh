#!/usr/bin/env bash
# Has sixteen threads call all native methods for an hour, as CI does for a minute, and writes docs/soak.csv, .md and
# .svg: what the process holds must not grow. The exit code is 1 when it does. Installs what is missing (Debian 12, as
# root).
#
#   scripts/soak.sh [MINUTES]    how long (default: 60)
#   SOAK_DOCS=FOLDER             where the files go (default: docs)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh --all
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

build=${WINUTIL_BUILD:-build/mingw-release}
docs=${SOAK_DOCS:-docs}
cmake --preset mingw-release "${toolbox[@]}" -B "$build" >/dev/null
cmake --build "$build" --target WinUtil64 endtoend_tests_jar winutil_jar backup_jar
status=0
bash "$build/tests/java/soak.sh" $((${1:-60} * 60)) --results "$build/soak" --logs "$build/soak" || status=1
cp "$build/soak/soak.csv" "$docs/soak.csv"
# Debian's own Python: the plotting library is one of its packages.
/usr/bin/python3 tests/java/soak_report.py "$docs/soak.csv" "$docs" "$(wine --version), $(nproc) processors"
echo "soak: wrote $docs/soak.csv, $docs/soak.md and $docs/soak.svg"
exit $status

#!/usr/bin/env bash
# Unpacks the Python packages that scripts/downloads/NAME.txt lists into $WINUTIL_CACHE/NAME, where they are not there
# yet.
# Usage: scripts/wheels.sh NAME
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/setup.sh
# shellcheck source=scripts/environment.sh
. scripts/environment.sh
list=scripts/downloads/$1.txt folder=$WINUTIL_CACHE/$1
cmp -s "$list" "$folder/$1.txt" && exit

echo "wheels: fetching $1"
rm -rf "$folder"
python3 -m pip install -q --root-user-action=ignore --no-deps --only-binary=:all: --require-hashes -r "$list" \
    --target "$folder"
cp "$list" "$folder"

#!/usr/bin/env bash
# Fuzzes what the library reads of foreign data: each parser with inputs that a fuzzer makes up, on Linux itself, under
# the sanitizers for addresses and for undefined behaviour. Sets up and builds what is missing.
#
# Usage: scripts/fuzz.sh [--corpus] [--keep] [--executions NUMBER] [TARGET...]
#   --corpus      only the inputs that are kept in tests/fuzz/corpus
#   --executions  how many inputs each target gets (default: 1000000)
#   --keep        adds inputs that reach code that no kept one reaches to those in tests/fuzz/corpus
#
# A finding is left in build/fuzz/findings; the target in build/fuzz/targets, with that file as its argument, shows it
# again.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# shellcheck source=scripts/environment.sh
. scripts/environment.sh

executions=1000000 keep=no targets=()
while [ $# -gt 0 ]; do
    case $1 in
        --corpus) executions=0 ;;
        --keep) keep=yes ;;
        --executions) executions=$2; shift ;;
        --*) sed -n '2,/^set/{/^set/d;s/^# \{0,1\}//;p}' "$0"; exit 2 ;;
        *) targets+=("$1") ;;
    esac
    shift
done

scripts/setup.sh --all || exit 1
build=build/fuzz
mkdir -p $build
cmake -S tests/fuzz -B $build -G Ninja -DCMAKE_CXX_COMPILER=clang++-19 >$build/configure.log 2>&1 ||
    { cat $build/configure.log; exit 1; }
cmake --build $build || exit 1
[ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(cd $build/targets && ls)

export UBSAN_OPTIONS=print_stacktrace=1 ASAN_OPTIONS=quarantine_size_mb=16
export ASAN_SYMBOLIZER_PATH=/usr/lib/llvm-19/bin/llvm-symbolizer
limits=(-max_len=1024 -timeout=10 -rss_limit_mb=2048 -malloc_limit_mb=256)
findings=$PWD/$build/findings
mkdir -p "$findings"
failed=0
printf '%-20s | %10s | %7s | %6s | %s\n' target executions seconds corpus finding
for target in "${targets[@]}"; do
    corpus=tests/fuzz/corpus/$target inputs=$build/inputs/$target log=$build/$target.log start=$SECONDS finding=none
    mkdir -p "$inputs"
    kept=$(find "$corpus" -type f | wc -l)
    # What an earlier run found is where the next one goes on.
    played=("$inputs" "$corpus")
    [ "$executions" -gt 0 ] || played=("$corpus")
    # An empty corpus would be a gate that nothing can close.
    [ "$kept" -gt 0 ] && $build/targets/"$target" "${limits[@]}" -runs="$executions" \
        -artifact_prefix="$findings/$target-" "${played[@]}" >"$log" 2>&1 ||
        { finding=$log; failed=1; grep -E 'FINDING|ERROR|runtime error|^    #|Test unit' "$log" | head -20; }
    done_runs=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$log")
    printf '%-20s | %10s | %7s | %6s | %s\n' "$target" "${done_runs:--}" $((SECONDS - start)) "$kept" "$finding"
    [ $keep = no ] || $build/targets/"$target" -merge=1 -use_counters=0 "$corpus" "$inputs" >>"$log" 2>&1 || failed=1
done
exit $failed

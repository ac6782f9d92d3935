#!/usr/bin/env bash
# Builds the file-reader fuzz targets with clang under AddressSanitizer and
# UndefinedBehaviorSanitizer, replays the regression files of tests/io/regressions, then
# fuzzes each target for a fixed time from its seed corpus (our own small files, the
# shared sample files and the regression files).
#   scripts/fuzz.sh [seconds per target (default 10)] [target ...]
# Environment: BUILD (default build-fuzz), JOBS, ZOL_TEST_DATA (the shared data folder).
# A crash leaves its input in $BUILD/fuzz/artifacts; the script goes on with the other
# targets and fails at the end.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-10}
[ $# -gt 0 ] && shift
BUILD=${BUILD:-build-fuzz}
JOBS=${JOBS:-$(nproc)}
DATA=${ZOL_TEST_DATA:-$(pwd)/../shared/data}
REGRESSIONS=tests/io/regressions

cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
    "-DCMAKE_CXX_FLAGS_RELWITHDEBINFO=-O1 -g1 -DNDEBUG" \
    -DZOL_SANITIZE=address,undefined -DZOL_BUILD_FUZZ=ON \
    -DZOL_BUILD_TESTS=OFF -DZOL_BUILD_BENCH=OFF -DZOL_BUILD_TOOLS=OFF >/dev/null
cmake --build "$BUILD" -j "$JOBS" --target zol_fuzz

out=$BUILD/fuzz
rm -rf "$out/seeds"
mapfile -t targets < <("$out/zol_fuzz_seeds" "$out/seeds" "$DATA/formats" "$REGRESSIONS")
[ $# -gt 0 ] && targets=("$@")
mkdir -p "$out/artifacts" "$out/logs"

failed=()
for t in "${targets[@]}"; do
    program=$out/fuzz_$t
    # Regression files first: each must run through without a finding.
    shopt -s nullglob
    regressions=("$REGRESSIONS/$t"-*)
    shopt -u nullglob
    if [ ${#regressions[@]} -gt 0 ] && ! "$program" "${regressions[@]}" >"$out/logs/$t.replay" 2>&1; then
        echo "$t: regression replay FAILED (see $out/logs/$t.replay)"
        failed+=("$t")
        continue
    fi
    mkdir -p "$out/corpus/$t"
    # Inputs are cut to 16 KiB; no single allocation may exceed 64 MB for such an input,
    # and no input may take more than 10 s.
    if "$program" "$out/corpus/$t" "$out/seeds/$t" -max_total_time="$seconds" \
        -max_len=16384 -timeout=10 -malloc_limit_mb=64 -rss_limit_mb=2048 \
        -print_final_stats=1 -artifact_prefix="$out/artifacts/$t-" >"$out/logs/$t.log" 2>&1; then
        status=ok
    else
        status=FAILED
        failed+=("$t")
    fi
    done_line=$(grep -E '^#[0-9]+[[:space:]]+DONE' "$out/logs/$t.log" | tail -n 1 || true)
    runs=$(grep -oE 'stat::number_of_executed_units: [0-9]+' "$out/logs/$t.log" | grep -oE '[0-9]+' || true)
    echo "$t: $status, ${#regressions[@]} regression files, ${runs:-?} runs; ${done_line:-see $out/logs/$t.log}"
done

if [ ${#failed[@]} -gt 0 ]; then
    echo "fuzzing found problems in: ${failed[*]} (inputs in $out/artifacts)"
    exit 1
fi

#!/usr/bin/env bash
# fuzz/run.sh [SECONDS] [TARGET...]: runs every fuzz target (or those named) for that long, 60 seconds by default.
# Needs clang with its fuzzer (Debian: clang, libclang-rt-14-dev). What breaks a target is kept in
# build/fuzz/findings; make it small with `build/fuzz/bin/fuzz_TARGET -minimize_crash=1 FILE` and keep it in
# fuzz/corpus/TARGET once it is mended.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

seconds=${1:-60}
[ $# -eq 0 ] || shift
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(frames conversions firmware gcode machines models onboard_map onboard_values profile profile_code scanner shape_files slicer_output strandel toolpaths)
build=build/fuzz
mkdir -p "$build/findings"

cmake --preset dev -B "$build" -DCMAKE_CXX_COMPILER=clang++ -DTROVEK_FUZZ=ON -DTROVEK_WERROR=OFF \
    -DTROVEK_BENCH=OFF >"$build/build.log" 2>&1 &&
    cmake --build "$build" --target "${targets[@]/#/fuzz_}" >>"$build/build.log" 2>&1 ||
    { tail -n 30 "$build/build.log" >&2; echo "fuzz: the build failed; see $build/build.log" >&2; exit 1; }

failed=0
for target in "${targets[@]}"; do
    found=$build/found/$target log=$build/$target.log
    mkdir -p "$found"
    # The kept inputs are read only; what is found on the way lies beside the build and is started from next time.
    if "$build/bin/fuzz_$target" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=1024 -max_len=4096 \
        -artifact_prefix="$build/findings/$target-" -print_final_stats=1 "$found" "fuzz/corpus/$target" \
        >"$log" 2>&1; then
        runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
        echo "$target: $runs runs in $seconds s, nothing found"
    else
        failed=1
        echo "$target: $(grep -m1 -E 'ERROR|SUMMARY|Does not hold|runtime error' "$log" || tail -n 1 "$log"); see $log"
    fi
done
exit $failed

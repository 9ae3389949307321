#!/usr/bin/env bash
# Builds the coverage-guided fuzzers with clang and runs one of them, or all in turn, from what is
# checked in below tests/fuzz/corpus. Stops at the first failure.
#
#     scripts/fuzz.sh [target|all] [runs] [libFuzzer option...]
#     scripts/fuzz.sh keep <target>       keep in the corpus what has a name and the fewest others
#
# What a run finds stays in build/fuzz/new/<target>, an input that fails in build/fuzz/failures.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

build=build/fuzz
seeds=tests/fuzz/corpus

# An input's memory is given back long before these 16 MB are full.
export ASAN_OPTIONS=quarantine_size_mb=16 UBSAN_OPTIONS=print_stacktrace=1

usage() {
    sed -n 's/^#     //p' "$0" >&2
    echo "targets: $(ls "$seeds" | tr '\n' ' ')" >&2
    exit 2
}

# build_fuzzers TARGET... : address and undefined behaviour sanitizers, and Qt's assertions.
build_fuzzers() {
    install_packages $build_packages $test_packages $fuzz_packages
    export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
    cmake -S . -B "$build" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_CXX_FLAGS=-O1 -DSCN_BUILD_FUZZERS=ON
    cmake --build "$build" --target "${@/#/fuzz_}"
}

# run_fuzzer TARGET RUNS OPTION...
run_fuzzer() {
    target=$1 runs=$2
    shift 2
    dictionary=()
    if [ -e "tests/fuzz/$target.dict" ]; then
        dictionary=("-dict=tests/fuzz/$target.dict")
    fi
    mkdir -p "$build/new/$target" "$build/failures"
    printf '\n== %s, %s runs (%s)\n' "$target" "$runs" "$(date +%T)"
    nice -n 19 "$build/bin/fuzz_$target" -runs="$runs" -max_len=512 -print_final_stats=1 \
        -artifact_prefix="$build/failures/$target-" "${dictionary[@]}" "$@" \
        "$build/new/$target" "$seeds/$target"
}

# keep_fewest TARGET : inputs with a name that somebody gave them stay, the others are named by their hash.
keep_fewest() {
    fewest="$build/fewest/$1"
    rm -rf "$fewest"
    mkdir -p "$fewest" "$build/new/$1"
    find "$seeds/$1" -type f -regextype egrep ! -regex '.*/[0-9a-f]{40}' -exec cp -t "$fewest" {} +
    nice -n 19 "$build/bin/fuzz_$1" -merge=1 -use_counters=0 -max_len=512 \
        "$fewest" "$seeds/$1" "$build/new/$1"
    rm -rf "${seeds:?}/$1"
    cp -r "$fewest" "$seeds/$1"
}

if [ "${1:-}" = keep ]; then
    [ $# -eq 2 ] && [ -d "$seeds/$2" ] || usage
    build_fuzzers "$2"
    keep_fewest "$2"
    exit
fi

target=${1:-all} runs=${2:-10000000}
if [ $# -gt 2 ]; then shift 2; else shift $#; fi
case "$runs" in
"" | *[!0-9]*) usage ;;
esac
if [ "$target" = all ]; then
    targets=($(ls "$seeds"))
else
    [ -d "$seeds/$target" ] || usage
    targets=("$target")
fi
build_fuzzers "${targets[@]}"
for target in "${targets[@]}"; do
    run_fuzzer "$target" "$runs" "$@"
done

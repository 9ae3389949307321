#!/usr/bin/env bash
# Builds the release preset and runs the benchmarks one after the other. Each prints a line for each
# of its ratios, with the limit. Fails if any is above its limit; the others are run all the same.
#
#     scripts/bench.sh          a few minutes
#     scripts/bench.sh long     and the run of ten million points, half an hour or so
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

programs="decode appendpoint readcurvedata pastview export exportload forward fleet liveload replot tracker"
case "${1:-}" in
"") ;;
long) programs="$programs longrun" ;;
*)
    sed -n 's/^#     //p' "$0" >&2
    exit 2
    ;;
esac

install_packages $build_packages $bench_packages
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset release
cmake --build --preset release

failed=""
for program in $programs; do
    printf '\n== bench_%s (%s)\n' "$program" "$(date +%T)"
    "build/release/bin/bench_$program" || failed="$failed bench_$program"
done
if [ -n "$failed" ]; then
    printf '\nfailed:%s\n' "$failed" >&2
    exit 1
fi

#!/usr/bin/env bash
# Builds the program and compares what a reading costs it with what it costs a short script that polls,
# stores and draws the same. Prints the ratios of processor time, with their limit. Fails if one is above.
#
#     scripts/besidebench.sh     half an hour
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

install_packages $build_packages $display_packages $bench_packages
export CCACHE_BASEDIR="$PWD" CCACHE_NOHASHDIR=1
cmake --preset release -DSCN_BUILD_BENCHMARKS=OFF
cmake --build --preset release --target scn4070a --target scn4070a-sim

export PYTHONDONTWRITEBYTECODE=1
xvfb-run -a -s "-screen 0 1600x1000x24 -nolisten tcp -noreset" \
    bench/beside.py build/release/bin/scn4070a-sim build/release/bin/scn4070a

#!/usr/bin/env bash
# Builds the program and, under build/startbench, an older state of it, and compares their starts: processor
# time and memory to the usable window. Prints a line for each ratio, with the limit. Fails if any is above.
#
#     scripts/startbench.sh     ten minutes
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh

# The last state that created every widget of the channel table at the start.
baseline_commit=d17f1ad
baseline=build/startbench

install_packages $build_packages python3-minimal
export CCACHE_NOHASHDIR=1

# build TREE: the program and the simulator of that tree.
build() (
    cd "$1"
    export CCACHE_BASEDIR="$PWD"
    cmake --preset release -DSCN_BUILD_BENCHMARKS=OFF
    cmake --build --preset release --target scn4070a --target scn4070a-sim
)

build .
rm -rf "$baseline"
git worktree prune
git worktree add --force --detach "$baseline" "$baseline_commit"
trap 'git worktree remove --force "$baseline"' EXIT
# Spares a download.
mkdir -p "$baseline/build"
cp -r build/qdarkstyle "$baseline/build"
build "$baseline"

bench/startup.py build/release/bin/scn4070a-sim "$baseline/build/release/bin/scn4070a" build/release/bin/scn4070a

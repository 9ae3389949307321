# The function that runs the tests of a build. Sourced by test and .ci/run.

# run_tests PRESET SKIPPED-LABELS [ctest option...]
# What draws its cases at random must hold at the first try: a second one would draw others. The
# others meet real windows and processes on a busy machine: one that fails is given one more try,
# which the output tells.
run_tests() {
    preset=$1 skipped=$2
    shift 2
    ctest --preset "$preset" -j "$(nproc)" -L random -LE "$skipped" "$@"
    ctest --preset "$preset" -j "$(nproc)" -LE "random|$skipped" --repeat until-pass:2 "$@"
}

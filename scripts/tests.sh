# The function that runs the tests of a build. Sourced by test and .ci/run.

# The system tests wait for processes and windows most of the time, so many of them share a core.
jobs=$((4 * $(nproc)))

# show_run PRESET [ctest option...]
# Runs ctest, and puts the lines of skipped tests, which tell what was not tested and why, ahead of its
# summary.
show_run() (
    set -o pipefail
    ctest --preset "$@" | awk -v log_file="build/$1/Testing/Temporary/LastTest.log" '
        / tests passed, / { in_summary = 1 }
        in_summary { summary = summary $0 "\n"; next }
        { print; fflush() }
        END {
            while ((getline line < log_file) > 0)
                if (line ~ /^SKIPPED: /)
                    print line
            printf "%s", summary
        }'
)

# run_tests PRESET SKIPPED-LABELS [ctest option...]
# System tests meet real windows and processes on a busy machine: those that fail are named and get a
# second try. All others must pass at the first one, and so must those that draw their cases at
# random: a second try would draw others.
run_tests() {
    preset=$1 skipped=$2
    shift 2
    results="build/$preset/Testing/Temporary/LastTestsFailed.log"
    rm -f "$results"
    if show_run "$preset" -j "$jobs" -LE "$skipped" "$@"; then
        return
    fi
    failed=$(sed 's/^[0-9]*://' "$results")
    if [ -z "$failed" ]; then
        return 1
    fi
    # No second try unless all that failed may have one.
    retried=$(ctest --preset "$preset" -N -L system -LE "random|$skipped" "$@" |
        sed -n 's/^ *Test *#[0-9]*: //p' | grep -Fx "$failed") || retried=
    if [ "$(sort <<<"$failed")" != "$(sort <<<"$retried")" ]; then
        return 1
    fi
    printf 'Second try for:\n%s\n' "$retried"
    show_run "$preset" --rerun-failed
}

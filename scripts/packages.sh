# Debian packages, by what needs them, and the function that installs those that are missing.
# Sourced by run, test, .ci/run and the scripts beside it.

build_packages="g++ cmake ninja-build ccache qtbase5-dev libqwt-qt5-dev libqt5sql5-sqlite libsqlite3-dev libcli11-dev dpkg-dev fonts-wqy-microhei qttranslations5-l10n"
package_packages="file"
display_packages="xvfb xauth xdotool x11-utils imagemagick"
test_packages="$display_packages sqlite3 libxcb1-dev faketime procps python3-pyvisa-py python3-serial"
bench_packages="libbenchmark-dev sqlite3 python3-pyqtgraph"
check_packages="clang-format-16 clang-tidy $bench_packages"
fuzz_packages="clang libclang-rt-14-dev"

# install_packages PACKAGE... : installs what is not there yet, as root or through sudo.
install_packages() {
    missing=""
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
    done
    # The style sheet's package is fetched at configure time, so the lists must be there too.
    if [ -z "$missing" ] && { [ -e build/qdarkstyle/complete ] || apt-cache show python3-qdarkstyle >/dev/null 2>&1; }; then
        return 0
    fi
    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        as_root="sudo"
    fi
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
    if [ -n "$missing" ]; then
        echo "installing:$missing"
        $as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -q -y --no-install-recommends $missing
    fi
}

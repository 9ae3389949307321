# Debian packages, by what needs them, the function that installs those that are missing, and the one
# that builds the programs.
# Sourced by run, test, .ci/run and the scripts beside it.

build_packages="g++ cmake ninja-build ccache qtbase5-dev libqt5svg5-dev libqwt-qt5-dev libqt5sql5-sqlite libsqlite3-dev libpq-dev libxcb1-dev libcli11-dev dpkg-dev fonts-wqy-microhei qttranslations5-l10n"
package_packages="file"
display_packages="xvfb xauth xdotool x11-utils imagemagick"
test_packages="$display_packages openbox sqlite3 faketime locales postgresql procps python3-pyvisa-py python3-serial"
long_packages="mmdebstrap time weston xwayland $package_packages"
bench_packages="libbenchmark-dev postgresql sqlite3 python3-pyqtgraph"
check_packages="clang-format-16 clang-tidy $bench_packages"
fuzz_packages="clang libclang-rt-14-dev"

# install_packages PACKAGE... : installs what is not there yet, as root or through sudo.
install_packages() {
    installed=$(dpkg-query -W -f='${Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/.* ok installed //p')
    missing=""
    for package in "$@"; do
        grep -qFx "$package" <<<"$installed" || missing="$missing $package"
    done
    # The style sheet's package is fetched at configure time, so the lists must be there too.
    if [ -z "$missing" ] && { [ -e build/qdarkstyle/complete ] || apt-cache show python3-qdarkstyle >/dev/null 2>&1; }; then
        return 0
    fi
    as_root=""
    if [ "$(id -u)" -ne 0 ]; then
        as_root="sudo"
        if ! command -v sudo >/dev/null; then
            echo "You are not root, and sudo is not installed. As root, run this, then try again:" >&2
            echo "    apt-get update${missing:+ && apt-get install --no-install-recommends$missing}" >&2
            exit 1
        fi
    fi
    [ -z "$missing" ] || echo "installing Debian packages:$missing"
    $as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
    if [ -n "$missing" ]; then
        keep_from_clusters
        $as_root env DEBIAN_FRONTEND=noninteractive \
            apt-get install -q -y --no-install-recommends \
            -o Dpkg::Options::=--force-confold $missing
    fi
}

# The tests start database servers of their own: installing the package is not to start another one.
keep_from_clusters() {
    settings="/etc/postgresql-common/createcluster.conf"
    case "$missing " in
    *" postgresql "*)
        [ -e "$settings" ] || {
            $as_root mkdir -p "${settings%/*}"
            echo "create_main_cluster = false" | $as_root tee "$settings" >/dev/null
        }
        ;;
    esac
}

# build_programs PRESET: builds the programs, and nothing else. CMake is asked to configure only
# where it has not, or its presets are newer; the build itself sees to all other changes.
build_programs() {
    folder="build/$1"
    if [ ! -e "$folder/build.ninja" ] || [ CMakePresets.json -nt "$folder/build.ninja" ]; then
        echo "configuring $folder"
        cmake --preset "$1" -DSCN_BUILD_BENCHMARKS=OFF
    fi
    echo "building the launcher and the other programs into $folder/bin"
    cmake --build "$folder" --target scn4070a_launcher scn4070a scn_sim scn_store
}

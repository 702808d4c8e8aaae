# Sourced by run, test and .ci/run: finds or installs what the build needs, and builds a preset.

debian_packages="clang-19 clang-tidy-19 clang-format-19 lld-19 llvm-19 libclang-rt-19-dev cmake ninja-build ccache pkg-config
    qt6-base-dev qt6-qpa-plugins qt6-svg-dev libgl-dev qcoro-qt6-dev libsimdjson-dev libplist-dev libpam0g-dev libxxhash-dev libbenchmark-dev
    fonts-dejavu-core git"
homebrew_packages="cmake ninja ccache pkg-config qt qcoro simdjson libplist xxhash google-benchmark"

install_on_debian() {
    missing=""
    for package in $debian_packages; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing="$missing $package"
    done
    [ -n "$missing" ] || return 0
    echo "Installing:$missing" >&2
    as_root=""
    [ "$(id -u)" -eq 0 ] || as_root="sudo"
    $as_root apt-get update -qq >&2
    DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing >&2
}

install_on_macos() {
    command -v brew >/dev/null || { echo "Homebrew is needed to install the build's tools: https://brew.sh" >&2; exit 1; }
    for package in $homebrew_packages; do
        brew list --formula "$package" >/dev/null 2>&1 || brew install "$package" >&2
    done
}

case "$(uname -s)" in
Darwin)
    install_on_macos
    CXX="${CXX:-clang++}"
    ;;
Linux)
    command -v apt-get >/dev/null && install_on_debian
    CXX="${CXX:-clang++-19}"
    ;;
esac
export CXX

# build PRESET: configures when needed, then builds. Quiet unless something fails.
build() {
    log="build/$1.log"
    mkdir -p build
    { [ -f "build/$1/build.ninja" ] || cmake --preset "$1"; } >"$log" 2>&1 &&
        cmake --build --preset "$1" >>"$log" 2>&1 || { tail -n 60 "$log" >&2; return 1; }
}

# run_tests PRESET [CTEST WORDS]: without a display, on a home and a sample of their own.
run_tests() {
    preset="$1"
    shift
    QT_QPA_PLATFORM=offscreen ctest --preset "$preset" --parallel "$(nproc 2>/dev/null || sysctl -n hw.ncpu)" "$@"
}

# What the scripts share: where the project is, installing what is missing, telling of progress.
# To be sourced by a bash script of script/.

set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

# The last two are cpack's.
BUILD_PACKAGES=(g++ cmake ninja-build pkg-config
    libcli11-dev libisal-dev libsqlite3-dev nlohmann-json3-dev libzstd-dev robin-map-dev zlib1g-dev
    esbuild dpkg-dev file)
TEST_PACKAGES=(libgtest-dev libgmock-dev python3 python3-pytest util-linux
    mandoc bash-completion fish zsh less python3-jsonschema zstd pkgconf)
PAGE_PACKAGES=(chromium fonts-dejavu-core)
command -v npm >/dev/null || PAGE_PACKAGES+=(nodejs npm) # other Node.js packages bring their own npm
COVERAGE_PACKAGES=(gcovr)
# Programs that read our exports; npm installs some more into tests/neighbours.
NEIGHBOUR_PACKAGES=(chromium clickhouse-client clickhouse-server jq libdevel-nytprof-perl lnav miller
    sqlite3 valgrind)
CHECK_PACKAGES=(git clang-14 clang-tidy-14 clang-format-14 libclang-rt-14-dev lintian
    g++-multilib googletest)

# Programs that the plugins are for, and what shows the graphical one.
PLUGIN_PACKAGES=(babeltrace2 libbabeltrace2-dev python3-bt2 kernelshark libkshark-dev libjson-c-dev
    xvfb xauth xdotool imagemagick)

# fail TEXT...: says why a script ends, and ends it.
fail() {
    echo "$(basename "$0"): $*" >&2
    exit 1
}

# Runs a command as root: as it is, or through sudo.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "there is no sudo here; run this as root"
    fi
}

# install_missing PACKAGE...: installs those Debian packages that are not there.
install_missing() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "installing: ${missing[*]}"
    command -v apt-get >/dev/null ||
        fail "this is no Debian system: install these by hand: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { as_root apt-get update -q && as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 20 "$log" >&2
        fail "the packages could not be installed; apt-get's whole output: $log"
    fi
    rm -f "$log"
}

# build PRESET [TARGET...]: configures with warnings as errors and builds; what it prints goes to
# build/PRESET.log and is shown only if it fails.
build() {
    local preset=$1
    shift
    local log=build/$preset.log
    mkdir -p build
    if ! { cmake --preset "$preset" -DSONAPROBE_WERROR=ON -DSONAPROBE_TESTS=ON &&
        cmake --build --preset "$preset" \
        ${1:+--target "$@"}; } >"$log" 2>&1; then
        grep -E 'error|warning|FAILED|CMake Error' -A 5 "$log" | head -n 60 || tail -n 30 "$log"
        echo "the whole output: $log"
        return 1
    fi
}

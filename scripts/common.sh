# Shared by the scripts beside it; to be sourced. Sets $top, the project's folder, and goes there.
set -euo pipefail
top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$top"
export DEBIAN_FRONTEND=noninteractive

# Many tests wait more than they work.
test_jobs=$(($(nproc) + 1))

say() { printf '== %s\n' "$*"; }
fail() { printf '== %s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"
    elif command -v sudo >/dev/null; then sudo --preserve-env=DEBIAN_FRONTEND "$@"
    else fail "Packages have to be installed: run this as root, or install sudo."
    fi
}

# need PACKAGE...: installs what is missing of them.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    say "Installing ${missing[*]}"
    as_root apt-get -qq update
    as_root apt-get -qq install -y --no-install-recommends "${missing[@]}" >/dev/null
}

build_packages=(g++ cmake ninja-build ccache libqpdf-dev libarchive-dev libdeflate-dev libexpat1-dev zlib1g-dev
    libfmt-dev libcli11-dev nlohmann-json3-dev libcups2-dev libcurl4-openssl-dev ca-certificates pkgconf libglib2.0-dev libx11-dev)
# The tests start servers of their own; one that the packages would start is not needed.
test_packages=(libgtest-dev libgmock-dev git cups cups-client cups-ipp-utils cups-filters ghostscript
    python3 python3-aiosmtpd python3-pyftpdlib openssl xvfb dbus at-spi2-core qt6-base-dev libgtk-3-dev)

# configure PRESET [-DNAME=VALUE...]: only what has not been done.
configure() {
    local preset=$1 setting stale=0 log
    shift
    [ -f "build/$preset/build.ninja" ] || stale=1
    for setting in "$@"; do
        [ $stale = 1 ] || grep -q "^$(sed -E 's/^-D([^=]*)=(.*)/\1:[A-Z]*=\2/' <<<"$setting")\$" \
            "build/$preset/CMakeCache.txt" || stale=1
    done
    [ $stale = 1 ] || return 0
    log=$(mktemp)
    cmake --preset "$preset" "$@" >"$log" 2>&1 || {
        cat "$log" >&2
        rm -f "$log"
        fail "Configuring $preset failed."
    }
    rm -f "$log"
}

# What the scripts share. Sourced, with the caller's `set -euo pipefail`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Packages of Debian 12 by what they are needed for.
build_packages="cmake g++ git ninja-build ccache pkg-config
    qtbase5-dev libopenscenegraph-dev libassimp-dev libboost-dev libeigen3-dev libgl-dev libegl-dev"
display_packages="xvfb xauth libgl1-mesa-dri fonts-dejavu-core"
test_packages="libgtest-dev libgmock-dev assimp-testmodels assimp-utils x11-utils xdotool"
lint_packages="clang-format clang-tidy codespell"
bench_packages="libbenchmark-dev f3d openscenegraph python3"

# install <packages...>: with apt, only what is missing; nothing to do costs no network.
install() {
    local missing=() package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local sudo=()
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    {
        echo "installing: ${missing[*]}"
        "${sudo[@]}" apt-get update -q
        "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -qy --no-install-recommends "${missing[@]}"
    } >&2
}

# configure <preset> [cmake options]
configure() {
    local preset=$1
    shift
    (cd "$root" && cmake --preset "$preset" "$@") >&2
}

# build <preset> [targets...]
build() {
    local preset=$1
    shift
    cmake --build "$root/build/$preset" ${1:+--target "$@"} >&2
}

# with_display <screen> <command...>: as it is where there is a display, else under a display of its own.
with_display() {
    local screen=$1
    shift
    if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
        "$@"
    else
        under_xvfb "$screen" "$@"
    fi
}

# under_xvfb <screen> <command...>
under_xvfb() {
    local screen=$1
    shift
    xvfb-run -a -s "-screen 0 $screen +extension GLX" "$@"
}

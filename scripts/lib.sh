# What the scripts share. Sourced, with the caller's `set -euo pipefail`.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Packages of Debian 12, by what they are needed for. (zlib1g-dev is missing among what libassimp-dev needs.)
build_packages="cmake g++ ninja-build ccache qtbase5-dev qttools5-dev libopenscenegraph-dev libassimp-dev zlib1g-dev
    libboost-dev libeigen3-dev libgl-dev libegl-dev libopengl-dev"
display_packages="xvfb xauth libgl1-mesa-dri fonts-dejavu-core"
test_packages="libgtest-dev libgmock-dev assimp-testmodels pkgconf xdotool"
lint_packages="git clang-format clang-tidy codespell"
docs_packages="doxygen"
bench_packages="python3 f3d openscenegraph"
package_packages="dpkg-dev file gzip lintian appstream desktop-file-utils"

# install_missing <packages...>: with apt; when nothing is missing it needs neither network nor rights.
install_missing() {
    local missing sudo=()
    missing=$(comm -23 <(printf '%s\n' "$@" | sort) <(
        dpkg-query -W -f='${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p' | sort))
    [ -n "$missing" ] || return 0
    [ "$(id -u)" -eq 0 ] || sudo=(sudo)
    echo "installing:" $missing >&2
    "${sudo[@]}" apt-get update -q >&2
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -qy --no-install-recommends $missing </dev/null >&2
}

# configure <preset> [cmake options]: prints nothing but warnings and errors.
configure() {
    (cd "$root" && cmake --preset "$@" -Wno-dev --log-level=NOTICE >/dev/null)
}

# build <preset> [targets...]: progress and errors go to stderr; in a log only the errors.
build() {
    local quiet=()
    [ -t 2 ] || quiet=(--quiet)
    echo "building in build/$1" >&2
    ninja -C "$root/build/$1" "${quiet[@]}" "${@:2}" >&2
}

# under_xvfb <screen> <command...>: with a display of its own.
under_xvfb() {
    xvfb-run -a -s "-screen 0 $1 +extension GLX" "${@:2}"
}

# with_display <screen> <command...>: with the display that there is, else one of its own.
with_display() {
    if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
        "${@:2}"
    else
        under_xvfb "$@"
    fi
}

#!/usr/bin/env bash
# pkgConfig.sh <libraries' folder> <compiler>: builds and runs a program with what pkg-config says.
set -euo pipefail

export PKG_CONFIG_PATH=$1/pkgconfig
program=$(mktemp)
trap 'rm -f "$program"' EXIT
"$2" "$(dirname "$0")/pkgConfig.cpp" -o "$program" $(pkg-config --cflags --libs halvern_qt)
LD_LIBRARY_PATH=$1 "$program"

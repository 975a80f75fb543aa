#!/usr/bin/env bash
# symbols.sh <library...>: fails when a library gives or takes a name of OpenSceneGraph or Assimp.
set -euo pipefail

for library in "$@"; do
    names=$(nm -DC "$library")
    grep -q ' T halvern::' <<<"$names" || { echo "$library: no names at all" >&2; exit 1; }
    if grep -E '\b(osg[A-Za-z]*|Assimp)::|\bai[A-Z]' <<<"$names"; then
        echo "$library: the names above are none of ours" >&2
        exit 1
    fi
done

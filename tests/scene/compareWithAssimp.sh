#!/bin/sh
# compareWithAssimp.sh IMPORT_COUNTS FILES...
# Compares what the importer counts with what the program `assimp` reports: nodes, cameras, lights and
# animations of the file as it is, materials after Assimp's own post-processing. Prints each difference,
# and each crash or time-out of either program.
program=$1
shift
same=0
differ=0

# field TEXT NAME: the number behind "NAME:" in the output of `assimp info`
field() { printf '%s\n' "$1" | sed -n "s/^$2: *\([0-9]*\)\$/\1/p" | head -n 1; }

for file; do
    ours=$(timeout 60 "$program" "$file" 2>&1)
    status=$?
    raw=$(timeout 60 assimp info "$file" -r 2>&1)
    rawStatus=$?
    if [ $status -ne 0 ] && [ $status -ne 2 ]; then
        echo "CRASH $status (assimp: $rawStatus) $file"
        differ=$((differ + 1))
        continue
    fi
    if [ $status -eq 2 ]; then
        [ $rawStatus -ne 0 ] && same=$((same + 1)) && continue
        echo "REFUSED $(printf '%s\n' "$ours" | head -n 1)"
        differ=$((differ + 1))
        continue
    fi
    cooked=$(timeout 60 assimp info "$file" 2>&1)
    cookedStatus=$?
    want="nodes $(field "$raw" Nodes) cameras $(field "$raw" Cameras) lights $(field "$raw" Lights)"
    want="$want animations $(field "$raw" Animations) materials $(field "$cooked" Materials)"
    got=$(printf '%s\n' "$ours" | sed -n 's/^\(nodes [0-9]*\) meshes [0-9]* \(materials [0-9]*\) \(cameras .*\) triangles .*/\1 \3 \2/p')
    if [ "$want" = "$got" ]; then
        same=$((same + 1))
    else
        echo "DIFFERS $file"
        echo "    assimp ($rawStatus, $cookedStatus): $want"
        echo "    here:   $got"
        differ=$((differ + 1))
    fi
done
echo "$same the same, $differ different"

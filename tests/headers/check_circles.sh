#!/usr/bin/env bash
# Prints the headers that include themselves over others, if there are any.
#   check_circles.sh DIRECTORY...
set -euo pipefail
pairs=$(find "$@" -name '*.h' -print0 | xargs -0 awk '
    FNR == 1 { name = FILENAME; sub(/.*\//, "", name); print name, name }
    /^[ \t]*#[ \t]*include[ \t]*["<]/ {
        split($0, parts, /[<>"]/)
        sub(/.*\//, "", parts[2])
        print name, parts[2]
    }')
# tsort names the members of every circle.
if ! report=$(tsort <<<"$pairs" 2>&1 >/dev/null); then
    echo "These headers include each other in a circle:"
    sed -n 's/^tsort: \(.*\.h\)$/  \1/p' <<<"$report"
    exit 1
fi

#!/usr/bin/env bash
# Compares the names that a library exports with the list kept for it.
#   check_exports.sh LIBRARY LIST
set -euo pipefail
export LC_ALL=C
library=$1 list=$2
tools=$(cd "$(dirname "$0")/../../tools" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

"$tools/exported_names.sh" "$library" >"$work/now"
cut -f 1 "$work/now" | sort -u >"$work/now.symbols"
cut -f 1 "$list" | sort -u >"$work/kept.symbols"

# The symbol decides; how it reads in C++ depends on the tools that print it.
report() {
    local title=$1 symbols=$2 source=$3
    [ -s "$symbols" ] || return 0
    status=1
    echo "$title"
    awk -F '\t' 'NR == FNR { wanted[$1]; next } $1 in wanted { print "  " $2 "    [" $1 "]" }' "$symbols" "$source"
}
comm -23 "$work/kept.symbols" "$work/now.symbols" >"$work/missing"
comm -13 "$work/kept.symbols" "$work/now.symbols" >"$work/new"
report "Missing from $library:" "$work/missing" "$list"
report "New in $library:" "$work/new" "$work/now"
if [ $status -ne 0 ]; then
    echo "If that is meant, renew the list with tools/update_exports.sh and commit it with the change."
fi

if grep -E '^_Z(T[ISVT]|GV|Z|Tv?h?n?[0-9_]*)*N?[KV]*(St|Sa|Ss|9__gnu_cxx)' "$work/now"; then
    echo "These belong to the C++ library and are not ours to export; cmake/exports.map keeps them inside."
    status=1
fi
exit $status

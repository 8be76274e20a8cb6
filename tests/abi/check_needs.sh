#!/usr/bin/env bash
# Checks the soname of a library, and that it needs no library at run time beyond those allowed.
#   check_needs.sh LIBRARY SONAME ALLOWED...
set -euo pipefail
export LC_ALL=C
library=$1 soname=$2
shift 2
status=0
dynamic=$(readelf -d "$library")

found=$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")
if [ "$found" != "$soname" ]; then
    echo "$library: the soname is '$found' and should be '$soname'"
    status=1
fi
while read -r needed; do
    for allowed; do
        [ "$needed" != "$allowed" ] || continue 2
    done
    echo "$library: needs $needed, which is not among: $*"
    status=1
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
if grep -q '(TEXTREL)' <<<"$dynamic"; then
    echo "$library: has relocations in its code"
    status=1
fi
exit $status

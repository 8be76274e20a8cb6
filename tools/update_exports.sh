#!/usr/bin/env bash
# Renews the lists of exported names in tests/abi/ after a change of the binary interface that is meant.
# Look at the difference before you commit it: a line that goes is a client that no longer loads.
#   tools/update_exports.sh [BUILD-DIRECTORY]     default: build-test
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build-test}
for name in libQORSysTS libQORSysMultiThreading; do
    library=$build/lib/$name.so
    if [ ! -e "$library" ]; then
        echo "update_exports.sh: no $library; build it first, with ./test.sh or cmake --build" >&2
        exit 1
    fi
    if nm -D "$library" | grep -qE '__(asan|tsan|ubsan|gcov)_'; then
        echo "update_exports.sh: $library is instrumented; take a plain build" >&2
        exit 1
    fi
    list=$root/tests/abi/$name.exports
    "$root/tools/exported_names.sh" "$library" >"$list.new"
    touch "$list"
    gone=$(LC_ALL=C comm -23 "$list" "$list.new" | wc -l)
    added=$(LC_ALL=C comm -13 "$list" "$list.new" | wc -l)
    mv "$list.new" "$list"
    echo "$name: $(wc -l <"$list") names, $added new, $gone gone"
done

#!/usr/bin/env bash
# Builds the libraries and the example program, and runs the program on the directories given.
#   ./run.sh DIRECTORY... [OPTIONS]    ./run.sh -help lists the options
set -euo pipefail
root=$(cd "$(dirname "$0")" && pwd)
. "$root/tools/setup.sh"

need cmake ninja-build g++ pkg-config
configure release
build build

program=$root/build/bin/codepage_audit
[ -x "$program" ] || die "the build left no $program"
# The language table of the tree serves until one is installed.
export QORReffilesPath=${QORReffilesPath:-$root/data}
say "codepage_audit $*"
status=0
"$program" "$@" || status=$?
trap - EXIT
echo "$me: codepage_audit ended with status $status"
exit $status

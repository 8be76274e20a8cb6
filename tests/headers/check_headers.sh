#!/usr/bin/env bash
# Compiles every header of the directories by itself, included twice, and prints the names of those that fail.
#   check_headers.sh "COMPILER ARGUMENTS" DIRECTORY...
set -euo pipefail
command=$1
shift
for directory; do
    command+=" -I$directory"
done
export command
find "$@" -name '*.h' -print0 | sort -z | xargs -0 -r -n 1 -P 2 sh -c '
    printf "#include \"%s\"\n#include \"%s\"\n" "$1" "$1" |
        $command -x c++ -fsyntax-only -Wall -Wextra -Wpedantic -Werror - || { echo "does not compile alone: $1"; exit 1; }
    ' header

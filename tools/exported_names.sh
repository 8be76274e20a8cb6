#!/usr/bin/env bash
# Prints the names that a shared library exports, one a line: the symbol, a tab, what it means in C++.
#   tools/exported_names.sh LIBRARY
set -euo pipefail
export LC_ALL=C
symbols=$(nm -D --defined-only --format=posix "$1" | cut -d ' ' -f 1 | sort -u)
paste <(printf '%s\n' "$symbols") <(printf '%s\n' "$symbols" | c++filt)

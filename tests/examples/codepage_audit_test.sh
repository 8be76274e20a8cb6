#!/usr/bin/env bash
# Runs the audit on a tree of its own and looks at what it reports.
#   codepage_audit_test.sh CASE PROGRAM
set -euo pipefail
# The files' names and the report are in UTF-8. glibc loses a list for each locale that it looks up in LOCPATH, which a
# leak check would charge to the program; the C library has this locale itself.
unset LC_ALL LOCPATH
export LANG=C.UTF-8
program=$2
tree=$(mktemp -d)
trap 'rm -rf "$tree" "$tree.err" "$tree.report"' EXIT

mkdir -p "$tree/deep/deeper"
printf 'one two\n' >"$tree/a.txt"
printf 'Zahnr\303\244der\n' >"$tree/deep/b.txt"
printf 'caf\351\n' >"$tree/deep/deeper/c.log"
ln -s .. "$tree/deep/up"
mkfifo "$tree/deep/pipe"

fail() {
    printf '%s\n' "$1" >&2
    exit 1
}

# expect <wanted status> <wanted report>: what the program gave, the figures of each file left out.
expect() {
    [ "$status" -eq "$1" ] || fail "status $status instead of $1"
    diff <(printf '%s\n' "$2") <(sed -n "s|^$tree/\([^:]*\):.*, \(.*valid UTF-8\), UTF-16 and back: \(.*\)|\1 \2 \3|p
        /files audited/p" <<<"$report") || fail "the report differs"
}

# audit <options>: runs the program over the tree.
audit() {
    status=0
    report=$(timeout 60 "$program" "$@" 2>"$tree.err") || status=$?
    errors=$(<"$tree.err")
    rm -f "$tree.err"
}

case $1 in
WalksATree)
    audit "$tree"
    expect 0 "a.txt valid UTF-8 the same
deep/b.txt valid UTF-8 the same
deep/deeper/c.log not valid UTF-8 differs
3 of 3 files audited"
    grep -qx ' *1  zahnräder' <<<"$report" || fail "a word is missing"
    ;;
KeepsToThePattern)
    audit "$tree" '-name=*.log'
    expect 0 "deep/deeper/c.log not valid UTF-8 differs
1 of 1 files audited"
    ;;
KeepsToTheDepth)
    audit --depth=1 "$tree"
    expect 0 "a.txt valid UTF-8 the same
deep/b.txt valid UTF-8 the same
2 of 2 files audited"
    audit -depth=two "$tree"
    [ "$status" -eq 2 ] || fail "status $status for a depth that is no number"
    grep -q 'depth=two' <<<"$errors" || fail "the depth isn't named: $errors"
    ;;
WritesToAFile)
    audit "$tree" -depth=0 "-output=$tree.report"
    [ -z "$report" ] || fail "the report went to standard output as well"
    report=$(<"$tree.report")
    rm -f "$tree.report"
    expect 0 "a.txt valid UTF-8 the same
1 of 1 files audited"
    audit "$tree" "-output=$tree/none/report"
    [ "$status" -eq 1 ] || fail "status $status for a report that can't be written"
    grep -q 'none/report cannot be written: No such file' <<<"$errors" || fail "the cause isn't told: $errors"
    ;;
FindsTheFirstOffence)
    # judged <code page> <file> <verdict>
    judged() {
        audit "$tree/$2" "-codepage=$1"
        [ "$status" -eq 0 ] || fail "status $status"
        grep -q "^$tree/$2: .*, $3\$" <<<"$report" || fail "$2 in $1 isn't judged '$3': $report"
    }
    judged UTF-8 a.txt 'survives as UTF-8'
    judged UTF-8 deep/b.txt 'survives as UTF-8'
    judged UTF-8 deep/deeper/c.log 'not UTF-8 from byte 3'
    judged ISO-8859-1 deep/deeper/c.log 'survives as ISO-8859-1'
    printf 'a\223\372\226\173\377\n' >"$tree/japanese.txt"
    judged SHIFT_JIS japanese.txt 'not SHIFT_JIS from byte 5'
    printf 'a\223\372\226\173\n' >"$tree/japanese.txt"
    judged SHIFT_JIS japanese.txt 'survives as SHIFT_JIS'
    # 0x93 is a control character there.
    judged EUC-JP japanese.txt 'not EUC-JP from byte 2'
    printf 'a\000b\351' >"$tree/zero.bin"
    judged UTF-8 zero.bin 'not UTF-8 from byte 3'
    : >"$tree/empty"
    judged SHIFT_JIS empty 'survives as SHIFT_JIS'
    audit "$tree" -codepage=nowhere
    [ "$status" -eq 2 ] || fail "status $status for a code page that nobody knows"
    grep -q 'codepage=nowhere is no code page' <<<"$errors" || fail "the code page isn't named: $errors"
    ;;
PrintsItsUsage)
    audit -help
    [ "$status" -eq 0 ] || fail "status $status"
    grep -q '^usage: .* DIRECTORY' <<<"$report" || fail "no usage: $report"
    audit
    [ "$status" -eq 2 ] || fail "status $status without a directory"
    ;;
RefusesUnknownOptions)
    audit "$tree" -nome='*.txt'
    [ "$status" -eq 2 ] || fail "status $status"
    [ -z "$report" ] || fail "something was audited"
    grep -qF 'unknown option -nome=*.txt' <<<"$errors" || fail "the option isn't named: $errors"
    grep -q '^usage: ' <<<"$errors" || fail "no usage: $errors"
    ;;
ReportsWhatCannotBeRead)
    ln -s gone "$tree/deep/dangling"
    audit "$tree/deep" -depth=0
    [ "$status" -eq 1 ] || fail "status $status"
    grep -q 'dangling: cannot be read: No such file' <<<"$errors" || fail "the cause isn't told: $errors"
    ;;
TracesWhatItDoes)
    export VELSysTrace='--name Audit Audit.File -e'
    audit "$tree/deep" -depth=0
    [ "$status" -eq 0 ] || fail "status $status"
    time='[0-9]*-[0-9][0-9]-[0-9][0-9]T[0-9:]*\.[0-9]*Z'
    for line in "\[Audit\]\[[0-9A-F]*\] 1 files with those of $tree/deep" \
        "\[Audit.File\]\[[0-9A-F]*\] $tree/deep/b.txt: 11 bytes" \
        '\[Audit\]\[[0-9A-F]*\] 1 of 1 files read, 0 directories not listed'; do
        grep -qx "\[I\]\[$time\]$line" <<<"$errors" || fail "no line '$line': $errors"
    done
    [ "$(wc -l <<<"$errors")" -eq 3 ] || fail "other lines as well: $errors"
    export VELSysTrace='--name Audit.File --file files.txt' QORTraceDir=$tree
    audit "$tree/deep" -depth=0
    [ -z "$errors" ] || fail "something on standard error: $errors"
    grep -q "b.txt: 11 bytes\$" "$tree"/VELSysTrace/D*_T*_P*_I/files.txt || fail "nothing in the file"
    ;;
ReadsItsOptionFiles)
    # Neither the variable nor the text of the program has a word.
    unset VELSysTrace QORTraDecDir QORTemp
    export HOME=$tree/home QORTraceDir=$tree
    mkdir "$HOME"
    printf 'no destination\n-Ffiles.txt Audit.File\n-E Audit\n' >"$HOME/OPFILE.1"
    printf -- '-Fother.txt Audit\n' >"$HOME/OPFILE.0"
    audit "$tree/deep" -depth=0
    [ "$status" -eq 0 ] || fail "status $status"
    [ "$(grep -c '^\[I\]\[.*\[Audit\]\[' <<<"$errors")" -eq 2 ] || fail "not both lines of Audit: $errors"
    [ "$(wc -l <<<"$errors")" -eq 2 ] || fail "other lines as well: $errors"
    grep -q "\[Audit.File\].*b.txt: 11 bytes\$" "$tree"/VELSysTrace/D*_T*_P*_I/files.txt || fail "nothing in the file"
    [ "$(find "$tree/VELSysTrace" -type f | wc -l)" -eq 1 ] || fail "other files as well"
    # The variable comes first.
    export VELSysTrace='-o Audit'
    audit "$tree/deep" -depth=0
    [ -z "$errors" ] || fail "something on standard error: $errors"
    ;;
*) fail "unknown case $1" ;;
esac

# Shared by run.sh, test.sh and bench.sh, which source it. Expects `root` to be the top of the tree.

me=$(basename "$0")

say() { printf '== %s\n' "$*"; }

# die <what went wrong, and what mends it>
die() {
    printf '%s: %s\n' "$me" "$*" >&2
    exit 1
}

# A script that stops early still ends with one plain line.
trap 'status=$?; [ $status -eq 0 ] || printf "%s: FAILED (status %d)\n" "$me" "$status"' EXIT

installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# need <package...>: installs what is missing where that is allowed, and otherwise names it and stops.
need() {
    local missing=() package
    if ! command -v dpkg-query >/dev/null; then
        say "not a Debian system: taking it that these are there: $*"
        return
    fi
    for package; do
        installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! sudo -n true 2>/dev/null; then
            die "missing packages; install them with: apt-get install ${missing[*]}"
        fi
        as_root=(sudo -n)
    fi
    as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o Acquire::Retries=3 -o Dpkg::Use-Pty=0)
    local log
    log=$(mktemp)
    say "installing ${missing[*]}"
    if ! { "${as_root[@]}" update && "${as_root[@]}" install -y --no-install-recommends "${missing[@]}"; } \
        >"$log" 2>&1 </dev/null; then
        tail -n 20 "$log" >&2
        rm -f "$log"
        die "apt-get could not install ${missing[*]}; its last lines stand above"
    fi
    rm -f "$log"
}

# thin <every>: of a long run's progress lines shows every so many-th, and every other line whole. A terminal sees all.
thin() {
    if [ -t 1 ]; then
        cat
        return
    fi
    awk -v every="$1" '
        /^\[[0-9]+\/[0-9]+\] /                       { if (++step % every == 0) { print; fflush() } next }
        /^ *Start +[0-9]+: /                         { next }
        / Test +#[0-9]+: /                           { gsub(/\.\.\.\.+/, "...") }
        /^ *[0-9]+\/[0-9]+ Test +#.* Passed /        { if (++test % (every * 10) == 0) { print; fflush() } next }
                                                     { print; fflush() }'
}

# configure <preset> [cmake arguments...]
configure() {
    local preset=$1 log
    shift
    log=$(mktemp)
    say "configuring ($preset)"
    if ! (cd "$root" && cmake --preset "$preset" "$@") >"$log" 2>&1 </dev/null; then
        cat "$log" >&2
        rm -f "$log"
        die "cmake could not configure the preset $preset; its report stands above"
    fi
    grep -A4 -E '^CMake Warning' "$log" || true
    rm -f "$log"
}

# build <directory> [cmake --build arguments...]; `wrap` may hold a command to run it under.
wrap=()
build() {
    local directory=$1
    shift
    say "building in $directory"
    if ! "${wrap[@]}" cmake --build "$root/$directory" --parallel "$(nproc)" "$@" </dev/null 2>&1 | thin 25; then
        die "the build in $directory failed; the compiler's report stands above"
    fi
}

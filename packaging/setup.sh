# shellcheck shell=bash
# Sourced by ./run and ./test: packages and quiet builds. Nothing here changes the caller's folder. Every function
# returns a status, so that a caller may go on after a failure.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
logs=$root/build/log

# Prints a line about the current step to standard error, because standard output belongs to the program that is run.
say() { printf '%s\n' "== $*" >&2; }

# with_log NAME COMMAND...: runs the command silently; if it fails, prints the end of its output.
with_log() {
    local log=$logs/$1.log
    shift
    mkdir -p "$logs"
    if "$@" >"$log" 2>&1; then return 0; fi
    {
        tail -n 60 "$log"
        printf '%s\n' "failed: $*" "full output: $log"
    } >&2
    return 1
}

# missing_packages GROUP...: prints the packages of these groups that are not installed, one per line.
missing_packages() {
    local wanted installed
    mapfile -t wanted < <(awk -v groups=" $* " \
        '!/^#/ && NF == 2 && index(groups, " " $1 " ") { print $2 }' "$root/packaging/packages.txt")
    # dpkg-query fails if it does not know one of them, but still lists the others.
    installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${wanted[@]}" 2>/dev/null || true)
    comm -23 <(printf '%s\n' "${wanted[@]}" | sort -u) \
        <(awk '$1 == "installed" { print $2 }' <<<"$installed" | sort -u)
}

# install_packages GROUP...: installs the packages that are missing; does nothing if none are.
install_packages() {
    local missing apt=(env DEBIAN_FRONTEND=noninteractive
        apt-get -q -y -o DPkg::Lock::Timeout=120 --no-install-recommends)
    if ! command -v dpkg-query >/dev/null || ! command -v apt-get >/dev/null; then
        say "this system has no apt-get: install the packages in packaging/packages.txt yourself"
        return 0
    fi
    mapfile -t missing < <(missing_packages "$@")
    if [ ${#missing[@]} -eq 0 ]; then return 0; fi
    say "installing ${missing[*]}"
    if [ "$(id -u)" -ne 0 ]; then apt=(sudo "${apt[@]}"); fi
    with_log apt-update "${apt[@]}" update || return 1
    with_log apt-install "${apt[@]}" install "${missing[@]}"
}

# What the vendor decides for a build, by the environment of this very call. A build tree remembers what it was once
# given, so what is not in the environment is removed from it.
vendors=(KAV_SERVICE_ORIGIN KAV_MAKER_SITE KAV_PRODUCT_ID KAV_FORMAT_TAG)

# build PRESET [TARGET...]: configures and builds; one build at a time in this tree, so that ./run may run in parallel.
build() {
    local preset=$1 targets=() decided=() name
    shift
    for name in "${vendors[@]}"; do
        if [ -n "${!name:-}" ]; then decided+=("-D$name=${!name}"); else decided+=("-U$name"); fi
    done
    if [ $# -gt 0 ]; then targets=(--target "$@"); fi
    mkdir -p "$logs"
    if [ ! -e "$logs/$preset.built" ]; then say "the first build takes some minutes; its output is in build/log"; fi
    (
        flock 9
        with_log "$preset-configure" cmake -S "$root" --preset "$preset" "${decided[@]}" || exit 1
        with_log "$preset-build" cmake --build "$root/build/$preset" -j "$(nproc)" "${targets[@]}" || exit 1
        touch "$logs/$preset.built"
    ) 9>"$logs/$preset.lock"
}

# shellcheck shell=bash
# Sourced by ./run: installs the built library where hosts look for it, and removes it again. A list next to the
# library records what was installed, so that neither touches a file of that name from another source.

library=KAVSorrelLimiter.so
list=.KAVSorrelLimiter.installed

# plugin_folder [--system]: prints where hosts look, for this user or the whole machine; honours DESTDIR.
plugin_folder() {
    case $# in
    0) printf '%s\n' "${HOME:?no home folder}/.vst" ;;
    1)
        if [ "$1" != --system ]; then say "unknown option: $1" && return 2; fi
        printf '%s\n' "${DESTDIR:-}/usr/local/lib/vst"
        ;;
    *) say "at most one option is possible: --system" && return 2 ;;
    esac
}

# as_owner FOLDER COMMAND...: runs the command, with sudo if this user may not write into the folder or create it.
as_owner() {
    local folder=$1
    shift
    while [ ! -e "$folder" ]; do folder=$(dirname "$folder"); done
    if [ -w "$folder" ] || [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

sum_of() { sha256sum <"$1" | cut -d ' ' -f 1; }

# is_ours FOLDER: the library there is the one that was installed, unchanged.
is_ours() {
    [ -f "$1/$library" ] && [ -f "$1/$list" ] && grep -qx "$(sum_of "$1/$library")  $library" "$1/$list"
}

# keeps_foreign FOLDER: the name is taken by something that we have not installed.
keeps_foreign() {
    if [ ! -e "$1/$library" ] && [ ! -L "$1/$library" ]; then return 1; fi
    if is_ours "$1"; then return 1; fi
    say "kept: $1/$library was not installed by ./run install, or has changed since"
}

install_plugin() {
    local folder built=$root/build/release/$library notes new
    folder=$(plugin_folder "$@") || return
    if keeps_foreign "$folder"; then return 1; fi
    notes=$(mktemp)
    new=$folder/.$library.new
    # The folder is removed with the library if it was created with it.
    if [ ! -d "$folder" ] || grep -qsx "folder made" "$folder/$list"; then echo "folder made" >"$notes"; fi
    printf '%s  %s\n' "$(sum_of "$built")" "$library" >>"$notes"
    # The list is written first and still contains the old library's line: if this is interrupted, the library there
    # is still known as ours. A host that has the old library open keeps it; the new one only takes its name.
    as_owner "$folder" mkdir -p "$folder" &&
        { cat "$notes" && grep -hs "  $library" "$folder/$list"; true; } >"$notes.both" &&
        as_owner "$folder" install -m 644 "$notes.both" "$folder/$list" &&
        as_owner "$folder" install -m 755 "$built" "$new" &&
        as_owner "$folder" mv -f "$new" "$folder/$library" &&
        as_owner "$folder" install -m 644 "$notes" "$folder/$list" || return 1
    rm -f "$notes" "$notes.both"
    say "installed: $folder/$library"
}

uninstall_plugin() {
    local folder made=false
    folder=$(plugin_folder "$@") || return
    if keeps_foreign "$folder"; then return 1; fi
    if [ ! -e "$folder/$list" ]; then
        say "not installed in $folder"
        return 0
    fi
    if grep -qx "folder made" "$folder/$list"; then made=true; fi
    as_owner "$folder" rm -f "$folder/$library" "$folder/$list" || return 1
    if $made && [ -z "$(ls -A "$folder")" ]; then as_owner "$(dirname "$folder")" rmdir "$folder"; fi
    say "removed: $folder/$library"
}

# make_packages: makes a .deb, and an installer and a .zip for Windows, in out/.
make_packages() {
    local preset made targets
    mkdir -p "$root/out"
    for preset in release mingw; do
        say "making the package of the preset $preset"
        made=$root/build/$preset/packages
        rm -rf "$made"
        targets=(KAVSorrelLimiter kav_profile_file kavhost)
        if [ "$preset" = release ]; then targets+=(kavhost_man_page kav_guide); fi
        build "$preset" "${targets[@]}" &&
            with_log "$preset-package" cpack --config "$root/build/$preset/CPackConfig.cmake" -B "$made" &&
            find "$made" -maxdepth 1 -type f -exec cp {} "$root/out/" \; -printf "$root/out/%f\n" || return 1
    done
}

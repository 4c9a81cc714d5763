# shellcheck shell=bash
# What the scripts share. Sourced, never run.

# Root of the source tree, whatever the current directory is.
root=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd)

# The five folders that make up the driver, from the ground up: each uses only what stands before
# it. Then those around it.
# shellcheck disable=SC2034 # used by the scripts that source this file
driver_folders=(driver varlist cache protocol cycle)
# shellcheck disable=SC2034
tool_folders=(tags simulator host rig apps examples)

# Prints one line about what is going on.
say()
{
    printf '%s\n' "$*" >&2
}

# Ends the script with a message.
die()
{
    say "${0##*/}: $*"
    exit 1
}

# Ends the script because of a wrong command line.
die_usage()
{
    say "${0##*/}: $*; try --help"
    exit 2
}

# Prints the comment at the top of the running script, which is its help text.
print_help()
{
    awk 'NR > 1 && !/^#/ { exit } NR > 1 { sub(/^# ?/, ""); print }' "$0"
}

# Prints the version of driver/version.h, e.g. 1.2.3.
header_version()
{
    sed -nE 's/^#define KVT_VERSION_(MAJOR|MINOR|PATCH) ([0-9]+)$/\2/p' "$root/driver/version.h" | paste -sd .
}

# Prints the files under the folders given that have one of the endings in $1 ("h cpp").
sources_in()
{
    local endings=$1 folder ending
    shift
    for folder; do
        [[ -d $root/$folder ]] || continue
        for ending in $endings; do
            (cd "$root" && find "$folder" -type f -name "*.$ending")
        done
    done | LC_ALL=C sort
}

# Prints the headers that are installed for hosts, as the build names them.
public_headers()
{
    sed -n '/^set(KVT_PUBLIC_HEADERS/,/)/p' "$root/cmake/KvtInstall.cmake" | grep -oE 'driver/[a-z_]+\.h'
}

#!/usr/bin/env bash
# install-packages.sh GROUP...: installs the Debian packages of these groups (packages.txt), those
# that are missing.  Asks nothing.  Needs root or sudo only if something is missing.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

missing=()
for group in "$@"; do
    while read -r name packages; do
        [[ $name == "$group" ]] || continue
        for package in $packages; do
            state=$(dpkg-query -W -f '${Status}' "$package" 2> /dev/null || true)
            [[ $state == "install ok installed" ]] || missing+=("$package")
        done
    done < "$root/scripts/packages.txt"
done
((${#missing[@]})) || exit 0

command -v apt-get > /dev/null ||
    fail "this is no Debian system; install by hand what these packages hold: ${missing[*]}"
case $(dpkg --print-architecture) in
    amd64 | i386) ;;
    *) fail "the tests run 32-bit x86 programs, and this machine's processor is another" ;;
esac
as_root=()
if ((EUID != 0)); then
    as_root=(sudo -n)
    sudo -n true 2> /dev/null ||
        fail "packages are missing (${missing[*]}), and installing them needs root;" \
             "run once as root: $root/scripts/install-packages.sh $*"
fi
as_root+=(env DEBIAN_FRONTEND=noninteractive)

# Both architectures' packages must come from the same release: otherwise a library that exists for
# both in two versions makes the 32-bit Wine uninstallable.
release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
options=(-q -o DPkg::Lock::Timeout=600)

if [[ " ${missing[*]} " == *:i386\ * ]]; then
    "${as_root[@]}" dpkg --add-architecture i386
fi
say "installing packages: ${missing[*]}"
# An index that cannot be fetched is no reason to stop: the packages may all be in the others.
attempt "package-lists" "${as_root[@]}" apt-get "${options[@]}" update ||
    say "some package lists could not be fetched; going on without them"
earlier_log=$logs/package-lists.log
run "packages" "${as_root[@]}" apt-get "${options[@]}" install --yes --no-install-recommends \
    ${release:+-t "$release"} "${missing[@]}"

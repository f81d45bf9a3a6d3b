#!/usr/bin/env bash
# fetch-source.sh NAME FOLDER: downloads the published source of the library NAME into FOLDER, from
# the machine's own Debian archive, and verifies it against cmake/NAME/source.sha256.  Prints nothing
# but progress; changes nothing in the machine's apt.
source "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
name=$1
folder=$2
checksum=$root/cmake/$name/source.sha256
read -r _ archive < "$checksum"

verified() { (cd "$folder" && sha256sum --quiet --check "$checksum"); }

[[ -e $folder/$archive ]] && verified &> /dev/null && exit 0

# The machine's sources name its packages; the same places, asked for source packages.  Both forms
# exist: stanzas (*.sources) and lines (*.list).
apt=$folder/apt
rm -rf "$apt"
make_folder "$apt/lists/partial"
make_folder "$apt/cache/archives/partial"
make_folder "$apt/sources.list.d"
shopt -s nullglob
for file in /etc/apt/sources.list.d/*.sources; do
    awk -v RS= -v ORS='\n\n' '
        tolower($0) !~ /(^|\n)enabled:[ \t]*(no|false|without|off|disable)/ &&
        /(^|\n)Types:[^\n]*deb/ { gsub(/(^|\n)Types:[^\n]*/, "\nTypes: deb-src"); print }' "$file"
done > "$apt/sources.list.d/machine.sources"
for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ -e $file ]] && sed -nE 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$file"
done > "$apt/sources.list.d/machine.list"

options=(-q -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$apt/sources.list.d"
    -o "Dir::State::lists=$apt/lists" -o "Dir::Cache=$apt/cache")
attempt "source-lists" apt-get "${options[@]}" update ||
    say "some package lists could not be fetched; going on without them"
earlier_log=$logs/source-lists.log
release=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
cd "$folder"
# An archive is named after its source package.
run "fetch-$name" apt-get "${options[@]}" ${release:+-t "$release"} \
    source --download-only "${archive%%_*}"
rm -rf "$apt"
verified &> /dev/null || fail "the source of $name is not the expected one: $folder/$archive differs from" \
    "$checksum"

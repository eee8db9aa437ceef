#!/usr/bin/env bash
# Fetches the source of a library that the Windows build compiles itself, because Debian has no cross-compiled package
# of it: fetch_source.sh PACKAGE FILE SHA256 FOLDER unpacks the original archive FILE of Debian's source package PACKAGE
# to FOLDER, once it has the checksum that is known here.
set -euo pipefail

package=$1 file=$2 checksum=$3 folder=$4
[[ ! -d $folder ]] || exit 0

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/sources" "$work/lists/partial"

# The configured sources, asked for source packages. The system's own settings and lists stay as they are.
for list in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ ! -f $list ]] || sed -n 's/^deb /deb-src /p' "$list" >>"$work/sources/all.list"
done
for list in /etc/apt/sources.list.d/*.sources; do
    [[ ! -f $list ]] || sed 's/^Types:.*/Types: deb-src/' "$list" >"$work/sources/${list##*/}"
done
apt=(apt-get -qq -o "Dir::Etc::SourceParts=$work/sources" -o Dir::Etc::SourceList=/dev/null
    -o "Dir::State::Lists=$work/lists" -o APT::Sandbox::User=)
(cd "$work" && "${apt[@]}" update && "${apt[@]}" source --download-only --tar-only "$package") >&2
echo "$checksum  $work/$file" | sha256sum --check --quiet >&2

mkdir -p "$work/unpacked" "$(dirname "$folder")"
tar --extract --file "$work/$file" --directory "$work/unpacked" --strip-components 1
mv "$work/unpacked" "$folder"

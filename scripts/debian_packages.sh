#!/usr/bin/env bash
# Makes the Debian packages of a build that is configured for the prefix /usr: debian_packages.sh BUILD FOLDER
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$(readlink -f "$1")
folder=$(readlink -m "$2")
version=$(sed -nE 's/#define KAPUTIL_VERSION "([0-9.]+)"/\1/p' include/kaputil/catalogue/version.hpp)

rm -rf "$folder"
mkdir -p "$folder/kaputil-$version"
cp -r packaging/debian "$folder/kaputil-$version/debian"
cd "$folder/kaputil-$version"
# The same sources make the same packages: their time is the last commit's.
cat >debian/changelog <<TEXT
kaputil ($version) unstable; urgency=medium

  * What has changed is in CHANGELOG.md of the sources.

 -- KapUtil maintainers <maintainers@kaputil.invalid>  $(git -C "$OLDPWD" log -1 --format=%cD)
TEXT
KAPUTIL_BUILD=$build dpkg-buildpackage --build=binary --unsigned-changes --unsigned-buildinfo --no-check-builddeps

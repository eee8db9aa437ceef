#!/usr/bin/env bash
# Installs each Debian package, and the wheel, by itself in a system that has nothing else, and does there what the first page
# of its guide says:
# in_fresh_system.sh FOLDER
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
folder=$(readlink -f "$1")
examples=$here/../../examples
fresh=$folder/fresh
system=$folder/system
trap 'rm -rf "$system"' EXIT

as_root=()
[[ $EUID -eq 0 ]] || as_root=(sudo)

say() { printf '%s\n' "$*" >&2; }

if [[ ! -d $fresh ]]; then
    "${as_root[@]}" debootstrap --variant=minbase bookworm "$fresh" >"$folder/debootstrap.log" 2>&1 ||
        { tail -5 "$folder/debootstrap.log" >&2 && exit 1; }
fi

inside() { "${as_root[@]}" chroot "$system" /usr/bin/env LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }

# install DEBIAN_PACKAGE...: into a system made anew; those with a path are ours.
install() {
    say "package: $*"
    "${as_root[@]}" rm -rf "$system"
    "${as_root[@]}" cp -a "$fresh" "$system"
    "${as_root[@]}" cp "$folder"/*.deb "$folder"/*.whl "$here"/../consumers/consumer.cpp "$examples"/*_a_record.* "$system/tmp"
    inside apt-get install -y -qq --no-install-recommends "$@" >"$folder/install.log" 2>&1 ||
        { tail -20 "$folder/install.log" >&2 && exit 1; }
}

# expect TEXT COMMAND...: what the command prints must hold the text.
expect() {
    local text=$1 printed
    shift
    printed=$(inside "$@" 2>&1) || { say "$* failed: $printed" && exit 1; }
    [[ $printed == *"$text"* ]] || { say "$* printed $printed instead of $text" && exit 1; }
}

# What a page shows is what happens in this system.
follow() { "${as_root[@]}" python3 "$here/follow_guides.py" "$system" "$1"; }

ours() {
    local path
    path=$(find "$folder" -maxdepth 1 -name "$1_*.deb")
    echo "/tmp/${path##*/}"
}

install "$(ours libkaputil2)"
expect libkaputil.so.2 ldconfig -p
expect 'libsqlite3.so.0 => /' sh -c 'ldd -r /usr/lib/*/libkaputil.so.2'

install "$(ours libkaputil2)" "$(ours libkaputil-dev)" g++ pkg-config
# shellcheck disable=SC2016 # the inner shell expands it
expect 'CProprieta IClassi 429' sh -c \
    'cd /tmp && g++ -std=c++20 consumer.cpp $(pkg-config --cflags --libs kaputil) -o consumer && ./consumer'
# docs/cpp.md begins with this program.
# shellcheck disable=SC2016
expect 'Bruno:  Attenzione: Record Aggiornato da altro Utente, Operazione Annullata!' sh -c \
    'cd /tmp && g++ -std=c++20 edit_a_record.cpp $(pkg-config --cflags --libs kaputil) -o edit && ./edit'

install "$(ours kaputil)"
expect 'Ferramenta Rossi' kaputil sql :memory: --csv --command "SELECT 'Ferramenta Rossi' AS Nome"
expect '2.68' kaputil call KapRound 2.675 2
follow commands
follow database
"${as_root[@]}" cp "$system/tmp/guide/azienda.db" "$folder"
expect '0x2CF24D' kaputil sql :memory: --csv --command "SELECT HASHBYTES('SHA2_256', 'hello')"

install "$(ours python3-kaputil)"
expect '2.68 2.6' python3 -c 'import kaputil; print(kaputil.KapRound(2.675, 2), kaputil.__version__)'
expect 'Ferramenta Rossi' python3 /tmp/read_a_record.py
expect 'read: Ferramenta Rossi' python3 /tmp/edit_a_record.py

# The guides are about the command line and Python together.
install "$(ours kaputil)" "$(ours python3-kaputil)" man-db
follow guides
expect 'SYNOPSIS' man kaputil-sql
expect 'SINTASSI' man -L it kaputil-sql

install "$(ours libsqlite3-mod-kaputil)" sqlite3
expect 'ok' sqlite3 :memory: -cmd '.load kaputil_sqlite' "SELECT 'ok' WHERE 'a' = 'A' COLLATE KAP_CI"
"${as_root[@]}" mkdir "$system/tmp/guide"
"${as_root[@]}" cp "$folder/azienda.db" "$system/tmp/guide"
follow sqlite

# The wheel has the host's libraries beside it, as its guide says.
install python3-venv libsqlite3-0 libnettle8 libstdc++6 zlib1g
expect '2.68' sh -c 'python3 -m venv /tmp/v && /tmp/v/bin/pip install -q --no-index /tmp/*.whl &&
    /tmp/v/bin/python -c "import kaputil; print(kaputil.KapRound(2.675, 2))"'
expect 'Ferramenta Rossi' /tmp/v/bin/python /tmp/read_a_record.py

say "package: every one of them works by itself"

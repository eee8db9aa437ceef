#!/usr/bin/env bash
# Starts or stops a PostgreSQL server of the tests' own: on loopback, on a port that is free, with its data in a folder.
#
#     postgres_server.sh start FOLDER     writes how to reach it to FOLDER/connection
#     postgres_server.sh stop FOLDER      stops it and removes its data
#     postgres_server.sh kill FOLDER      ends it as a power cut would
#     postgres_server.sh restart FOLDER   starts it again, on the same port
#     postgres_server.sh freeze FOLDER    lets it stand still: it takes connections and answers nothing
#     postgres_server.sh thaw FOLDER      lets it go on
#
# Exit code 77: the packages are missing, which is told in one line.
set -euo pipefail

say() { printf '%s\n' "$*" >&2; }

missing() {
    say "postgres_server: skipped, $*"
    exit 77
}

[[ $# -eq 2 ]] || {
    say "usage: postgres_server.sh start|stop|kill|restart|freeze|thaw FOLDER"
    exit 2
}
job=$1
mkdir -p "$2"
folder=$(readlink -f "$2")
data=$folder/data

programs=$(find /usr/lib/postgresql -maxdepth 2 -name bin 2>/dev/null | sort -V | tail -n 1)
[[ -n $programs ]] || missing "the package postgresql is not installed"
odbcinst -q -d 2>/dev/null | grep -qF '[PostgreSQL Unicode]' ||
    missing "the packages unixodbc and odbc-postgresql are not installed"

# The server does not run as root.
as_server() {
    if [[ $EUID -eq 0 ]]; then
        runuser -u postgres -- "$@"
    else
        "$@"
    fi
}

start_server() {
    as_server "$programs/pg_ctl" -D "$data" -l "$folder/data/log" -s -w -o \
        "-p $1 -c listen_addresses=127.0.0.1 -c unix_socket_directories= -c fsync=off -c max_connections=60" \
        start </dev/null >/dev/null 2>&1
}

# Sends a signal to the server and to the processes that it has for its clients.
signal_server() {
    local first children
    first=$(head -n 1 "$data/postmaster.pid")
    # The list does not end with a line, which read takes for a failure.
    read -r -a children <"/proc/$first/task/$first/children" || true
    kill -s "$1" "$first" "${children[@]}"
}

stop_server() {
    [[ -f $data/postmaster.pid ]] || return 0
    signal_server CONT 2>/dev/null || true
    as_server "$programs/pg_ctl" -D "$data" -s -w -m immediate stop >/dev/null 2>&1 || true
}

create_data() {
    mkdir -p "$data"
    chmod 700 "$data"
    printf 'geheim;{x}\n' >"$folder/password"
    if [[ $EUID -eq 0 ]]; then
        chown postgres "$data" "$folder/password"
    fi
    as_server "$programs/initdb" -D "$data" -A scram-sha-256 --pwfile="$folder/password" -U kap -E UTF8 --no-locale \
        --no-sync >"$folder/initdb.log" 2>&1 </dev/null
}

# Another program may take a port between choosing and using it: then another one is tried.
start_somewhere() {
    local port
    for _ in 1 2 3 4 5 6 7 8 9 10; do
        port=$((20000 + RANDOM % 12000))
        if start_server "$port"; then
            printf 'Driver={PostgreSQL Unicode};Server=127.0.0.1;Port=%s;UID=kap;PWD="geheim;{x}";Database={database}\n' \
                "$port" >"$folder/connection.new"
            mv "$folder/connection.new" "$folder/connection"
            return 0
        fi
    done
    say "postgres_server: the server does not start"
    cat "$data/log" >&2
    return 1
}

port_of() { sed -n 's/.*;Port=\([0-9]*\);.*/\1/p' "$folder/connection"; }

case $job in
start)
    stop_server
    rm -rf "$data" "$folder/connection"
    create_data
    start_somewhere
    ;;
stop)
    stop_server
    rm -rf "$data" "$folder/connection"
    ;;
kill) stop_server ;;
restart)
    stop_server
    start_server "$(port_of)"
    ;;
freeze) signal_server STOP ;;
thaw) signal_server CONT ;;
*)
    say "postgres_server: there is no job \"$job\""
    exit 2
    ;;
esac

#!/usr/bin/env bash
# Starts or stops a throwaway PostgreSQL cluster on loopback for the tests.
#   pg-cluster.sh start STATEDIR   makes a cluster in a new temporary directory, starts it on a free
#                                  port, and writes "host port user" to STATEDIR/pg.conn
#   pg-cluster.sh stop STATEDIR    stops that cluster and removes its directory
set -euo pipefail

cmd=${1:?start or stop}
state=${2:?state directory}
bindir=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -x "$bindir/initdb" ] || { echo "PostgreSQL server binaries not found (install postgresql-15)" >&2; exit 1; }

as_owner() {
  if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}

stop_cluster() {
  [ -f "$state/pg.dir" ] || return 0
  local dir; dir=$(cat "$state/pg.dir")
  as_owner "$bindir/pg_ctl" -D "$dir/data" -m immediate -w stop >/dev/null 2>&1 || true
  rm -rf "$dir" "$state/pg.dir" "$state/pg.conn"
}

case "$cmd" in
start)
  mkdir -p "$state"
  stop_cluster
  dir=$(mktemp -d /tmp/searchdata-pg.XXXXXX)
  chmod 755 "$dir"
  [ "$(id -u)" -eq 0 ] && chown postgres "$dir"
  echo "$dir" > "$state/pg.dir"
  user=$(if [ "$(id -u)" -eq 0 ]; then echo postgres; else id -un; fi)
  # C collation and UTF-8: text order is byte order, which the tests model.
  as_owner "$bindir/initdb" -D "$dir/data" -A trust -U "$user" -E UTF8 --locale=C >"$dir/initdb.log" 2>&1 \
    || { cat "$dir/initdb.log" >&2; exit 1; }
  for attempt in $(seq 1 20); do
    port=$(( 20000 + (RANDOM % 20000) ))
    if as_owner "$bindir/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 30 \
         -o "-h 127.0.0.1 -p $port -k $dir -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c max_connections=200" \
         start >/dev/null 2>&1; then
      echo "127.0.0.1 $port $user" > "$state/pg.conn"
      echo "PostgreSQL test cluster on 127.0.0.1:$port"
      exit 0
    fi
  done
  cat "$dir/server.log" >&2
  exit 1
  ;;
stop)
  stop_cluster
  ;;
*)
  echo "usage: $0 start|stop STATEDIR" >&2; exit 2 ;;
esac

#!/usr/bin/env bash
# A private, throw-away PostgreSQL cluster for the tests: its own data folder, a Unix socket in a
# folder of its own (no TCP), trust authentication. Run as root, the server runs as the postgres
# system user, as PostgreSQL insists.
#
#   pgcluster.sh start DIR   creates and starts a cluster in DIR; prints its address as a URL
#   pgcluster.sh stop DIR    stops it and removes DIR
#
# Where the postgres user can't reach DIR (a clone in /root), or its path is too long for a
# socket, the cluster lives in a temporary folder instead, and DIR notes where.
set -euo pipefail

usage() { echo "usage: $0 start|stop DIR" >&2; exit 2; }
[ $# -eq 2 ] || usage
action=$1
dir=$(mkdir -p "$2" && cd "$2" && pwd)

bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -x "$bin/pg_ctl" ] || { echo "pgcluster: PostgreSQL is not installed (scripts/bootstrap.sh installs it)" >&2; exit 1; }

as_owner=()
owner=$(id -un)
if [ "$(id -u)" -eq 0 ]; then
  owner=postgres
  as_owner=(runuser -u postgres --)
fi

# The folder that holds the cluster: DIR, or the one that DIR notes.
home_of() {
  if [ -f "$dir/home" ]; then cat "$dir/home"; else echo "$dir"; fi
}

stop_cluster() {
  local home
  home=$(home_of)
  if [ -f "$home/data/postmaster.pid" ]; then
    "${as_owner[@]}" "$bin/pg_ctl" -D "$home/data" -m immediate -w stop >/dev/null 2>&1 || true
  fi
  [ "$home" = "$dir" ] || rm -rf "$home"
}

case "$action" in
start)
  stop_cluster  # one left behind by a run that was killed
  rm -rf "$dir/data" "$dir/socket" "$dir/home"
  home=$dir
  # A socket's path has room for about a hundred characters.
  if [ ${#dir} -gt 80 ] || ! "${as_owner[@]}" test -x "$dir"; then
    home=$(mktemp -d /tmp/vdpgtest.XXXXXX)
    echo "$home" >"$dir/home"
  fi
  mkdir -p "$home/data" "$home/socket"
  [ "$owner" = "$(id -un)" ] || chown "$owner" "$home" "$home/data" "$home/socket"
  chmod 700 "$home/data"
  # Nothing listens on TCP, so the port only names the socket in a folder of our own; a random one
  # still keeps two clusters of one folder apart.
  port=$((20000 + RANDOM % 40000))
  if ! "${as_owner[@]}" "$bin/initdb" -D "$home/data" -A trust -U "$owner" -E UTF8 --locale=C.UTF-8 \
      >"$dir/initdb.log" 2>&1; then
    echo "pgcluster: initdb failed:" >&2
    tail -n 20 "$dir/initdb.log" >&2
    exit 1
  fi
  if ! "${as_owner[@]}" "$bin/pg_ctl" -D "$home/data" -l "$home/data/server.log" -w -t 60 \
      -o "-k $home/socket -p $port -c listen_addresses=''" start >"$dir/pg_ctl.log" 2>&1; then
    echo "pgcluster: the server did not start:" >&2
    tail -n 20 "$home/data/server.log" >&2 || true
    exit 1
  fi
  echo "postgresql://$owner@/postgres?host=$home/socket&port=$port"
  ;;
stop)
  stop_cluster
  rm -rf "$dir"
  ;;
*)
  usage
  ;;
esac

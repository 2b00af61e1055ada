#!/usr/bin/env bash
# Makes the Debian package of a build, unpacks it into a folder, and runs the command of its systemd unit from there,
# as a user without rights and with the folders that the unit gives it.
set -euo pipefail
build=$1
work=$(mktemp -d)
pid=
trap '[ -z "$pid" ] || kill -KILL "$pid" 2>/dev/null || true; rm -rf "$work"' EXIT
fail() { echo "$*" >&2; exit 1; }

(cd "$build" && cpack -G DEB -B "$work/packages" >"$work/cpack.log") || { cat "$work/cpack.log"; exit 1; }
package=$(echo "$work"/packages/*.deb)
root=$work/root
dpkg-deb -x "$package" "$root"
dpkg-deb -e "$package" "$work/control"
grep -qE '^Depends: .*libudev1' "$work/control/control" || fail "the package does not ask for its libraries"

unit=$root/usr/lib/systemd/system/varnholt-server.service
setting() { sed -n "s|^$1=||p" "$unit"; }
for script in postinst prerm postrm; do
    sh -n "$work/control/$script"
done
grep -q "adduser .* $(setting User)\$" "$work/control/postinst" || fail "nobody makes the user of the unit"
if command -v systemd-analyze >/dev/null; then
    mkdir "$work/unit"
    sed "s|^ExecStart=|&$root|; /^User=/d" "$unit" >"$work/unit/varnholt-server.service"
    systemd-analyze verify "$work/unit/varnholt-server.service"
fi

home=$root$(setting Environment | sed 's/^HOME=//')
documents=$home/Documents/Sennacroft/Varnholt
mkdir -p "$documents"
free_port() {  # below the range from which the system takes ports by itself
    local port
    for port in $(shuf -n 50 -i 20000-32000); do
        (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || { echo "$port"; return; }
    done
}
http=$(free_port)
websocket=$(free_port)
printf '{"http_port":%s,"websocket_port":%s}' "$http" "$websocket" >"$documents/LocalHost.config"
settings=$root$(setting ReadWritePaths | sed 's/^-//')
grep -qx "settings=${settings#"$root"}" "$work/control/postinst" || fail "nobody makes the file that the unit lets write"
: >"$settings"

as_user=()
if [ "$(id -u)" -eq 0 ]; then
    chown -R nobody "$home" "$settings"
    chmod 755 "$work"
    as_user=(setpriv --reuid=nobody --regid=nogroup --clear-groups --no-new-privs --bounding-set=-all)
fi
"${as_user[@]}" env -i "HOME=$home" "$root$(setting ExecStart)" >"$work/output" 2>&1 &
pid=$!
for _ in $(seq 100); do
    answer=$(curl -s "http://127.0.0.1:$http/api/getServerVersion" || true)
    [ -z "$answer" ] || break
    kill -0 "$pid" 2>/dev/null || break
    sleep 0.1
done
[[ "$answer" == *'"code":20000'* ]] || { cat "$work/output"; fail "the installed program does not answer: $answer"; }
curl -sf "http://127.0.0.1:$http/" | grep -qi '<!doctype html' || fail "the package has no page"
[[ $(curl -sf "http://127.0.0.1:$http/settings.json") == *"\"websocket_port\":$websocket"* ]] ||
    fail "browsers are not told the WebSocket port"
kill -TERM "$pid"
status=0
wait "$pid" || status=$?
pid=
[ "$status" -eq 0 ] || fail "the installed program ended with status $status"
[ -s "$documents/Log/Server.log" ] || fail "no log was written in the home folder"

# Without the capability from the unit, a low port is reported differently from a taken one.
if [ "$(id -u)" -eq 0 ] && [ "$(cat /proc/sys/net/ipv4/ip_unprivileged_port_start)" -gt 80 ]; then
    echo '{"http_port":80}' >"$documents/LocalHost.config"
    ! "${as_user[@]}" env -i "HOME=$home" "$root$(setting ExecStart)" >"$work/output" 2>&1 || fail "started on port 80"
    grep -q "doesn't give the port 80 to this program" "$work/output" || { cat "$work/output"; fail "another reason"; }
fi

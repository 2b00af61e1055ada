#!/usr/bin/env bash
# Takes nginx's configuration out of docs/behind-a-proxy.md, runs it in front of the built host on ports of loopback with
# a certificate of its own, and uses the server through it: a page, a write, a WebSocket, and what has to be refused.
set -euo pipefail
docs=$1
host=$2
work=$(mktemp -d)
pids=()
finish() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT
fail() { echo "$*" >&2; cat "$work"/*.log >&2 || true; exit 1; }
free_port() {  # below the range from which the system takes ports by itself
    local port
    for port in $(shuf -n 50 -i 20000-32000); do
        (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null || { echo "$port"; return; }
    done
}
wait_for() {  # a command that succeeds some time
    local _
    for _ in $(seq 150); do
        "$@" >/dev/null 2>&1 && return
        sleep 0.1
    done
    fail "in vain: $*"
}

name=control.example.com
http=$(free_port) websocket=$(free_port) tls=$(free_port) plain=$(free_port)
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 1 -subj "/CN=$name" \
    -addext "subjectAltName=DNS:$name" -keyout "$work/key.pem" -out "$work/cert.pem" 2>"$work/openssl.log" ||
    fail "no certificate"

mkdir -p "$work/home/Documents/Sennacroft/Varnholt"
printf '{"http_port":%s,"websocket_port":%s}' "$http" "$websocket" \
    >"$work/home/Documents/Sennacroft/Varnholt/LocalHost.config"
env -i "HOME=$work/home" "$host" >"$work/host.log" 2>&1 &
pids+=($!)

sed -n '/^```nginx$/,/^```$/p' "$docs" | sed '1d;$d' | sed -E "
    s|listen 443|listen 127.0.0.1:$tls|; s|listen 80|listen 127.0.0.1:$plain|
    s|127.0.0.1:8086|127.0.0.1:$http|; s|127.0.0.1:8081|127.0.0.1:$websocket|
    s|/etc/ssl/[^;]*\.pem|$work/cert.pem|; s|/etc/ssl/[^;]*\.key|$work/key.pem|" >"$work/site.conf"
mkdir "$work/temp"
{
    echo "daemon off; master_process off; pid $work/nginx.pid; error_log $work/nginx.log; events {}"
    echo "http { access_log off;"
    for kind in client_body proxy fastcgi uwsgi scgi; do echo "${kind}_temp_path $work/temp/$kind;"; done
    echo "include $work/site.conf; }"
} >"$work/nginx.conf"
PATH=$PATH:/usr/sbin nginx -p "$work" -c "$work/nginx.conf" -e "$work/nginx.log" 2>"$work/nginx-start.log" &
pids+=($!)
wait_for curl -sf "http://127.0.0.1:$http/api/getServerVersion"

ask() { curl -s --max-time 20 --cacert "$work/cert.pem" --resolve "$name:$tls:127.0.0.1" "$@"; }
base=https://$name:$tls
write() { ask -H "Origin: $1" -d '{"data":{"pages":[]}}' "${@:2}" "$base/api/centralControl/setCentralControlWebLayout"; }
wait_for ask -f "$base/api/getServerVersion"
[ "$(ask "$base/")" = "$(curl -s "http://127.0.0.1:$http/")" ] || fail "another page"
[[ $(write "$base") == *'"code":30100'* ]] || fail "a write before there is a channel: $(write "$base")"

mkfifo "$work/input"
openssl s_client -quiet -connect "127.0.0.1:$tls" -servername "$name" -CAfile "$work/cert.pem" -verify_return_error \
    <"$work/input" >"$work/frames" 2>"$work/s_client.log" &
pids+=($!)
exec 4>"$work/input"
printf '%s\r\n' "GET /ws HTTP/1.1" "Host: $name:$tls" "Origin: $base" "Upgrade: websocket" "Connection: Upgrade" \
    "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==" "Sec-WebSocket-Version: 13" "" >&4
wait_for grep -aq "^HTTP/1.1 101 " "$work/frames"
printf '\x81\x89\0\0\0\0heartbeat' >&4
wait_for grep -aq "heartbeat" "$work/frames"

[ "$(write "$base")" = '{"code":20000,"message":""}' ] || fail "a write of a page: $(write "$base")"
status() { write "$@" -o /dev/null -w '%{http_code}'; }
[ "$(status https://evil.example)" = 403 ] || fail "a page from elsewhere may write"
[ "$(status https://evil.example -H "X-Forwarded-Host: evil.example")" = 403 ] || fail "the client names itself"
! curl -sk --max-time 20 --resolve "other.example:$tls:127.0.0.1" "https://other.example:$tls/" >/dev/null ||
    fail "the proxy answers for any name"
[ "$(curl -s -o /dev/null -w '%{redirect_url}' -H "Host: $name" "http://127.0.0.1:$plain/a")" = "https://$name/a" ] ||
    fail "plain HTTP is not sent on"

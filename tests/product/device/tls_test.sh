#!/usr/bin/env bash
# Usage: tls_test.sh VIRTUAL_DEVICE KDUMP
#
# The program has what clouds ask for, although its OpenSSL is cut down: a whole OpenSSL, the
# machine's openssl command, fakes a cloud that allows one way only at a time: a version, a kind of
# certificate, a cipher, a group. Each way, the program must get a request through and
# understand the reply. KDUMP may be a command line. (This script is also what runs on the device.)
set -euo pipefail

address=127.0.0.9 # where a virtual device whose TFA service is refused looks for it
scratch=/run/tls

# The client's key, the server's key, and s_server's settings. (With TLS 1.2 the group must suit
# elliptic keys too.)
ways() {
    local key group cipher
    for key in rsa ecdsa; do
        for cipher in AES128-GCM-SHA256 AES256-GCM-SHA384 CHACHA20-POLY1305; do
            echo "rsa $key -tls1_2 -cipher ECDHE-${key^^}-$cipher -groups P-256"
        done
        for cipher in AES_128_GCM_SHA256 AES_256_GCM_SHA384 CHACHA20_POLY1305_SHA256; do
            echo "rsa $key -tls1_3 -ciphersuites TLS_$cipher -groups X25519"
        done
    done
    for group in X25519 P-384 P-521; do
        echo "rsa rsa -tls1_2 -cipher ECDHE-RSA-AES128-GCM-SHA256 -groups $group"
        echo "rsa rsa -tls1_3 -ciphersuites TLS_AES_128_GCM_SHA256 -groups $group"
    done
    # Larger keys, elliptic keys in devices, and what old load balancers still offer.
    echo 'rsa rsa4096 -tls1_2 -cipher ECDHE-RSA-AES256-GCM-SHA384 -groups P-256
rsa p384 -tls1_2 -cipher ECDHE-ECDSA-AES256-GCM-SHA384 -groups P-384
rsa p384 -tls1_3 -ciphersuites TLS_AES_256_GCM_SHA384 -groups P-384
ecdsa rsa -tls1_2 -cipher ECDHE-RSA-AES128-GCM-SHA256 -groups P-256
ecdsa rsa -tls1_3 -ciphersuites TLS_AES_128_GCM_SHA256 -groups P-256
rsa rsa -tls1_2 -cipher ECDHE-RSA-AES128-SHA256 -groups P-256
rsa rsa -tls1_2 -cipher AES128-GCM-SHA256 -groups P-256'
}

# Left out on purpose: a cloud that offers only this is not reached.
closed_ways() {
    echo 'rsa rsa -tls1_1 -cipher ECDHE-RSA-AES128-SHA:@SECLEVEL=0 -groups P-256
rsa rsa -tls1_2 -cipher DHE-RSA-AES128-GCM-SHA256 -groups P-256
rsa rsa -tls1_2 -cipher ECDHE-RSA-CAMELLIA128-SHA256 -groups P-256'
}

make_identities() {
    local name options
    while read -r name options; do
        # shellcheck disable=SC2086  # several words
        openssl req -x509 -newkey $options -nodes -days 2 -subj "/CN=$name" \
            -keyout "$name.key" -out "$name.crt" 2>/dev/null
    done <<<'rsa rsa:2048
rsa4096 rsa:4096
ecdsa ec -pkeyopt ec_paramgen_curve:P-256
p384 ec -pkeyopt ec_paramgen_curve:P-384'
}

# Whether file $1 holds $2; without another process, since it is asked often.
holds() {
    local content
    read -rd '' content <"$1" || true
    [[ $content == *"$2"* ]]
}

# Until file $2 holds $3; false when it does not by the end of process $1, or in ten seconds.
await() {
    local tries
    for ((tries = 0; tries < 1000; tries++)); do
        holds "$2" "$3" && return
        kill -0 "$1" 2>/dev/null || break
        read -rt 0.01 <>never || true
    done
    holds "$2" "$3"
}

request='POST /dev/tfaapi/kdumps HTTP/1.1'

# One run of the program against a server that allows one way. What the server saw is in server.log.
# (With -f the program does not retry endlessly.)
serve() {
    local server client body="{\"message\":\"$*\"}"
    cp "$1.crt" /run/device/CRT
    cp "$1.key" /run/device/KEY
    openssl s_server -accept "$address:443" -naccept 1 -brief -Verify 1 \
        -cert "$2.crt" -key "$2.key" "${@:3}" <>answer >server.log 2>&1 &
    server=$!
    await "$server" /proc/net/tcp ' 0900007F:01BB 00000000:0000 0A '
    (cd /run/device && exec kdump RAM -f) &
    client=$!
    if await "$client" server.log "$request"; then
        printf 'HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n%s' \
            "${#body}" "$body" >answer
    fi
    wait "$client"
    kill "$server" 2>/dev/null || true
    wait "$server" || true
}

# The server agreed to what it was told to, with the client's certificate, and got the request.
got_through() {
    holds server.log "$request" && grep -q "^Protocol version: TLSv1.${3#-tls1_}\$" server.log &&
        grep -q "^Ciphersuite: $5\$" server.log &&
        grep -q "^Peer certificate: CN = $1\$" server.log
}

was_refused() {
    ! holds server.log "$request" && grep -qi 'no shared cipher\|unsupported protocol' server.log
}

run_on_the_device() {
    local failures=0 way
    mkdir "$scratch"
    cd "$scratch"
    mkfifo answer never
    make_identities
    while read -ru 9 -a way; do
        serve "${way[@]}"
        got_through "${way[@]}" || { echo "no way through: ${way[*]}" && cat server.log && failures=1; }
    done 9< <(ways)
    while read -ru 9 -a way; do
        serve "${way[@]}"
        was_refused || { echo "not refused: ${way[*]}" && cat server.log && failures=1; }
    done 9< <(closed_ways)
    return "$failures"
}

if [ "$1" = --on-device ]; then
    run_on_the_device
    exit
fi
virtual_device=$1 kdump=$2 count=0 status=0
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
scenario=$(mktemp --suffix .json)
trap 'rm -f "$scenario"' EXIT
echo '{"about": "A whole OpenSSL fakes the cloud.", "refuse": ["tfa"]}' >"$scenario"
story=$("$virtual_device" run --kdump "$kdump" --scenario "$scenario" -- \
    bash "$here/tls_test.sh" --on-device 2>&1) || status=1
# A reply that was understood is in the log on the console.
while read -r way; do
    count=$((count + 1))
    grep -qF "\"message\":	\"$way\"" <<<"$story" ||
        { echo "the reply was not understood: $way" && status=1; }
done < <(ways)
echo "$count ways into the cloud"
[ "$status" -eq 0 ] || printf '%s\n' "$story"
exit "$status"

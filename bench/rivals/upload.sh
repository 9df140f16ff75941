#!/bin/sh
# The obvious alternative to the program: uploads the segment trace with curl and jq.
marker=/tmp/kdump_process_segmentrace
source=/mnt/data/iss_config/segmentrace.txt
staged=/tmp/segmentrace.txt
endpoint=https://tfa.example.com/dev/tfaapi/kdumps

cloud_proxy() {
    curl -s http://127.0.0.1:8000/api/system/cloud_proxy |
        jq -r '.restful_res.CloudProxySettings | select(.enable and .proxyServer != "none") |
            "\(.proxyServer):\(.proxyServerPort)"'
}

cloud() {
    proxy=$(cloud_proxy)
    curl -s -f -k -L --cert CRT --key KEY ${proxy:+-p -x "$proxy"} "$@"
}

set -C
: >"$marker" || exit 0
set +C
if [ -e "$source" ]; then
    cp "$source" "$staged"
    url=$(cloud -H 'Content-Type: application/json' -d '{"filename": "segmentrace.txt"}' "$endpoint" |
        jq -r 'select(.message == "OK").upload_url')
    if [ -n "$url" ]; then
        cloud -H 'Content-Type: application/octet-stream' -T "$staged" "$url" >/dev/null &&
            rm -f "$staged" "$source"
    fi
fi
rm -f "$marker"

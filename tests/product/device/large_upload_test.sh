#!/usr/bin/env bash
# Usage: large_upload_test.sh VIRTUAL_DEVICE KDUMP
#
# A dump that needs more than 32 bits to count its bytes arrives whole, and its end is the dump's end.
# KDUMP may be a command line. (This script is also what runs on the device.)
set -euo pipefail

size=$(((4 << 30) + 5)) end='the end of the dump'
dump=/tmp/upgrade_fail_state_upload.txt

# Takes one PUT on port 81, keeps nothing but its last bytes, and tells how many came.
store() {
    perl -MIO::Socket::INET -e '
        my $store = IO::Socket::INET->new(Listen => 1, LocalAddr => "127.0.0.1:81") or die $!;
        print STDERR "ready\n";
        my $client = $store->accept;
        my ($head, $got, $last, $piece) = ("", 0, "", "");
        sysread $client, $head, 1, length $head until $head =~ /\r\n\r\n/;
        my ($declared) = $head =~ /Content-Length: ([0-9]+)/;
        syswrite $client, "HTTP/1.1 100 Continue\r\n\r\n";
        while ($got < $declared && sysread $client, $piece, 1 << 20) {
            $got += length $piece;
            $last = substr $last . substr($piece, -100), -length $ARGV[0];
        }
        print "got $got bytes, \"$last\"\n";
        syswrite $client, "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"' "$end"
}

if [ "$1" = --on-device ]; then
    truncate -s $((size - ${#end})) "$dump"
    printf %s "$end" >>"$dump"
    store 2>/run/store.log &
    until grep -q ready /run/store.log; do sleep 0.1; done
    cd /run/device
    kdump upgradefailstate
    wait $!
    exit
fi
virtual_device=$1 kdump=$2
scenario=$(mktemp --suffix .json)
trap 'rm -f "$scenario"' EXIT
echo '{"about": "The store is one of large uploads.",
       "tfa": [{"json": {"message": "OK", "upload_url": "http://127.0.0.1:81/put"}}]}' >"$scenario"
story=$("$virtual_device" run --kdump "$kdump" --scenario "$scenario" -- \
    bash "$(realpath "$0")" --on-device 2>&1) || true
grep -F "got $size bytes, \"$end\"" <<<"$story" || { echo "$story" && exit 1; }

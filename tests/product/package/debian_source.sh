#!/usr/bin/env bash
# Usage: debian_source.sh     in the project's folder
#
# script/lib/debian_source.sh against package archives made here: in each notation of a source list
# it finds the entry that serves the package, takes the newest version, takes the next older one
# when that is listed but gone, and fails when all are gone. Nothing outside a scratch folder is
# read as configuration or written.
. script/lib/common.sh
# shellcheck source=script/lib/debian_source.sh
. script/lib/debian_source.sh

make_scratch
archive=$scratch/archive
mkdir -p "$archive/pool" "$scratch"/etc/sources.list.d "$scratch"/{lists,cache}/partial

# Adds version $1 of the source package "parcel" to the archive, with its one binary package.
add_version() {
    local source=$scratch/parcel
    rm -rf "$source"
    mkdir -p "$source/debian/source"
    echo "$1" >"$source/content"
    echo '3.0 (native)' >"$source/debian/source/format"
    printf 'parcel (%s) unstable; urgency=low\n\n  * A version.\n\n -- A <a@example.com>  Thu, 01 Jan 1970 00:00:00 +0000\n' \
        "$1" >"$source/debian/changelog"
    printf 'Source: parcel\nMaintainer: A <a@example.com>\n\nPackage: parcel\nArchitecture: all\nDescription: content\n' \
        >"$source/debian/control"
    (cd "$archive/pool" && dpkg-source -b "$source") >/dev/null 2>&1
    printf 'Package: parcel\nVersion: %s\nArchitecture: all\nMaintainer: A <a@example.com>\nFilename: pool/parcel_%s_all.deb\nSize: 1\nSHA256: %064d\nDescription: content\n\n' \
        "$1" "$1" 0 >>"$archive/packages"
}

write_indexes() {
    local folder=$archive/dists/here/main
    mkdir -p "$folder/source" "$folder/binary-$(dpkg --print-architecture)"
    (cd "$archive" && dpkg-scansources pool 2>/dev/null) >"$folder/source/Sources"
    cp "$archive/packages" "$folder/binary-$(dpkg --print-architecture)/Packages"
    (
        cd "$archive/dists/here"
        printf 'Suite: here\nComponents: main\nArchitectures: %s all\nDate: %s\nSHA256:\n' \
            "$(dpkg --print-architecture)" "$(LC_ALL=C date -uR)"
        find main -type f | while read -r file; do
            printf ' %s %s %s\n' "$(sha256sum <"$file" | cut -d' ' -f1)" "$(wc -c <"$file")" "$file"
        done
    ) >"$scratch/Release"
    mv "$scratch/Release" "$archive/dists/here/Release"
}

# Makes the scratch folder's source lists, holding $2 in file $1, the ones that apt-get reads.
use_sources() {
    rm -f "$scratch"/etc/sources.list.d/*
    printf '%b' "$2" >"$scratch/etc/sources.list.d/$1"
    apt-get -q update >/dev/null
}

# The version fetched and its content are $1, and a warning names $2 if given.
expect_version() {
    local version
    rm -rf "$scratch/target"
    version=$(fetch_debian_source parcel "$scratch/target" 2>"$scratch/messages")
    if [ "$version" != "$1" ] || [ "$(<"$scratch/target/content")" != "$1" ]; then
        die "took $version, not $1: $(<"$scratch/messages")"
    fi
    [ -z "${2-}" ] || grep -q "parcel $2 is not obtainable" "$scratch/messages"
    say "ok: $version"
}

cat >"$scratch/apt.conf" <<END
Dir::Etc::SourceList "/dev/null";
Dir::Etc::SourceParts "$scratch/etc/sources.list.d";
Dir::State::Lists "$scratch/lists";
Dir::Cache "$scratch/cache";
APT::Sandbox::User "root";
END
export APT_CONFIG=$scratch/apt.conf

add_version 1.9
add_version 1.10
write_indexes
other="Types: deb\nURIs: file:$scratch/nowhere\nSuites: here\nComponents: main\nEnabled: no\n"
stanza="Types: deb\nURIs: file:$archive\nSuites: here\nComponents: main\nTrusted: yes\n"

say 'the newest version, from a stanza among others'
use_sources machine.sources "# first\n$other\n# second\n\n$stanza"
expect_version 1.10

say 'the same from a line among others'
use_sources machine.list "# first\n# deb file:$scratch/nowhere here main\ndeb [trusted=yes] file:$archive here main # end\n"
expect_version 1.10

say 'the next older version when the newest is gone'
rm "$archive"/pool/parcel_1.10.tar.*
expect_version 1.9 1.10

say 'failure when all are gone'
rm "$archive"/pool/parcel_1.9.tar.*
if (fetch_debian_source parcel "$scratch/target") 2>/dev/null; then
    die 'took a version whose files are gone'
fi
say 'ok'

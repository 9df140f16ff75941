# Fetches Debian source packages, and packages of other architectures, without changes to /etc/apt: a
# private configuration has copies of the machine's source lists. Needs common.sh.
# shellcheck shell=bash

# apt-get and apt-cache with the private configuration in $1.
private_apt() {
    local private=$1 tool=$2
    shift 2
    "$tool" -q -o Dir::Etc::SourceList="$private/sources.list" \
        -o Dir::Etc::SourceParts="$private/sources.list.d" \
        -o Dir::State::Lists="$private/lists" -o Dir::Cache="$private/cache" \
        -o APT::Sandbox::User=root -o APT::Get::List-Cleanup=false "$@"
}

# Prints the source lists with an entry that serves source package $1.
lists_serving() {
    # shellcheck disable=SC2016  # apt-get fills this in
    apt-get indextargets --format '$(SOURCESENTRY) $(FILENAME)' 'Created-By: Packages' |
        while read -r entry index; do
            if /usr/lib/apt/apt-helper cat-file "$index" |
                grep -E "^(Package|Source): $1( |\$)" >/dev/null; then
                printf '%s\n' "${entry%:*}"
            fi
        done | sort -u
}

# Makes a private configuration that reads $2 (deb or deb-src) from the source lists that serve package
# $1; prints its folder.
private_lists() {
    local private list
    private=$(mktemp -d)
    mkdir -p "$private/sources.list.d" "$private/lists/partial" "$private/cache/archives/partial" \
        "$private/download"
    : >"$private/sources.list"
    for list in $(lists_serving "$1"); do
        sed -e "s/^Types:.*/Types: $2/" -e "s/^[[:space:]]*deb[[:space:]]/$2 /" "$list" \
            >"$private/sources.list.d/${list##*/}"
    done
    printf '%s\n' "$private"
}

# Unpacks package $1 of architecture $2 into folder $3. It is not installed, and dpkg's architectures
# stay as they are.
fetch_foreign_package() {
    local private options=(-o "APT::Architecture=$2" -o "APT::Architectures=$2")
    private=$(private_lists "$1" deb)
    private_apt "$private" apt-get "${options[@]}" update
    (cd "$private/download" && private_apt "$private" apt-get "${options[@]}" download "$1")
    dpkg-deb -x "$private"/download/*.deb "$3"
    rm -rf "$private"
}

# Unpacks Debian source package $1, with Debian's patches, into the folder $2, which must not exist;
# prints the version. If the files of the newest version in the index are gone, takes an older one.
fetch_debian_source() {
    local package=$1 target=$2 private version
    private=$(private_lists "$package" deb-src)
    private_apt "$private" apt-get update >"$private/log" 2>&1 ||
        say "warning: some source indexes could not be read" >&2
    for version in $(private_apt "$private" apt-cache --only-source showsrc "$package" |
        sed -n 's/^Version: //p' | sort -ruV); do
        if (cd "$private/download" &&
            private_apt "$private" apt-get source --only-source --download-only \
                "$package=$version") >>"$private/log" 2>&1; then
            dpkg-source --no-check -x "$private"/download/*.dsc "$target" >>"$private/log" 2>&1 ||
                break
            rm -rf "$private"
            printf '%s\n' "$version"
            return
        fi
        say "$package $version is not obtainable, trying the next older version" >&2
        rm -rf "$private"/download/*
    done
    cat "$private/log" >&2
    rm -rf "$private"
    die "no version of the source package $package could be fetched"
}

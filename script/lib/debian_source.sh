# Fetches Debian source packages without changes to /etc/apt: a private configuration turns
# copies of the machine's source lists into deb-src entries. Needs common.sh.
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

# Unpacks Debian source package $1, with Debian's patches, into the folder $2, which must not exist;
# prints the version. If the files of the newest version in the index are gone, takes an older one.
fetch_debian_source() {
    local package=$1 target=$2 private list version
    private=$(mktemp -d)
    mkdir -p "$private/sources.list.d" "$private/lists/partial" \
        "$private/cache/archives/partial" "$private/download"
    : >"$private/sources.list"
    for list in $(lists_serving "$package"); do
        sed -e 's/^Types:.*/Types: deb-src/' -e 's/^[[:space:]]*deb[[:space:]]/deb-src /' "$list" \
            >"$private/sources.list.d/${list##*/}"
    done
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

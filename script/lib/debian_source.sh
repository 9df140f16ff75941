# Fetching Debian source packages without touching /etc/apt: the machine's own package entries are
# repeated as source entries in a private configuration. Needs common.sh.
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

# The places (file:position, as apt counts them) of the entries that serve source package $1.
entries_serving() {
    # shellcheck disable=SC2016  # apt-get fills this in
    apt-get indextargets --format '$(SOURCESENTRY) $(FILENAME)' 'Created-By: Packages' |
        while read -r entry index; do
            if /usr/lib/apt/apt-helper cat-file "$index" |
                grep -E "^(Package|Source): $1( |\$)" >/dev/null; then
                printf '%s\n' "$entry"
            fi
        done | sort -u
}

# Repeats entry number $2 of file $1 as a source entry below $3. A .sources file is counted in
# stanzas, any other in lines.
copy_as_source_entry() {
    local file=$1 position=$2 private=$3
    case $file in
    *.sources)
        awk -v wanted="$position" '
            /^[ \t]*$/ { inside = 0; next }
            /^#/       { next }
            !inside    { inside = 1; stanza++ }
            stanza == wanted { sub(/^Types:.*/, "Types: deb-src"); print }
        ' "$file" >"$private/sources.list.d/${file##*/}.$position.sources"
        ;;
    *)
        sed -n "${position}s/^[[:space:]]*deb[[:space:]]/deb-src /p" "$file" \
            >>"$private/sources.list"
        ;;
    esac
}

# Unpacks the newest obtainable version of Debian source package $1 into the folder $2 (which must
# not exist), Debian's patches applied. An index may name versions whose files are gone: then the
# next older one is taken. Prints the version taken.
fetch_debian_source() {
    local package=$1 target=$2 private entry version
    private=$(mktemp -d)
    mkdir -p "$private/sources.list.d" "$private/lists/partial" \
        "$private/cache/archives/partial" "$private/download"
    : >"$private/sources.list"
    for entry in $(entries_serving "$package"); do
        copy_as_source_entry "${entry%:*}" "${entry##*:}" "$private"
    done
    private_apt "$private" apt-get update >"$private/log" 2>&1 ||
        say "warning: not every source index could be read" >&2
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

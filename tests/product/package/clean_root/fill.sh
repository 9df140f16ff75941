#!/usr/bin/env bash
# Usage: fill.sh ROOT PACKAGE...
#
# Fills the folder ROOT with a small Debian system, from what is installed on this machine and so
# without a network: the essential packages, each PACKAGE, and all they depend on, with a package
# database that knows these alone.
set -euo pipefail

root=$1
shift
database=/var/lib/dpkg
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# Asks for installed packages without the lists of available ones, which may be incomplete just now.
installed_and_needed() {
    apt-cache -o Dir::State::Lists="$scratch" -o Dir::Cache="$scratch" \
        depends --recurse --installed --important "$@"
}

dpkg-query -W -f '${db:Status-Status} ${Package} ${Essential}\n' >"$scratch/all"
mapfile -t essential < <(sed -n 's/ yes$//p' "$scratch/all" | cut -d' ' -f2)
installed_and_needed "${essential[@]}" "$@" >"$scratch/needed"
# A virtual name, and one of several that would do, need not be a package's that is here.
grep '^[a-z0-9]' "$scratch/needed" | sort -u |
    comm -12 - <(sed -n 's/^installed //p' "$scratch/all" | cut -d' ' -f1 | sort -u) >"$scratch/packages"
mapfile -t packages <"$scratch/packages"

# No package holds these: folders, links to folders, users, links to a program chosen among several.
for link in /bin /sbin /lib /lib32 /lib64 /libx32; do
    if [ -L "$link" ]; then
        mkdir -p "$root/$(readlink "$link")"
        cp -P "$link" "$root$link"
    fi
done
mkdir -p "$root"/{dev,media,mnt,opt,proc,root,srv,etc/alternatives} \
    "$root$database"/{info,updates,triggers,alternatives}
cp /etc/{passwd,group} "$root/etc"
cp -P /etc/alternatives/* "$root/etc/alternatives"
find /usr/bin -type l -lname '/etc/alternatives/*' >"$scratch/files"

dpkg-query -s "${packages[@]}" | sed 's/^---$//' >"$root$database/status"
cp "$database/info/format" "$root$database/info"
for package in "${packages[@]}"; do
    cp "$database/info/$package".* "$database/info/$package:$(dpkg --print-architecture)".* \
        "$root$database/info" 2>/dev/null || true # one of the two is there
done
for triggers in "$database"/triggers/{File,ldconfig}; do # PATH PACKAGE, or PACKAGE
    awk 'NR == FNR { known[$1]; next } { name = $NF; sub("/.*", "", name) } name in known' \
        "$scratch/packages" "$triggers" >"$root$database/triggers/${triggers##*/}"
done

# Documentation stays away, its folders come. A file that this machine has removed is left out.
cat "$root$database"/info/*.list | grep -vE '^/usr/share/(doc|man|info|locale)/.*\.[^/]*$' |
    sort -u >>"$scratch/files"
sed -i 's#^/#./#' "$scratch/files"
tar -C / --no-recursion --ignore-failed-read --warning=no-failed-read -c -T "$scratch/files" |
    tar -C "$root" --no-same-owner --keep-directory-symlink -x

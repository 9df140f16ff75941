# Installing Debian packages: only those that are missing, and said beforehand. Needs common.sh.
# shellcheck shell=bash

missing_packages() {
    comm -13 \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p' | sort -u) \
        <(printf '%s\n' "$@" | sort -u)
}

install_packages() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    [ "${#missing[@]}" -gt 0 ] || return 0
    say "about to install with apt-get: ${missing[*]}"
    as_root apt-get -qq -o DPkg::Lock::Timeout=300 update
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -qq -y -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Use-Pty=0 --no-install-recommends install "${missing[@]}"
}

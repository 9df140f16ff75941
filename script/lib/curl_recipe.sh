# How the project's libcurl is built. Debian's own lacks c-ares, and with it DNS pinning.
# Needs common.sh and debian_source.sh.
# shellcheck shell=bash

# HTTP and HTTPS, through proxies, over OpenSSL, names resolved by c-ares; the verbose trace stays.
curl_options=(
    --enable-static --enable-shared --with-pic --enable-versioned-symbols
    --with-openssl --enable-ares --without-ca-bundle --with-ca-path=/etc/ssl/certs
    --disable-openssl-auto-load-config
    --without-zlib --without-brotli --without-zstd --without-nghttp2 --without-libidn2
    --without-libpsl --without-libgsasl --without-libssh --without-libssh2 --without-librtmp
    --disable-ftp --disable-file --disable-ldap --disable-ldaps --disable-rtsp --disable-dict
    --disable-telnet --disable-tftp --disable-pop3 --disable-imap --disable-smb --disable-smtp
    --disable-gopher --disable-mqtt --disable-websockets --disable-ntlm --disable-tls-srp
    --disable-unix-sockets --disable-cookies --disable-netrc --disable-doh --disable-alt-svc
    --disable-hsts --disable-mime --disable-progress-meter --disable-get-easy-options
    --disable-headers-api --disable-manual --disable-libcurl-option
    --disable-dependency-tracking --disable-debug
)
curl_cflags='-O2 -fstack-protector-strong -D_FORTIFY_SOURCE=2 -ffunction-sections -fdata-sections'
curl_ldflags='-Wl,-z,relro -Wl,-z,now'

# Debian keeps one source for three TLS libraries; the patches for the other two are applied on top.
prepare_curl_source() {
    local patch
    for patch in 99_nss 90_gnutls; do
        if [ -f "debian/patches/$patch.patch" ]; then
            patch -s -R -p1 <"debian/patches/$patch.patch"
        fi
    done
    autoreconf -fi
}

# Builds libcurl from the source in the current folder and installs it below $1.
build_curl() {
    prepare_curl_source
    CFLAGS=$curl_cflags LDFLAGS=$curl_ldflags ./configure --prefix="$1" "${curl_options[@]}"
    make -C lib -j"$(nproc)" install
    make -C include install
    make install-pkgconfigDATA
}

#!/usr/bin/env bash
# Usage: feeds.sh CMAKE CURL     in the project's folder; CC and READELF are set
#
# What OpenWrt's, Buildroot's and Yocto's descriptions of the package say is done as they do it: their
# options configure a build, and their lines install it. CURL is the prefix of a libcurl with c-ares,
# which stands for the image's.
. "$(dirname "$0")/../../../script/lib/common.sh"

cmake=$1
curl=$2
make_scratch
buildroot=packaging/buildroot/package/cloudagent
recipe=packaging/yocto/meta-cloudagent/recipes-support/cloudagent/cloudagent_0.1.0.bb
root=$scratch/root

# feed RULE FILE [MAKE-ARGUMENT...]: makes RULE, for which FILE is included as its builder does.
# shellcheck disable=SC2016  # make's variables
feed() {
    mkdir -p "$scratch/rules"
    touch "$scratch"/rules/{rules,package,cmake}.mk
    printf '%s\n' 'qstrip=$(subst ",,$(1))' 'INSTALL_DIR=install -d' 'INSTALL_BIN=install -m 755' \
        'INSTALL_CONF=install -m 600' 'INSTALL=install' "include $2" \
        'options:' '	@echo $(CMAKE_OPTIONS) $(CLOUDAGENT_CONF_OPTS)' \
        'openwrt:' '	$(call Package/cloudagent-kdump/install,$(ROOT))' \
        'collect:' '	$(Build/CollectLibraries)' \
        'buildroot:' '	$(CLOUDAGENT_INSTALL_RUN_KIT)' |
        make -s -f - "$1" TOPDIR="$scratch/rules" INCLUDE_DIR="$scratch/rules" ROOT="$root" \
            TARGET_DIR="$root" @D="$PWD" BR2_EXTERNAL_CLOUDAGENT_PATH=packaging/buildroot \
            CONFIG_CLOUDAGENT_TFA_HOST='"tfa.cloud.example"' \
            BR2_PACKAGE_CLOUDAGENT_TFA_HOST='"tfa.cloud.example"' "${@:3}"
}

expect_tree() {
    diff -u --label expected --label installed - <(cd "$root" && find . ! -type d | sort)
}

# installed OPTION...: what a build with these options installs is in $root.
installed() {
    local build=$scratch/build
    quietly "$scratch/log" "$cmake" -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
        -DCMAKE_INSTALL_LIBDIR=lib -DCURL_INCLUDE_DIR="$curl/include" -DCURL_LIBRARY="$curl/lib/libcurl.so" "$@"
    quietly "$scratch/log" "$cmake" --build "$build" --parallel 2
    DESTDIR=$root quietly "$scratch/log" "$cmake" --install "$build"
    grep -qF '"tfa.cloud.example"' "$build/generated/deployment.h" || die 'the host is not as configured'
}

# An agent built as images are, with the installed library and the image's libcurl, runs.
agent_runs() {
    local flags
    export PKG_CONFIG_PATH=$root/usr/lib/pkgconfig:$curl/lib/pkgconfig
    [ "$(pkg-config --libs-only-l libcloudagent)" = '-lcloudagent -lcurl ' ] || die 'the libraries differ'
    flags=$(pkg-config --define-prefix --cflags --libs libcloudagent)
    # shellcheck disable=SC2086  # words of a command
    "$CC" -std=c11 -Os -flto=auto -D_FORTIFY_SOURCE=2 -fstack-protector-strong -Wl,--as-needed,-z,relro,-z,now \
        tests/product/package/c_api_test.c -o "$scratch/agent" $flags
    LD_LIBRARY_PATH=$root/usr/lib:$curl/lib "$scratch/agent" || die 'the agent does not run'
}

check_image() {
    tests/product/package/needs.sh 'lib(cloudagent|curl|crypto|ssl|cjson|c|m)\.so\.[0-9]+' \
        "$root/usr/sbin/kdump" "$root/usr/lib/libcloudagent.so"
    tests/product/package/hardening.sh Release '' "$root/usr/sbin/kdump" "$root/usr/lib/libcloudagent.so"
    agent_runs
    rm -r "${root:?}"/usr/{include,lib/cmake,share}
    expect_tree
    rm -r "$root"
}

say 'Buildroot'
grep -q "$(sha256sum debian/copyright)" "$buildroot/cloudagent.hash" || die 'the hash of debian/copyright is old'
read -ra options < <(feed options "$buildroot/cloudagent.mk" cmake-package=)
installed -DBUILD_SHARED_LIBS=ON -DBUILD_TESTING=OFF "${options[@]}"
feed buildroot "$buildroot/cloudagent.mk" cmake-package=
check_image <<'END'
./etc/cloudagent/run.conf
./usr/lib/libcloudagent.so
./usr/lib/libcloudagent.so.0
./usr/lib/libcloudagent.so.0.1.0
./usr/lib/pkgconfig/libcloudagent.pc
./usr/sbin/cloudagent-run
./usr/sbin/kdump
END

say 'Yocto'
export CLOUD_TFA_HOST=tfa.cloud.example
read -ra options < <(eval "echo $(sed -n 's/^EXTRA_OECMAKE = //p' "$recipe")")
installed -UBUILD_SHARED_LIBS "${options[@]}"
# shellcheck disable=SC2034  # for the recipe
S=$PWD D=$root sbindir=/usr/sbin sysconfdir=/etc
eval "$(sed -n '/^do_install:append/,/^}/p' "$recipe" | sed '1d; $d')"
check_image <<'END'
./etc/cloudagent/run.conf
./usr/lib/libcloudagent.a
./usr/lib/libcloudagent.so
./usr/lib/libcloudagent.so.0
./usr/lib/libcloudagent.so.0.1.0
./usr/lib/pkgconfig/libcloudagent.pc
./usr/sbin/cloudagent-run
./usr/sbin/kdump
END

say 'OpenWrt'
mkdir -p "$scratch"/{deps/{lib,include},staging/usr/{lib,include/{openssl,cjson}},build-openwrt/usr/sbin}
cp "$("$CC" -print-multiarch | sed s,^,/usr/include/,)"/openssl/*.h /usr/include/openssl/*.h "$scratch/staging/usr/include/openssl"
touch "$scratch"/staging/usr/{lib/lib{ssl,crypto,cares,cjson}.a,include/ares.h} "$scratch/deps/lib/libcurl.a"
touch "$scratch/build-openwrt/usr/sbin/kdump"
openwrt=(packaging/openwrt/cloudagent/Makefile CURDIR="$PWD/packaging/openwrt/cloudagent"
    DEPS="$scratch/deps" STAGING_DIR="$scratch/staging" PKG_INSTALL_DIR="$scratch/build-openwrt")
feed collect "${openwrt[@]}"
read -ra options < <(feed options "${openwrt[@]}")
quietly "$scratch/log" "$cmake" -S . -B "$scratch/device" -DCMAKE_SKIP_RPATH=TRUE "${options[@]}"
grep "^OPENSSL_CRYPTO_LIBRARY.*=$scratch/deps/lib/libcrypto.a" "$scratch/device/CMakeCache.txt"
feed openwrt "${openwrt[@]}"
expect_tree <<'END'
./etc/cloudagent/run.conf
./etc/init.d/cloudagent-run
./usr/sbin/cloudagent-run
./usr/sbin/kdump
END

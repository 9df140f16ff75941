# Builds the static libraries of a device's program, small and for any toolchain: OpenSSL, c-ares,
# cJSON and libcurl; for other machines GoogleTest too. Needs debian_source.sh and curl_recipe.sh.
# shellcheck shell=bash disable=SC2154

# For size; the final link drops unused sections.
device_cflags='-Os -fPIC -ffunction-sections -fdata-sections -fno-asynchronous-unwind-tables'
device_cflags+=' -fstack-protector-strong -DNDEBUG'
# Sizes beyond 2 GiB and times beyond 2038 on 32-bit machines.
device_cflags+=' -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64'
link_time_cflags='-flto -ffat-lto-objects'
# OpenSSL's build adds this by itself, and the final link requires it of all objects.
no_exec_stack=-Wa,--noexecstack

# Leaves a TLS 1.2 and 1.3 client and the digests: RSA, ECDSA, Ed25519, ECDHE, X25519, AES, ChaCha20,
# SHA-2, SHA-1, MD5, the assembler code and the error texts.
openssl_options=(
    no-shared no-tests no-module no-dso no-engine no-dynamic-engine no-afalgeng no-loadereng
    no-legacy no-autoload-config no-async no-ui-console no-ssl-trace no-filenames
    no-ssl3 no-tls1 no-tls1_1 no-dtls no-srtp no-srp no-psk no-nextprotoneg no-ktls
    no-comp no-ct no-ts no-cms no-cmp no-ocsp no-rfc3779
    no-dh no-dsa no-ec2m no-aria no-bf no-blake2 no-camellia no-cast no-cmac no-des no-gost no-idea
    no-md4 no-mdc2 no-ocb no-rc2 no-rc4 no-rmd160 no-scrypt no-seed no-siphash no-siv no-sm2 no-sm3
    no-sm4 no-whirlpool
)

# For musl, where every page counts. The secure heap, which nothing here uses, needs the kernel's
# headers; multi-block hashes several records at a time, for servers. The assembler code of P-256 has a
# table of 152 kB, all of which a handshake reads.
smallest_openssl_options=(no-secure-memory no-multiblock)
without_p256_assembler='s/ecp_nistz256.c ecp_nistz256-[^ ]*//; s/ECP_NISTZ256_ASM//'

# In addition to curl_options: one program needs less than agents do.
device_curl_options=(--disable-shared --disable-crypto-auth --disable-dateparse --disable-socketpair)

# choose_target TARGET: sets target_name, toolchain_file, target_recipe, target_packages and, for musl,
# smallest. native needs no toolchain file; with one, the unit tests need GoogleTest's source. Debian's
# musl has no C++ library, so there are no unit tests for it.
choose_target() {
    target_name=$(basename "$1" .cmake)
    toolchain_file=
    target_packages=() smallest=
    target_recipe=("$project_root"/script/lib/{curl,device}_recipe.sh)
    case $1 in
    native) return ;;
    *.cmake) toolchain_file=$(realpath "$1") ;;
    *) toolchain_file=$project_root/cmake/toolchains/$1.cmake ;;
    esac
    [ -f "$toolchain_file" ] || die "there is no toolchain file $toolchain_file"
    target_recipe+=("$toolchain_file")
    target_packages=(googletest qemu-user-static)
    case $1 in
    arm64) target_packages+=(g++-aarch64-linux-gnu) ;;
    armhf) target_packages+=(g++-arm-linux-gnueabihf) ;;
    mipsel) target_packages+=(g++-mipsel-linux-gnu) ;;
    musl) target_packages=(musl-tools) ;;
    arm64-musl) target_packages=(qemu-user-static g++-aarch64-linux-gnu) ;;
    esac
    [[ $1 != *musl ]] || smallest=yes target_recipe+=("$project_root/cmake/musl.cmake")
}

# Reads toolchain file $1 (empty: this machine's compiler); sets target_machine, target_processor,
# target_cc, target_cflags, target_ar and target_ranlib.
read_toolchain() {
    cmake -S "$project_root/script/lib/toolchain_facts" -B facts --toolchain "$1"
    # shellcheck source=/dev/null
    . facts/facts.sh
}

# OpenSSL's name for the processor $1.
openssl_target() {
    case $1 in
    x86_64) echo linux-x86_64 ;;
    i?86) echo linux-x86 ;;
    aarch64) echo linux-aarch64 ;;
    arm*) echo linux-armv4 ;;
    mips64*) echo linux64-mips64 ;;
    mips*) echo linux-mips32 ;;
    riscv64) echo linux64-riscv64 ;;
    *64*) echo linux-generic64 ;;
    *) echo linux-generic32 ;;
    esac
}

# Where GCC turns 64-bit atomics into calls of libatomic, OpenSSL must use locks, as that library does.
lock_cflags() {
    # shellcheck disable=SC2086  # several words
    $target_cc $target_cflags -dM -E -x c /dev/null |
        grep -F __GCC_HAVE_SYNC_COMPARE_AND_SWAP_8 >/dev/null || echo -DBROKEN_CLANG_ATOMICS
}

build_openssl() {
    [ -z "$smallest" ] || sed -i "$without_p256_assembler" openssl/crypto/ec/build.info
    mkdir openssl-build
    (
        cd openssl-build
        CC=$target_cc AR=$target_ar RANLIB=$target_ranlib \
            CFLAGS="$target_cflags $device_cflags $link_time_cflags $(lock_cflags)" \
            ../openssl/Configure "$(openssl_target "$target_processor")" --prefix="$1" --libdir=lib \
            --openssldir=/etc/ssl "${openssl_options[@]}" ${smallest:+"${smallest_openssl_options[@]}"}
        make -j"$(nproc)" ENGINESDIR=/usr/lib MODULESDIR=/usr/lib build_libs
        make install_dev
    )
}

# build_with_cmake SOURCE PREFIX TOOLCHAIN-FILE [CMAKE-OPTION...]
build_with_cmake() {
    cmake -S "$1" -B "$1-build" --toolchain "$3" -DCMAKE_BUILD_TYPE=None \
        -DCMAKE_C_FLAGS_NONE="$device_cflags $no_exec_stack $link_time_cflags" -DCMAKE_AR="$target_ar" \
        -DCMAKE_RANLIB="$target_ranlib" -DCMAKE_INSTALL_PREFIX="$2" -DCMAKE_INSTALL_LIBDIR=lib \
        "${@:4}"
    cmake --build "$1-build" -j"$(nproc)" --target install
}

# Not with configure: each of its trial links would optimise all of OpenSSL.
build_device_curl() {
    local cflags="$target_cflags $device_cflags $no_exec_stack"
    (
        cd curl
        prepare_curl_source
        PKG_CONFIG_LIBDIR=$1/lib/pkgconfig CC=$target_cc AR=$target_ar RANLIB=$target_ranlib \
            CFLAGS=$cflags LDFLAGS=-fno-lto ./configure --prefix="$1" --host="$target_machine" \
            "${curl_options[@]}" "${device_curl_options[@]}" --with-openssl="$1" \
            --enable-ares="$1"
        make -C lib -j"$(nproc)" CFLAGS="$cflags $link_time_cflags" install
        make -C include install
    )
}

# Builds all libraries in the current folder into folder $1 with toolchain file $2 (may be empty).
build_device_dependencies() {
    local package
    read_toolchain "$2"
    for package in openssl c-ares cjson curl; do
        fetch_debian_source "$package" "$package"
    done
    build_openssl "$1"
    build_with_cmake c-ares "$1" "$2" \
        -DCARES_STATIC=ON -DCARES_SHARED=OFF -DCARES_BUILD_TOOLS=OFF
    build_with_cmake cjson "$1" "$2" \
        -DBUILD_SHARED_LIBS=OFF -DENABLE_CJSON_TEST=OFF -DENABLE_CUSTOM_COMPILER_FLAGS=OFF
    build_device_curl "$1"
    if [[ " ${target_packages[*]} " == *' googletest '* ]]; then
        cp -r /usr/src/googletest .
        build_with_cmake googletest "$1" "$2"
    fi
}

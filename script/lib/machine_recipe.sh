# Makes a machine that QEMU boots: Debian's kernel for virtual machines and a root file system of
# busybox. virtual_device/machine adds what makes it a device. Needs download_package.
# shellcheck shell=bash

machine_packages=(qemu-system-x86 busybox-static e2fsprogs lz4)
machine_modules=(virtio_pci virtio_blk virtio_net)

# The kernel package is downloaded and unpacked, never installed.
unpack_kernel() {
    download_package "$1" # its dependency is the current kernel
    download_package "$(dpkg-deb -f "$1"_*.deb Depends | grep -o 'linux-image-[^ ]*' | head -n 1)"
    dpkg-deb -x linux-image-[0-9]*.deb kernel
}

# le32 FILE OFFSET: a little-endian number of a kernel's header.
le32() {
    od -A n -t u4 -j "$2" -N 4 "$1" | tr -d ' '
}

# The kernel proper of a bzImage. QEMU starts it by itself, in less time and memory than it takes to
# unpack itself.
unpack_bzimage() {
    local sectors length
    sectors=$(od -A n -t u1 -j 497 -N 1 "$1")
    length=$(($(le32 "$1" 588) - 4)) # behind the archive stands its length
    head -c "$(((sectors + 1) * 512 + $(le32 "$1" 584) + length))" "$1" | tail -c "$length" | lz4 -d -c
}

# copy_modules FROM TO: the modules above and all that they need, with an index for modprobe.
copy_modules() {
    local release name
    release=$(basename "$1"/lib/modules/*)
    mkdir -p "$2/lib/modules/$release"
    busybox depmod -b "$1" "$release"
    for name in "${machine_modules[@]}"; do
        (cd "$1/lib/modules/$release" && sed -n "/\/$name\.ko:/s/://p" modules.dep | xargs cp -t "$2/lib/modules/$release")
    done
    busybox depmod -b "$2" "$release"
}

# make_machine FOLDER: fills it with kernel, root.cpio and qemu.
make_machine() {
    local applet
    unpack_kernel linux-image-cloud-amd64
    mkdir -p "$1" root/{bin,sbin,etc,dev,proc,sys,tmp,run,mnt/data,lib/modules,usr/bin,usr/sbin,usr/lib,var}
    unpack_bzimage kernel/boot/vmlinuz-* >"$1/kernel"
    cp /bin/busybox root/bin
    for applet in $(busybox --list-full); do
        [ -e "root/$applet" ] || ln -s /bin/busybox "root/$applet"
    done
    ln -s /bin/busybox root/init
    copy_modules "$PWD/kernel" "$PWD/root"
    (cd root && find . | busybox cpio -o -H newc) >"$1/root.cpio"
    cat >"$1/qemu" <<'QEMU'
# Starts the machine; virtual_device adds memory, disks, network and serial line.
# no_timer_check: on a busy host the check of the timer takes too long, and fails.
exec qemu-system-x86_64 -M pc -accel tcg -cpu max -kernel "$(dirname "$0")/kernel" \
    -append 'console=ttyS0 quiet no_timer_check cryptomgr.notests random.trust_cpu=on' "$@"
QEMU
}

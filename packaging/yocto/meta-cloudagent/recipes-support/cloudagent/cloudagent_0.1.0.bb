SUMMARY = "Diagnostic-dump uploader and client library for cloud-managed network devices"
SECTION = "net"
LICENSE = "CLOSED"

inherit cmake pkgconfig externalsrc

# The tree that holds this layer.
EXTERNALSRC = "${@os.path.realpath(d.getVar('THISDIR') + '/../../../../..')}"
EXTERNALSRC_BUILD = "${WORKDIR}/build"

DEPENDS = "c-ares cjson curl openssl"

CLOUD_TFA_HOST ?= "tfa.example.com"
EXTRA_OECMAKE = "-DCLOUD_SYSTEM_CURL=ON -DBUILD_TESTING=OFF -DCLOUD_TFA_HOST=${CLOUD_TFA_HOST}"

do_install:append() {
    install -D -m 0755 ${S}/packaging/run/cloudagent-run ${D}${sbindir}/cloudagent-run
    install -D -m 0644 ${S}/packaging/run/run.conf ${D}${sysconfdir}/cloudagent/run.conf
}

# Names of their own: kexec-tools has a package kdump, whose program lies in the same place.
PACKAGE_BEFORE_PN = "cloudagent-kdump libcloudagent"
FILES:cloudagent-kdump = "${sbindir}/kdump ${sbindir}/cloudagent-run ${sysconfdir}/cloudagent"
FILES:libcloudagent = "${libdir}/libcloudagent.so.*"
CONFFILES:cloudagent-kdump = "${sysconfdir}/cloudagent/run.conf"
RCONFLICTS:cloudagent-kdump = "kdump"
RDEPENDS:${PN} = "cloudagent-kdump libcloudagent"
ALLOW_EMPTY:${PN} = "1"

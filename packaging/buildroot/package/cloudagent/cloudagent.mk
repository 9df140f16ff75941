################################################################################
#
# cloudagent
#
################################################################################

CLOUDAGENT_VERSION = 0.1.0
CLOUDAGENT_SITE = $(realpath $(BR2_EXTERNAL_CLOUDAGENT_PATH)/../..)
CLOUDAGENT_SITE_METHOD = local
CLOUDAGENT_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude=/.deps --exclude=/build
CLOUDAGENT_LICENSE = reserved
CLOUDAGENT_LICENSE_FILES = debian/copyright
CLOUDAGENT_REDISTRIBUTE = NO
CLOUDAGENT_INSTALL_STAGING = YES
CLOUDAGENT_SUPPORTS_IN_SOURCE_BUILD = NO
CLOUDAGENT_DEPENDENCIES = host-pkgconf c-ares cjson libcurl openssl
CLOUDAGENT_CONF_OPTS = \
	-DCLOUD_SYSTEM_CURL=ON \
	-DCLOUD_TFA_HOST=$(call qstrip,$(BR2_PACKAGE_CLOUDAGENT_TFA_HOST))

ifeq ($(BR2_PACKAGE_CLOUDAGENT):$(BR2_PACKAGE_LIBCURL_OPENSSL):$(BR_BUILDING),y::y)
$(error cloudagent needs BR2_PACKAGE_LIBCURL_OPENSSL=y)
endif

define CLOUDAGENT_INSTALL_RUN_KIT
	$(INSTALL) -D -m 0755 $(@D)/packaging/run/cloudagent-run $(TARGET_DIR)/usr/sbin/cloudagent-run
	$(INSTALL) -D -m 0644 $(@D)/packaging/run/run.conf $(TARGET_DIR)/etc/cloudagent/run.conf
endef
CLOUDAGENT_POST_INSTALL_TARGET_HOOKS += CLOUDAGENT_INSTALL_RUN_KIT

$(eval $(cmake-package))

/// @file
/// The settings and status values that the cloud agents share, one value per file.
///
/// Settings are in /mnt/data/iss_config/current_config/ (SETTINGS below) and survive a reboot;
/// status values are in /tmp/app/cloud_tmp/ (STATUS below) and do not. The folders must exist. No
/// lock is taken: a reader may find a file that a writer has just emptied.
///
/// Getters store the file's value, or the documented default when the file cannot be opened.
/// Without a readable value in the file they leave the variable unchanged. They return 0 unless
/// noted. Text getters read one word into a buffer of 256 bytes; for a null pointer they return 1
/// and open nothing unless noted. The other getters ignore a null pointer.
///
/// Setters replace the file's content and add no newline. A text is cut at 255 characters. They
/// return 0, or 1 when the file cannot be opened or the text is null, unless noted.
///
/// A written file is synced before it is closed: after the call a power cut leaves the new value,
/// during the call the old value, the new one or an empty file.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Console debugging, SETTINGS/cloud_debug: 0 off, 1 or 2 on; 3 or more reads as 0. Default 0.
uint32_t api_cloud_debug_get(uint32_t *value) CLOUD_NOEXCEPT;

/// DHCP renewal, SETTINGS/cloud_RenewDHCP: 0 or 1; 2 or more reads as 1. A missing file reads as 1
/// and is created, holding "1"; it is removed again if it cannot be stored whole.
uint32_t api_cloud_RenewDHCP_get(uint32_t *value) CLOUD_NOEXCEPT;

/// DNS detection, SETTINGS/cloud_DetectDNS: the same rules as api_cloud_RenewDHCP_get.
uint32_t api_cloud_DetectDNS_get(uint32_t *value) CLOUD_NOEXCEPT;

/// Service catalogue, SETTINGS/cloud_etcd: 0, or 1 for any other value. Default 1.
uint32_t api_cloud_etcd_get(uint32_t *value) CLOUD_NOEXCEPT;

/// Firmware upgrade status, STATUS/cloud_fw_upgrade_status_file. Default 0. Returns the value.
uint32_t api_cloud_fw_upgrade_status_get(uint32_t *value) CLOUD_NOEXCEPT;

/// Firmware upgrade flag, STATUS/cloud_fw_upgrade_flag_file. Default 0.
uint32_t api_cloud_fw_upgrade_flag_get(int32_t *value) CLOUD_NOEXCEPT;

/// Configuration number, SETTINGS/cloud_config_number_file. No default: the buffer stays untouched.
/// The getter returns 0 for a null pointer too.
uint32_t api_cloud_config_number_set(const char *value) CLOUD_NOEXCEPT;
uint32_t api_cloud_config_number_get(char *value) CLOUD_NOEXCEPT;  ///< Reads it.

/// Check-in host, STATUS/checkin_file. Default: the deployment's check-in host.
uint32_t api_checkin_host_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_checkin_host_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Check-in path, STATUS/checkinStr_file. Default "/checkin".
uint32_t api_checkin_path_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_checkin_path_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Check-in interval in seconds, STATUS/checkin_interval_file. Default 300.
uint32_t api_checkin_interval_get(int32_t *value) CLOUD_NOEXCEPT;
uint32_t api_checkin_interval_set(int32_t value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Check-in status, STATUS/checkinStatus. No default: the buffer stays untouched.
uint32_t api_checkin_status_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_checkin_status_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Fallback host, STATUS/fallback_file. Default: the deployment's check-in host.
uint32_t api_fallback_host_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_fallback_host_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Keeper host, STATUS/connectionkeeperhost_file. Default: the deployment's keeper host.
uint32_t api_connection_keeper_host_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_connection_keeper_host_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Keeper path, STATUS/connectionkeeperpath_file. Default "/device/register".
uint32_t api_connection_keeper_path_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_connection_keeper_path_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Quenta server, STATUS/quenta_server_file. Default: the deployment's quenta host.
uint32_t api_quenta_server_get(char *value) CLOUD_NOEXCEPT;
uint32_t api_quenta_server_set(const char *value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Quenta port, STATUS/quenta_server_port_file. Default 443. The getter returns 1 for null.
uint32_t api_quenta_server_port_get(uint32_t *value) CLOUD_NOEXCEPT;
uint32_t api_quenta_server_port_set(uint32_t value) CLOUD_NOEXCEPT;  ///< Sets it.

/// Writes STATUS/sorvane_file, one line per entry, with "*" before entries that equal selected.
/// entries: count slots of 256 bytes; none for null or a count of 0 or less. selected may be null.
uint32_t api_sorvane_list_set(char (*entries)[256], int count, const char *selected) CLOUD_NOEXCEPT;

/// Writes "text(code)" to STATUS/server_connection_err, at most 255 characters: a longer text is
/// cut, the code never. Always returns 0.
uint32_t api_server_connection_err_set(const char *text, int code) CLOUD_NOEXCEPT;

/// Service-catalogue URL, SETTINGS/ETCD_file. Default: https, the deployment's catalogue host and
/// "/v1/kv/services?recurse=1". The setter always returns 0.
uint32_t api_etcd_url_set(const char *value) CLOUD_NOEXCEPT;
uint32_t api_etcd_url_get(char *value) CLOUD_NOEXCEPT;  ///< Reads it.

CLOUD_API_END

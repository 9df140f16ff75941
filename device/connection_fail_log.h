/// @file
/// The connection-failure log. During an outage of the cloud, the local service is asked to record
/// it after about half an hour and again after about an hour. Time is measured by the up-time, so
/// that setting the clock has no influence.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// 1 once this process has sent the half-hour or the one-hour request of this outage.
extern uint32_t conn_fail_logged_30m;
extern uint32_t conn_fail_logged_60m;  ///< The one-hour request.

/// 0 ends the outage: removes /tmp/app/cloud_tmp/conn_fail_log_time.txt and clears both flags. Any
/// other value opens one: the file then holds the up-time less 500 seconds, at least 0. Returns 0,
/// or -1 when the file cannot be created.
int api_conn_fail_log_time_set(uint32_t start) CLOUD_NOEXCEPT;

/// Reads the outage's start, in seconds of up-time, from that file. Returns 0 (without a number in
/// the file *out is unchanged), or -1 when the file cannot be opened.
int api_conn_fail_log_time_get(int32_t *out) CLOUD_NOEXCEPT;

/// Asks http://127.0.0.1:8000/api/cloud_fail_log whether logs may be created. Returns -1 for an
/// explicit no, else 0.
int api_cloud_fail_log_check(void) CLOUD_NOEXCEPT;

/// Call this repeatedly during an outage. The first call opens the outage; later ones POST an empty
/// body to http://127.0.0.1:8000/api/cloud_fail_log, once while it is 1801 to 3600 seconds old and
/// once when it is at least 3601. Does nothing while the file
/// /mnt/data/iss_config/cloud_conn_fail_log.stop is readable or the local service forbids logs.
/// Always returns 0.
int api_cloud_fail_log(void) CLOUD_NOEXCEPT;

CLOUD_API_END

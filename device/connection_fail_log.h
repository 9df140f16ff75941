/*
 * The connection-failure log: while the cloud cannot be reached, the local service is asked once
 * after about half an hour and once more after about an hour to record it. Time is the system's
 * up-time, so setting the clock does not disturb it.
 */
#ifndef CLOUDAGENT_DEVICE_CONNECTION_FAIL_LOG_H
#define CLOUDAGENT_DEVICE_CONNECTION_FAIL_LOG_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* 1 once the half-hour or the one-hour request of this outage has been sent by this process. */
extern uint32_t conn_fail_logged_30m;
extern uint32_t conn_fail_logged_60m;

/*
 * 0 ends the outage: removes /tmp/app/cloud_tmp/conn_fail_log_time.txt and clears both flags. Any
 * other value opens one: the file then holds the up-time less 500 seconds, at least 0. Returns 0,
 * or -1 when the file cannot be created.
 */
int api_conn_fail_log_time_set(uint32_t start) CLOUD_NOEXCEPT;

/* Reads the outage's start, seconds of up-time, from that file. Returns 0 (a file without a number
 * leaves *out as it was), or -1 when it cannot be read. */
int api_conn_fail_log_time_get(int32_t *out) CLOUD_NOEXCEPT;

/* Asks http://127.0.0.1:8000/api/cloud_fail_log whether logs may be created. Returns -1 when it
 * says no, 0 when it says yes or nothing usable. */
int api_cloud_fail_log_check(void) CLOUD_NOEXCEPT;

/*
 * Called again and again while the cloud cannot be reached: opens the outage or, when it is 1801 or
 * 3601 seconds old, POSTs an empty body to http://127.0.0.1:8000/api/cloud_fail_log, once each.
 * Does nothing while /mnt/data/iss_config/cloud_conn_fail_log.stop is readable or the local service
 * forbids it. Returns 0 always.
 */
int api_cloud_fail_log(void) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif

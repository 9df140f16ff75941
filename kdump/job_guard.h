/*
 * The entry into a job: one run of a job family at a time, and the process's network start-up.
 */
#ifndef CLOUDAGENT_KDUMP_JOB_GUARD_H
#define CLOUDAGENT_KDUMP_JOB_GUARD_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* 1 when /tmp/cloudwtpflag did not exist at start_processing, else 0. */
extern int g_turn_lock_absent;

/* 1 once libcurl has been initialised. */
extern int g_http_initialised;

/*
 * Claims a job family by creating marker, an empty file under /tmp, exclusively; then fills
 * KDUMPS_url (cloud_http/upload_url.h) and initialises libcurl.
 *
 * Returns 1 when the marker exists already: another run is active, and nothing else has happened.
 * Returns 0 otherwise, also when the marker cannot be created for another reason or is null: the
 * job then goes on without one. The caller removes the marker.
 */
uint32_t start_processing(const char *marker) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif

/// Starts a job: one run of a job family at a time. Initialises the network. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// 1 when /tmp/cloudwtpflag did not exist at start_processing, else 0.
extern int g_turn_lock_absent;

/// 1 once libcurl has been initialised.
extern int g_http_initialised;

/// Claims a job family by creating marker, the path of an empty file under /tmp; then fills
/// KDUMPS_url (cloud_http/upload_url.h) and initialises libcurl. The caller removes the marker.
///
/// Returns 1, and does nothing else, when the marker exists: another run is active. Returns 0
/// otherwise, also for a null marker or one that cannot be created: the job runs without it.
uint32_t start_processing(const char *marker) CLOUD_NOEXCEPT;

CLOUD_API_END

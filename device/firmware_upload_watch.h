/// Watches firmware uploads through the device's web interface. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Reads the web interface's marker /tmp/Firmware_uploading.txt and checks in /proc the data.cgi
/// process that it names. If that process is gone, removes the marker and /tmp/cgi/cgic_progress.
/// If it uploads over plain HTTP and is not running, kills it (signal 9) first. For another
/// uploader, removes the progress file only.
///
/// Returns 0: no upload, or a dead one was cleaned up; 1: data.cgi is uploading or could not be
/// killed; 2: another uploader is active.
uint32_t SN_Check_FW_upload_status(void) CLOUD_NOEXCEPT;

CLOUD_API_END

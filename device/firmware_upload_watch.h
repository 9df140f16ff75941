/*
 * Watching for a firmware image on its way in through the device's web interface.
 */
#ifndef CLOUDAGENT_DEVICE_FIRMWARE_UPLOAD_WATCH_H
#define CLOUDAGENT_DEVICE_FIRMWARE_UPLOAD_WATCH_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/*
 * Reads the web interface's upload marker /tmp/Firmware_uploading.txt and checks in /proc that the
 * upload program data.cgi it names is alive. When that is gone, the marker and
 * /tmp/cgi/cgic_progress are removed; a program that does not run on a plain-HTTP upload is killed
 * (signal 9), and both are removed. An upload by another uploader only loses its progress file.
 *
 * Returns 0: no upload, or a dead one was cleaned up; 1: data.cgi is uploading, or could not be
 * killed; 2: another uploader is.
 */
uint32_t SN_Check_FW_upload_status(void) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif

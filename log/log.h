/*
 * The diagnostic log: one operation, two sinks, each with its own switch.
 *
 * A line is "[" + local time in asctime layout + "]" + the message; messages bring their own line
 * ends. The flags are plain process-wide integers, set before the first line; the operation takes
 * no lock.
 */
#ifndef CLOUDAGENT_LOG_LOG_H
#define CLOUDAGENT_LOG_LOG_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* Non-zero: every line goes to /dev/console, in a single write. Zero at start. */
extern uint32_t g_console_debug;

/* Non-zero: every line is appended to g_log_path. Zero at start. */
extern uint32_t g_file_log;

/* NUL-terminated path of the log file; empty at start. */
extern char g_log_path[128];

/*
 * Writes one line to the sinks that are switched on; with both off it returns at once.
 *
 * format, ...: as for printf; a null text prints as "(null)". The message is never cut.
 *
 * The file sink takes the finished line as a format once more, without arguments: a conversion that
 * came in through an argument prints as zero, "(null)" or nothing there, while the console shows it
 * as it is. A line that cannot be written to the file is reported on standard output. A line that
 * cannot be allocated is dropped. Never fails towards the caller.
 */
void cloud_log(const char *format, ...) CLOUD_NOEXCEPT __attribute__((format(printf, 1, 2)));

CLOUD_API_END

#endif

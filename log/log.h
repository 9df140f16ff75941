/// @file
/// The diagnostic log: one function, two sinks, a switch for each.
///
/// A line is "[" + local time in asctime layout + "]" + the message, which brings its own line end.
/// The switches are process-wide; set them before the first line. The function takes no lock.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Non-zero: every line goes to /dev/console, in a single write. Zero at start.
extern uint32_t g_console_debug;

/// Non-zero: every line is appended to g_log_path. Zero at start.
extern uint32_t g_file_log;

/// NUL-terminated path of the log file; empty at start.
extern char g_log_path[128];

/// Writes one line to the sinks that are switched on; with both off it returns at once.
///
/// format, ...: as for printf; a null text prints as "(null)". The message is never cut.
///
/// Intentional quirk: the file sink takes the finished line as a format without arguments. A
/// conversion that came in through an argument prints as zero, a null pointer or nothing there; the
/// console shows it unchanged. A line that the file does not take, be it for a conversion that
/// stdio refuses, is reported on standard output. A line that cannot be allocated is dropped.
void cloud_log(const char *format, ...) CLOUD_NOEXCEPT __attribute__((format(printf, 1, 2)));

CLOUD_API_END

// Runs one row of the table of dump kinds.
#pragma once

#include "kdump/dump_kinds.h"

namespace cloudagent {

// Claims the kind's marker; then copies, requests a URL for and uploads each file; then cleans up.
// argument: the program's second argument, or "".
void run_upload_job(const DumpKind &kind, const char *argument) noexcept;

}  // namespace cloudagent

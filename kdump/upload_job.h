// The one engine that runs a row of the table of dump kinds.
#ifndef CLOUDAGENT_KDUMP_UPLOAD_JOB_H
#define CLOUDAGENT_KDUMP_UPLOAD_JOB_H

#include "kdump/dump_kinds.h"

// The name under which the program's own log lines speak.
constexpr const char *kProgramSpeaker = "main";

// Guards against a second run, then stages, requests, uploads and cleans up file by file.
// argument: the program's second argument, "" where there is none.
void run_upload_job(const DumpKind &kind, const char *argument) noexcept;

#endif

/*
 * The turn that the device's two agents share, recorded in /tmp/cloudwtpflag: empty when nobody
 * holds it, else a turn word. An advisory lock on the file is held inside the calls only.
 */
#ifndef CLOUDAGENT_KDUMP_TURN_LOCK_H
#define CLOUDAGENT_KDUMP_TURN_LOCK_H

#include "log/c_api.h"

CLOUD_API_BEGIN

/* 1 after a granted claim, 0 after a release and at start. */
extern int g_turn_held;

/*
 * Claims or confirms the turn, waiting for the file's lock. Granted when the file is empty ("cloud"
 * is then written) or holds "cloud" or "zorbcon". Returns 0 when granted, -1 for any other content
 * and on failure; g_turn_held is then unchanged. Creates the file with mode 0644; another
 * user's symbolic link in its place is a failure.
 *
 * A descriptor 0 from opening the file counts as a failure and is left open: call this with
 * standard input open.
 */
int api_get_cloudwtpflag(void) CLOUD_NOEXCEPT;

/* Gives the turn back by emptying the file. Returns 0, or -1 on failure. */
int api_release_cloudwtpflag(void) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif

/// @file
/// The turn that the device's two agents take, recorded in /tmp/cloudwtpflag: empty when it is
/// free, else the holder's word. The calls hold an advisory lock on the file until they return.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// 1 after a granted claim, 0 after a release and at start.
extern int g_turn_held;

/// Claims or confirms the turn, waiting for the file's lock. Grants it when the file is empty (then
/// writes "cloud") or holds "cloud" or "zorbcon". Returns 0 when granted; -1, with g_turn_held
/// unchanged, for any other content and on failure. Creates the file with mode 0644; refuses
/// another user's symbolic link in its place.
///
/// Call it with standard input open: descriptor 0 for the file counts as a failure and stays open.
int api_get_cloudwtpflag(void) CLOUD_NOEXCEPT;

/// Gives the turn back by emptying the file. Returns 0, or -1 on failure.
int api_release_cloudwtpflag(void) CLOUD_NOEXCEPT;

CLOUD_API_END

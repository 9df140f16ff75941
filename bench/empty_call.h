/* An empty call into a shared library: the least that cloud_log can cost. */
#pragma once

#ifdef __cplusplus
extern "C"
#endif
    void
    empty_log(const char *format, ...);

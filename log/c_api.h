/*
 * Linkage of the public functions: C names, visible outside the library, never throwing.
 */
#ifndef CLOUDAGENT_LOG_C_API_H
#define CLOUDAGENT_LOG_C_API_H

#ifdef __cplusplus
#define CLOUD_NOEXCEPT noexcept
#define CLOUD_API_BEGIN \
    extern "C" {        \
    _Pragma("GCC visibility push(default)")
#define CLOUD_API_END             \
    _Pragma("GCC visibility pop") \
    }
#else
/* Behind a declaration: never throws into a caller that is C++. */
#define CLOUD_NOEXCEPT
/* Before and after the declarations of a public header. */
#define CLOUD_API_BEGIN _Pragma("GCC visibility push(default)")
#define CLOUD_API_END _Pragma("GCC visibility pop")
#endif

#endif

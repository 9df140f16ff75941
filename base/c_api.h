/// @file
/// For every public header: fixed-width types, and visible functions of C that never throw.
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifndef __cplusplus
/// Follows a function's declaration: it never throws.
#define CLOUD_NOEXCEPT
/// Begins the declarations of a public header.
#define CLOUD_API_BEGIN _Pragma("GCC visibility push(default)")
/// Ends them.
#define CLOUD_API_END _Pragma("GCC visibility pop")
#else
#define CLOUD_NOEXCEPT noexcept
#define CLOUD_API_BEGIN \
    extern "C" {        \
    _Pragma("GCC visibility push(default)")
#define CLOUD_API_END             \
    _Pragma("GCC visibility pop") \
    }
#endif

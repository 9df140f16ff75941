#include "testing/calls.h"

#include <openssl/crypto.h>
#include <resolv.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "log/log.h"

extern "C" void curl_post_transfer_hook(CURL *handle) noexcept;
extern "C" void curl_info_dump(CURL *handle) noexcept;

namespace {

thread_local bool g_in_handler = false;

class InHandler {
  public:
    InHandler() { g_in_handler = true; }
    ~InHandler() { g_in_handler = false; }
    InHandler(const InHandler &) = delete;
    InHandler &operator=(const InHandler &) = delete;
};

// One call, by way of the handlers of the function.
template <auto *Function, class Real, class... Arguments>
auto pass(const Real &real, Arguments... arguments) {
    if (!g_in_handler && calls::handled<Function>) {
        const InHandler in_handler;
        if (calls::seen<Function>()) {
            calls::seen<Function>()(arguments...);
        }
        if (const auto &answer = calls::answer<Function>()) {
            const auto given = answer(arguments...);
            if constexpr (std::is_same_v<decltype(given), const bool>) {
                if (given) {
                    return;
                }
            } else if (given) {
                return *given;
            }
        }
    }
    return real(arguments...);
}

template <auto *Function, class Real>
auto intercepted(const Real &real) {
    return [&real](auto... arguments) { return pass<Function>(real, arguments...); };
}

}  // namespace

// The names are the linker's: __wrap_X is called for X, and __real_X is X, or null in a program
// that does not intercept it.
#define INTERCEPT_AS(symbol, result, function, parameters, arguments) \
    extern "C" [[gnu::weak]] result __real_##symbol parameters;       \
    extern "C" result __wrap_##symbol parameters;                     \
    extern "C" result __wrap_##symbol parameters {                    \
        return intercepted<::function>(__real_##symbol) arguments;    \
    }
#define INTERCEPT(result, function, parameters, arguments) \
    INTERCEPT_AS(function, result, function, parameters, arguments)

INTERCEPT(int, flock, (int file, int operation), (file, operation))
INTERCEPT(int, kill, (pid_t process, int number), (process, number))
INTERCEPT(unsigned, sleep, (unsigned seconds), (seconds))
INTERCEPT(int, system, (const char *command), (command))
INTERCEPT(int, unlink, (const char *path), (path))
INTERCEPT(ssize_t, write, (int file, const void *data, size_t size), (file, data, size))
INTERCEPT(int, fclose, (std::FILE * file), (file))
INTERCEPT(int, fsync, (int file), (file))
// Under both of libc's names.
INTERCEPT(std::time_t, time, (std::time_t * out), (out))
INTERCEPT_AS(__time64, std::time_t, time, (std::time_t * out), (out))
INTERCEPT(std::FILE *, fopen, (const char *path, const char *mode), (path, mode))
INTERCEPT_AS(fopen64, std::FILE *, fopen, (const char *path, const char *mode), (path, mode))
INTERCEPT(int, fstat, (int file, struct stat *status), (file, status))
INTERCEPT_AS(fstat64, int, fstat, (int file, struct stat *status), (file, status))
INTERCEPT(int, lstat, (const char *path, struct stat *status), (path, status))
INTERCEPT_AS(lstat64, int, lstat, (const char *path, struct stat *status), (path, status))
INTERCEPT_AS(__res_init, int, res_init, (), ())

INTERCEPT(OSSL_LIB_CTX *, OSSL_LIB_CTX_get0_global_default, (), ())
INTERCEPT(void, OPENSSL_cleanse, (void *memory, size_t size), (memory, size))

INTERCEPT(CURLcode, curl_global_init, (long flags), (flags))
INTERCEPT(CURL *, curl_easy_init, (), ())
INTERCEPT(CURLcode, curl_easy_perform, (CURL * handle), (handle))
INTERCEPT(void, curl_easy_cleanup, (CURL * handle), (handle))
INTERCEPT(const char *, curl_easy_strerror, (CURLcode code), (code))
INTERCEPT(curl_slist *, curl_slist_append, (curl_slist * list, const char *text), (list, text))
INTERCEPT(void, curl_slist_free_all, (curl_slist * list), (list))
INTERCEPT(void, curl_post_transfer_hook, (CURL * handle), (handle))
INTERCEPT(void, curl_info_dump, (CURL * handle), (handle))

extern "C" [[gnu::weak]] CURLcode __real_curl_easy_setopt(CURL *handle, CURLoption option, ...);
extern "C" CURLcode __wrap_curl_easy_setopt(CURL *handle, int number, ...);
extern "C" CURLcode __wrap_curl_easy_setopt(CURL *handle, int number, ...) {
    calls::OptionValue value = {};
    std::va_list arguments;
    va_start(arguments, number);  // of an int: an enumeration may be promoted
    const auto option = static_cast<CURLoption>(number);
    if (option < CURLOPTTYPE_OBJECTPOINT) {
        value.number = va_arg(arguments, long);
    } else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
        value.number = va_arg(arguments, curl_off_t);
    } else {
        value.pointer = va_arg(arguments, void *);
    }
    va_end(arguments);
    return pass<calls::set_option>(
        [](CURL *real_handle, CURLoption real_option, calls::OptionValue real_value) {
            return real_option < CURLOPTTYPE_OBJECTPOINT
                       ? __real_curl_easy_setopt(real_handle, real_option,
                                                 static_cast<long>(real_value.number))
                   : real_option >= CURLOPTTYPE_OFF_T && real_option < CURLOPTTYPE_BLOB
                       ? __real_curl_easy_setopt(real_handle, real_option, real_value.number)
                       : __real_curl_easy_setopt(real_handle, real_option, real_value.pointer);
        },
        handle, option, value);
}

extern "C" [[gnu::weak]] CURLcode __real_curl_easy_getinfo(CURL *handle, CURLINFO info, ...);
extern "C" CURLcode __wrap_curl_easy_getinfo(CURL *handle, int info, ...);
extern "C" CURLcode __wrap_curl_easy_getinfo(CURL *handle, int info, ...) {
    std::va_list arguments;
    va_start(arguments, info);
    void *const value = va_arg(arguments, void *);
    va_end(arguments);
    return pass<calls::get_info>(
        [](CURL *real_handle, CURLINFO real_info, void *real_value) {
            return __real_curl_easy_getinfo(real_handle, real_info, real_value);
        },
        handle, static_cast<CURLINFO>(info), value);
}

extern "C" [[gnu::weak]] void __real_cloud_log(const char *format, ...);
extern "C" void __wrap_cloud_log(const char *format, ...);
extern "C" void __wrap_cloud_log(const char *format, ...) {
    char text[4096];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    pass<calls::log_text>([](const char *line) { __real_cloud_log("%s", line); },
                          static_cast<const char *>(text));
}

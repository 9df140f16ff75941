/*
 * The one place that intercepts calls of libc, libcurl, OpenSSL and the log. A test program names
 * the functions in CMake, intercept_calls(TARGET FUNCTION...); from then on its tests may watch
 * them and answer in their place:
 *
 *   calls::seen<flock>() = [](int, int operation) { ... };   // runs before each call
 *   calls::answer<flock>() = [](int, int) { errno = ENOLCK; return -1; };
 *
 * An answer that returns std::nullopt (of a function without a result: false) lets the call go on.
 * Handlers belong to the thread that sets them; what they call themselves reaches the real
 * functions.
 */
#pragma once

#include <curl/curl.h>

#include <functional>
#include <optional>
#include <type_traits>

namespace calls {

// A variadic function is watched and answered under the name of one that is not.
struct OptionValue {
    void *pointer;      // of an option that takes a pointer
    curl_off_t number;  // of any other
};
CURLcode set_option(CURL *handle, CURLoption option, OptionValue value);  // curl_easy_setopt
CURLcode get_info(CURL *handle, CURLINFO info, void *value);              // curl_easy_getinfo
void log_text(const char *text);                                          // cloud_log

template <class Result, class... Arguments>
struct Handlers {
    using Seen = std::function<void(Arguments...)>;
    using Given = std::conditional_t<std::is_void_v<Result>, bool, std::optional<Result>>;
    using Answer = std::function<Given(Arguments...)>;
    Seen seen;
    Answer answer;
};
template <class Result, class... Arguments>
Handlers<Result, Arguments...> handlers_of(Result (*function)(Arguments...));

// A thread's first use of handlers allocates, a call without any does not.
template <auto *Function>
inline thread_local bool handled = false;

template <auto *Function>
auto &handlers() {
    handled<Function> = true;
    thread_local decltype(handlers_of(Function)) of_thread;
    return of_thread;
}

template <auto *Function>
auto &seen() {
    return handlers<Function>().seen;
}

template <auto *Function>
auto &answer() {
    return handlers<Function>().answer;
}

}  // namespace calls

// The only way to set an option of a transfer: libcurl tells types apart by option number and its
// compile-time check does not work from C++, so each kind of value has a setter of its own.
#ifndef CLOUDAGENT_CLOUD_HTTP_CURL_OPTIONS_H
#define CLOUDAGENT_CLOUD_HTTP_CURL_OPTIONS_H

#include <curl/curl.h>

// All accept a null handle; libcurl then refuses the option.
inline void set_long(CURL *handle, CURLoption option, long value) noexcept {
    curl_easy_setopt(handle, option, value);
}

inline void set_size(CURL *handle, CURLoption option, curl_off_t value) noexcept {
    curl_easy_setopt(handle, option, value);
}

inline void set_text(CURL *handle, CURLoption option, const char *value) noexcept {
    curl_easy_setopt(handle, option, value);
}

inline void set_pointer(CURL *handle, CURLoption option, void *value) noexcept {
    curl_easy_setopt(handle, option, value);
}

inline void set_write_callback(CURL *handle, curl_write_callback value) noexcept {
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, value);
}

// Every handle is used once: a TLS session cache saves nothing, and without memory it fails badly.
inline void set_no_session_cache(CURL *handle) noexcept {
    set_long(handle, CURLOPT_SSL_SESSIONID_CACHE, 0);
}

// The one status that counts as success.
constexpr long kHttpOk = 200;

#endif

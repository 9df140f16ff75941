#include "call_trace.h"

#include <openssl/crypto.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <map>
#include <sstream>

#include "call_texts.h"
#include "cloud_http/http_reply.h"

namespace trace {

Faults faults;

namespace {

bool g_on = false;
std::string g_lines;
std::vector<CURL *> g_handles;
std::map<CURL *, const HttpReply *> g_records;
std::vector<size_t> g_reallocations;
std::vector<void *> g_texts;

void note(const std::string &line) {
    if (g_on)
        g_lines += line + "\n";
}

std::string name_of(CURL *handle) {
    const auto newest = std::find(g_handles.rbegin(), g_handles.rend(), handle);
    if (handle == nullptr || newest == g_handles.rend())
        return "none";
    return std::to_string(g_handles.rend() - newest);
}

std::string pointer_text(CURL *handle, CURLoption option, void *value) {
    switch (option) {
        case CURLOPT_WRITEFUNCTION:
            return value == reinterpret_cast<void *>(http_reply_write) ? "http_reply_write"
                                                                       : "another function";
        case CURLOPT_WRITEDATA:
            if (handle != nullptr)
                g_records[handle] = static_cast<const HttpReply *>(value);
            return "record";
        case CURLOPT_READDATA:
            return "file " + path_of(static_cast<std::FILE *>(value));
        case CURLOPT_HTTPHEADER:
            return list_text(static_cast<const curl_slist *>(value));
        default:
            return quoted(static_cast<const char *>(value));
    }
}

void forget_text(void *text) {
    g_texts.erase(std::remove(g_texts.begin(), g_texts.end(), text), g_texts.end());
}

}  // namespace

void start() {
    g_lines.clear();
    g_handles.clear();
    g_records.clear();
    g_reallocations.clear();
    g_texts.clear();
    g_on = true;
}

std::string stop() {
    g_on = false;
    return g_lines;
}

std::string of_handle(const std::string &lines, int handle) {
    const std::string prefix = std::to_string(handle) + " ";
    std::istringstream all(lines);
    std::string chosen;
    for (std::string line; std::getline(all, line);)
        if (line.compare(0, prefix.size(), prefix) == 0)
            chosen += line.substr(prefix.size()) + "\n";
    return chosen;
}

const std::vector<size_t> &reallocations() { return g_reallocations; }

size_t texts_held() { return g_texts.size(); }

}  // namespace trace

using namespace trace;

// The names are the linker's: __wrap_X is called for X, and __real_X is X.
#pragma GCC diagnostic ignored "-Wpedantic"
extern "C" {

CURL *__real_curl_easy_init();
CURL *__wrap_curl_easy_init() {
    CURL *const handle = faults.init ? nullptr : __real_curl_easy_init();
    if (g_on)
        g_handles.push_back(handle);
    note("handle " + std::to_string(g_handles.size()));
    return handle;
}

CURLcode __real_curl_easy_setopt(CURL *handle, CURLoption option, ...);
CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...) {
    const std::string begin = name_of(handle) + " " + option_name(option) + " ";
    const auto fault = faults.options.find(option);
    if (fault != faults.options.end())
        return fault->second;
    CURLcode result = CURLE_OK;
    std::va_list arguments;
    va_start(arguments, option);
    if (option < CURLOPTTYPE_OBJECTPOINT) {
        const long value = va_arg(arguments, long);
        note(begin + std::to_string(value));
        result = __real_curl_easy_setopt(handle, option, value);
    } else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
        const curl_off_t value = va_arg(arguments, curl_off_t);
        note(begin + std::to_string(value));
        result = __real_curl_easy_setopt(handle, option, value);
    } else {
        void *const value = va_arg(arguments, void *);
        note(begin + pointer_text(handle, option, value));
        result = __real_curl_easy_setopt(handle, option, value);
    }
    va_end(arguments);
    return result;
}

CURLcode __real_curl_easy_perform(CURL *handle);
CURLcode __wrap_curl_easy_perform(CURL *handle) {
    note(name_of(handle) + " perform into " + record_text(g_records[handle]));
    return __real_curl_easy_perform(handle);
}

CURLcode __real_curl_easy_getinfo(CURL *handle, CURLINFO info, ...);
CURLcode __wrap_curl_easy_getinfo(CURL *handle, CURLINFO info, ...) {
    std::va_list arguments;
    va_start(arguments, info);
    void *const value = va_arg(arguments, void *);
    va_end(arguments);
    note(name_of(handle) +
         (info == CURLINFO_RESPONSE_CODE ? " status" : " info " + std::to_string(info)));
    return faults.info ? faults.info(info, value) : __real_curl_easy_getinfo(handle, info, value);
}

void __real_curl_easy_cleanup(CURL *handle);
void __wrap_curl_easy_cleanup(CURL *handle) {
    note(name_of(handle) + " cleanup");
    g_records.erase(handle);
    __real_curl_easy_cleanup(handle);
}

curl_slist *__real_curl_slist_append(curl_slist *list, const char *text);
curl_slist *__wrap_curl_slist_append(curl_slist *list, const char *text) {
    note("list append " + quoted(text) + " to " + list_text(list));
    return faults.header_list ? nullptr : __real_curl_slist_append(list, text);
}

void __real_curl_slist_free_all(curl_slist *list);
void __wrap_curl_slist_free_all(curl_slist *list) {
    note("list free " + list_text(list));
    __real_curl_slist_free_all(list);
}

void __real_curl_post_transfer_hook(CURL *handle);
void __wrap_curl_post_transfer_hook(CURL *handle) {
    note(name_of(handle) + " hook");
    __real_curl_post_transfer_hook(handle);
}

int __real___res_init();
int __wrap___res_init() {
    note("resolver init");
    return __real___res_init();
}

void __real_cloud_log(const char *format, ...);
void __wrap_cloud_log(const char *format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    char text[2048];
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    note("log " + quoted(text));
    __real_cloud_log("%s", text);
}

std::FILE *__real_fopen64(const char *path, const char *mode);
std::FILE *__wrap_fopen64(const char *path, const char *mode) {
    note("open " + std::string(path) + " " + mode);
    return __real_fopen64(path, mode);
}

int __real_fclose(std::FILE *file);
int __wrap_fclose(std::FILE *file) {
    note("close " + path_of(file));
    return __real_fclose(file);
}

int __real_fstat64(int descriptor, struct stat64 *status);
int __wrap_fstat64(int descriptor, struct stat64 *status) {
    return faults.file_status ? -1 : __real_fstat64(descriptor, status);
}

int __real_unlink(const char *path);
int __wrap_unlink(const char *path) {
    note("unlink " + std::string(path));
    return __real_unlink(path);
}

OSSL_LIB_CTX *__real_OSSL_LIB_CTX_get0_global_default();
OSSL_LIB_CTX *__wrap_OSSL_LIB_CTX_get0_global_default() {
    return faults.openssl ? nullptr : __real_OSSL_LIB_CTX_get0_global_default();
}

void *__real_malloc(size_t size);
void *__wrap_malloc(size_t size) {
    const bool fails = g_on && size != 0 && size == faults.allocation_of_bytes;
    return fails ? nullptr : __real_malloc(size);
}

void *__real_realloc(void *old, size_t size);
void *__wrap_realloc(void *old, size_t size) {
    if (g_on)
        g_reallocations.push_back(size);
    void *const fresh = faults.reallocation ? nullptr : __real_realloc(old, size);
    if (g_on && fresh != nullptr) {
        forget_text(old);
        g_texts.push_back(fresh);
    }
    return fresh;
}

void __real_free(void *memory);
void __wrap_free(void *memory) {
    forget_text(memory);
    __real_free(memory);
}

}  // extern "C"

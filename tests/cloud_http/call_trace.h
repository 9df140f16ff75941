/*
 * What the product asks of libcurl, libc and its own log, call by call. The linker puts the
 * functions of call_trace.cpp between the product and the real ones (see CMakeLists.txt); each
 * notes its call as a line and passes it on, or fails when a test asked for that.
 *
 *   handle 1                                  the first curl_easy_init since start()
 *   1 URL "http://..."                        an option of it, by libcurl's name of the option
 *   1 perform into {2, null, 0}               the state of the reply record at that moment
 *   log "curl_slist_append(): ...\n"          line ends and the like as in source text
 */
#pragma once

#include <curl/curl.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace trace {

// Forgets the lines and starts to note calls.
void start();

// The lines since start(), each ended by a line end. Stops to note calls.
std::string stop();

// The lines of one handle, without its number and without the lines between them.
std::string of_handle(const std::string &lines, int handle);

// What is to go wrong or to be answered differently; all back to normal with `faults = {}`.
struct Faults {
    bool init = false;                       // curl_easy_init gives null
    bool file_status = false;                // fstat fails
    bool header_list = false;                // curl_slist_append gives null
    bool reallocation = false;               // realloc gives null
    bool openssl = false;                    // OpenSSL found no memory when it started
    std::map<CURLoption, CURLcode> options;  // what curl_easy_setopt gives for some options
    size_t allocation_of_bytes = 0;          // malloc of that size gives null
    std::function<CURLcode(CURLINFO, void *value)> info;  // answers curl_easy_getinfo
};
extern Faults faults;

// Sizes asked of realloc since start().
const std::vector<size_t> &reallocations();

// How many texts from realloc(null) since start() have not been given back to free or realloc.
size_t texts_held();

}  // namespace trace

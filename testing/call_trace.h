/*
 * The calls that the product makes, a line each, from those that the program intercepts (calls.h):
 *
 *   handle 1                                  the first curl_easy_init since start()
 *   1 URL "http://..."                        an option of it, by libcurl's name of the option
 *   1 perform into {2, null, 0}               the state of the reply record at that moment
 *   log "curl_slist_append(): ...\n"          line ends and the like as in source text
 */
#pragma once

#include <string>

namespace trace {

// How values of the product's own types read.
struct Words {
    const void *reply_writer = nullptr;
    std::string (*record_text)(const void *record) = nullptr;
};
extern Words words;

// Forgets the lines and starts to note calls.
void start();

// The lines since start(), each ended by a line end. Stops to note calls.
std::string stop();

// The lines of one handle, without its number and without the lines between them.
std::string of_handle(const std::string &lines, int handle);

}  // namespace trace

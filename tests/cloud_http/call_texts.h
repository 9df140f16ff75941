/* The arguments of noted calls as text, for call_trace.cpp. */
#pragma once

#include <curl/curl.h>

#include <cstdio>
#include <string>

#include "cloud_http/http_reply.h"

namespace trace {

// In double quotes, with line ends and tabs as in source text.
std::string quoted(const char *text);

std::string option_name(CURLoption option);

std::string list_text(const curl_slist *list);

// The path under which the file was opened.
std::string path_of(std::FILE *file);

// The fields of a reply record; its text as "null" or "some".
std::string record_text(const HttpReply *record);

}  // namespace trace

#include "call_texts.h"

#include <unistd.h>

#include <map>

namespace trace {

std::string quoted(const char *text) {
    if (text == nullptr)
        return "null";
    std::string all = "\"";
    for (; *text != '\0'; ++text) {
        if (*text == '\n' || *text == '\t')
            all += *text == '\n' ? "\\n" : "\\t";
        else
            all += *text;
    }
    return all + "\"";
}

// libcurl's own table of names may be left out of it.
std::string option_name(CURLoption option) {
    static const std::map<CURLoption, const char *> names = {
        {CURLOPT_URL, "URL"},
        {CURLOPT_SSL_SESSIONID_CACHE, "SSL_SESSIONID_CACHE"},
        {CURLOPT_DNS_SERVERS, "DNS_SERVERS"},
        {CURLOPT_DNS_CACHE_TIMEOUT, "DNS_CACHE_TIMEOUT"},
        {CURLOPT_CUSTOMREQUEST, "CUSTOMREQUEST"},
        {CURLOPT_UPLOAD, "UPLOAD"},
        {CURLOPT_READDATA, "READDATA"},
        {CURLOPT_INFILESIZE_LARGE, "INFILESIZE_LARGE"},
        {CURLOPT_VERBOSE, "VERBOSE"},
        {CURLOPT_SSLCERT, "SSLCERT"},
        {CURLOPT_SSLKEY, "SSLKEY"},
        {CURLOPT_USE_SSL, "USE_SSL"},
        {CURLOPT_SSL_VERIFYPEER, "SSL_VERIFYPEER"},
        {CURLOPT_SSL_VERIFYHOST, "SSL_VERIFYHOST"},
        {CURLOPT_POSTFIELDS, "POSTFIELDS"},
        {CURLOPT_FOLLOWLOCATION, "FOLLOWLOCATION"},
        {CURLOPT_WRITEFUNCTION, "WRITEFUNCTION"},
        {CURLOPT_WRITEDATA, "WRITEDATA"},
        {CURLOPT_HTTPHEADER, "HTTPHEADER"},
        {CURLOPT_PROXY, "PROXY"},
        {CURLOPT_PROXY_SSL_VERIFYPEER, "PROXY_SSL_VERIFYPEER"},
        {CURLOPT_HTTPPROXYTUNNEL, "HTTPPROXYTUNNEL"},
    };
    const auto found = names.find(option);
    return found != names.end() ? found->second : "option " + std::to_string(option);
}

std::string list_text(const curl_slist *list) {
    if (list == nullptr)
        return "null";
    std::string all;
    for (; list != nullptr; list = list->next)
        all += (all.empty() ? "" : ", ") + quoted(list->data);
    return all;
}

std::string path_of(std::FILE *file) {
    char path[256] = "";
    const std::string link = "/proc/self/fd/" + std::to_string(fileno(file));
    return readlink(link.c_str(), path, sizeof path - 1) > 0 ? path : "?";
}

std::string record_text(const HttpReply *record) {
    if (record == nullptr)
        return "nothing";
    return "{" + std::to_string(record->mode) + ", " + (record->data != nullptr ? "some" : "null") +
           ", " + std::to_string(record->size) + "}";
}

}  // namespace trace

// Owners of the transfer library's handles.
#ifndef CLOUDAGENT_SUPPORT_OWNED_CURL_H
#define CLOUDAGENT_SUPPORT_OWNED_CURL_H

#include <curl/curl.h>

#include <memory>

struct CleanUpCurl {
    void operator()(CURL *handle) const noexcept { curl_easy_cleanup(handle); }
};

struct FreeHeaderList {
    void operator()(curl_slist *list) const noexcept { curl_slist_free_all(list); }
};

using OwnedCurl = std::unique_ptr<CURL, CleanUpCurl>;
using OwnedHeaderList = std::unique_ptr<curl_slist, FreeHeaderList>;

#endif

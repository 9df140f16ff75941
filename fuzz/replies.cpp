#include "replies.h"

#include "testing/calls.h"

// curl_info_dump asks for deprecated forms of some values.
#define CURL_DISABLE_DEPRECATION
#include <curl/curl.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

struct Handle {
    std::string url;
    bool has_url = false;
    std::string method = "GET";
    std::string body;
    std::string proxy;
    curl_write_callback write = nullptr;
    void *write_data = nullptr;
    std::FILE *upload = nullptr;
    curl_off_t upload_size = -1;
    char *error_text = nullptr;
    bool fails_on_error = false;
    long status = 0;
};

struct Reply {
    int code = CURLE_OK;
    long status = 200;
    std::string_view body;
};

fuzz::Input no_input(nullptr, 0);
fuzz::Input *input = &no_input;
std::string_view last_reply;
std::vector<fuzz::Request> all_requests;
int handles = 0;
int header_lines = 0;

Handle &from(CURL *handle) { return *static_cast<Handle *>(handle); }

// Removes a number, 0 to 999, from the beginning of text.
int take_number(std::string_view &text) {
    int number = 0;
    for (int digits = 0; digits < 3 && !text.empty(); ++digits) {
        if (text.front() < '0' || text.front() > '9') {
            break;
        }
        number = number * 10 + (text.front() - '0');
        text.remove_prefix(1);
    }
    if (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    return number;
}

Reply next_reply() {
    Reply reply;
    reply.body = input->empty() ? last_reply : input->block();
    const char sign = reply.body.empty() ? '\0' : reply.body.front();
    if (sign == '!' || sign == '#') {
        reply.body.remove_prefix(1);
        const int number = take_number(reply.body);
        if (sign == '#' && number >= 100) {
            reply.status = number;
        } else if (sign == '#') {  // to libcurl such a reply is not HTTP
            reply.code = CURLE_UNSUPPORTED_PROTOCOL;
        } else {
            reply.code = std::clamp<int>(number, CURLE_UNSUPPORTED_PROTOCOL, CURL_LAST - 1);
        }
    }
    return reply;
}

// False if the callback refuses.
bool deliver(const Handle &handle, std::string_view body) {
    for (std::size_t most = 1; !body.empty(); most *= 16) {
        const std::string_view chunk = body.substr(0, most);
        const std::unique_ptr<char[]> copy(new char[chunk.size()]);  // not terminated
        chunk.copy(copy.get(), chunk.size());
        if (handle.write(copy.get(), 1, chunk.size(), handle.write_data) != chunk.size()) {
            return false;
        }
        body.remove_prefix(chunk.size());
    }
    return true;
}

std::string read_upload(const Handle &handle) {
    std::string content;
    char piece[4096];
    for (std::size_t got = 0; (got = std::fread(piece, 1, sizeof piece, handle.upload)) > 0;) {
        content.append(piece, got);
    }
    REQUIRE(handle.upload_size == static_cast<curl_off_t>(content.size()));
    return content;
}

int transfer(Handle &handle) {
    if (!handle.has_url) {
        return CURLE_URL_MALFORMAT;
    }
    const Reply reply = next_reply();
    if (reply.code == CURLE_OK && handle.fails_on_error && reply.status >= 400) {
        handle.status = reply.status;
        return CURLE_HTTP_RETURNED_ERROR;
    }
    if (!deliver(handle, reply.body)) {
        return CURLE_WRITE_ERROR;
    }
    if (reply.code == CURLE_OK) {
        handle.status = reply.status;
        if (handle.upload != nullptr) {
            handle.body = read_upload(handle);
        }
    }
    return reply.code;
}

CURLcode set_option(CURL *curl, CURLoption option, calls::OptionValue value) {
    Handle &handle = from(curl);
    const auto *const text = static_cast<const char *>(value.pointer);
    switch (option) {
        case CURLOPT_URL:
            handle.url = text != nullptr ? text : "";
            handle.has_url = text != nullptr;
            break;
        case CURLOPT_CUSTOMREQUEST:
            handle.method = text;
            break;
        case CURLOPT_POSTFIELDS:
            REQUIRE(text != nullptr);  // libcurl would read standard input
            handle.body = text;
            break;
        case CURLOPT_PROXY:
            handle.proxy = text;
            break;
        case CURLOPT_WRITEFUNCTION:
            handle.write = reinterpret_cast<curl_write_callback>(value.pointer);
            break;
        case CURLOPT_WRITEDATA:
            handle.write_data = value.pointer;
            break;
        case CURLOPT_READDATA:
            handle.upload = static_cast<std::FILE *>(value.pointer);
            break;
        case CURLOPT_INFILESIZE_LARGE:
            handle.upload_size = value.number;
            break;
        case CURLOPT_ERRORBUFFER:
            handle.error_text = static_cast<char *>(value.pointer);
            break;
        case CURLOPT_FAILONERROR:
            handle.fails_on_error = value.number != 0;
            break;
        default:
            break;
    }
    return CURLE_OK;
}

CURLcode perform(CURL *curl) {
    Handle &handle = from(curl);
    const int code = transfer(handle);
    if (code != CURLE_OK && handle.error_text != nullptr) {
        std::memset(handle.error_text, 'e', CURL_ERROR_SIZE - 1);
        handle.error_text[CURL_ERROR_SIZE - 1] = '\0';
    }
    all_requests.push_back({std::move(handle.method), handle.url, std::move(handle.proxy),
                            std::move(handle.body), code, handle.status});
    return static_cast<CURLcode>(code);
}

CURLcode get_info(CURL *curl, CURLINFO info, void *value) {
    const Handle &handle = from(curl);
    switch (info & CURLINFO_TYPEMASK) {
        case CURLINFO_STRING:
            *static_cast<const char **>(value) =
                info == CURLINFO_EFFECTIVE_URL ? handle.url.c_str() : nullptr;
            break;
        case CURLINFO_DOUBLE:
            *static_cast<double *>(value) = 0.5;
            break;
        default:
            *static_cast<long *>(value) = info == CURLINFO_RESPONSE_CODE ? handle.status : 0;
    }
    return CURLE_OK;
}

bool free_list(curl_slist *list) {
    while (list != nullptr) {
        --header_lines;
        curl_slist *const next = list->next;
        std::free(list->data);
        delete list;
        list = next;
    }
    return true;
}

void answer_for_libcurl() {
    calls::answer<curl_global_init>() = [](long) { return CURLE_OK; };
    calls::answer<curl_easy_init>() = [] {
        ++handles;
        return new Handle;
    };
    calls::answer<curl_easy_cleanup>() = [](CURL *handle) {
        handles -= handle != nullptr ? 1 : 0;
        delete static_cast<Handle *>(handle);
        return true;
    };
    calls::answer<calls::set_option>() = set_option;
    calls::answer<curl_easy_perform>() = perform;
    calls::answer<calls::get_info>() = get_info;
    calls::answer<curl_easy_strerror>() = [](CURLcode) { return "in this run's own words"; };
    calls::answer<curl_slist_append>() = [](curl_slist *list, const char *text) {
        ++header_lines;
        return new curl_slist{strdup(text), list};
    };
    calls::answer<curl_slist_free_all>() = free_list;
}

}  // namespace

namespace fuzz {

void answer_with(Input &replies, std::string_view last) {
    answer_for_libcurl();
    input = &replies;
    last_reply = last;
    all_requests.clear();
}

const std::vector<Request> &requests() { return all_requests; }

bool all_released() { return handles == 0 && header_lines == 0; }

}  // namespace fuzz

#include "replies.h"

// The reader of the log dump asks for classic forms of some values.
#define CURL_DISABLE_DEPRECATION
#include <curl/curl.h>

#include <algorithm>
#include <cstdarg>
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

Handle *from(CURL *handle) { return static_cast<Handle *>(handle); }

// A number at the beginning of text, which it leaves; 0 to 999.
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
        } else if (sign == '#') {  // libcurl takes such a reply for no HTTP
            reply.code = CURLE_UNSUPPORTED_PROTOCOL;
        } else {
            reply.code = std::clamp<int>(number, CURLE_UNSUPPORTED_PROTOCOL, CURL_LAST - 1);
        }
    }
    return reply;
}

// False when the callback refuses.
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

void set_text(Handle &handle, unsigned option, const char *text) {
    const std::string value = text != nullptr ? text : "";
    switch (option) {
        case CURLOPT_URL:
            handle.url = value;
            handle.has_url = text != nullptr;
            break;
        case CURLOPT_CUSTOMREQUEST:
            handle.method = value;
            break;
        case CURLOPT_POSTFIELDS:
            REQUIRE(text != nullptr);  // libcurl would read standard input
            handle.body = value;
            break;
        case CURLOPT_PROXY:
            handle.proxy = value;
            break;
        default:
            break;
    }
}

}  // namespace

namespace fuzz {

void answer_with(Input &replies, std::string_view last) {
    input = &replies;
    last_reply = last;
    all_requests.clear();
}

const std::vector<Request> &requests() { return all_requests; }

bool all_released() { return handles == 0 && header_lines == 0; }

}  // namespace fuzz

extern "C" {

CURLcode curl_global_init(long) { return CURLE_OK; }

CURL *curl_easy_init() {
    ++handles;
    return new Handle;
}

void curl_easy_cleanup(CURL *handle) {
    handles -= handle != nullptr ? 1 : 0;
    delete from(handle);
}

// va_start cannot follow an enumeration, which is what libcurl declares; so these have names of
// their own here.
CURLcode set_option(CURL *curl, unsigned option, ...) __asm__("curl_easy_setopt");
CURLcode get_info(CURL *curl, unsigned info, ...) __asm__("curl_easy_getinfo");

CURLcode set_option(CURL *curl, unsigned option, ...) {
    Handle &handle = *from(curl);
    std::va_list values;
    va_start(values, option);
    if (option >= CURLOPTTYPE_OFF_T) {
        const curl_off_t size = va_arg(values, curl_off_t);
        if (option == CURLOPT_INFILESIZE_LARGE) {
            handle.upload_size = size;
        }
    } else if (option == CURLOPT_WRITEFUNCTION) {
        handle.write = va_arg(values, curl_write_callback);
    } else if (option == CURLOPT_WRITEDATA) {
        handle.write_data = va_arg(values, void *);
    } else if (option == CURLOPT_READDATA) {
        handle.upload = va_arg(values, std::FILE *);
    } else if (option == CURLOPT_ERRORBUFFER) {
        handle.error_text = va_arg(values, char *);
    } else if (option >= CURLOPTTYPE_OBJECTPOINT && option != CURLOPT_HTTPHEADER) {
        set_text(handle, option, va_arg(values, const char *));
    } else if (option == CURLOPT_FAILONERROR) {
        handle.fails_on_error = va_arg(values, long) != 0;
    }
    va_end(values);
    return CURLE_OK;
}

CURLcode curl_easy_perform(CURL *curl) {
    Handle &handle = *from(curl);
    const int code = transfer(handle);
    if (code != CURLE_OK && handle.error_text != nullptr) {
        std::memset(handle.error_text, 'e', CURL_ERROR_SIZE - 1);
        handle.error_text[CURL_ERROR_SIZE - 1] = '\0';
    }
    all_requests.push_back({std::move(handle.method), handle.url, std::move(handle.proxy),
                            std::move(handle.body), code, handle.status});
    return static_cast<CURLcode>(code);
}

CURLcode get_info(CURL *curl, unsigned info, ...) {
    Handle &handle = *from(curl);
    std::va_list values;
    va_start(values, info);
    switch (info & CURLINFO_TYPEMASK) {
        case CURLINFO_STRING:
            *va_arg(values, const char **) =
                info == CURLINFO_EFFECTIVE_URL ? handle.url.c_str() : nullptr;
            break;
        case CURLINFO_DOUBLE:
            *va_arg(values, double *) = 0.5;
            break;
        default:
            *va_arg(values, long *) = info == CURLINFO_RESPONSE_CODE ? handle.status : 0;
    }
    va_end(values);
    return CURLE_OK;
}

const char *curl_easy_strerror(CURLcode) { return "in this run's own words"; }

curl_slist *curl_slist_append(curl_slist *list, const char *text) {
    ++header_lines;
    return new curl_slist{strdup(text), list};
}

void curl_slist_free_all(curl_slist *list) {
    while (list != nullptr) {
        --header_lines;
        curl_slist *const next = list->next;
        std::free(list->data);
        delete list;
        list = next;
    }
}

}  // extern "C"

#include "testing/call_trace.h"

#include <resolv.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

#include "testing/calls.h"

extern "C" void curl_post_transfer_hook(CURL *handle) noexcept;
extern "C" void curl_info_dump(CURL *handle) noexcept;

namespace trace {

Words words;

namespace {

struct Handle {
    int number;
    const void *record;
};

std::string g_lines;
int g_made = 0;
std::map<CURL *, Handle> g_handles;

void note(const std::string &line) { g_lines += line + "\n"; }

// One that is not known yet is the newest; where curl_easy_init is not intercepted, each is 1.
Handle &known(CURL *handle) {
    return g_handles.insert({handle, {std::max(g_made, 1), nullptr}}).first->second;
}

void note(CURL *handle, const std::string &what) {
    note((handle != nullptr ? std::to_string(known(handle).number) : "none") + " " + what);
}

std::string quoted(const char *text) {
    if (text == nullptr) {
        return "null";
    }
    std::string all = "\"";
    for (; *text != '\0'; ++text) {
        all += *text == '\n' ? "\\n" : *text == '\t' ? "\\t" : std::string(1, *text);
    }
    return all + "\"";
}

std::string list_text(const curl_slist *list) {
    std::string all;
    for (const curl_slist *item = list; item != nullptr; item = item->next) {
        all += (all.empty() ? "" : ", ") + quoted(item->data);
    }
    return list != nullptr ? all : "null";
}

std::string path_of(std::FILE *file) {
    char path[256] = "";
    const std::string link = "/proc/self/fd/" + std::to_string(fileno(file));
    return readlink(link.c_str(), path, sizeof path - 1) > 0 ? path : "?";
}

// libcurl may have been built without its own table of names.
std::string option_name(CURLoption option) {
#define NAME(name) \
    { CURLOPT_##name, #name }
    static const std::map<CURLoption, const char *> names = {
        NAME(CAPATH),
        NAME(CONNECTTIMEOUT),
        NAME(CUSTOMREQUEST),
        NAME(DNS_CACHE_TIMEOUT),
        NAME(DNS_SERVERS),
        NAME(ERRORBUFFER),
        NAME(FAILONERROR),
        NAME(FOLLOWLOCATION),
        NAME(HTTPHEADER),
        NAME(HTTPPROXYTUNNEL),
        NAME(INFILESIZE_LARGE),
        NAME(POSTFIELDS),
        NAME(PROXY),
        NAME(PROXY_SSL_VERIFYPEER),
        NAME(READDATA),
        NAME(SSLCERT),
        NAME(SSLKEY),
        NAME(SSL_SESSIONID_CACHE),
        NAME(SSL_VERIFYHOST),
        NAME(SSL_VERIFYPEER),
        NAME(TIMEOUT),
        NAME(UPLOAD),
        NAME(URL),
        NAME(USE_SSL),
        NAME(VERBOSE),
        NAME(WRITEDATA),
        NAME(WRITEFUNCTION),
    };
#undef NAME
    const auto found = names.find(option);
    return found != names.end() ? found->second : "option " + std::to_string(option);
}

std::string value_text(CURL *handle, CURLoption option, calls::OptionValue value) {
    if (option < CURLOPTTYPE_OBJECTPOINT || option >= CURLOPTTYPE_OFF_T) {
        return std::to_string(value.number);
    }
    switch (option) {
        case CURLOPT_WRITEFUNCTION:
            return value.pointer == words.reply_writer ? "http_reply_write" : "another function";
        case CURLOPT_WRITEDATA:
            if (handle != nullptr) {
                known(handle).record = value.pointer;
            }
            return "record";
        case CURLOPT_ERRORBUFFER:
            return "buffer";
        case CURLOPT_READDATA:
            return "file " + path_of(static_cast<std::FILE *>(value.pointer));
        case CURLOPT_HTTPHEADER:
            return list_text(static_cast<const curl_slist *>(value.pointer));
        default:
            return quoted(static_cast<const char *>(value.pointer));
    }
}

template <class Seen, class Handler>
void set(bool on, Seen &seen, const Handler &handler) {
    seen = nullptr;
    if (on) {
        seen = handler;
    }
}

void note_handles(bool on) {
    set(on, calls::seen<curl_easy_init>(), [] { note("handle " + std::to_string(++g_made)); });
    set(on, calls::seen<calls::set_option>(), [](CURL *handle, CURLoption option, auto value) {
        note(handle, option_name(option) + " " + value_text(handle, option, value));
    });
    set(on, calls::seen<curl_easy_perform>(), [](CURL *handle) {
        const void *const record = known(handle).record;
        note(handle, "perform into " + (words.record_text ? words.record_text(record) : "record"));
    });
    set(on, calls::seen<calls::get_info>(), [](CURL *handle, CURLINFO info, void *) {
        note(handle, info == CURLINFO_RESPONSE_CODE ? "status" : "info " + std::to_string(info));
    });
    set(on, calls::seen<curl_post_transfer_hook>(), [](CURL *handle) { note(handle, "hook"); });
    set(on, calls::seen<curl_info_dump>(), [](CURL *handle) { note(handle, "info"); });
    set(on, calls::seen<curl_easy_cleanup>(), [](CURL *handle) {
        note(handle, "cleanup");
        g_handles.erase(handle);
    });
}

void note_others(bool on) {
    set(on, calls::seen<curl_slist_append>(), [](const curl_slist *list, const char *text) {
        note("list append " + quoted(text) + " to " + list_text(list));
    });
    set(on, calls::seen<curl_slist_free_all>(),
        [](const curl_slist *list) { note("list free " + list_text(list)); });
    set(on, calls::seen<res_init>(), [] { note("resolver init"); });
    set(on, calls::seen<calls::log_text>(), [](const char *text) { note("log " + quoted(text)); });
    set(on, calls::seen<fopen>(),
        [](const char *path, const char *mode) { note("open " + std::string(path) + " " + mode); });
    set(on, calls::seen<fclose>(), [](std::FILE *file) { note("close " + path_of(file)); });
    set(on, calls::seen<unlink>(), [](const char *path) { note("unlink " + std::string(path)); });
}

}  // namespace

void start() {
    g_lines.clear();
    g_handles.clear();
    g_made = 0;
    note_handles(true);
    note_others(true);
}

std::string stop() {
    note_handles(false);
    note_others(false);
    return g_lines;
}

std::string of_handle(const std::string &lines, int handle) {
    const std::string prefix = std::to_string(handle) + " ";
    std::istringstream all(lines);
    std::string chosen;
    for (std::string line; std::getline(all, line);) {
        if (line.compare(0, prefix.size(), prefix) == 0) {
            chosen += line.substr(prefix.size()) + "\n";
        }
    }
    return chosen;
}

}  // namespace trace

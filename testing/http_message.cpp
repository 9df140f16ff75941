#include "testing/http_message.h"

#include <strings.h>

#include <map>
#include <sstream>

namespace world {
namespace {

std::string reason(int status) {
    static const std::map<int, const char *> reasons = {
        {200, "OK"},
        {201, "Created"},
        {204, "No Content"},
        {302, "Found"},
        {307, "Temporary Redirect"},
        {400, "Bad Request"},
        {403, "Forbidden"},
        {404, "Not Found"},
        {405, "Method Not Allowed"},
        {410, "Gone"},
        {500, "Internal Server Error"},
        {503, "Service Unavailable"},
    };
    const auto found = reasons.find(status);
    return found != reasons.end() ? found->second : "Status";
}

}  // namespace

std::string Request::header(const std::string &name) const {
    for (const auto &[key, value] : headers)
        if (strcasecmp(key.c_str(), name.c_str()) == 0)
            return value;
    return "";
}

Reply json_reply(std::string text) {
    Reply reply;
    reply.body = std::move(text);
    reply.headers.emplace_back("Content-Type", "application/json");
    return reply;
}

Reply status_reply(int status, std::string body) {
    Reply reply;
    reply.status = status;
    reply.body = std::move(body);
    return reply;
}

Reply redirect_reply(std::string location, int status) {
    Reply reply;
    reply.status = status;
    reply.headers.emplace_back("Location", std::move(location));
    return reply;
}

Reply fault_reply(Fault::Kind kind, uint64_t amount) {
    Reply reply;
    reply.fault = {kind, amount};
    return reply;
}

std::string wire_text(const Reply &reply, bool with_body) {
    std::string text =
        "HTTP/1.1 " + std::to_string(reply.status) + " " + reason(reply.status) + "\r\n";
    for (const auto &[name, value] : reply.headers)
        text += name + ": " + value + "\r\n";
    if (reply.status != 204)
        text += "Content-Length: " + std::to_string(reply.body.size()) + "\r\n";
    text += "Connection: close\r\n\r\n";
    return with_body ? text + reply.body : text;
}

bool parse_head(const std::string &text, Request &out) {
    std::istringstream lines(text);
    std::string line;
    std::string version;
    if (!std::getline(lines, line))
        return false;
    std::istringstream first(line);
    if (!(first >> out.method >> out.target >> version) || version.compare(0, 5, "HTTP/") != 0)
        return false;
    while (std::getline(lines, line) && line != "\r") {
        const size_t colon = line.find(':');
        if (colon == std::string::npos)
            return false;
        const size_t from = line.find_first_not_of(" \t", colon + 1);
        const size_t to = line.find_last_not_of(" \t\r");
        out.headers.emplace_back(line.substr(0, colon), from == std::string::npos || to < from
                                                            ? ""
                                                            : line.substr(from, to - from + 1));
    }
    return true;
}

}  // namespace world

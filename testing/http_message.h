/* A request as a server received it, and the reply or fault that answers it. */
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace world {

using Headers = std::vector<std::pair<std::string, std::string>>;

struct Request {
    std::string method;
    std::string target;  // path and query, as sent
    Headers headers;     // names and values as sent, in order
    std::string body;    // as long as no body_sink took it
    uint64_t body_size = 0;
    std::string client_certificate;  // its common name; empty when none was shown
    std::string server_name;         // the host the TLS client asked for; empty without TLS
    std::function<void(const char *, size_t)> body_sink;
    size_t number = 0;  // for the handler's own use

    // The value of the first header of that name in any letter case; empty when absent.
    std::string header(const std::string &name) const;
    std::string path() const { return target.substr(0, target.find('?')); }
};

// A fault of an exchange. `amount` is in bytes, or bytes per second for trickle.
struct Fault {
    enum class Kind {
        none,
        drop_at_accept,   // closed before a byte is read
        other_authority,  // the certificate shown: of an authority that the device does not know,
        self_signed,      // its own authority,
        expired,          // no longer valid,
        not_yet_valid,    // valid tomorrow,
        other_host,       // or for another host name
        drop_after_headers,  // closed when the request's headers are in
        drop_after_bytes,    // closed after `amount` bytes of the request's body
        never_answer,        // reads everything, answers nothing until the client gives up
        trickle,             // body read and reply sent at `amount` bytes a second
        garbage,             // the reply is not HTTP
        truncate,            // closed after `amount` bytes of the reply's body
    };
    Kind kind = Kind::none;
    uint64_t amount = 0;
};

struct Reply {
    int status = 200;
    std::string body;
    Headers headers;  // Content-Length and Connection are added
    Fault fault;
};

Reply json_reply(std::string text);
Reply status_reply(int status, std::string body = "");
Reply redirect_reply(std::string location, int status = 302);
Reply fault_reply(Fault::Kind kind, uint64_t amount = 0);

// The reply as it goes over the wire, with or without its body.
std::string wire_text(const Reply &reply, bool with_body);

// Parses "GET /x HTTP/1.1\r\nName: value\r\n...\r\n"; false when it is no HTTP request.
bool parse_head(const std::string &text, Request &out);

}  // namespace world

/*
 * Base of all fakes: it records each request and answers it with the next reply or fault in the
 * script of its endpoint; without a script with an answer of its own.
 */
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "testing/exchange_record.h"
#include "testing/http_server.h"
#include "testing/sha256.h"

namespace world {

// One entry of an endpoint's script. Without a fixed reply the service answers as it always does.
struct ScriptedReply {
    std::optional<Reply> fixed;
    Fault fault;
};

// Endpoint name -> replies in order, the last one repeated.
using Scripts = std::map<std::string, std::vector<ScriptedReply>>;

// A fault's name in scenarios and records ("drop-after-headers"); all names, for messages.
const char *fault_name(Fault::Kind kind);
const std::vector<Fault::Kind> &all_faults();

class Service : public HttpHandler {
  public:
    Service(std::string name, ExchangeRecord &record, Scripts scripts)
        : name_(std::move(name)), record_(record), scripts_(std::move(scripts)) {}

    // Before a request is read its endpoint is unknown: a script for "*" drops whatever comes.
    Admission admit(const std::string &server_name) override;
    void not_agreed(const std::string &server_name, const std::string &reason) override;
    Fault begin(Request &request) override;
    Reply answer(Request &request) override;
    void broken_off(Request &request) override;

  protected:
    // The endpoint a request is for, as scripts name it; and the part of the system it belongs to.
    virtual std::string endpoint_of(const Request &request) = 0;
    virtual std::string part_of(const std::string &endpoint) { return endpoint; }
    virtual std::string origin_of(const Request &) { return "http://127.0.0.1:8000"; }
    // The service's own answer. `digest` is the body's.
    virtual Reply own_answer(Request &request, const std::string &endpoint,
                             const std::string &digest) = 0;
    // Where a long body goes, beside the record: called once per request before its body.
    virtual std::function<void(std::string_view)> keeper(const Request &, const std::string &) {
        return {};
    }
    void set_script(const std::string &endpoint, std::vector<ScriptedReply> replies);
    bool has_script(const std::string &endpoint);
    // Records a connection that brought no request.
    void note_connection(const std::string &part, const std::string &url,
                         const std::string &mishap);
    // What the script of `endpoint` wants for a new connection; takes that entry.
    Fault::Kind fault_of_connection(const std::string &endpoint, const std::string &url);

    const std::string name_;
    ExchangeRecord &record_;

  private:
    struct Open {
        std::string endpoint;
        ScriptedReply planned;
        Sha256 digest;
        std::function<void(std::string_view)> keeper;
        uint64_t noted = 0;  // body bytes, as last shown in the record
    };

    std::optional<ScriptedReply> next_of(const std::string &endpoint);
    std::shared_ptr<Open> take_open(size_t number);
    void end(const Request &request, const std::string &digest, const Reply *reply,
             const std::string &mishap);

    std::mutex guard_;
    Scripts scripts_;
    std::map<std::string, size_t> used_;
    std::map<size_t, std::shared_ptr<Open>> open_;
};

}  // namespace world

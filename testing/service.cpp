#include "testing/service.h"

#include <algorithm>

namespace world {
namespace {

constexpr uint64_t kProgressStep = 1 << 20;

struct FaultName {
    Fault::Kind kind;
    const char *name;
};

constexpr FaultName kFaultNames[] = {
    {Fault::Kind::drop_at_accept, "drop-at-accept"},
    {Fault::Kind::other_authority, "other-authority"},
    {Fault::Kind::self_signed, "self-signed"},
    {Fault::Kind::expired, "expired"},
    {Fault::Kind::not_yet_valid, "not-yet-valid"},
    {Fault::Kind::other_host, "other-host"},
    {Fault::Kind::drop_after_headers, "drop-after-headers"},
    {Fault::Kind::drop_after_bytes, "drop-after-bytes"},
    {Fault::Kind::never_answer, "never-answer"},
    {Fault::Kind::trickle, "trickle"},
    {Fault::Kind::garbage, "garbage"},
    {Fault::Kind::truncate, "truncate"},
};

std::string describe(const Fault &fault) {
    if (fault.kind == Fault::Kind::none)
        return "";
    std::string text = fault_name(fault.kind);
    if (fault.amount > 0)
        text += " " + std::to_string(fault.amount);
    return text;
}

bool sends_status(const Fault &fault) {
    return fault.kind == Fault::Kind::none || fault.kind == Fault::Kind::trickle ||
           fault.kind == Fault::Kind::truncate;
}

}  // namespace

const char *fault_name(Fault::Kind kind) {
    for (const FaultName &entry : kFaultNames)
        if (entry.kind == kind)
            return entry.name;
    return "none";
}

const std::vector<Fault::Kind> &all_faults() {
    static const std::vector<Fault::Kind> kinds = [] {
        std::vector<Fault::Kind> list;
        for (const FaultName &entry : kFaultNames)
            list.push_back(entry.kind);
        return list;
    }();
    return kinds;
}

// The entry an endpoint's script has next, without taking it.
std::optional<ScriptedReply> Service::next_of(const std::string &endpoint) {
    const auto script = scripts_.find(endpoint);
    if (script == scripts_.end() || script->second.empty())
        return std::nullopt;
    return script->second[std::min(used_[endpoint], script->second.size() - 1)];
}

void Service::set_script(const std::string &endpoint, std::vector<ScriptedReply> replies) {
    const std::lock_guard<std::mutex> lock(guard_);
    scripts_[endpoint] = std::move(replies);
    used_[endpoint] = 0;
}

bool Service::has_script(const std::string &endpoint) {
    const std::lock_guard<std::mutex> lock(guard_);
    return next_of(endpoint).has_value();
}

Admission Service::admit(const std::string &) {
    const bool drops = fault_of_connection("*", origin_of({})) == Fault::Kind::drop_at_accept;
    return drops ? Admission::cut : Admission::welcome;
}

Fault::Kind Service::fault_of_connection(const std::string &endpoint, const std::string &url) {
    const std::lock_guard<std::mutex> lock(guard_);
    const auto planned = next_of(endpoint);
    if (!planned || planned->fault.kind > Fault::Kind::other_host ||
        planned->fault.kind == Fault::Kind::none)
        return Fault::Kind::none;
    ++used_[endpoint];
    note_connection(part_of(endpoint), url, describe(planned->fault));
    return planned->fault.kind;
}

void Service::note_connection(const std::string &part, const std::string &url,
                              const std::string &mishap) {
    Exchange exchange;
    exchange.service = part;
    exchange.url = url;
    exchange.mishap = mishap;
    exchange.ended = record_.now();
    record_.add(std::move(exchange));
}

void Service::not_agreed(const std::string &server_name, const std::string &reason) {
    if (!server_name.empty())
        note_connection(name_, "https://" + server_name, reason);
}

Fault Service::begin(Request &request) {
    auto open = std::make_shared<Open>();
    open->endpoint = endpoint_of(request);
    Exchange exchange;
    static_cast<Request &>(exchange) = request;
    exchange.service = part_of(open->endpoint);
    exchange.url = origin_of(request) + request.target;
    request.number = record_.add(std::move(exchange));
    open->keeper = keeper(request, open->endpoint);
    request.body_sink = [this, open, &request](const char *data, size_t size) {
        const std::string_view piece(data, size);
        open->digest.add(piece);
        if (open->keeper)
            open->keeper(piece);
        const size_t room = record_.kept_body() - request.body.size();
        request.body.append(data, std::min(size, room));
        if (request.body_size - open->noted < kProgressStep)
            return;
        open->noted = request.body_size;
        record_.change(request.number, [&](Exchange &entry) { entry.body_size = open->noted; });
    };
    const std::lock_guard<std::mutex> lock(guard_);
    if (const auto planned = next_of(open->endpoint)) {
        open->planned = *planned;
        ++used_[open->endpoint];
    }
    open_[request.number] = open;
    return open->planned.fault;
}

std::shared_ptr<Service::Open> Service::take_open(size_t number) {
    const std::lock_guard<std::mutex> lock(guard_);
    const auto entry = open_.extract(number);
    return entry.mapped();
}

Reply Service::answer(Request &request) {
    const auto open = take_open(request.number);
    open->keeper = nullptr;  // what it keeps is complete
    const std::string digest = open->digest.hex();
    const ScriptedReply &planned = open->planned;
    Reply reply = planned.fixed ? *planned.fixed : own_answer(request, open->endpoint, digest);
    reply.fault = planned.fault;
    end(request, digest, &reply, describe(planned.fault));
    return reply;
}

void Service::broken_off(Request &request) {
    const auto open = take_open(request.number);
    const std::string planned = describe(open->planned.fault);
    end(request, open->digest.hex(), nullptr, planned.empty() ? "the client left" : planned);
}

void Service::end(const Request &request, const std::string &digest, const Reply *reply,
                  const std::string &mishap) {
    record_.change(request.number, [&](Exchange &entry) {
        entry.body = request.body;
        entry.body_size = request.body_size;
        entry.body_sha256 = digest;
        entry.mishap = mishap;
        entry.ended = record_.now();
        if (reply != nullptr && sends_status(reply->fault)) {
            entry.status = reply->status;
            entry.reply_size = reply->body.size();
        }
    });
}

}  // namespace world

#include "scripted_server.h"

namespace world {

ServerSetup tls_on(uint16_t port, std::vector<std::string> hosts, bool demand_client_certificate) {
    ServerSetup setup;
    setup.port = port;
    setup.tls = true;
    setup.demand_client_certificate = demand_client_certificate;
    setup.hosts = std::move(hosts);
    return setup;
}

ScriptedServer::ScriptedServer(const ServerSetup &setup) {
    SslContext context;
    if (setup.tls) {
        const CertificateAuthority &issuer = setup.signed_by ? *setup.signed_by : authority();
        context = server_context(issuer.issue_server(setup.hosts), authority(),
                                 setup.demand_client_certificate);
    }
    server_.emplace(setup.address, setup.port, static_cast<HttpHandler &>(*this),
                    std::move(context));
}

void ScriptedServer::on(const std::string &which, std::vector<Reply> replies) {
    const std::lock_guard<std::mutex> lock(guard_);
    scripts_[which] = {std::move(replies), 0};
}

std::vector<Request> ScriptedServer::requests() {
    const std::lock_guard<std::mutex> lock(guard_);
    return requests_;
}

ScriptedServer::Script *ScriptedServer::script_for(const Request &request) {
    for (const std::string &which :
         {request.method + " " + request.path(), request.path(), std::string("*")}) {
        const auto found = scripts_.find(which);
        if (found != scripts_.end() && !found->second.replies.empty())
            return &found->second;
    }
    return nullptr;
}

Admission ScriptedServer::admit(const std::string &) {
    const std::lock_guard<std::mutex> lock(guard_);
    const auto any = scripts_.find("*");
    if (any == scripts_.end() || any->second.replies.empty() ||
        any->second.peek().fault.kind != Fault::Kind::drop_at_accept)
        return Admission::welcome;
    any->second.advance();
    return Admission::cut;
}

Fault ScriptedServer::begin(Request &request) {
    const std::lock_guard<std::mutex> lock(guard_);
    const Script *script = script_for(request);
    return script ? script->peek().fault : Fault{};
}

Reply ScriptedServer::answer(Request &request) {
    const std::lock_guard<std::mutex> lock(guard_);
    requests_.push_back(request);
    Script *script = script_for(request);
    if (script == nullptr)
        return status_reply(404);
    Reply reply = script->peek();
    script->advance();
    return reply;
}

void ScriptedServer::broken_off(Request &request) {
    const std::lock_guard<std::mutex> lock(guard_);
    requests_.push_back(request);
    if (Script *script = script_for(request))
        script->advance();
}

}  // namespace world

#include "testing/scripted_server.h"

#include <algorithm>

namespace world {

ServerSetup tls_on(uint16_t port, std::vector<std::string> hosts, bool demand_client_certificate) {
    ServerSetup setup;
    setup.port = port;
    setup.tls = true;
    setup.demand_client_certificate = demand_client_certificate;
    setup.hosts = std::move(hosts);
    return setup;
}

ScriptedServer::ScriptedServer(const ServerSetup &setup, Answer answer)
    : Service("scripted", kept_, {}), answer_(std::move(answer)) {
    SslContext context;
    if (setup.tls) {
        const CertificateAuthority &issuer = setup.signed_by ? *setup.signed_by : authority();
        context = server_context(issuer.issue_server(setup.hosts), authority(),
                                 setup.demand_client_certificate);
    }
    server_.emplace(setup.address, setup.port, static_cast<HttpHandler &>(*this),
                    std::move(context));
}

void ScriptedServer::on(const std::string &which, const std::vector<Reply> &replies) {
    std::vector<ScriptedReply> script;
    for (const Reply &reply : replies)
        script.push_back({reply, reply.fault});
    set_script(which, std::move(script));
}

std::vector<Exchange> ScriptedServer::requests() const {
    std::vector<Exchange> requests = kept_.all();
    const auto is_none = [](const Exchange &entry) {
        return entry.method.empty() || entry.ended == 0;
    };
    requests.erase(std::remove_if(requests.begin(), requests.end(), is_none), requests.end());
    return requests;
}

std::vector<std::string> ScriptedServer::asked() const {
    std::vector<std::string> lines;
    for (const Exchange &request : requests()) {
        lines.push_back(request.method + " " + request.target +
                        (request.body.empty() ? "" : " " + request.body));
    }
    return lines;
}

std::string ScriptedServer::endpoint_of(const Request &request) {
    for (const std::string &which : {request.method + " " + request.path(), request.path()})
        if (has_script(which))
            return which;
    return "*";
}

}  // namespace world

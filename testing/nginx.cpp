#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "testing/daemon.h"
#include "testing/files.h"
#include "testing/sha256.h"
#include "testing/shown_folders.h"

namespace world {
namespace {

constexpr const char *kNginxConfiguration = R"(
daemon off;
user root;
worker_processes 1;
error_log /run/world/daemons/nginx.error.log;
pid /run/world/daemons/nginx.pid;
events { worker_connections 512; }
http {
    log_format exchange escape=json '{"method":"$request_method","url":"https://$host$request_uri",'
        '"status":$status,"size":"$http_content_length","type":"$http_content_type",'
        '"client":"$ssl_client_s_dn","file":"$request_body_file"}';
    access_log off;
    client_body_temp_path /run/world/daemons/bodies;
    proxy_temp_path /run/world/daemons/proxy;
    fastcgi_temp_path /run/world/daemons/fastcgi;
    uwsgi_temp_path /run/world/daemons/uwsgi;
    scgi_temp_path /run/world/daemons/scgi;
    client_max_body_size 0;
    server {
        listen 127.0.0.2:443 ssl;
        ssl_certificate /run/world/daemons/nginx.crt;
        ssl_certificate_key /run/world/daemons/nginx.key;
        ssl_client_certificate /run/world/daemons/clients.crt;
        ssl_verify_client on;
        location / {
            client_body_in_file_only on;
            access_log /run/world/daemons/nginx.access.log exchange;
            proxy_pass_request_body off;
            proxy_set_header Content-Length "";
            proxy_method GET;
            proxy_pass http://127.0.0.2:8080;
        }
    }
    server {
        listen 127.0.0.2:8080;
        location / { return 200; }
    }
}
)";

}  // namespace

Daemon start_nginx(const Identity &server, const CertificateAuthority &clients) {
    write_file(kDaemonFolder + "nginx.conf", kNginxConfiguration);
    write_file(kDaemonFolder + "nginx.crt", server.certificate_pem());
    write_file(kDaemonFolder + "nginx.key", server.key_pem());
    write_file(kDaemonFolder + "clients.crt", clients.identity().certificate_pem());
    // Unpacked by script/bootstrap, or the machine's own.
    const std::string unpacked = inside(WORLD_SOURCE_DIR "/.deps/nginx/usr/sbin/nginx");
    const std::string program = exists(unpacked) ? unpacked : "nginx";
    return {Command({program, "-p", kDaemonFolder, "-e", kDaemonFolder + "nginx.error.log", "-c",
                     kDaemonFolder + "nginx.conf"}),
            {443, kNginxAddress},
            SIGQUIT};
}

std::vector<Exchange> logged_exchanges(const std::string &service, const std::string &log_path) {
    std::vector<Exchange> exchanges;
    std::istringstream log(read_file_if_any(log_path));
    for (std::string line; std::getline(log, line);) {
        const nlohmann::json entry = nlohmann::json::parse(line, nullptr, false);
        if (!entry.is_object())
            continue;
        Exchange exchange;
        exchange.service = service;
        exchange.method = entry.value("method", "");
        exchange.url = entry.value("url", "");
        exchange.status = entry.value("status", 0);
        exchange.headers.emplace_back("Content-Type", entry.value("type", ""));
        exchange.client_certificate = entry.value("client", "");
        exchange.body_path = entry.value("file", "");
        const std::string &kept = exchange.body_path;
        std::error_code none;
        exchange.body_size = kept.empty() ? std::stoull("0" + entry.value("size", ""))
                                          : std::filesystem::file_size(kept, none);
        exchange.body_sha256 = Sha256::of_file(kept);
        exchanges.push_back(std::move(exchange));
    }
    return exchanges;
}

}  // namespace world

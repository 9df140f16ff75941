#include "peers.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "files.h"
#include "sha256.h"

namespace world {
namespace {

const std::string kFolder = "/run/world/peers/";

bool accepts(const std::string &address, int port) {
    const int handle = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<uint16_t>(port));
    inet_pton(AF_INET, address.c_str(), &place.sin_addr);
    const bool good = connect(handle, reinterpret_cast<sockaddr *>(&place), sizeof place) == 0;
    close(handle);
    return good;
}

[[noreturn]] void become(const std::vector<std::string> &command, const std::string &output) {
    std::vector<char *> words;
    for (const std::string &word : command)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    execvp(words[0], words.data());
    perror(words[0]);
    _exit(127);
}

// The word after a phrase, in each line of a log that has it.
std::vector<std::string> words_after(const std::string &phrase, const std::string &log_path) {
    std::vector<std::string> words;
    std::istringstream log(read_file_if_any(log_path));
    for (std::string line; std::getline(log, line);) {
        const size_t at = line.find(phrase);
        if (at == std::string::npos)
            continue;
        const size_t from = at + phrase.size();
        words.push_back(line.substr(from, line.find(' ', from) - from));
    }
    return words;
}

constexpr const char *kNginxConfiguration = R"(
daemon off;
user root;
worker_processes 1;
error_log /run/world/peers/nginx.error.log;
pid /run/world/peers/nginx.pid;
events { worker_connections 512; }
http {
    log_format exchange escape=json '{"method":"$request_method","url":"https://$host$request_uri",'
        '"status":$status,"size":"$http_content_length","type":"$http_content_type",'
        '"client":"$ssl_client_s_dn","file":"$request_body_file"}';
    access_log off;
    client_body_temp_path /run/world/peers/bodies;
    proxy_temp_path /run/world/peers/proxy;
    fastcgi_temp_path /run/world/peers/fastcgi;
    uwsgi_temp_path /run/world/peers/uwsgi;
    scgi_temp_path /run/world/peers/scgi;
    client_max_body_size 0;
    server {
        listen 127.0.0.2:443 ssl;
        ssl_certificate /run/world/peers/nginx.crt;
        ssl_certificate_key /run/world/peers/nginx.key;
        ssl_client_certificate /run/world/peers/clients.crt;
        ssl_verify_client on;
        location / {
            client_body_in_file_only on;
            access_log /run/world/peers/nginx.access.log exchange;
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

Peer::Peer(const std::vector<std::string> &command, const std::string &address, int port,
           int end_signal)
    : end_signal_(end_signal) {
    const std::string output =
        kFolder + std::filesystem::path(command.front()).filename().string() + ".output";
    write_file(output, "");
    process_ = fork();
    if (process_ == 0)
        become(command, output);
    constexpr int kTries = 500;
    for (int i = 0; i < kTries; ++i) {
        if (accepts(address, port))
            return;
        if (waitpid(process_, nullptr, WNOHANG) == process_)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(process_, SIGKILL);
    throw std::runtime_error(command.front() + " does not start:\n" + read_file_if_any(output));
}

Peer::Peer(Peer &&other) noexcept
    : process_(std::exchange(other.process_, 0)), end_signal_(other.end_signal_) {}

Peer::~Peer() {
    if (process_ <= 0)
        return;
    kill(process_, end_signal_);
    waitpid(process_, nullptr, 0);
}

Peer start_tinyproxy() {
    write_file(kFolder + "tinyproxy.conf",
               "Port " + std::to_string(kProxyPort) + "\nListen 127.0.0.1\nTimeout 60\nLogFile \"" +
                   kFolder +
                   "tinyproxy.log\"\nLogLevel Connect\nMaxClients 300\nConnectPort 443\n");
    return {
        {"tinyproxy", "-d", "-c", kFolder + "tinyproxy.conf"}, "127.0.0.1", kProxyPort, SIGTERM};
}

Peer start_dnsmasq(const std::map<std::string, std::string> &names) {
    std::vector<std::string> command = {"dnsmasq",
                                        "--no-daemon",
                                        "--no-resolv",
                                        "--no-hosts",
                                        "--user=root",
                                        "--listen-address=127.0.0.1",
                                        "--pid-file=",
                                        "--conf-file=/dev/null",
                                        "--bind-interfaces",
                                        "--log-queries",
                                        "--log-facility=" + kFolder + "dnsmasq.log"};
    for (const auto &[name, address] : names)
        command.push_back("--address=/" + name + "/" + address);
    return {command, "127.0.0.1", 53, SIGTERM};
}

Peer start_nginx(const Identity &server, const CertificateAuthority &clients) {
    write_file(kFolder + "nginx.conf", kNginxConfiguration);
    write_file(kFolder + "nginx.crt", server.certificate_pem());
    write_file(kFolder + "nginx.key", server.key_pem());
    write_file(kFolder + "clients.crt", clients.identity().certificate_pem());
    // Unpacked by script/bootstrap, or the machine's own.
    const std::string unpacked = WORLD_SOURCE_DIR "/.deps/nginx/usr/sbin/nginx";
    const std::string program = exists(unpacked) ? unpacked : "nginx";
    return {
        {program, "-p", kFolder, "-e", kFolder + "nginx.error.log", "-c", kFolder + "nginx.conf"},
        kNginxAddress,
        443,
        SIGQUIT};
}

std::vector<std::string> proxied_targets() {
    return words_after("): CONNECT ", kFolder + "tinyproxy.log");
}

std::vector<std::string> dns_queries() {
    const std::vector<std::string> asked = words_after("query[A] ", kFolder + "dnsmasq.log");
    const std::set<std::string> once(asked.begin(), asked.end());
    return {once.begin(), once.end()};
}

std::vector<Exchange> nginx_exchanges() {
    std::vector<Exchange> exchanges;
    std::istringstream log(read_file_if_any(kFolder + "nginx.access.log"));
    for (std::string line; std::getline(log, line);) {
        const nlohmann::json entry = nlohmann::json::parse(line, nullptr, false);
        if (!entry.is_object())
            continue;
        Exchange exchange;
        exchange.service = "nginx";
        exchange.method = entry.value("method", "");
        exchange.url = entry.value("url", "");
        exchange.status = entry.value("status", 0);
        exchange.headers.emplace_back("Content-Type", entry.value("type", ""));
        exchange.client_certificate = entry.value("client", "");
        exchange.body_path = entry.value("file", "");
        const std::string &kept = exchange.body_path;
        std::error_code none;
        exchange.body_size = kept.empty() ? 0 : std::filesystem::file_size(kept, none);
        exchange.body_sha256 = Sha256::of_file(kept);
        exchanges.push_back(std::move(exchange));
    }
    return exchanges;
}

}  // namespace world

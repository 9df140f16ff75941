#include "virtual_device/expected_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <regex>

#include "deployment.h"

namespace world {
namespace {

constexpr size_t kLongestRun = 40;
constexpr size_t kLongestQuote = 400;

// Expectations are written for the default host name, whatever this build's is.
std::string with_default_host(std::string text) {
    constexpr const char *kDefault = "tfa.example.com";
    const std::string own = CLOUD_TFA_HOST;
    if (own == kDefault)
        return text;
    for (size_t at = 0; (at = text.find(own, at)) != std::string::npos; at += 1)
        text.replace(at, own.size(), kDefault);
    return text;
}

void add_header(std::string &text, const Exchange &exchange, const char *name) {
    const std::string value = exchange.header(name);
    if (!value.empty())
        text += fmt::format("   {}: {}\n", name, legible(value));
}

std::string describe_exchange(size_t number, const Exchange &exchange, const FileTree &known) {
    std::string text = fmt::format("{}. {} {}\n", number,
                                   exchange.method.empty() ? "connection to" : exchange.method,
                                   legible(exchange.url));
    if (!exchange.client_certificate.empty())
        text += fmt::format("   client certificate: {}\n", exchange.client_certificate);
    if (exchange.method != "GET" && !exchange.method.empty()) {
        add_header(text, exchange, "Content-Type");
        text += fmt::format(
            "   body: {}\n",
            describe_bytes(exchange.body_size, exchange.body_sha256, exchange.body, known));
    }
    text += "   -> ";
    if (exchange.status != 0)
        text += std::to_string(exchange.status);
    if (!exchange.mishap.empty())
        text += (exchange.status ? ", " : "") + exchange.mishap;
    return text + "\n";
}

std::string describe_file(const std::string &path, const FileState &file, const FileTree &known) {
    if (!file.link.empty())
        return "link to " + file.link;
    const std::vector<std::string> members = tar_members(path);
    if (members.empty())
        return describe_bytes(file.size, file.sha256, file.content, known);
    return fmt::format("tar archive of {}", fmt::join(members, " "));
}

std::string describe_stored(const StoredObject &object, const FileTree &known) {
    return describe_file(object.path, {object.size, object.sha256, "", ""}, known);
}

std::string describe_changes(const Outcome &outcome) {
    std::string text;
    for (const auto &[path, file] : outcome.before)
        if (outcome.after.find(path) == outcome.after.end())
            text += "removed " + path + "\n";
    for (const auto &[path, file] : outcome.after) {
        const auto old = outcome.before.find(path);
        const bool fresh = old == outcome.before.end();
        if (fresh || old->second.sha256 != file.sha256 || old->second.link != file.link)
            text += fmt::format("{} {}: {}\n", fresh ? "created" : "changed", path,
                                describe_file(path, file, outcome.before));
    }
    return text;
}

void add_section(std::string &text, const std::string &title, const std::string &content) {
    if (content.empty())
        return;
    text += "== " + title + "\n" + content;
    if (content.back() != '\n')
        text += "\n";
}

}  // namespace

std::string legible(const std::string &text) {
    std::string result;
    for (size_t at = 0; at < text.size();) {
        size_t end = text.find_first_not_of(text[at], at);
        end = end == std::string::npos ? text.size() : end;
        const unsigned char c = static_cast<unsigned char>(text[at]);
        const std::string shown = std::isprint(c) || c == '\n' || c == '\t' || c >= 0x80
                                      ? std::string(1, text[at])
                                      : fmt::format("\\x{:02x}", c);
        if (end - at > kLongestRun)
            result += fmt::format("<{}*{}>", shown, end - at);
        else
            for (size_t i = at; i < end; ++i)
                result += shown;
        at = end;
    }
    return result;
}

std::string describe_bytes(uint64_t size, const std::string &sha256, const std::string &content,
                           const FileTree &known) {
    if (size == 0)
        return "empty";
    for (const auto &[path, file] : known)
        if (file.sha256 == sha256 && file.size == size && size > 1)
            return fmt::format("the {} bytes of {}", size, path);
    const std::string text = legible(content);
    if (content.size() == size && text.size() <= kLongestQuote)
        return text;
    return fmt::format("{} bytes", size);
}

std::string expected_text(const Outcome &outcome) {
    std::string text;
    for (const CommandResult &command : outcome.commands) {
        text += "== run: " + legible(command.line) + "\n";
        text += fmt::format("exit {}\n", command.exit_status);
        add_section(text, "output", legible(command.output));
        add_section(text, "console", legible(without_stamps(command.console)));
    }
    std::string requests;
    for (size_t i = 0; i < outcome.exchanges.size(); ++i)
        requests += describe_exchange(i + 1, outcome.exchanges[i], outcome.before);
    add_section(text, "requests", requests);
    add_section(text, "through the proxy", fmt::format("{}", fmt::join(outcome.proxied, "\n")));
    add_section(text, "asked of the DNS server",
                fmt::format("{}", fmt::join(outcome.dns_queries, "\n")));
    std::string stored;
    for (const StoredObject &object : outcome.stored)
        stored += legible(object.name) + ": " + describe_stored(object, outcome.before) + "\n";
    add_section(text, "stored by the cloud", stored);
    add_section(text, "sleeps", fmt::format("{}", fmt::join(outcome.sleeps, " ")));
    add_section(text, "reboots", outcome.reboots ? std::to_string(outcome.reboots) : "");
    add_section(text, "files", describe_changes(outcome));
    // What differs each time in a pre-signed URL.
    static const std::regex signed_parts("X-Amz-(Date=|Signature=|Credential=[^&]*?2F)[0-9a-fTZ]+");
    return std::regex_replace(with_default_host(text), signed_parts, "X-Amz-$1<...>");
}

}  // namespace world

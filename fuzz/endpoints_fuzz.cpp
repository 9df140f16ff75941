// Any content of the files that override the cloud's endpoints, and any URL stored in them.
// Input: a line with the caller's buffer before the call; then the content of the file.
#include <cctype>
#include <cstring>

#include "cloud_http/endpoints.h"
#include "fuzz.h"

namespace {

constexpr std::size_t kSize = 1024;
constexpr std::size_t kLongestStored = 255;

struct Endpoint {
    const char *file;
    int (*get)(char *);
    int (*set)(const char *);
};

constexpr Endpoint kEndpoints[] = {
    {"/tmp/app/cloud_tmp/KDUMPS_file", api_kdumps_server_get, api_kdumps_server_set},
    {"/tmp/app/cloud_tmp/TFA_file", api_TFA_get, api_TFA_set}};

bool is_word(std::string_view text) {
    for (const char c : text) {
        if (std::isspace(static_cast<unsigned char>(c)) != 0) {
            return false;
        }
    }
    return !text.empty();
}

void check_reading(const Endpoint &endpoint, std::string_view before) {
    const std::unique_ptr<char[]> out = fuzz::zeroed(kSize);
    before.copy(out.get(), kSize - 1);
    REQUIRE(endpoint.get(out.get()) == 0);
    REQUIRE(std::memchr(out.get(), '\0', kSize) != nullptr);
    REQUIRE(fuzz::contains(out.get(), "https://"));
}

void check_storing(const Endpoint &endpoint, const char *text) {
    REQUIRE(endpoint.set(text) == 0);
    const std::string stored = std::string(text).substr(0, kLongestStored);
    const std::unique_ptr<char[]> out = fuzz::zeroed(kSize);
    REQUIRE(endpoint.get(out.get()) == 0);
    if (is_word(stored) && fuzz::contains(stored, "https://")) {
        REQUIRE(out.get() == stored);
    } else if (is_word(stored)) {
        REQUIRE(fuzz::begins_with(out.get(), ("https://" + stored).substr(0, kLongestStored)));
    }
}

void try_input(fuzz::Input input) {
    const std::string_view before = input.line();
    const std::unique_ptr<char[]> text = fuzz::c_text(input.rest());
    for (const Endpoint &endpoint : kEndpoints) {
        fuzz::write_file(endpoint.file, input.rest());
        check_reading(endpoint, before);
        check_storing(endpoint, text.get());
    }
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};

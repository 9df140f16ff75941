#include "testing/device_files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "testing/files.h"
#include "testing/kinds.h"
#include "testing/private_world.h"
#include "testing/sha256.h"

namespace world {
namespace {

constexpr size_t kKeptContent = 4096;

// The same text at every start, so that runs can be compared.
std::string dump_text(const Dump &dump) {
    std::string text;
    uint32_t state = static_cast<uint32_t>(dump.size);
    const auto next = [&state] { return state = state * 1664525u + 1013904223u; };
    unsigned milliseconds = 0;
    while (text.size() < dump.size) {
        char message[96];
        char line[128];
        const char *form = dump.lines[next() >> 30];
        const std::string shape(form);
        const size_t at = shape.find("%u");
        std::snprintf(message, sizeof message, "%s%u%s", shape.substr(0, at).c_str(), next() >> 20,
                      shape.substr(at + 2).c_str());
        milliseconds += next() >> 22;
        std::snprintf(line, sizeof line, "[%8u.%03u] %s\n", milliseconds / 1000,
                      milliseconds % 1000, message);
        text += line;
    }
    return text;
}

FileState look_at(const std::string &path) {
    FileState state;
    std::error_code none;
    if (std::filesystem::is_symlink(path, none)) {
        state.link = std::filesystem::read_symlink(path, none).string();
        return state;
    }
    if (!std::filesystem::is_regular_file(path, none))
        return state;
    state.size = std::filesystem::file_size(path, none);
    state.sha256 = Sha256::of_file(path);
    if (state.size <= kKeptContent)
        state.content = read_file_if_any(path);
    return state;
}

}  // namespace

std::map<std::string, std::string> seeded_files() {
    const std::string config = "/mnt/data/iss_config/current_config/";
    std::map<std::string, std::string> files = {
        {config + "cloud_debug", "1"},
        {config + "network.conf", "interface eth0\naddress dhcp\nhostname device\n"},
        {config + "wireless.conf", "radio 0\nchannel 36\nssid office\n"},
        {config + "tillet_site", "production"},
    };
    for (const Dump &dump : all_dumps())
        files[dump.source] = dump_text(dump);
    return files;
}

FileTree look_at_files() {
    FileTree tree;
    for (const char *folder : {"/tmp", "/mnt", kDeviceDir})
        for (const std::string &path : list_files(folder))
            tree[path] = look_at(path);
    return tree;
}

std::vector<std::string> tar_members(const std::string &path) {
    constexpr size_t kBlock = 512;
    std::vector<std::string> members;
    std::ifstream file(path, std::ios::binary);
    std::array<char, kBlock> header;
    while (file.read(header.data(), kBlock) && header[0] != '\0') {
        if (std::string_view(header.data() + 257, 5) != "ustar")
            return {};
        members.emplace_back(header.data(), strnlen(header.data(), 100));
        const std::string size_field(header.data() + 124, 12);
        const size_t size = std::strtoul(size_field.c_str(), nullptr, 8);
        file.seekg(static_cast<std::streamoff>((size + kBlock - 1) / kBlock * kBlock),
                   std::ios::cur);
    }
    std::sort(members.begin(), members.end());
    return members;
}

}  // namespace world

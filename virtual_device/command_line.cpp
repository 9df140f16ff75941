#include "command_line.h"

#include <algorithm>
#include <filesystem>

namespace world {
namespace {

bool plain(const std::string &word) {
    constexpr const char *kPlain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_./:=,";
    return !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
}

std::string quoted(const std::string &word) {
    std::string text = "'";
    for (const char c : word)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

}  // namespace

Scenario chosen_scenario(const CommonOptions &common) {
    Scenario scenario;
    scenario.real_sleep = true;
    if (!common.scenario.empty())
        scenario = load_scenario(common.scenario);
    scenario.real_sleep = scenario.real_sleep || common.real_time;
    return scenario;
}

std::string kdump_command(const CommonOptions &common) {
    const bool is_path =
        common.kdump.find(' ') == std::string::npos && common.kdump.find('/') != std::string::npos;
    return is_path ? std::filesystem::absolute(common.kdump).string() : common.kdump;
}

std::vector<std::string> folders_of(const std::string &command_line) {
    std::vector<std::string> folders;
    for (size_t from = 0; from < command_line.size();) {
        const size_t to = std::min(command_line.find(' ', from), command_line.size());
        const std::string word = command_line.substr(from, to - from);
        if (word.find('/') != std::string::npos)
            folders.push_back(std::filesystem::path(word).parent_path().string());
        from = to + 1;
    }
    return folders;
}

std::string shell_line(const std::vector<std::string> &words) {
    std::string line;
    for (const std::string &word : words)
        line += (line.empty() ? "" : " ") + (plain(word) ? word : quoted(word));
    return line;
}

}  // namespace world

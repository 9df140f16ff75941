#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "testing/private_world.h"
#include "testing/shown_folders.h"
#include "virtual_device/commands.h"

namespace fs = std::filesystem;

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

// The folder of the machine asked for, empty without one.
std::string machine_folder(const CommonOptions &common) {
    if (common.machine.empty()) {
        return "";
    }
    const bool is_path = common.machine.find('/') != std::string::npos;
    const fs::path folder = is_path ? fs::absolute(common.machine)
                                    : fs::path(inside(MACHINES)) / ("machine-" + common.machine);
    if (!fs::exists(folder / "qemu") || !fs::exists(folder / "root.cpio")) {
        throw std::runtime_error("there is no machine in " + folder.string() +
                                 (is_path ? "" : ": script/bootstrap --machine makes it"));
    }
    return folder.string();
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

std::string enter_world(const std::string &kdump, std::vector<std::string> folders) {
    const auto is_program = [](const std::string &word) {
        return word.find('/') != std::string::npos && fs::is_regular_file(word);
    };
    const std::string path = is_program(kdump) ? fs::absolute(kdump).string() : "";
    Options options;
    options.keep = std::move(folders);
    options.keep.push_back(fs::current_path().string());
    options.keep.push_back(fs::path(path).parent_path().string());
    std::istringstream words(kdump);
    for (std::string word; words >> word;) {
        if (is_program(word)) {
            options.keep.push_back(fs::path(word).parent_path().string());
        }
    }
    enter(options);
    return path.empty() ? inside(kdump) : shell_line({inside(path)});
}

RunSetup enter_for_runs(const CommonOptions &common, const Scenario &scenario,
                        const std::string &folder) {
    const std::string own = inside(scenario.verifying ? VERIFYING_KDUMP : KDUMP_PROGRAM);
    RunSetup setup;
    setup.machine = machine_folder(common);
    setup.memory_mb = common.memory_mb;
    setup.kdump = enter_world(common.kdump.empty() ? own : common.kdump, {folder, setup.machine});
    return setup;
}

std::string shell_line(const std::vector<std::string> &words) {
    std::string line;
    for (const std::string &word : words)
        line += (line.empty() ? "" : " ") + (plain(word) ? word : quoted(word));
    return line;
}

OutputFile open_output(const std::string &path) {
    OutputFile file(path.empty() ? nullptr : std::fopen(path.c_str(), "we"), std::fclose);
    if (!file && !path.empty())
        throw std::runtime_error("cannot write " + path);
    return file;
}

}  // namespace world

#include "testing/files.h"

#include <ftw.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace world {
namespace {

thread_local std::vector<std::string> *g_found;

int note_entry(const char *path, const struct stat *, int kind, struct FTW *) {
    if (kind != FTW_D && kind != FTW_DNR)
        g_found->emplace_back(path);
    return 0;
}

}  // namespace

void write_file(const std::string &path, std::string_view content) {
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    if (!parent.empty())
        std::filesystem::create_directories(parent);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (!file)
        throw std::system_error(errno, std::generic_category(), "cannot write " + path);
}

std::string read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::system_error(errno, std::generic_category(), "cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string read_file_if_any(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return file ? std::string{std::istreambuf_iterator<char>(file), {}} : std::string();
}

bool exists(const std::string &path) {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
}

std::vector<std::string> list_files(const std::string &folder) {
    constexpr int kOpenFolders = 16;
    std::vector<std::string> found;
    g_found = &found;
    nftw(folder.c_str(), note_entry, kOpenFolders, FTW_MOUNT | FTW_PHYS);
    g_found = nullptr;
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace world

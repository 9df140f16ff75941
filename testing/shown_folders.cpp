#include "testing/shown_folders.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "testing/files.h"

namespace world {
namespace {

const std::string kList = std::string(kShownDir) + "list";
std::vector<ShownFolder> read_list() {
    std::vector<ShownFolder> folders;
    std::istringstream list(read_file_if_any(kList));
    ShownFolder folder;
    while (std::getline(list, folder.path, '\0') && std::getline(list, folder.place, '\0')) {
        folders.push_back(folder);
    }
    return folders;
}

std::vector<ShownFolder> &shown_folders() {
    static std::vector<ShownFolder> folders = read_list();
    return folders;
}

bool ends_path(char character) { return std::strchr(" \t\n'\":;,=|&<>()", character) != nullptr; }

// Whether the text has that path, or one below it, at that place.
bool has_path_at(const std::string &text, size_t at, const std::string &path) {
    const size_t end = at + path.size();
    return text.compare(at, path.size(), path) == 0 && (at == 0 || ends_path(text[at - 1])) &&
           (end == text.size() || text[end] == '/' || ends_path(text[end]));
}

}  // namespace

std::string inside(const std::string &text) {
    const std::vector<ShownFolder> &folders = shown_folders();
    std::string translated;
    for (size_t at = 0; at < text.size();) {
        const auto folder = std::find_if(
            folders.begin(), folders.end(),
            [&](const ShownFolder &shown) { return has_path_at(text, at, shown.path); });
        if (folder == folders.end()) {
            translated += text[at++];
        } else {
            translated += folder->place;
            at += folder->path.size();
        }
    }
    return translated;
}

void move_inside(char **arguments) {
    for (; *arguments != nullptr; ++arguments) {
        *arguments = strdup(inside(*arguments).c_str());  // lives as long as the program
    }
}

void record_shown_folders(std::vector<ShownFolder> folders) {
    // The innermost folder that a path lies in comes first.
    std::stable_sort(folders.begin(), folders.end(), [](const auto &left, const auto &right) {
        return left.path.size() > right.path.size();
    });
    std::string list;
    for (const ShownFolder &folder : folders) {
        list += folder.path + '\0' + folder.place + '\0';
    }
    write_file(kList, list);
    shown_folders() = std::move(folders);
}

}  // namespace world

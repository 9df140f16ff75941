/* Small files, whole: read, written, listed. Failures throw std::system_error naming the path. */
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace world {

// Writes `content` to `path`, replacing what is there; creates missing folders on the way.
void write_file(const std::string &path, std::string_view content);

// The content of `path`.
std::string read_file(const std::string &path);

// The content of `path`, or an empty text when it cannot be opened.
std::string read_file_if_any(const std::string &path);

bool exists(const std::string &path);  // dangling symbolic links count

// Every file below `folder` (full paths, sorted), on that folder's own file system only.
std::vector<std::string> list_files(const std::string &folder);

}  // namespace world

#include <fcntl.h>
#include <sys/stat.h>

#include <cctype>

#include "base/owned.h"
#include "log/log.h"
#include "state/digest.h"

using namespace cloudagent;

namespace {

int lower(char c) noexcept { return std::tolower(static_cast<unsigned char>(c)); }

}  // namespace

char *str_case_search(const char *haystack, const char *needle) noexcept {
    if (haystack == nullptr || needle == nullptr) {
        return nullptr;
    }
    for (;; ++haystack) {
        std::size_t same = 0;
        while (needle[same] != '\0' && lower(haystack[same]) == lower(needle[same])) {
            ++same;
        }
        if (needle[same] == '\0') {
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): as strstr does it
            return const_cast<char *>(haystack);
        }
        if (*haystack == '\0') {
            return nullptr;
        }
    }
}

int api_file_exist(const char *path) noexcept {
    struct stat status = {};
    const int exists = path != nullptr && stat(path, &status) == 0 ? 1 : 0;
    cloud_log("%s: %i\n\n", path, exists);
    return exists;
}

int api_file_touch(const char *path) noexcept {
    cloud_log("fpath = %s\n\n", path);
    if (path != nullptr) {
        const OwnedDescriptor touched(open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    }
    return 0;
}

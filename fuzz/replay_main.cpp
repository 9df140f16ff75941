// Runs a fuzz target over files, or over all files of folders, for compilers without libFuzzer.
// Usage: NAME_fuzz FILE-OR-FOLDER...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);
extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {

std::vector<std::string> files_of(const std::string &place) {
    if (!std::filesystem::is_directory(place)) {
        return {place};
    }
    std::vector<std::string> files;
    for (const auto &entry : std::filesystem::directory_iterator(place)) {
        files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
    if (file.bad() || !file.is_open()) {
        std::fprintf(stderr, "%s cannot be read\n", path.c_str());
        return false;
    }
    // At its exact size, so that AddressSanitizer sees a read behind the end.
    const std::vector<uint8_t> input(content.begin(), content.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    if (LLVMFuzzerInitialize != nullptr) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        for (const std::string &path : files_of(argv[i])) {
            if (!replay(path)) {
                return 1;
            }
            ++replayed;
        }
    }
    std::fprintf(stderr, "%d inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}

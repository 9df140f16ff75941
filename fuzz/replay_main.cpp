// Runs a fuzz target over files and the files of folders, for compilers without libFuzzer.
// Usage: NAME_fuzz FILE-OR-FOLDER...
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);

namespace {

int replayed = 0;

void replay(const std::filesystem::path &path) {
    if (std::filesystem::is_directory(path)) {
        const std::filesystem::directory_iterator entries(path);
        for (const auto &entry : std::set<std::filesystem::path>(begin(entries), end(entries))) {
            replay(entry);
        }
        return;
    }
    // Of the exact size, so that AddressSanitizer detects a read past the end.
    std::vector<uint8_t> input(std::filesystem::file_size(path));
    std::ifstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.read(reinterpret_cast<char *>(input.data()), static_cast<std::streamsize>(input.size()));
    LLVMFuzzerTestOneInput(input.data(), input.size());
    ++replayed;
}

}  // namespace

int main(int argc, char **argv) {
    LLVMFuzzerInitialize(&argc, &argv);
    for (int i = 1; i < argc; ++i) {
        replay(argv[i]);
    }
    std::fprintf(stderr, "%d inputs\n", replayed);
    return replayed > 0 ? 0 : 1;
}

// The search in a text and the two file operations.
#include <sys/stat.h>

#include <filesystem>

#include "state/digest.h"
#include "testing/descriptors.h"
#include "testing/logged_test.h"

namespace {

struct Search {
    const char *haystack;
    const char *needle;
    int place;  // -1: not there
};

TEST(CaseSearch, FindsTheFirstPlace) {
    const Search rows[] = {
        {"content-length: 5", "Content-Length", 0},
        {"CONTENT-LENGTH: 5", "content-length", 0},
        {"x: y\r\nContent-Length: 5", "content-length", 6},
        {"anything", "", 0},
        {"", "", 0},
        {"", "a", -1},
        {"short", "a longer needle", -1},
        {"abc", "abcd", -1},
        {"abc", "C", 2},
        {"aaab", "AAB", 1},
        {"abababac", "ABAC", 4},
        {"one One ONE", "ONE", 0},
        {"[a]", "{a}", -1},
        {"@", "`", -1},
        {"\xC4", "\xC4", 0},
        {"\xC4", "\xE4", -1},
        {"abc", "d", -1},
    };
    for (const Search &row : rows) {
        const char *const found = str_case_search(row.haystack, row.needle);
        const char *const expected = row.place < 0 ? nullptr : row.haystack + row.place;
        EXPECT_EQ(static_cast<const void *>(found), static_cast<const void *>(expected))
            << '"' << row.needle << "\" in \"" << row.haystack << '"';
    }
}

TEST(CaseSearch, NullTextsAreNotFound) {
    EXPECT_EQ(str_case_search(nullptr, "a"), nullptr);
    EXPECT_EQ(str_case_search("a", nullptr), nullptr);
    EXPECT_EQ(str_case_search(nullptr, nullptr), nullptr);
}

class FileHelpers : public LoggedTest {};

TEST_F(FileHelpers, ExistenceIsLogged) {
    world::write_file("/tmp/file", "");
    world::write_file("/tmp/%s%d", "");
    std::filesystem::create_symlink("/tmp/nowhere", "/tmp/dangling");
    std::filesystem::create_symlink("/tmp/file", "/tmp/link");
    const std::pair<std::string, int> rows[] = {
        {"/tmp/file", 1},     {"/tmp/%s%d", 1}, {"/tmp", 1},           {"/tmp/link", 1},
        {"/tmp/dangling", 0}, {"/tmp/none", 0}, {"/tmp/none/file", 0}, {"", 0},
    };
    for (const auto &[path, exists] : rows) {
        EXPECT_EQ(api_file_exist(path.c_str()), exists) << path;
        EXPECT_EQ(logged(), path + ": " + std::to_string(exists) + "\n\n");
    }
    EXPECT_FALSE(world::exists("/tmp/none"));
}

TEST_F(FileHelpers, TouchEmptiesAnExistingFile) {
    world::write_file("/tmp/file", "ten bytes.");
    EXPECT_EQ(api_file_touch("/tmp/file"), 0);
    EXPECT_EQ(std::filesystem::file_size("/tmp/file"), 0u);
    EXPECT_EQ(logged(), "fpath = /tmp/file\n\n");
}

TEST_F(FileHelpers, TouchCreatesAnEmptyFile) {
    const mode_t mask = umask(0);
    EXPECT_EQ(api_file_touch("/tmp/new"), 0);
    umask(mask);
    struct stat status;
    ASSERT_EQ(stat("/tmp/new", &status), 0);
    EXPECT_EQ(status.st_size, 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFREG | 0644));
}

TEST_F(FileHelpers, TouchIgnoresFailure) {
    for (const std::string path : {"/tmp/none/file", "/tmp", "", "/tmp/none/%s%n"}) {
        EXPECT_EQ(api_file_touch(path.c_str()), 0);
        EXPECT_EQ(logged(), "fpath = " + path + "\n\n");
    }
    EXPECT_FALSE(world::exists("/tmp/none"));
}

TEST_F(FileHelpers, NullPathIsNoFile) {
    EXPECT_EQ(api_file_exist(nullptr), 0);
    EXPECT_EQ(api_file_touch(nullptr), 0);
    EXPECT_EQ(logged(), "(null): 0\n\nfpath = (null)\n\n");
}

TEST_F(FileHelpers, NothingStaysOpen) {
    const long before = open_descriptors();
    for (int i = 0; i < 10; ++i) {
        api_file_touch("/tmp/file");
        api_file_exist("/tmp/file");
    }
    EXPECT_EQ(open_descriptors(), before);
}

}  // namespace

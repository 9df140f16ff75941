// The two state files that hold more than one plain value.
#include <climits>
#include <cstring>
#include <vector>

#include "state/state_files.h"
#include "state_test.h"

namespace {

const std::string kList = kStatus + "sorvane_file";
const std::string kError = kStatus + "server_connection_err";

class SorvaneList : public StateTest {
  protected:
    static uint32_t set(const std::vector<std::string> &texts, const char *selected) {
        std::vector<char> slots((texts.size() + 1) * 256, '#');
        for (size_t i = 0; i < texts.size(); ++i) {
            std::strncpy(&slots[i * 256], texts[i].c_str(), 256);
        }
        return api_sorvane_list_set(reinterpret_cast<char(*)[256]>(slots.data()),
                                    static_cast<int>(texts.size()), selected);
    }
};

struct List {
    std::vector<std::string> entries;
    const char *selected;
    std::string file;
};

TEST_F(SorvaneList, MarksTheSelectedEntries) {
    const std::string longest(255, 'e');
    const List rows[] = {
        {{"red", "green", "blue"}, "green", "red\n*green\nblue\n"},
        {{"red", "green", "blue"}, "red", "*red\ngreen\nblue\n"},
        {{"red", "green", "blue"}, "blue", "red\ngreen\n*blue\n"},
        {{"red", "green", "red"}, "red", "*red\ngreen\n*red\n"},
        {{"red", "green"}, "violet", "red\ngreen\n"},
        {{"red", "green"}, "Red", "red\ngreen\n"},
        {{"red", "green"}, "re", "red\ngreen\n"},
        {{"red", "green"}, "reds", "red\ngreen\n"},
        {{"red", "green"}, "", "red\ngreen\n"},
        {{"red", "green"}, nullptr, "red\ngreen\n"},
        {{"", "green"}, "", "*\ngreen\n"},
        {{"*red", "%d%s"}, "%d%s", "*red\n*%d%s\n"},
        {{"two words"}, "two words", "*two words\n"},
        {{longest, "x"}, longest.c_str(), "*" + longest + "\nx\n"},
        {{}, "red", ""},
    };
    for (const List &row : rows) {
        world::write_file(kList, "what was there before\n");
        EXPECT_EQ(set(row.entries, row.selected), 0u);
        EXPECT_EQ(world::read_file(kList), row.file);
    }
    EXPECT_TRUE(only_file_is(kList));
}

TEST_F(SorvaneList, SlotWithoutATerminatorEndsWithTheSlot) {
    const std::string full(256, 'f');
    EXPECT_EQ(set({full, "x"}, "x"), 0u);
    EXPECT_EQ(world::read_file(kList), std::string(255, 'f') + "\n*x\n");
}

TEST_F(SorvaneList, NothingToWriteLeavesAnEmptyFile) {
    char one[1][256] = {"red"};
    world::write_file(kList, "before\n");
    EXPECT_EQ(api_sorvane_list_set(one, -1, "red"), 0u);
    EXPECT_EQ(world::read_file(kList), "");
    world::write_file(kList, "before\n");
    EXPECT_EQ(api_sorvane_list_set(nullptr, 3, "red"), 0u);
    EXPECT_EQ(world::read_file(kList), "");
}

TEST_F(SorvaneList, MissingFolderIsNotCreated) {
    remove_state_folders();
    EXPECT_EQ(set({"red"}, "red"), 1u);
    EXPECT_FALSE(state_folders_exist());
}

class ServerConnectionError : public StateTest {};

TEST_F(ServerConnectionError, IsTheTextAndTheCodeInBrackets) {
    world::write_file(kError, "a longer content than the one that comes now");
    EXPECT_EQ(api_server_connection_err_set("cloud.example.com", 7), 0u);
    EXPECT_EQ(world::read_file(kError), "cloud.example.com(7)");
    EXPECT_EQ(api_server_connection_err_set("%d%s", -1), 0u);
    EXPECT_EQ(world::read_file(kError), "%d%s(-1)");
    EXPECT_EQ(api_server_connection_err_set("", 0), 0u);
    EXPECT_EQ(world::read_file(kError), "(0)");
    EXPECT_TRUE(only_file_is(kError));
}

TEST_F(ServerConnectionError, FailureIsNotReported) {
    remove_state_folders();
    EXPECT_EQ(api_server_connection_err_set("cloud.example.com", 7), 0u);
    EXPECT_FALSE(state_folders_exist());
}

TEST_F(ServerConnectionError, CutsTheTextAndNeverTheCode) {
    for (const size_t length : {252u, 253u, 10000u}) {
        EXPECT_EQ(api_server_connection_err_set(std::string(length, 'h').c_str(), 7), 0u);
        EXPECT_EQ(world::read_file(kError), std::string(252, 'h') + "(7)");
        EXPECT_EQ(api_server_connection_err_set(std::string(length, 'h').c_str(), INT_MIN), 0u);
        EXPECT_EQ(world::read_file(kError), std::string(242, 'h') + "(-2147483648)");
    }
}

TEST_F(ServerConnectionError, NullTextLeavesTheFileAlone) {
    world::write_file(kError, "before");
    EXPECT_EQ(api_server_connection_err_set(nullptr, 7), 0u);
    EXPECT_EQ(world::read_file(kError), "before");
}

}  // namespace

#include "state/credentials.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>

#include "state/device_identity.h"
#include "testing/guarded.h"
#include "testing/logged_test.h"
#include "testing/named_row.h"
#include "testing/open_watch.h"
#include "testing/paths.h"

namespace {

const std::string kSeqno = kStatus + "seqno_file";

void set_compact_mac(const std::string &mac) {
    std::snprintf(sys_mac_addr_compact, sizeof sys_mac_addr_compact, "%s", mac.c_str());
}

class SequenceNumber : public LoggedTest {};

TEST_F(SequenceNumber, IsReadAndLogged) {
    world::write_file(kSeqno, "41");
    int32_t number = 0;
    EXPECT_EQ(api_omcloud_seqno_get(&number), 0);
    EXPECT_EQ(number, 41);
    EXPECT_EQ(logged(), "OM-Cloud:api_omcloud_seqno_get, 0065 TBD\n\n");
    EXPECT_EQ(world::read_file(kSeqno), "41");
}

TEST_F(SequenceNumber, StartsAtOneWithoutAFile) {
    int32_t number = 1234;
    EXPECT_EQ(api_omcloud_seqno_get(&number), 1);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(logged(), "");
    EXPECT_FALSE(world::exists(kSeqno));
}

TEST_F(SequenceNumber, KeepsTheCallersValueWhenTheFileHoldsNoNumber) {
    for (const char *content : {"", "x", " \n"}) {
        world::write_file(kSeqno, content);
        int32_t number = 1234;
        EXPECT_EQ(api_omcloud_seqno_get(&number), 0);
        EXPECT_EQ(number, 1234);
        EXPECT_EQ(logged(), "OM-Cloud:api_omcloud_seqno_get, 0065 TBD\n\n");
    }
}

TEST_F(SequenceNumber, IsWrittenUnchangedAndLogged) {
    for (const int32_t number : {0, 1, 42, -7, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(api_omcloud_seqno_set(number), 0);
        EXPECT_EQ(world::read_file(kSeqno), std::to_string(number));
        EXPECT_EQ(logged(), "OM-Cloud:api_omcloud_seqno_set, 0087 TBD\n\n");
        int32_t back = 99;
        EXPECT_EQ(api_omcloud_seqno_get(&back), 0);
        EXPECT_EQ(back, number);
        console.clear();
    }
}

TEST_F(SequenceNumber, CannotBeWrittenWithoutItsFolder) {
    std::filesystem::remove_all("/tmp/app");
    EXPECT_EQ(api_omcloud_seqno_set(5), 1);
    EXPECT_EQ(logged(), "");
    EXPECT_FALSE(world::exists("/tmp/app"));
}

TEST_F(SequenceNumber, NullPointerDoesNoHarm) {
    EXPECT_EQ(api_omcloud_seqno_get(nullptr), 1);
    world::write_file(kSeqno, "41");
    EXPECT_EQ(api_omcloud_seqno_get(nullptr), 0);
}

// The key and the secret differ in names and in log lines only.
struct Credential : NamedRow {
    int (*set)(const char *);
    int (*get)(char *);
    std::string path;
    std::string opening_line;
    std::string failure_line;
};

class Credentials : public LoggedTest, public testing::WithParamInterface<Credential> {
  protected:
    ~Credentials() override { set_compact_mac(""); }

    static void hold(const std::string &word) { world::write_file(GetParam().path, word); }
    static std::string stored() { return world::read_file(GetParam().path); }

    void expect_value(const std::string &value) {
        buffer = {};
        EXPECT_EQ(GetParam().get(buffer.data()), 0);
        EXPECT_EQ(buffer.first(value.size()), value);
        EXPECT_TRUE(buffer.untouched_from(value.size())) << "no terminator is added";
        EXPECT_EQ(logged(), GetParam().opening_line);
    }

    void expect_mismatch() {
        buffer = {};
        EXPECT_EQ(GetParam().get(buffer.data()), 1);
        EXPECT_TRUE(buffer.untouched_from(0));
        EXPECT_EQ(logged(), GetParam().opening_line + GetParam().failure_line);
    }

    Guarded<128> buffer;
};

TEST_P(Credentials, AreStoredWithTheCompactMac) {
    set_compact_mac("88dc96010203");
    hold("a longer content than the one that comes now");
    EXPECT_EQ(GetParam().set("abc%d%s"), 0);
    EXPECT_EQ(stored(), "abc%d%s88dc96010203");
    EXPECT_EQ(logged(), "");
    expect_value("abc%d%s");
}

TEST_P(Credentials, AreStoredBareWithoutAMac) {
    EXPECT_EQ(GetParam().set("abc"), 0);
    EXPECT_EQ(stored(), "abc");
    expect_value("abc");
}

TEST_P(Credentials, AreRefusedUnderAnotherMac) {
    hold("abc88dc96010203");
    set_compact_mac("88dc96010204");
    expect_mismatch();
    set_compact_mac("88dc96010203");
    expect_value("abc");
    set_compact_mac("");
    expect_value("abc88dc96010203");
}

TEST_P(Credentials, NeedTheWholeSuffixAtTheEnd) {
    set_compact_mac("88dc96010203");
    for (const char *word : {"", "8", "8dc96010203", "abc88dc9601020", "88dc96010203abc",
                             "abc88DC96010203", "abc 88dc96010203"}) {
        hold(word);
        SCOPED_TRACE(word);
        expect_mismatch();
    }
}

TEST_P(Credentials, AreTheFirstWordWithoutTheMac) {
    const struct {
        const char *mac;
        std::string content, value;
    } rows[] = {
        {"88dc96010203", "88dc96010203", ""},
        {"88dc96010203", "88dc9601020388dc96010203", "88dc96010203"},
        {"ff", " \nabcff and more\n", "abc"},
        {"", std::string(1 << 20, 'k'), std::string(127, 'k')},
    };
    for (const auto &row : rows) {
        set_compact_mac(row.mac);
        hold(row.content);
        expect_value(row.value);
    }
}

TEST_P(Credentials, AreCutAt127CharactersTogether) {
    set_compact_mac("88dc96010203");
    EXPECT_EQ(GetParam().set(std::string(115, 'k').c_str()), 0);
    EXPECT_EQ(stored(), std::string(115, 'k') + "88dc96010203");
    expect_value(std::string(115, 'k'));
    EXPECT_EQ(GetParam().set(std::string(116, 'k').c_str()), 0);
    EXPECT_EQ(stored(), std::string(116, 'k') + "88dc9601020");
    expect_mismatch();
    EXPECT_EQ(GetParam().set(std::string(5000, 'k').c_str()), 0);
    EXPECT_EQ(stored(), std::string(127, 'k'));
}

TEST_P(Credentials, MissingFileOrFolder) {
    EXPECT_EQ(GetParam().get(buffer.data()), 1);
    EXPECT_TRUE(buffer.untouched_from(0));
    EXPECT_EQ(logged(), GetParam().opening_line);
    std::filesystem::remove_all("/tmp/app");
    EXPECT_EQ(GetParam().set("abc"), 1);
    EXPECT_FALSE(world::exists("/tmp/app"));
    EXPECT_EQ(logged(), "");
}

TEST_P(Credentials, NullPointers) {
    hold("abc");
    const OpenWatch opened(kStatus);
    EXPECT_EQ(GetParam().get(nullptr), 1);
    EXPECT_EQ(GetParam().set(nullptr), 1);
    EXPECT_EQ(logged(), "");
    EXPECT_THAT(opened.seen(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Each, Credentials,
    testing::Values(Credential{"key", api_key_set, api_key_get, kStatus + "key_file",
                               "Cloud:api_key_get, 0151 TBD\n\n", "api_key_get fail\n"},
                    Credential{"secret", api_secret_set, api_secret_get, kStatus + "secret_file",
                               "", "api_secret_get fail\n"}),
    RowName());

}  // namespace

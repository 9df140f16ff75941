// The upload marker: who uploads, over what, under which process id.
#include <filesystem>

#include "covering_mount.h"
#include "firmware_watch_test.h"

namespace {

class FirmwareMarker : public FirmwareWatchTest {};

TEST_F(FirmwareMarker, MissingMarkerIsNoUpload) {
    world::write_file(kProgress, "50");
    EXPECT_EQ(SN_Check_FW_upload_status(), 0u);
    EXPECT_EQ(left(), "progress");
    EXPECT_EQ(logged(), "");
}

TEST_F(FirmwareMarker, UnreadableMarkerIsNoUpload) {
    make_unopenable_file(kMarker);
    EXPECT_EQ(SN_Check_FW_upload_status(), 0u);
    std::filesystem::remove(kMarker);
    std::filesystem::create_directory(kMarker);
    EXPECT_EQ(SN_Check_FW_upload_status(), 0u);
    EXPECT_TRUE(world::exists(kMarker));
    EXPECT_EQ(logged(), "");
}

TEST_F(FirmwareMarker, LinesWithoutAnUploaderAreNoUpload) {
    for (const char *line : {"", "\n", "Uploading", "Uploading by", "uploading by data.cgi pid: 9",
                             "Uploading  by me", "data.cgi pid: 9"}) {
        EXPECT_EQ(watch(line), 0u) << line;
        EXPECT_EQ(left(), kBoth) << line;
        EXPECT_EQ(logged(), "") << line;
    }
}

TEST_F(FirmwareMarker, OnlyTheFirstLineCounts) {
    EXPECT_EQ(watch("\nUploading by someone\n"), 0u);
    EXPECT_EQ(watch("[port: 80]\nUploading by data.cgi pid: 1\n"), 0u);
    EXPECT_EQ(logged(), "UPLOAD CGI Protocol HTTP\n\n");
    EXPECT_EQ(watch("Uploading by data.cgi pid: 0\n[port: 443]"), 0u);
    EXPECT_EQ(logged(), "data.cgi pid 0 \n\n");
    EXPECT_EQ(left(), kBoth);
}

TEST_F(FirmwareMarker, ProtocolIsLoggedFirst) {
    const struct {
        const char *tags, *logged;
    } rows[] = {
        {"[port: 443]", "UPLOAD CGI Protocol HTTPS\n\n"},
        {"[port: 80]", "UPLOAD CGI Protocol HTTP\n\n"},
        {"[port: 80] [port: 443]", "UPLOAD CGI Protocol HTTPS\n\n"},
        {"[port: 443] [port: 80]", "UPLOAD CGI Protocol HTTPS\n\n"},
        {"", ""},
        {"[port: 8080]", ""},
        {"[port:80]", ""},
        {"[Port: 443]", ""},
    };
    for (const auto &row : rows) {
        const std::string tags = row.tags;
        EXPECT_EQ(watch(tags + " Uploading by data.cgi pid: 0"), 0u) << tags;
        EXPECT_EQ(logged(), row.logged + std::string("data.cgi pid 0 \n\n")) << tags;
        EXPECT_EQ(watch("Uploading by data.cgi pid: 0 " + tags), 0u) << tags;
        EXPECT_EQ(logged(), row.logged + std::string("data.cgi pid 0 \n\n")) << tags << " behind";
    }
}

TEST_F(FirmwareMarker, OtherUploaderOnlyLosesItsProgressFile) {
    for (const std::string line : {"Uploading by the cloud\n", "[x] Uploading by data.cgi pid 7",
                                   "Uploading by %s%n", "Uploading by \n"}) {
        EXPECT_EQ(watch(line), 2u) << line;
        EXPECT_EQ(left(), "marker ") << line;
        EXPECT_EQ(logged(), "SN_Check_FW_upload_status 1693 " + line + "\n") << line;
    }
    EXPECT_EQ(watch("[port: 80] Uploading by ftp\nmore\n"), 2u);
    EXPECT_EQ(logged(),
              "UPLOAD CGI Protocol HTTP\n\n"
              "SN_Check_FW_upload_status 1693 [port: 80] Uploading by ftp\n\n");
    EXPECT_EQ(SN_Check_FW_upload_status(), 2u) << "without a progress file";
}

TEST_F(FirmwareMarker, ProcessIdsThatAreNoneLeaveBothFiles) {
    const struct {
        const char *text, *logged;
    } rows[] = {
        {"", "0"},     {" ", "0"},
        {"0", "0"},    {" 0000", "0"},
        {"none", "0"}, {"x12", "0"},
        {"-1", "-1"},  {" -57", "-57"},
        {"- 5", "0"},  {"-99999999999", "-2147483648"},
        {"\n12", "0"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(watch(std::string("Uploading by data.cgi pid:") + row.text), 0u) << row.text;
        EXPECT_EQ(left(), kBoth) << row.text;
        EXPECT_EQ(logged(), std::string("data.cgi pid ") + row.logged + " \n\n") << row.text;
    }
    EXPECT_TRUE(sent_signals.empty());
}

TEST_F(FirmwareMarker, ProcessIdIsDecimalUpToTheFirstOtherCharacter) {
    UploadProgram program;
    const std::string pid = std::to_string(program.pid());
    for (const std::string &text :
         {pid, " " + pid, " \t  " + pid, pid + "\n", pid + " 99999999", pid + "x1", pid + ".5",
          "000" + pid, " " + pid + "[port: 443]"}) {
        EXPECT_EQ(watch("Uploading by data.cgi pid:" + text), 1u) << text;
        EXPECT_EQ(left(), kBoth) << text;
    }
    EXPECT_EQ(watch("Uploading by data.cgi pid:0x" + pid), 0u) << "not hexadecimal";
    EXPECT_EQ(logged(), "data.cgi pid 0 \n\n");
}

TEST_F(FirmwareMarker, HugeProcessIdsBelongToNobody) {
    for (const char *text : {"2147483647", "2147483648", "4294967297", "99999999999999999999"}) {
        EXPECT_EQ(watch(std::string("Uploading by data.cgi pid: ") + text), 0u) << text;
        EXPECT_EQ(left(), "") << text;
        EXPECT_EQ(logged(),
                  "data.cgi pid 2147483647 \n\n"
                  "SN_Check_FW_upload_status 1686 data.cgi 2147483647 is not exist\n");
    }
}

TEST_F(FirmwareMarker, LineIsCutAt255) {
    const std::string mark = "Uploading by data.cgi pid:";
    EXPECT_EQ(watch(std::string(255 - mark.size(), 'x') + mark + "2147483647"), 0u);
    EXPECT_EQ(logged(), "data.cgi pid 0 \n\n");
    EXPECT_EQ(watch(std::string(245 - mark.size(), 'x') + mark + "21474836471"), 0u);
    EXPECT_EQ(logged(),
              "data.cgi pid 2147483647 \n\n"
              "SN_Check_FW_upload_status 1686 data.cgi 2147483647 is not exist\n");
    EXPECT_EQ(watch(std::string(256 - mark.size(), 'x') + mark + "5"), 2u) << "colon cut off";
    EXPECT_EQ(watch(std::string(70000, 'x') + mark + "5"), 0u);
    EXPECT_EQ(logged(), "");
}

}  // namespace

#include "finished.h"
#include "testing/certificates.h"
#include "testing/daemon.h"
#include "testing/world_test.h"

namespace {

constexpr const char *kTrace = "/mnt/data/iss_config/segmentrace.txt";
const std::string kEndpoint = "https://localhost:9443/dev/tfaapi/kdumps";

// The cloud alone, and the real program as its device.
class CloudCommand : public world::WorldTest {
  protected:
    CloudCommand() {
        world::CertificateAuthority stranger("Another authority");
        stranger.write_client_files(world::kDeviceDir, "somebody");
        world::write_file("/tmp/app/cloud_tmp/KDUMPS_file", kEndpoint);
        world::write_file(kTrace, "a trace");
    }

    static world::Daemon cloud(const std::vector<std::string> &options = {}) {
        std::vector<std::string> words = {VIRTUAL_DEVICE, "cloud", "--port", "9443"};
        words.insert(words.end(), options.begin(), options.end());
        world::Ready ready;
        ready.mark = kEndpoint;
        return {world::Command(words), ready};
    }

    static void run_kdump() {
        world::run_and_read(world::Command({KDUMP_PROGRAM, "segmentrace"})
                                .redirect(STDERR_FILENO, "/run/world/trace"));
    }
};

TEST_F(CloudCommand, TakesADumpAndShowsBothRequests) {
    world::Daemon server = cloud({"--keep", "/run/world/kept"});
    run_kdump();
    EXPECT_FALSE(world::exists(kTrace));
    EXPECT_EQ(world::read_file("/run/world/kept/1-segmentrace.txt"), "a trace");
    EXPECT_EQ(server.end(SIGINT).status, 0);
    const std::string shown = server.output();
    for (const char *part :
         {"POST https://localhost:9443/dev/tfaapi/kdumps -> 200", "client certificate: somebody",
          "Content-Type: application/json", R"(body: {"filename": "segmentrace.txt"})",
          "PUT https://localhost:9443/up/1/segmentrace.txt?token=", "Expect: 100-continue",
          "body: a trace"})
        EXPECT_NE(shown.find(part), std::string::npos) << part << "\n" << shown;
}

TEST_F(CloudCommand, AnswersAsTheScenarioSays) {
    world::Daemon server = cloud({"--scenario", "upload-refused-500"});
    run_kdump();
    EXPECT_TRUE(world::exists(kTrace));
    EXPECT_EQ(server.end(SIGTERM).status, 0);
    EXPECT_NE(server.output().find(" -> 500\n"), std::string::npos) << server.output();
}

TEST_F(CloudCommand, KeepsNoUploadOverAnother) {
    world::write_file("/run/world/kept/1-segmentrace.txt", "an earlier one");
    const Finished refused = virtual_device("cloud --keep /run/world/kept");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.output.find("/run/world/kept is not empty"), std::string::npos);
}

}  // namespace

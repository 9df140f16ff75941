#include "testing/swift.h"

#include <openssl/hmac.h>

#include <cstdio>
#include <ctime>
#include <map>

#include "testing/cloud.h"
#include "testing/files.h"
#include "testing/sha256.h"
#include "testing/shown_folders.h"

namespace world {
namespace {

constexpr const char *kScope = "/us-east-1/s3/aws4_request";

std::string hmac(const std::string &key, const std::string &text) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()),
         reinterpret_cast<const unsigned char *>(text.data()), text.size(), digest, &size);
    return {reinterpret_cast<const char *>(digest), size};
}

std::string hexadecimal(const std::string &bytes) {
    std::string text;
    for (const char byte : bytes) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(byte));
        text += pair;
    }
    return text;
}

}  // namespace

Daemon start_swift(const Identity &server) {
    const std::string folder = kDaemonFolder + "swift";
    const std::string unpacked = inside(WORLD_SOURCE_DIR "/.deps/swift/usr");
    write_file(folder + "/server.crt", server.certificate_pem());
    write_file(folder + "/server.key", server.key_pem());
    write_file("/etc/swift/swift.conf", "[swift-hash]\nswift_hash_path_suffix = world\n");
    Command command({"python3", inside(WORLD_SOURCE_DIR "/testing/start_swift.py"), kSwiftAddress,
                     folder, inside(WORLD_BINARY_DIR), unpacked + "/bin/memcached"});
    command.set("PYTHONPATH", unpacked + "/lib/python3/dist-packages")
        .set("PYTHONDONTWRITEBYTECODE", "1")
        .set("LD_LIBRARY_PATH", unpacked + "/lib/libraries");
    Ready ready;
    ready.mark = "bucket 201";
    return {command, ready};
}

std::string presigned_target(const std::string &signature, size_t number,
                             const std::string &object) {
    const std::string path = "/dumps/" + std::to_string(number) +
                             (signature == "odd-name" ? "/Ger%C3%A4t%207%20%26%20Co/" : "/") +
                             object;
    const std::time_t when = std::time(nullptr) - (signature == "expired" ? 7200 : 0);
    std::tm parts = {};
    gmtime_r(&when, &parts);
    char time[32];
    std::strftime(time, sizeof time, "%Y%m%dT%H%M%SZ", &parts);
    const std::string day(time, 8);
    std::map<std::string, std::string> headers = {
        {"host", signature == "other-host" ? "other.example.com" : kStoreHost}};
    if (signature == "typed" || signature == "other-type")
        headers["content-type"] = signature == "typed" ? "application/octet-stream" : "text/plain";
    std::string names;
    std::string lines;
    for (const auto &[name, value] : headers) {
        names += (names.empty() ? "" : ";") + name;
        lines += name + ":" + value + "\n";
    }
    std::string query = "X-Amz-Algorithm=AWS4-HMAC-SHA256&X-Amz-Credential=dumps%3Adevice%2F" +
                        day + "%2Fus-east-1%2Fs3%2Faws4_request&X-Amz-Date=" + time +
                        "&X-Amz-Expires=3600&X-Amz-SignedHeaders=" +
                        (headers.size() > 1 ? "content-type%3Bhost" : "host");
    const std::string request = (signature == "other-method" ? "GET\n" : "PUT\n") + path + "\n" +
                                query + "\n" + lines + "\n" + names + "\nUNSIGNED-PAYLOAD";
    std::string key = std::string("AWS4") + (signature == "forged" ? "guess" : "word");
    for (const std::string &part :
         {day, std::string("us-east-1"), std::string("s3"), std::string("aws4_request")})
        key = hmac(key, part);
    const std::string text =
        std::string("AWS4-HMAC-SHA256\n") + time + "\n" + day + kScope + "\n" + Sha256::of(request);
    return path + "?" + query + "&X-Amz-Signature=" + hexadecimal(hmac(key, text));
}

}  // namespace world

#include "state/credentials.h"

#include <cstring>

#include "base/fixed_text.h"
#include "log/log.h"
#include "state/device_identity.h"
#include "state/one_value_file.h"

using namespace cloudagent;

namespace {

constexpr const char *kSeqnoFile = "/tmp/app/cloud_tmp/seqno_file";
constexpr const char *kKeyFile = "/tmp/app/cloud_tmp/key_file";
constexpr const char *kSecretFile = "/tmp/app/cloud_tmp/secret_file";

using Word = FixedText<128>;

int set_bound_word(const char *path, const char *value) noexcept {
    if (value == nullptr) {
        return 1;
    }
    Word word;
    word.format("%s%s", value, sys_mac_addr_compact);
    return write_value(path, "%s", word.c_str()) ? 0 : 1;
}

enum class BoundWord { kRead, kNoFile, kOtherDevice };

BoundWord get_bound_word(const char *path, char *out) noexcept {
    Word word;
    if (read_word(path, word.data(), Word::size()) == FileValue::kNoFile) {
        return BoundWord::kNoFile;
    }
    const std::size_t length = word.length();
    const std::size_t suffix = std::strlen(sys_mac_addr_compact);
    if (length < suffix || std::strcmp(word.c_str() + length - suffix, sys_mac_addr_compact) != 0) {
        return BoundWord::kOtherDevice;
    }
    std::memcpy(out, word.c_str(), length - suffix);
    return BoundWord::kRead;
}

}  // namespace

int api_omcloud_seqno_get(int32_t *value) noexcept {
    int32_t unused = 0;
    int32_t *const number = value != nullptr ? value : &unused;
    if (read_number(kSeqnoFile, number) == FileValue::kNoFile) {
        *number = 1;
        return 1;
    }
    cloud_log("OM-Cloud:%s, %04d TBD\n\n", __func__, 65);
    return 0;
}

int api_omcloud_seqno_set(int32_t value) noexcept {
    if (!write_value(kSeqnoFile, "%d", value)) {
        return 1;
    }
    cloud_log("OM-Cloud:%s, %04d TBD\n\n", __func__, 87);
    return 0;
}

int api_key_set(const char *key) noexcept { return set_bound_word(kKeyFile, key); }
int api_secret_set(const char *secret) noexcept { return set_bound_word(kSecretFile, secret); }

int api_key_get(char *out) noexcept {
    if (out == nullptr) {
        return 1;
    }
    cloud_log("Cloud:%s, %04d TBD\n\n", __func__, 151);
    const BoundWord result = get_bound_word(kKeyFile, out);
    if (result == BoundWord::kOtherDevice) {
        cloud_log("api_key_get fail\n");
    }
    return result == BoundWord::kRead ? 0 : 1;
}

int api_secret_get(char *out) noexcept {
    if (out == nullptr) {
        return 1;
    }
    const BoundWord result = get_bound_word(kSecretFile, out);
    if (result == BoundWord::kOtherDevice) {
        cloud_log("api_secret_get fail\n");
    }
    return result == BoundWord::kRead ? 0 : 1;
}

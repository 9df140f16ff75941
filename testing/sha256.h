/* SHA-256 over a stream of data. */
#pragma once

#include <openssl/evp.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "testing/certificates.h"

namespace world {

class Sha256 {
  public:
    Sha256() : context_(EVP_MD_CTX_new()) {
        EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr);
    }

    void add(std::string_view data) { EVP_DigestUpdate(context_.get(), data.data(), data.size()); }

    // Ends the digest: 64 lower-case hexadecimal digits.
    std::string hex() {
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned size = 0;
        EVP_DigestFinal_ex(context_.get(), digest, &size);
        std::string text;
        for (unsigned i = 0; i < size; ++i) {
            char pair[3];
            std::snprintf(pair, sizeof pair, "%02x", digest[i]);
            text += pair;
        }
        return text;
    }

    static std::string of(std::string_view data) {
        Sha256 digest;
        digest.add(data);
        return digest.hex();
    }

    // The digest of a file; one that cannot be read counts as empty.
    static std::string of_file(const std::string &path) {
        Sha256 digest;
        std::ifstream file(path, std::ios::binary);
        std::vector<char> piece(1 << 16);
        while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())),
               file.gcount() > 0)
            digest.add({piece.data(), static_cast<size_t>(file.gcount())});
        return digest.hex();
    }

  private:
    std::unique_ptr<EVP_MD_CTX, FreeWith<EVP_MD_CTX_free>> context_;
};

}  // namespace world

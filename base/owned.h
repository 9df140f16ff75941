// Owners of C handles: each releases its handle at the end of its scope.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace cloudagent {

struct FreeText {
    void operator()(char *text) const noexcept { std::free(text); }
};

struct CloseFile {
    void operator()(std::FILE *file) const noexcept { (void)std::fclose(file); }
};

using OwnedText = std::unique_ptr<char, FreeText>;
using OwnedFile = std::unique_ptr<std::FILE, CloseFile>;

// A file descriptor; negative means none.
class OwnedDescriptor {
  public:
    explicit OwnedDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    ~OwnedDescriptor() {
        if (descriptor_ >= 0) {
            close(descriptor_);
        }
    }
    OwnedDescriptor(const OwnedDescriptor &) = delete;
    OwnedDescriptor &operator=(const OwnedDescriptor &) = delete;

    int get() const noexcept { return descriptor_; }

  private:
    int descriptor_;
};

}  // namespace cloudagent

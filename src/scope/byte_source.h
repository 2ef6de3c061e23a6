// The bytes of a trace file: as they are, or unpacked from gzip or zstd.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "scope/file_bytes.h"
#include "scope/unpack.h"

namespace sonaprobe::scope {

class ByteSource {
  public:
    // A path, or "-" for standard input, see FileBytes. Throws a Failure where that cannot be
    // opened.
    explicit ByteSource(const std::string& path, const std::string& copyOf = {});

    // The next bytes, at least one but at the end. Throws a Failure where the file cannot be read,
    // or unpacks to far more than a trace does.
    size_t read(std::span<std::byte> room);

    // Goes on at this byte of a file that is not packed.
    void skipTo(uint64_t offset) { file_.skipTo(offset); }

    // At the end: what is wrong with packed data, or null.
    const char* damage() const;

    // "gzip" and the like, or null for a file that is not packed.
    const char* packing() const;

    // The file itself, whose bytes may be packed.
    const FileBytes& file() const { return file_; }
    const std::string& name() const { return file_.name(); }

  private:
    using Unpacker = std::variant<std::monostate, Gunzip, Unzstd>;

    Unpacker unpackerOf();

    FileBytes file_;
    Unpacker unpacker_;
    uint64_t unpacked_ = 0;
};

}  // namespace sonaprobe::scope

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
    // Packed traces grow by 3 to 20. What grows more than this, once it is large, is made to fill
    // memory and disks.
    static constexpr uint64_t kMostGrowth = 250;

    // A path, or "-" for standard input, see FileBytes. A packed one may unpack to `mostGrowth`
    // times its size, without end where that is 0. Throws a Failure where it cannot be opened.
    explicit ByteSource(const std::string& path, const std::string& copyOf = {},
                        uint64_t mostGrowth = kMostGrowth);

    // The next bytes, at least one but at the end. Throws a Failure where the file cannot be read,
    // or unpacks to more than it may.
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
    uint64_t mostGrowth_;
    uint64_t unpacked_ = 0;
};

}  // namespace sonaprobe::scope

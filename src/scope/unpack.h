// Unpacks gzip and zstd data as they are read. Several members or frames one after another are one
// file.

#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>
#include <zlib.h>
#include <zstd.h>

#include "scope/file_bytes.h"

namespace sonaprobe::scope {

// Both give the next unpacked bytes, none at the end or where the data are damaged; damage() then
// says how, or is null.

class Gunzip {
  public:
    explicit Gunzip(FileBytes& file);
    static bool recognises(std::span<const std::byte> head);
    size_t read(std::span<std::byte> room);
    const char* damage() const { return damage_; }

  private:
    struct End {
        void operator()(z_stream* stream) const;
    };
    bool nextMember();

    FileBytes* file_;
    std::unique_ptr<z_stream, End> stream_;
    std::vector<std::byte> packed_;
    bool inMember_ = true;
    const char* damage_ = nullptr;
};

class Unzstd {
  public:
    explicit Unzstd(FileBytes& file);
    static bool recognises(std::span<const std::byte> head);
    size_t read(std::span<std::byte> room);
    const char* damage() const { return damage_; }

  private:
    struct End {
        void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
    };

    FileBytes* file_;
    std::unique_ptr<ZSTD_DStream, End> stream_;
    std::vector<std::byte> packed_;
    ZSTD_inBuffer in_{};
    size_t wanted_ = 0;  // 0 between two frames
    const char* damage_ = nullptr;
};

}  // namespace sonaprobe::scope

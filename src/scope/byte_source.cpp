// Chooses how a file is unpacked by its first bytes.

#include "scope/byte_source.h"

#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// Packed traces grow by 3 to 20. What grows more than this, once it is large, is made to fill
// memory and disks.
constexpr uint64_t kMostGrowth = 250;
constexpr uint64_t kUnchecked = uint64_t{64} << 20;

}  // namespace

ByteSource::ByteSource(const std::string& path, const std::string& copyOf)
    : file_(path, copyOf), unpacker_(unpackerOf()) {}

ByteSource::Unpacker ByteSource::unpackerOf() {
    if (Gunzip::recognises(file_.head())) return Gunzip(file_);
    if (Unzstd::recognises(file_.head())) return Unzstd(file_);
    return {};
}

size_t ByteSource::read(std::span<std::byte> room) {
    if (packing() == nullptr) return file_.read(room);
    size_t got = 0;
    if (Gunzip* const gzip = std::get_if<Gunzip>(&unpacker_)) got = gzip->read(room);
    if (Unzstd* const zstd = std::get_if<Unzstd>(&unpacker_)) got = zstd->read(room);
    unpacked_ += got;
    if (unpacked_ > kUnchecked && unpacked_ / kMostGrowth > file_.bytesRead()) {
        throw Failure{name() + " unpacks to more than " + std::to_string(kMostGrowth) +
                      " times its size, as no trace does; if you trust it, unpack it first"};
    }
    return got;
}

const char* ByteSource::damage() const {
    if (const Gunzip* const gzip = std::get_if<Gunzip>(&unpacker_)) return gzip->damage();
    if (const Unzstd* const zstd = std::get_if<Unzstd>(&unpacker_)) return zstd->damage();
    return nullptr;
}

const char* ByteSource::packing() const {
    constexpr const char* kNames[] = {nullptr, "gzip", "zstd"};
    return kNames[unpacker_.index()];
}

}  // namespace sonaprobe::scope

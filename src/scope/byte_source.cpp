// Chooses how a file is unpacked by its first bytes.

#include "scope/byte_source.h"

#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// So much may come of any packed file.
constexpr uint64_t kUnchecked = uint64_t{64} << 20;

}  // namespace

ByteSource::ByteSource(const std::string& path, const std::string& copyOf, uint64_t mostGrowth)
    : file_(path, copyOf), unpacker_(unpackerOf()), mostGrowth_(mostGrowth) {}

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
    if (unpacked_ > kUnchecked && mostGrowth_ != 0 && unpacked_ / mostGrowth_ > file_.bytesRead()) {
        throw Failure{name() + " unpacks to more than " + std::to_string(mostGrowth_) +
                      " times its size, as no trace does; if you trust it, give --max-growth 0"};
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

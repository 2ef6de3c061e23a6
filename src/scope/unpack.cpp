// Unpacking with zlib and zstd.

#include "scope/unpack.h"

#include <new>

namespace sonaprobe::scope {

namespace {

constexpr size_t kPackedRoom = 1 << 16;
constexpr int kGzipOnly = 15 + 16;  // the window's bits, and zlib's mark for gzip headers
constexpr const char* kEndsEarly = "the packed data end early; what came before is used";
constexpr const char* kDamaged = "the packed data are damaged; what came before is used";

bool beginsWith(std::span<const std::byte> head, std::initializer_list<uint8_t> magic) {
    if (head.size() < magic.size()) return false;
    size_t at = 0;
    for (const uint8_t byte : magic) {
        if (head[at++] != std::byte{byte}) return false;
    }
    return true;
}

}  // namespace

void Gunzip::End::operator()(z_stream* stream) const {
    inflateEnd(stream);
    delete stream;
}

bool Gunzip::recognises(std::span<const std::byte> head) {
    return beginsWith(head, {0x1F, 0x8B, 8});
}

Gunzip::Gunzip(FileBytes& file) : file_(&file), stream_(new z_stream{}), packed_(kPackedRoom) {
    if (inflateInit2(stream_.get(), kGzipOnly) != Z_OK) throw std::bad_alloc();
}

// Begins the next member, if there is one: what is no member, such as zeros to fill a block of a
// tape, ends the file.
bool Gunzip::nextMember() {
    if (stream_->avail_in == 0) {
        stream_->next_in = reinterpret_cast<Bytef*>(packed_.data());
        stream_->avail_in = static_cast<uInt>(file_->read(packed_));
    }
    if (stream_->avail_in == 0 || *stream_->next_in != 0x1F) return false;
    inMember_ = true;
    return inflateReset(stream_.get()) == Z_OK;
}

size_t Gunzip::read(std::span<std::byte> room) {
    stream_->next_out = reinterpret_cast<Bytef*>(room.data());
    stream_->avail_out = static_cast<uInt>(room.size());
    while (stream_->avail_out == room.size() && damage_ == nullptr) {
        if (!inMember_ && !nextMember()) break;
        if (stream_->avail_in == 0) {
            stream_->next_in = reinterpret_cast<Bytef*>(packed_.data());
            stream_->avail_in = static_cast<uInt>(file_->read(packed_));
            if (stream_->avail_in == 0) damage_ = kEndsEarly;
        }
        const int result = inflate(stream_.get(), Z_NO_FLUSH);
        if (result == Z_STREAM_END) {
            inMember_ = false;
        } else if (result != Z_OK && result != Z_BUF_ERROR) {
            damage_ = kDamaged;
        }
    }
    return room.size() - stream_->avail_out;
}

bool Unzstd::recognises(std::span<const std::byte> head) {
    return beginsWith(head, {0x28, 0xB5, 0x2F, 0xFD});
}

Unzstd::Unzstd(FileBytes& file)
    : file_(&file), stream_(ZSTD_createDStream()), packed_(kPackedRoom) {
    if (stream_ == nullptr) throw std::bad_alloc();
    in_.src = packed_.data();
}

size_t Unzstd::read(std::span<std::byte> room) {
    ZSTD_outBuffer out{room.data(), room.size(), 0};
    while (out.pos == 0 && damage_ == nullptr) {
        if (in_.pos == in_.size) {
            in_.size = file_->read(packed_);
            in_.pos = 0;
            if (in_.size == 0) {
                // What the stream still holds comes out without new data.
                if (wanted_ == 0) break;
            }
        }
        const size_t before = in_.pos;
        wanted_ = ZSTD_decompressStream(stream_.get(), &out, &in_);
        if (ZSTD_isError(wanted_) != 0) {
            damage_ = kDamaged;
        } else if (out.pos == 0 && in_.size == 0 && in_.pos == before && wanted_ != 0) {
            damage_ = kEndsEarly;
        }
    }
    return out.pos;
}

}  // namespace sonaprobe::scope

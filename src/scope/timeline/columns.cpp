// Numbers to bytes, bytes to the page's characters.

#include "scope/timeline/columns.h"

#include <algorithm>
#include <isa-l/igzip_lib.h>
#include <limits>
#include <memory>

#include "scope/failure.h"

namespace sonaprobe::scope::timeline {

namespace {

constexpr char kEscape = '=';
constexpr unsigned kShift = 64;

// By byte: whether it is written as two characters. 0 and CR are not kept by HTML, "<" would open a
// tag; the rest are the characters that ISO-8859-15 has beyond U+00FF.
constexpr std::array<bool, 256> kEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const unsigned byte :
         {0x00U, 0x0DU, 0x3CU, 0x3DU, 0xA4U, 0xA6U, 0xA8U, 0xB4U, 0xB8U, 0xBCU, 0xBDU, 0xBEU}) {
        escaped[byte] = true;
    }
    return escaped;
}();

}  // namespace

void putNumber(std::string& bytes, uint64_t number) {
    for (; number >= 0x80; number >>= 7) bytes.push_back(static_cast<char>(number | 0x80));
    bytes.push_back(static_cast<char>(number));
}

char Columns::putLong(uint64_t number) {
    size_t length = 0;
    for (; number > 0; number >>= 8) planes_[length++].push_back(static_cast<char>(number));
    return static_cast<char>(kFirstLength - 1 + length);
}

void Columns::appendTo(std::string& bytes) const {
    constexpr size_t kMostOfLength = 10;
    size_t size = bytes.size() + heads_.size() + kMostOfLength;
    for (const std::vector<char>& plane : planes_) size += plane.size() + kMostOfLength;
    bytes.reserve(size);
    const auto append = [&](const std::vector<char>& part) {
        putNumber(bytes, part.size());
        bytes.append(part.data(), part.size());
    };
    append(heads_);
    for (const std::vector<char>& plane : planes_) append(plane);
}

std::string Columns::below(const std::string& heading) const {
    std::string bytes;
    putNumber(bytes, heading.size());
    bytes += heading;
    appendTo(bytes);
    return bytes;
}

std::string deflated(const std::string& bytes) {
    constexpr uint32_t kLevel = 1;  // those above save 0.3 % of size
    constexpr size_t kStep = 1 << 16;
    if (bytes.size() > std::numeric_limits<uint32_t>::max()) {
        throw Failure{"a part of the page has more than 4 GiB"};
    }
    const auto room = std::make_unique_for_overwrite<uint8_t[]>(ISAL_DEF_LVL1_DEFAULT);
    const auto stream = std::make_unique<isal_zstream>();
    isal_deflate_init(stream.get());
    stream->level = kLevel;
    stream->level_buf = room.get();
    stream->level_buf_size = ISAL_DEF_LVL1_DEFAULT;
    stream->gzip_flag = IGZIP_ZLIB;
    stream->end_of_stream = 1;
    stream->next_in = reinterpret_cast<uint8_t*>(const_cast<char*>(bytes.data()));
    stream->avail_in = static_cast<uint32_t>(bytes.size());
    std::string packed;
    while (stream->internal_state.state != ZSTATE_END) {
        const size_t done = packed.size();
        // Half the bytes is more than most chunks take.
        packed.resize(done + bytes.size() / 2 + kStep);
        stream->next_out = reinterpret_cast<uint8_t*>(packed.data() + done);
        stream->avail_out = static_cast<uint32_t>(packed.size() - done);
        if (isal_deflate(stream.get()) != COMP_OK) throw Failure{"the page could not be deflated"};
        packed.resize(packed.size() - stream->avail_out);
    }
    return packed;
}

std::string asPageText(const std::string& bytes) {
    const auto isEscaped = [](char byte) { return kEscaped[static_cast<unsigned char>(byte)]; };
    const auto escapes = static_cast<size_t>(std::ranges::count_if(bytes, isEscaped));
    std::string text(bytes.size() + escapes, '\0');
    // Nothing foretells which bytes are escaped, so that a branch would often go wrong: each byte
    // writes the escape, and then itself after it or over it.
    char* at = text.data();
    for (const char byte : bytes) {
        const unsigned escape = isEscaped(byte) ? 1 : 0;
        *at = kEscape;
        at += escape;
        *at++ = static_cast<char>(static_cast<unsigned char>(byte) + kShift * escape);
    }
    return text;
}

}  // namespace sonaprobe::scope::timeline

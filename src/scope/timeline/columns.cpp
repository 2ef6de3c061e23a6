// Numbers to bytes, bytes to the page's characters.

#include "scope/timeline/columns.h"

#include <algorithm>
#include <limits>
#include <zlib.h>

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

void Columns::putLong(uint64_t number) {
    const size_t head = heads_.size();
    heads_.push_back(0);
    size_t length = 0;
    for (; number > 0; number >>= 8) planes_[length++].push_back(static_cast<char>(number));
    heads_[head] = static_cast<char>(kFirstLength - 1 + length);
}

void Columns::appendTo(std::string& bytes) const {
    const auto append = [&](const std::vector<char>& part) {
        putNumber(bytes, part.size());
        bytes.append(part.begin(), part.end());
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

std::string deflated(const std::string& bytes, Deflating how) {
    constexpr int kWindowBits = 15;
    constexpr int kMostMemory = 9;
    z_stream stream{};
    if (bytes.size() > std::numeric_limits<uInt>::max() ||
        deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, kWindowBits, kMostMemory,
                     how == Deflating::quick ? Z_RLE : Z_DEFAULT_STRATEGY) != Z_OK) {
        throw Failure{"there is no memory left to deflate the page's data"};
    }
    // Nothing fails where there is room for all.
    std::string packed(deflateBound(&stream, bytes.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(bytes.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::string asPageText(const std::string& bytes) {
    const auto isEscaped = [](char byte) { return kEscaped[static_cast<unsigned char>(byte)]; };
    const auto escapes = static_cast<size_t>(std::ranges::count_if(bytes, isEscaped));
    std::string text(bytes.size() + escapes, kEscape);
    size_t at = 0;
    for (const char byte : bytes) {
        if (isEscaped(byte)) {
            text[++at] = static_cast<char>(static_cast<unsigned char>(byte) + kShift);
        } else {
            text[at] = byte;
        }
        ++at;
    }
    return text;
}

}  // namespace sonaprobe::scope::timeline

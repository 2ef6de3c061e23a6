// Numbers to bytes, bytes to the page's characters.

#include "scope/timeline/columns.h"

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
    const auto append = [&](const std::string& part) {
        putNumber(bytes, part.size());
        bytes += part;
    };
    append(heads_);
    for (const std::string& plane : planes_) append(plane);
}

std::string deflated(const std::string& bytes, int level) {
    std::string packed(compressBound(bytes.size()), '\0');
    uLongf length = packed.size();
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &length,
                  reinterpret_cast<const Bytef*>(bytes.data()), bytes.size(), level) != Z_OK) {
        throw Failure{"there is no memory left to deflate the page's data"};
    }
    packed.resize(length);
    return packed;
}

std::string asPageText(const std::string& bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 16);
    for (const char byte : bytes) {
        if (kEscaped[static_cast<unsigned char>(byte)]) {
            text.push_back(kEscape);
            text.push_back(static_cast<char>(static_cast<unsigned char>(byte) + kShift));
        } else {
            text.push_back(byte);
        }
    }
    return text;
}

}  // namespace sonaprobe::scope::timeline

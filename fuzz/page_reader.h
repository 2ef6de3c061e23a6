// Reads what the timeline's page is packed of, as docs/timeline-page.md has it.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz.h"
#include "scope/timeline/columns.h"

namespace sonaprobe::fuzz {

// The bytes that a page's characters stand for.
inline std::string bytesOfPage(std::string_view text) {
    std::string read;
    for (size_t i = 0; i < text.size(); ++i) {
        const bool isEscape = text[i] == '=';
        require(!isEscape || i + 1 < text.size(), "an escape has its byte");
        require(isEscape || (text[i] != '<' && text[i] != '\0' && text[i] != '\r'),
                "nothing is in it that a page changes");
        read += isEscape ? static_cast<char>(static_cast<unsigned char>(text[++i]) - 64) : text[i];
    }
    return read;
}

// 0, 1, 2, 3, 4 are 0, -1, 1, -2, 2.
inline int64_t signedOf(uint64_t number) {
    return static_cast<int64_t>(number >> 1 ^ (0 - (number & 1)));
}

class Reader {
  public:
    explicit Reader(std::string_view bytes) : left_(bytes) {}

    bool atEnd() const { return left_.empty(); }
    uint8_t byte() {
        require(!left_.empty(), "the bytes go on");
        const auto value = static_cast<uint8_t>(left_.front());
        left_.remove_prefix(1);
        return value;
    }
    uint64_t number() {
        uint64_t value = 0;
        for (unsigned shift = 0;; shift += 7) {
            const uint8_t next = byte();
            value |= uint64_t{next & 0x7FU} << shift;
            if (next < 0x80) return value;
        }
    }
    Reader part(uint64_t length) {
        require(length <= left_.size(), "a part is there");
        const Reader taken(left_.substr(0, length));
        left_.remove_prefix(length);
        return taken;
    }

  private:
    std::string_view left_;
};

class ColumnReader {
  public:
    explicit ColumnReader(Reader& bytes) : heads_(bytes.part(bytes.number())) {
        for (size_t i = 0; i < 8; ++i) planes_.push_back(bytes.part(bytes.number()));
        require(bytes.atEnd(), "nothing comes after the last plane");
    }

    uint64_t next() {
        const uint64_t head = heads_.byte();
        if (head < scope::timeline::Columns::kFirstLength) return head;
        uint64_t value = 0;
        for (uint64_t i = 0; i < head - scope::timeline::Columns::kFirstLength + 1; ++i) {
            value |= uint64_t{planes_[i].byte()} << 8 * i;
        }
        return value;
    }
    int64_t nextSigned() { return signedOf(next()); }
    void requireEnd() const {
        bool all = heads_.atEnd();
        for (const Reader& plane : planes_) all = all && plane.atEnd();
        require(all, "all numbers are read");
    }

  private:
    Reader heads_;
    std::vector<Reader> planes_;
};

}  // namespace sonaprobe::fuzz

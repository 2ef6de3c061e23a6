// Signatures of the files that are taken for traces by mistake.

#include "scope/file_kind.h"

#include <algorithm>
#include <string_view>

namespace sonaprobe::scope {

namespace {

using namespace std::string_view_literals;

struct Signature {
    size_t offset;
    std::string_view bytes;
    const char* kind;
};

constexpr Signature kSignatures[] = {
    {0,
     "\xFD"
     "7zXZ\0"sv,
     "packed with xz; unpack it first: xz -d"},
    {0, "BZh"sv, "packed with bzip2; unpack it first: bzip2 -d"},
    {0, "\x04\x22\x4D\x18"sv, "packed with lz4; unpack it first: lz4 -d"},
    {0, "LZIP"sv, "packed with lzip; unpack it first: lzip -d"},
    {0, "7z\xBC\xAF\x27\x1C"sv, "a 7z archive; take the trace out of it first"},
    {0, "PK\x03\x04"sv, "a zip archive; take the trace out of it first: unzip"},
    {257, "ustar"sv, "a tar archive; take the trace out of it first: tar -x"},
    {0, "\x1F\x8B"sv, "packed with gzip, and damaged"},
    {0, "\x28\xB5\x2F\xFD"sv, "packed with zstd, and damaged"},
    {0, "\xFF\xD8\xFF"sv, "a JPEG image"},
    {0, "\x89PNG\r\n"sv, "a PNG image"},
    {0, "GIF8"sv, "a GIF image"},
    {0, "BM"sv, "a BMP image"},
    {0, "%PDF-"sv, "a PDF document"},
    {8, "WAVE"sv, "a WAVE sound file"},
    {0, "FORM"sv, "an AIFF sound file"},
    {0, "caff"sv, "a CAF sound file"},
    {0, "OggS"sv, "an Ogg sound file"},
    {0, "fLaC"sv, "a FLAC sound file"},
    {0, "ID3"sv, "an MP3 sound file"},
    {4, "ftyp"sv, "an MP4 file"},
    {0,
     "\x7F"
     "ELF"sv,
     "a program or library (ELF)"},
    {0, "\xCF\xFA\xED\xFE"sv, "a program or library (Mach-O)"},
    {0, "MZ"sv, "a program or library (PE)"},
    {0, "SQLite format 3"sv, "an SQLite database"},
    {0, "\xD4\xC3\xB2\xA1"sv, "a capture of network packets"},
    {0, "\xFF\xFE"sv, "a text in UTF-16"},
    {0, "\xFE\xFF"sv, "a text in UTF-16"},
};

bool isTextByte(std::byte byte) {
    const auto value = std::to_integer<unsigned char>(byte);
    return value >= ' ' ? value != 0x7F
                        : value == '\n' || value == '\r' || value == '\t' || value == '\f' ||
                              value == '\b' || value == 0x1B;
}

}  // namespace

std::string kindOfFile(std::span<const std::byte> head) {
    const std::string_view text(reinterpret_cast<const char*>(head.data()), head.size());
    if (text.empty()) return "this is empty: nothing was written, not even a divisor";
    for (const Signature& signature : kSignatures) {
        if (text.size() < signature.offset) continue;
        if (text.substr(signature.offset).starts_with(signature.bytes)) {
            return std::string("this is ") + signature.kind;
        }
    }
    if (std::ranges::all_of(head, [](std::byte byte) { return byte == std::byte{0}; })) {
        return "this is nothing but zeros, as a disk leaves what was never written";
    }
    if (text.starts_with("{") || text.starts_with("[")) {
        if (std::ranges::all_of(head, isTextByte)) return "this is a text, as of JSON";
    }
    if (std::ranges::all_of(head, isTextByte)) {
        return "this is a text; traces are what sonaprobe -w keeps, not what it prints";
    }
    return "no slot of 64 bytes looks like a record";
}

}  // namespace sonaprobe::scope

// The bytes of a file, pipe or standard input, with a look at the first ones before they are read.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace sonaprobe::scope {

class FileBytes {
  public:
    // Opens a path, "-" for standard input. Throws a Failure where that is not possible. Of a copy,
    // messages name what it is one of.
    explicit FileBytes(const std::string& path, const std::string& copyOf = {});
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    // As messages name it: the path, escaped.
    const std::string& name() const { return name_; }

    // The first bytes, at most kHeadBytes, whatever has been read since.
    static constexpr size_t kHeadBytes = 4096;
    std::span<const std::byte> head() const { return std::span(head_).first(headBytes_); }

    // The next bytes, at least one but at the end. Throws a Failure.
    size_t read(std::span<std::byte> room);

    // Of what can be opened again: the next read() goes on at this byte.
    void skipTo(uint64_t offset);

    // Of the same: the bytes at some place, fewer at the end. Throws a Failure.
    size_t readAt(uint64_t offset, std::span<std::byte> room) const;

    uint64_t bytesRead() const { return bytesRead_; }

    // 0 where it is unknown, as of a pipe.
    uint64_t size() const { return size_; }

    // Whether opening the path again gives the same bytes.
    bool repeatable() const { return size_ > 0 && !isStandardInput_; }

    // Whether it is the very file of that path.
    bool isFileOf(const std::string& path) const;

  private:
    size_t readFile(std::span<std::byte> room);

    bool isStandardInput_;
    std::string name_;
    int file_;
    uint64_t size_ = 0;
    uint64_t bytesRead_ = 0;
    std::array<std::byte, kHeadBytes> head_{};
    size_t headBytes_ = 0;
    size_t headGiven_ = 0;
};

}  // namespace sonaprobe::scope

// A file that a command writes: it gets its name once it is whole, and never takes another's place
// without --force.

#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "scope/file_bytes.h"

namespace sonaprobe::scope {

class NewFile {
  public:
    // Makes a file beside `path`. Throws a Failure where that is not possible, where `path` is the
    // input, or where it exists and `force` is false. Ctrl-C leaves nothing.
    NewFile(const std::string& path, bool force, const FileBytes& input)
        : NewFile(path, force, &input, For::everyone) {}

    // The same for whoever called sudo: that user's file, which nobody else may read, and never in
    // the place of one that exists. What a signal does is the caller's business.
    static NewFile ofCaller(const std::string& path) {
        return {path, false, nullptr, For::callerAlone};
    }

    // Removes what has been written, unless it was kept.
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    // Throws a Failure where the disk is full.
    void write(std::span<const std::byte> bytes);

    // The path under which what has been written can be read, until keep().
    const std::string& written();

    // What is written next takes the place of what was written first. That may be read meanwhile,
    // from before the place that is written.
    void startOver();

    // Where it is written meanwhile, for libraries that open files themselves.
    const std::string& temporary() const { return temporary_; }

    // Writes what is left and gives the file its name. Throws a Failure.
    void keep();

  private:
    static constexpr size_t kGathered = 1 << 20;

    enum class For { everyone, callerAlone };
    NewFile(const std::string& path, bool force, const FileBytes* input, For whom);

    void remove();
    void flush();

    std::string path_;
    std::string name_;       // as messages name it
    std::string temporary_;  // where it is written
    bool force_;
    bool removedOnSignals_;
    int file_ = -1;
    std::string gathered_;
};

}  // namespace sonaprobe::scope

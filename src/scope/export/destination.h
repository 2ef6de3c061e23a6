// Where an export goes: to standard output, or into a file that gets its name once it is whole.

#pragma once

#include <optional>
#include <string>

#include "lines/output_line.h"
#include "scope/new_file.h"
#include "scope/output.h"

namespace sonaprobe::scope {

class Destination {
  public:
    // An empty path is standard output. Throws a Failure, as NewFile does.
    Destination(const std::string& path, bool force, const FileBytes& input);

    Sink sink();

    // Throws a Failure where something could not be written.
    void finish();

  private:
    std::optional<NewFile> file_;
    std::optional<Output> output_;
};

}  // namespace sonaprobe::scope

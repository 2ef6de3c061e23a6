// Where the rows of one trace of many go: folders named host=... and date=..., as engines that take
// a whole tree of files for one table read them.

#pragma once

#include <string>

namespace sonaprobe::scope {

struct PartitionOptions {
    bool wanted = false;
    std::string host;  // empty: the trace's file name up to its first dot
    std::string date;  // empty: the day on which the file was last written, in UTC
};

// "FOLDER/host=studio7/date=2026-11-22/part-studio7.json", with its folders made. Throws a Failure
// where that is not possible.
std::string partitionPath(const std::string& folder, const std::string& trace,
                          const PartitionOptions& options, const std::string& ending);

}  // namespace sonaprobe::scope

// Names partitions after machines and days.

#include "scope/export/partition.h"

#include <ctime>
#include <filesystem>
#include <sys/stat.h>

#include "scope/escape.h"
#include "scope/failure.h"

namespace sonaprobe::scope {

namespace {

// What is no letter, digit, "-" or "." becomes "_": "=" and "/" mean something in these paths.
std::string inPath(std::string name) {
    for (char& character : name) {
        const bool plain = (character >= '0' && character <= '9') ||
                           (character >= 'A' && character <= 'Z') ||
                           (character >= 'a' && character <= 'z') || character == '-' ||
                           (character == '.' && &character != name.data());
        if (!plain) character = '_';
    }
    return name.empty() ? "_" : name;
}

std::string dayOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) throw systemFailure("could not open " + escaped(path));
    tm day{};
    gmtime_r(&status.st_mtime, &day);
    char text[sizeof "-2147481748-11-30"];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &day)};
}

}  // namespace

std::string partitionPath(const std::string& folder, const std::string& trace,
                          const PartitionOptions& options, const std::string& ending) {
    const std::string name = std::filesystem::path(trace).filename();
    const std::string stem = name.substr(0, name.find('.', 1));
    const std::string host = options.host.empty() ? stem : options.host;
    const std::string date = options.date.empty() ? dayOf(trace) : options.date;
    const std::string made = folder + "/host=" + inPath(host) + "/date=" + inPath(date);
    std::error_code error;
    std::filesystem::create_directories(made, error);
    if (error) throw Failure{"could not make " + escaped(made) + ": " + error.message()};
    return made + "/part-" + inPath(stem) + "." + ending;
}

}  // namespace sonaprobe::scope

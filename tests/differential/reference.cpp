// The lines that records must print, made the plain way.

#include "reference.h"

#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "code_file.h"
#include "events/class_table.h"
#include "events/decoders/decoders.h"
#include "reference_text.h"

namespace sonaprobe::differential {

namespace {

[[gnu::format(printf, 1, 2)]] std::string printed(const char* format, ...) {
    std::array<char, 1024> text{};
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, values);
    va_end(values);
    if (length < 0 || static_cast<size_t>(length) >= text.size()) std::abort();
    return {text.data(), static_cast<size_t>(length)};
}

using Wide = unsigned long long;

bool isSilent(uint32_t classId) {
    switch (classId) {
        case 2:
        case 5:
        case 6:
        case 8:
        case 9:
        case 10:
        case 11:
        case 36:
        case 39: return true;
        default: return false;
    }
}

bool isUndecoded(uint32_t classId) {
    return (classId >= 12 && classId <= 19) || classId == 33 || classId == 34 || classId >= 51;
}

bool passesFilters(const OptionSet& options, uint32_t classId) {
    if (!options.filterAllExcept.empty()) return options.filterAllExcept.count(classId) > 0;
    return options.filterOut.count(classId) == 0;
}

bool isMet(const Condition& condition, const TraceRecord& record) {
    if (condition.test == Test::always) return true;
    const uint64_t value = valueOf(record, condition.slice);
    return condition.test == Test::equals ? value == condition.value : value != 0;
}

bool answers(const Row& text, const TraceRecord& record) {
    return (text.qualifiers >> record.debugid % 4 & 1) != 0 && isMet(text.condition, record);
}

// arg1 to arg5 and the processor, after a name or code.
std::string rawWords(const TraceRecord& record, bool zeroFilledThread) {
    std::string words = printed("%16llx  %16llx  %16llx  %16llx  ", static_cast<Wide>(record.arg1),
                                static_cast<Wide>(record.arg2), static_cast<Wide>(record.arg3),
                                static_cast<Wide>(record.arg4));
    const auto thread = static_cast<Wide>(record.arg5);
    words += zeroFilledThread ? printed("0x%016llx", thread) : printed("0x%16llx", thread);
    return words + printed("  %2u", record.cpuid);
}

std::string splitCode(uint32_t debugid) {
    return printed("0x%04x|%02u|%03u", debugid >> 16, debugid >> 10 & 63, debugid >> 2 & 255);
}

}  // namespace

std::string Reference::print(const OptionSet& options, const TraceRecord& record) {
    options_ = &options;
    const uint32_t key = record.debugid / 1024 * 1024;
    const uint32_t classId = key / 1024 % 64;
    const bool isAudio = record.debugid / 65536 == 0x0524;
    std::string line;
    if (isAudio && !passesFilters(options, classId)) return "";
    if (options.basic) {
        line = basic(record);
    } else if (key == 0x21040000) {
        if (options.hal) line = decoded(decoders::kAudioServer, record);
    } else if (!isAudio || isUndecoded(classId)) {
        line = unclassified(record);
    } else if (!isSilent(classId) && (classId != 0 || options.historic)) {
        line = decoded(*kClassTable.at(classId), record);
    }
    return line.empty() ? line : line + '\n';
}

std::string Reference::decoded(const Decoder& decoder, const TraceRecord& record) {
    const Row* event = nullptr;
    for (const Row& row : decoder.rows) {
        if (row.isEvent()) {
            if (event != nullptr) return "";
            if (row.code == record.debugid / 4 * 4) event = &row;
        } else if (event != nullptr && answers(row, record)) {
            if (row.verbose && !options_->verbose) return "";
            const std::string_view name = decoder.text(row.name).view();
            return prefix(record, name.substr(0, row.groupLength), name.substr(row.groupLength + 2),
                          decoder.hasObject ? record.arg1 : 0) +
                   logText(decoder, row, record, options_->divisor);
        }
    }
    return event != nullptr ? "" : unclassified(record);
}

std::string Reference::prefix(const TraceRecord& record, std::string_view group,
                              std::string_view method, uint64_t object) {
    std::string line;
    if (options_->localTime || options_->kernelTime) line += timeText(record.timestamp) + ' ';
    if (options_->cpu) line += printed("%-2u ", record.cpuid);
    if (options_->thread) line += printed("0x%08llx ", static_cast<Wide>(record.arg5));
    if (options_->codes) line += printed("0x%08x ", record.debugid);

    const uint32_t qualifier = record.debugid % 4;
    line += qualifier == 1 ? "-> " : qualifier == 2 ? "<- " : "   ";
    if (options_->indent) {
        if (qualifier == 2 && depth_ > 0) {
            line.append(static_cast<size_t>(--depth_), ' ');
        } else if (qualifier != 2) {
            line.append(static_cast<size_t>(depth_), ' ');
        }
        if (qualifier == 1) ++depth_;
    }

    std::array<char, 74> name{};
    std::snprintf(name.data(), name.size(), "%s%s%s",
                  options_->group ? std::string(group).c_str() : "", options_->group ? "::" : "",
                  options_->method ? std::string(method).c_str() : "");
    if (!options_->separator) {
        line += printed("%s ", name.data());
    } else {
        line += options_->method ? printed("%-30s ", name.data()) : printed("%-10s ", name.data());
    }
    if (object != 0 && options_->pointer) {
        line += printed("(0x%16.16llx) ", static_cast<Wide>(object));
    }
    return line;
}

std::string Reference::unclassified(const TraceRecord& record) {
    const bool isAudio = record.debugid / 65536 == 0x0524;
    const std::string code = (isAudio ? "F-" : "U-") + splitCode(record.debugid);
    if (!isAudio && !options_->all) return "";
    if (!isAudio && options_->decode) {
        const std::string name = scanForName(record.debugid / 4 * 4).value_or(code);
        return prefix(record, "", name, 0) + rawWords(record, false);
    }
    const uint32_t qualifier = record.debugid % 4;
    const std::string time = timeText(record.timestamp);
    return time +
           (qualifier == 1   ? " <- "
            : qualifier == 2 ? " -> "
                             : "    ") +
           code + "  " + rawWords(record, false);
}

std::string Reference::basic(const TraceRecord& record) {
    if (firstStamp_ == 0) firstStamp_ = previousStamp_ = record.timestamp;
    std::string line =
        printed("%10.1f %5.1f  ", static_cast<double>(record.timestamp - firstStamp_) / 1000.0,
                static_cast<double>(record.timestamp - previousStamp_) / 1000.0);
    previousStamp_ = record.timestamp;
    if (options_->decode) {
        const std::string code = printed("%#010x", record.debugid);
        line += printed("%-30s ", scanForName(record.debugid / 4 * 4).value_or(code).c_str());
    } else {
        line += printed("0x%08x  ", record.debugid);
    }
    return line + rawWords(record, true);
}

std::string Reference::timeText(uint64_t timestamp) {
    const double t = static_cast<double>(timestamp) / options_->divisor;
    int64_t us = 0;
    if (t >= 0x1p63) {
        us = INT64_MAX;
    } else if (!std::isnan(t)) {
        us = static_cast<int64_t>(t);
    }
    const int64_t delta = lastMicroseconds_ != 0 ? us - lastMicroseconds_ : 0;
    lastMicroseconds_ = us;
    if (options_->localTime) {
        return printed("%-8.8s [%10lld][%10lld us]", "HH:MM:SS", static_cast<long long>(us),
                       static_cast<long long>(delta))
            .substr(0, 43);
    }
    if (!options_->kernelTime) return "";
    Wide u = 0;
    if (t >= 0x1p64) {
        u = UINT64_MAX;
    } else if (!std::isnan(t)) {
        u = static_cast<Wide>(t);
    }
    return printed("%02llu%03llu.%03llu", u / 1000000 % 60, u / 1000 % 1000, u % 1000);
}

}  // namespace sonaprobe::differential

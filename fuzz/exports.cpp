// Exports of any records under any name: each format stays in its grammar, whatever the bytes say.
//
// An input is a byte for the format, one for its options, the length of a name and the name, then
// slots, before which a divisor is put. The name is that of a code of theirs.

#include <cctype>
#include <fcntl.h>
#include <sqlite3.h>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

#include "analysis/selection.h"
#include "fuzz.h"
#include "scope/export/feed.h"
#include "scope/export/sqlite.h"
#include "scope/failure.h"
#include "scope/json.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

namespace {

constexpr size_t kMostSlots = 200;
constexpr std::string_view kNamedCode = "0x01400004 ";

using Row = std::vector<std::string>;

// A file without a name, emptied and filled anew for each input.
class Memory {
  public:
    std::string hold(std::span<const std::byte> bytes) {
        require(ftruncate(file_, 0) == 0, "the file can be emptied");
        require(pwrite(file_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()),
                "the file takes it");
        return "/proc/self/fd/" + std::to_string(file_);
    }

  private:
    int file_ = memfd_create("trace", MFD_CLOEXEC);
};

std::vector<std::byte> traceOf(std::span<const uint8_t> slots) {
    TraceRecord divisor{};
    divisor.timestamp = 24;
    divisor.debugid = kDivisorMarker;
    const auto head = std::as_bytes(std::span(&divisor, 1));
    std::vector<std::byte> bytes(head.begin(), head.end());
    bytes.insert(bytes.end(), std::as_bytes(slots).begin(), std::as_bytes(slots).end());
    return bytes;
}

// The rows of a table as RFC 4180 has them.
std::vector<Row> rowsOf(std::string_view text) {
    std::vector<Row> rows;
    while (!text.empty()) {
        Row& row = rows.emplace_back();
        for (bool more = true; more;) {
            std::string& field = row.emplace_back();
            if (text.starts_with('"')) {
                text.remove_prefix(1);
                for (;;) {
                    const size_t quote = text.find('"');
                    require(quote != std::string_view::npos, "a quoted field ends");
                    field += text.substr(0, quote);
                    text.remove_prefix(quote + 1);
                    if (!text.starts_with('"')) break;
                    field += '"';
                    text.remove_prefix(1);
                }
            } else {
                const size_t end = text.find_first_of(",\r");
                require(end != std::string_view::npos, "a field ends");
                field = text.substr(0, end);
                require(field.find('"') == std::string::npos, "a quote is quoted");
                text.remove_prefix(end);
            }
            more = text.starts_with(',');
            if (more) text.remove_prefix(1);
        }
        require(text.starts_with("\r\n"), "a row ends with CR LF");
        text.remove_prefix(2);
    }
    return rows;
}

void checkCsv(const std::string& text) {
    const std::vector<Row> rows = rowsOf(text);
    require(!rows.empty(), "there is a head");
    for (const Row& row : rows) {
        require(row.size() == rows[0].size(), "each row has the fields of the head");
        for (const std::string& field : row) {
            require(field.empty() || std::string_view("=+@").find(field[0]) == std::string::npos,
                    "no field is a formula");
        }
    }
}

template <class Check>
void forEachLine(std::string_view text, const Check& check) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        require(end != std::string_view::npos, "each line ends");
        check(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
}

void checkJson(const std::string& text) {
    std::vector<std::string> names;
    forEachLine(text, [&](std::string_view line) {
        const Json row = Json::parse(line);
        std::vector<std::string> found;
        for (const auto& [name, value] : row.items()) found.push_back(name);
        if (names.empty()) names = found;
        require(found == names, "each line has the same fields");
    });
}

void checkFolded(const std::string& text) {
    forEachLine(text, [](std::string_view line) {
        const size_t blank = line.rfind(' ');
        require(blank != std::string_view::npos && blank > 0, "a path has a time");
        for (const char digit : line.substr(blank + 1)) {
            require(std::isdigit(static_cast<unsigned char>(digit)) != 0, "a time is a number");
        }
        const std::string_view path = line.substr(0, blank);
        require(path.find(";;") == std::string_view::npos && !path.starts_with(';') &&
                    !path.ends_with(';'),
                "no frame is empty");
    });
}

void checkCallgrind(const std::string& text) {
    constexpr std::string_view kBegins[] = {
        "# callgrind", "version:", "creator:", "positions:", "events:",
        "event:",      "summary:", "cmd:",     "fl=",        "fn=",
        "cfi=",        "cfn=",     "calls=",   "desc:",      "0 "};
    forEachLine(text, [&](std::string_view line) {
        require(line.empty() || std::ranges::any_of(
                                    kBegins, [&](auto begin) { return line.starts_with(begin); }),
                "each line is one of the format's");
    });
}

using Check = void (*)(const std::string&);
Check checkOf(std::string_view format) {
    if (format == "json") return checkJson;
    if (format == "csv") return checkCsv;
    if (format == "folded") return checkFolded;
    if (format == "callgrind") return checkCallgrind;
    return [](const std::string& text) { require(Json::accept(text), "a document is whole"); };
}

void checkText(const std::string& text, std::string_view format) {
    for (const char character : text) {
        require((character >= ' ' && character <= '~') || character == '\n' ||
                    (character == '\r' && format == "csv"),
                "what is written is printable");
    }
    checkOf(format)(text);
}

void exportText(const FormatEntry& entry, FormatOptions options, const TraceOptions& trace) {
    std::string text;
    TextOutput out(
        {.write = [](void* all, const char* some,
                     size_t length) { static_cast<std::string*>(all)->append(some, length); },
         .context = &text});
    scope::Input input(trace);
    const auto format = entry.make(options, out);
    if (entry.readsTwice) feedAhead(Selection(), trace, *format);
    feed(input, Selection(), trace, entry.readsCalls(options.what), *format);
    out.handOver();
    checkText(text, entry.name);
}

std::string onlyText(sqlite3* database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) == SQLITE_OK,
            "the database can be asked");
    require(sqlite3_step(statement) == SQLITE_ROW, "the database answers");
    const std::string text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    return text;
}

// A file of this process that goes with it.
struct DatabaseFile {
    std::string path = "/dev/shm/exports-XXXXXX";
    int file = mkstemp(path.data());
    ~DatabaseFile() { unlink(path.c_str()); }
};

void exportDatabase(const FormatOptions& options, const TraceOptions& trace) {
    static const DatabaseFile target;
    require(ftruncate(target.file, 0) == 0, "the file can be emptied");
    uint64_t records = 0;
    {
        scope::Input input(trace);
        const auto format = makeSqlite(options, trace, target.path, "database");
        feed(input, Selection(), trace, true, *format);
        records = input.firstSlot();
    }
    sqlite3* database = nullptr;
    require(sqlite3_open(target.path.c_str(), &database) == SQLITE_OK, "the database opens");
    require(onlyText(database, "PRAGMA integrity_check") == "ok", "the database is whole");
    require(onlyText(database, "SELECT count(*) FROM records JOIN events USING (code)") ==
                onlyText(database, "SELECT count(*) FROM records"),
            "each record has its event");
    require(std::stoull(onlyText(database, "SELECT count(*) FROM records")) <= records,
            "records are slots of the trace");
    sqlite3_close(database);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Memory memory;
    fuzz::Input input(data, size);
    const FormatEntry& entry = formats()[input.number<uint8_t>() % formats().size()];
    const auto how = input.number<uint8_t>();
    const std::span<const uint8_t> name = input.bytes(input.number<uint8_t>());
    CodeNames names;
    names.take(kNamedCode.data(), kNamedCode.size());
    names.take(reinterpret_cast<const char*>(name.data()), name.size());
    names.endFile();

    TraceOptions trace;
    trace.path = memory.hold(traceOf(input.bytes(kMostSlots * sizeof(TraceRecord))));
    const FormatOptions options{.file = "trace",
                                .what = static_cast<What>(how % 3),
                                .waiting = static_cast<Waiting>(how / 3 % 2),
                                .names = &names};
    try {
        if (entry.make == nullptr) {
            exportDatabase(options, trace);
        } else {
            exportText(entry, options, trace);
        }
    } catch (const Failure& failure) {
        require(!failure.message.empty(), "a failure is told");
    }
    return 0;
}

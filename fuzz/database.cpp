// Databases of any records under any name: SQLite finds them whole, whatever the bytes say. Each is
// a file, which is slow.
//
// An input is a name and slots.

#include <cstdlib>
#include <sqlite3.h>
#include <string>
#include <unistd.h>

#include "analysis/selection.h"
#include "fuzz.h"
#include "named_trace.h"
#include "scope/export/feed.h"
#include "scope/export/sqlite.h"
#include "scope/failure.h"

using namespace sonaprobe;
using namespace sonaprobe::scope;
using fuzz::require;

namespace {

std::string onlyText(sqlite3* database, const char* sql) {
    sqlite3_stmt* statement = nullptr;
    require(sqlite3_prepare_v2(database, sql, -1, &statement, nullptr) == SQLITE_OK,
            "the database can be asked");
    require(sqlite3_step(statement) == SQLITE_ROW, "the database answers");
    std::string text = reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
    sqlite3_finalize(statement);
    return text;
}

// A file of this process that goes with it.
struct DatabaseFile {
    std::string path = "/dev/shm/database-XXXXXX";
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
    fuzz::Input input(data, size);
    CodeNames names;
    fuzz::takeName(input, names);
    try {
        exportDatabase({.file = "trace", .names = &names}, fuzz::takeTrace(input));
    } catch (const Failure& failure) {
        require(!failure.message.empty(), "a failure is told");
    }
    return 0;
}

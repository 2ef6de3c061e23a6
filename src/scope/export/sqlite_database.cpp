// The database library, with its errors as failures.

#include "scope/export/sqlite_database.h"

#include <new>

#include "scope/failure.h"

namespace sonaprobe::scope {

Database::Database(const std::string& path, std::string name) : name_(std::move(name)) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(opened);
    if (result != SQLITE_OK) refuse();
    run("PRAGMA page_size = 65536; PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
        "PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -16384; BEGIN");
}

void Database::run(const char* sql) {
    if (sqlite3_exec(handle(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) refuse();
}

void Database::finish() {
    run("COMMIT");
    database_.reset();
}

void Database::refuse() const {
    throw Failure{"could not write " + name_ + ": " + sqlite3_errmsg(handle())};
}

// The gathered rows as a table that the library knows; it may let go of it later than of the
// Insert.
struct Insert::Gathered {
    sqlite3_vtab base{};
    const Insert* rows = nullptr;
};

// Who reads it, and what the library calls for that.
struct Insert::Reader {
    sqlite3_vtab_cursor base{};
    const Insert* rows = nullptr;
    size_t at = 0;  // of the cells

    static Reader& of(sqlite3_vtab_cursor* cursor) { return *reinterpret_cast<Reader*>(cursor); }

    static int connect(sqlite3* database, void* insert, int, const char* const*,
                       sqlite3_vtab** table, char**) {
        const auto* const rows = static_cast<const Insert*>(insert);
        auto* const gathered = new (std::nothrow) Gathered{.rows = rows};
        if (gathered == nullptr) return SQLITE_NOMEM;
        *table = &gathered->base;
        return sqlite3_declare_vtab(database, rows->declaration_.c_str());
    }
    static int disconnect(sqlite3_vtab* table) {
        delete reinterpret_cast<Gathered*>(table);
        return SQLITE_OK;
    }
    static int plan(sqlite3_vtab*, sqlite3_index_info*) { return SQLITE_OK; }
    static int open(sqlite3_vtab* table, sqlite3_vtab_cursor** cursor) {
        auto* const reader =
            new (std::nothrow) Reader{.rows = reinterpret_cast<Gathered*>(table)->rows};
        if (reader == nullptr) return SQLITE_NOMEM;
        *cursor = &reader->base;
        return SQLITE_OK;
    }
    static int close(sqlite3_vtab_cursor* cursor) {
        delete &of(cursor);
        return SQLITE_OK;
    }
    static int begin(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**) {
        of(cursor).at = 0;
        return SQLITE_OK;
    }
    static int next(sqlite3_vtab_cursor* cursor) {
        of(cursor).at += of(cursor).rows->columns_;
        return SQLITE_OK;
    }
    static int isAtEnd(sqlite3_vtab_cursor* cursor) {
        return static_cast<int>(of(cursor).at == of(cursor).rows->used_);
    }
    static int column(sqlite3_vtab_cursor* cursor, sqlite3_context* result, int place) {
        const Insert& rows = *of(cursor).rows;
        const Cell& cell = rows.cells_[of(cursor).at + static_cast<size_t>(place)];
        switch (cell.kind) {
            case Kind::null: break;
            case Kind::number: sqlite3_result_int64(result, cell.value); break;
            case Kind::text:
                sqlite3_result_text(result, rows.texts_.data() + cell.value,
                                    static_cast<int>(cell.length), SQLITE_STATIC);
                break;
        }
        return SQLITE_OK;
    }
    static int number(sqlite3_vtab_cursor* cursor, sqlite3_int64* row) {
        *row = static_cast<sqlite3_int64>(of(cursor).at);
        return SQLITE_OK;
    }
};

Insert::Insert(Database& database, const std::string& table, size_t columns)
    : database_(&database),
      name_("new_" + table),
      declaration_("CREATE TABLE gathered (c0"),
      columns_(columns),
      cells_(columns * kRows) {
    for (size_t i = 1; i < columns; ++i) declaration_ += ", c" + std::to_string(i);
    declaration_ += ")";
    static constexpr sqlite3_module kModule = [] {
        sqlite3_module module{};
        module.xConnect = Reader::connect;
        module.xDisconnect = Reader::disconnect;
        module.xBestIndex = Reader::plan;
        module.xOpen = Reader::open;
        module.xClose = Reader::close;
        module.xFilter = Reader::begin;
        module.xNext = Reader::next;
        module.xEof = Reader::isAtEnd;
        module.xColumn = Reader::column;
        module.xRowid = Reader::number;
        return module;
    }();
    sqlite3* const handle = database.handle();
    const std::string sql = "INSERT INTO " + table + " SELECT * FROM " + name_;
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_create_module(handle, name_.c_str(), &kModule, this) != SQLITE_OK ||
        sqlite3_prepare_v2(handle, sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
        database.refuse();
    }
    statement_.reset(prepared);
}

Insert::~Insert() {
    statement_.reset();
    sqlite3_create_module(database_->handle(), name_.c_str(), nullptr, nullptr);
}

void Insert::putGathered() {
    if (sqlite3_step(statement_.get()) != SQLITE_DONE) database_->refuse();
    sqlite3_reset(statement_.get());
    used_ = 0;
    texts_.clear();
}

}  // namespace sonaprobe::scope

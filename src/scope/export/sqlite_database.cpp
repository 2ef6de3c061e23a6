// The database library, with its errors as failures.

#include "scope/export/sqlite_database.h"

#include "scope/failure.h"

namespace sonaprobe::scope {

Database::Database(const std::string& path, std::string name) : name_(std::move(name)) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &opened,
                                       SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    database_.reset(opened);
    if (result != SQLITE_OK) refuse();
    run("PRAGMA page_size = 16384; PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
        "PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -65536; BEGIN");
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

Insert::Insert(Database& database, const std::string& table, size_t columns)
    : database_(&database),
      columns_(columns),
      one_(prepare(table, 1)),
      many_(prepare(table, kRows)),
      cells_(columns * kRows) {}

Insert::Statement Insert::prepare(const std::string& table, size_t rows) const {
    std::string row = "(?";
    for (size_t i = 1; i < columns_; ++i) row += ", ?";
    row += ")";
    std::string sql = "INSERT INTO " + table + " VALUES " + row;
    for (size_t i = 1; i < rows; ++i) sql += ", " + row;
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database_->handle(), sql.c_str(), -1, &prepared, nullptr) != SQLITE_OK) {
        database_->refuse();
    }
    return Statement(prepared);
}

void Insert::putGathered() {
    const std::span cells(cells_.data(), used_);
    if (used_ == cells_.size()) {
        run(many_.get(), cells);
    } else {
        for (size_t at = 0; at < cells.size(); at += columns_) {
            run(one_.get(), cells.subspan(at, columns_));
        }
    }
    used_ = 0;
    texts_.clear();
}

void Insert::run(sqlite3_stmt* statement, std::span<const Cell> cells) const {
    int place = 0;
    for (const Cell& cell : cells) {
        ++place;
        switch (cell.kind) {
            case Kind::null: sqlite3_bind_null(statement, place); break;
            case Kind::number: sqlite3_bind_int64(statement, place, cell.value); break;
            case Kind::text:
                sqlite3_bind_text(statement, place, texts_.data() + cell.value,
                                  static_cast<int>(cell.length), SQLITE_STATIC);
                break;
        }
    }
    if (sqlite3_step(statement) != SQLITE_DONE) database_->refuse();
    sqlite3_reset(statement);
}

}  // namespace sonaprobe::scope

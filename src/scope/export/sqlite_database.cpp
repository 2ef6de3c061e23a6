// The database library, with its errors as failures.

#include "scope/export/sqlite_database.h"

#include "scope/failure.h"

namespace sonaprobe::scope {

Database::Database(const std::string& path, std::string name) : name_(std::move(name)) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
    database_.reset(opened);
    if (result != SQLITE_OK) refuse();
    run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE;"
        "PRAGMA cache_size = -65536; BEGIN");
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

Insert::Insert(Database& database, const char* sql) : database_(&database) {
    sqlite3_stmt* prepared = nullptr;
    if (sqlite3_prepare_v2(database.handle(), sql, -1, &prepared, nullptr) != SQLITE_OK) {
        database.refuse();
    }
    statement_.reset(prepared);
}

void Insert::put() {
    if (sqlite3_step(statement_.get()) != SQLITE_DONE) database_->refuse();
    sqlite3_reset(statement_.get());
    bound_ = 0;
}

}  // namespace sonaprobe::scope

// A database file that is written once, from nothing.

#pragma once

#include <cstdint>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <string_view>

namespace sonaprobe::scope {

// One transaction without a journal: the file is thrown away where it does not come to its end. All
// functions throw a Failure that names the file and says why.
class Database {
  public:
    // `path` is an empty file, `name` what messages call it.
    Database(const std::string& path, std::string name);

    // Statements without rows.
    void run(const char* sql);

    // Makes the file whole.
    void finish();

    [[noreturn]] void refuse() const;
    sqlite3* handle() const { return database_.get(); }

  private:
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    };

    std::string name_;
    std::unique_ptr<sqlite3, Close> database_;
};

// An INSERT that is run many times. What is bound must live until put().
class Insert {
  public:
    Insert(Database& database, const char* sql);

    Insert& add(int64_t value) {
        sqlite3_bind_int64(statement_.get(), ++bound_, value);
        return *this;
    }
    Insert& add(std::string_view text) {
        sqlite3_bind_text(statement_.get(), ++bound_, text.data(), static_cast<int>(text.size()),
                          SQLITE_STATIC);
        return *this;
    }
    Insert& addNull() {
        sqlite3_bind_null(statement_.get(), ++bound_);
        return *this;
    }
    void put();

  private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    Database* database_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
    int bound_ = 0;
};

}  // namespace sonaprobe::scope

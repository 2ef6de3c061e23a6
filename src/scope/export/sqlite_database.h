// A database file that is written once, from nothing.

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <sqlite3.h>
#include <string>
#include <string_view>
#include <vector>

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

// Puts rows into a table, many with one statement, which reads them from a table that is there
// while this is: so the library asks for each cell where it is, and no cell is bound.
class Insert {
  public:
    Insert(Database& database, const std::string& table, size_t columns);
    ~Insert();
    Insert(const Insert&) = delete;
    Insert& operator=(const Insert&) = delete;

    Insert& add(int64_t value) {
        cells_[used_++] = {Kind::number, value, 0};
        return *this;
    }
    Insert& add(std::string_view text) {
        cells_[used_++] = {Kind::text, static_cast<int64_t>(texts_.size()), text.size()};
        texts_ += text;
        return *this;
    }
    Insert& addNull() {
        cells_[used_++] = {Kind::null, 0, 0};
        return *this;
    }
    Insert& add(std::optional<int64_t> value) { return value ? add(*value) : addNull(); }

    // After a row's last column.
    void put() {
        if (used_ == cells_.size()) putGathered();
    }

    // After the last row.
    void finish() { putGathered(); }

  private:
    static constexpr size_t kRows = 256;

    enum class Kind : uint8_t { null, number, text };
    struct Cell {
        Kind kind;
        int64_t value;  // of a text where it begins in texts_
        size_t length;
    };
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };
    struct Gathered;
    struct Reader;

    void putGathered();

    Database* database_;
    std::string name_;         // of the table that is read
    std::string declaration_;  // of its columns
    size_t columns_;
    std::unique_ptr<sqlite3_stmt, Finalize> statement_;
    std::vector<Cell> cells_;
    size_t used_ = 0;  // of cells_, by rows that are not put yet
    std::string texts_;
};

}  // namespace sonaprobe::scope

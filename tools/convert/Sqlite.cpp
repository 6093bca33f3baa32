// Databases of SQLite.
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "tools/Errors.h"
#include "tools/convert/Format.h"
#include "tools/text/Escape.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

std::string quoteName(const std::string& name) {
  std::string quoted = "\"";
  for (const char byte : name) {
    if (byte == '"') quoted += '"';
    quoted += byte;
  }
  return quoted + '"';
}

// An open database.
class Database {
 public:
  // The name of the file that the user knows stands in messages.
  Database(const std::string& file, const std::string& known, int flags) {
    const int result = sqlite3_open_v2(file.c_str(), &handle, flags, nullptr);
    if (result == SQLITE_OK) return;
    const std::string text = sqlite3_errmsg(handle);
    sqlite3_close(handle);
    throw UserError(makePrintable(known) + ": " + text);
  }
  ~Database() { sqlite3_close(handle); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  sqlite3* get() const { return handle; }

  void run(const std::string& statement) const {
    if (sqlite3_exec(handle, statement.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
  }

  [[noreturn]] void fail() const { throw UserError("the database: " + makePrintable(sqlite3_errmsg(handle))); }

 private:
  sqlite3* handle = nullptr;
};

// A statement that is ready to run.
class Statement {
 public:
  Statement(const Database& owner, const std::string& text) : database(owner) {
    if (sqlite3_prepare_v2(database.get(), text.c_str(), -1, &handle, nullptr) != SQLITE_OK) database.fail();
  }
  ~Statement() { sqlite3_finalize(handle); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  sqlite3_stmt* get() const { return handle; }

  void bind(int parameter, std::string_view text) const {
    sqlite3_bind_text(handle, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
  void bindNull(int parameter) const { sqlite3_bind_null(handle, parameter); }

  // SQLITE_ROW or SQLITE_DONE; anything else is the caller's to tell.
  int step() const { return sqlite3_step(handle); }
  void reset() const { sqlite3_reset(handle); }

 private:
  const Database& database;
  sqlite3_stmt* handle = nullptr;
};

// An integer that is the whole key alone would become the number by which lines are ordered; under this name it does not,
// and lines stay in the order of the file.
const char* getSqlType(const TableShape& shape, const ShapedColumn& column) {
  const bool isWholeKey = shape.keys.size() == 1 && shape.keys.front() == column.name;
  if (column.type == ColumnType::Integer) return isWholeKey ? "BIGINT" : "INTEGER";
  return column.type == ColumnType::Real ? "REAL" : "TEXT";
}

class SqliteWriter : public FormatWriter {
 public:
  explicit SqliteWriter(std::string target)
      : place(std::move(target)),
        temporary(makeTemporaryName(place)),
        guard(temporary),
        database(temporary, place, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) {
    database.run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; BEGIN");
  }

  // SQLite knows no difference between names in capitals and others.
  void beginTable(const TableShape& shape) override {
    std::vector<std::string> parts;
    std::vector<std::string> parameters(shape.columns.size(), "?");
    for (const ShapedColumn& column : shape.columns) {
      parts.push_back(quoteName(column.name) + " " + getSqlType(shape, column));
    }
    std::vector<std::string> keys;
    for (const std::string& key : shape.keys) keys.push_back(quoteName(key));
    if (!keys.empty()) parts.push_back("PRIMARY KEY (" + join(keys, ", ") + ")");
    database.run("CREATE TABLE " + quoteName(shape.name) + " (" + join(parts, ", ") + ")");
    insert = std::make_unique<Statement>(
        database, "INSERT INTO " + quoteName(shape.name) + " VALUES (" + join(parameters, ", ") + ")");
  }

  void writeLine(const TableShape& shape, const Line& line) override {
    int parameter = 0;
    for (const ShapedColumn& column : shape.columns) {
      ++parameter;
      const std::string_view field = line.getFieldOrNothing(column.position);
      const bool isNull = !line.hasField(column.position) || (field.empty() && column.type != ColumnType::Text);
      if (isNull && !isKey(shape, column)) {
        insert->bindNull(parameter);
      } else {
        insert->bind(parameter, field);
      }
    }
    const int result = insert->step();
    insert->reset();
    if (result == SQLITE_DONE) return;
    if (sqlite3_extended_errcode(database.get()) == SQLITE_CONSTRAINT_PRIMARYKEY) {
      throw UserError("table " + makePrintable(shape.name) + ", line " + std::to_string(line.getLineNumber() + 1) +
                      " of the file: another line has the same key, which a primary key does not allow; xelcsv check "
                      "lists such lines");
    }
    database.fail();
  }

  void endTable() override { insert.reset(); }
  void finish() override { database.run("COMMIT"); }

  void keep() override {
    if (std::rename(temporary.c_str(), place.c_str()) != 0) throw UserError("cannot write " + makePrintable(place));
    guard.release();
  }

  std::string getWritten() const override { return temporary; }

 private:
  static bool isKey(const TableShape& shape, const ShapedColumn& column) {
    return std::find(shape.keys.begin(), shape.keys.end(), column.name) != shape.keys.end();
  }

  // Removes the file unless it got its name.
  class Guard {
   public:
    explicit Guard(std::string name) : file(std::move(name)) {
      unlink(file.c_str());
      setVanishing(file);
    }
    ~Guard() {
      if (!file.empty()) unlink(file.c_str());
      setVanishing("");
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    void release() { file.clear(); }

   private:
    std::string file;
  };

  std::string place;
  std::string temporary;
  Guard guard;
  Database database;
  std::unique_ptr<Statement> insert;
};

// The number of a row has three names, each of which may be a column's.
std::string getRowNumber(const TableShape& shape) {
  for (std::string name : {"rowid", "_rowid_", "oid"}) {
    const bool isTaken = std::any_of(shape.columns.begin(), shape.columns.end(),
                                     [&](const ShapedColumn& column) { return toLower(column.name) == name; });
    if (!isTaken) return name;
  }
  throw UserError("table " + makePrintable(shape.name) +
                  " has columns rowid, _rowid_ and oid, so --verify cannot tell the "
                  "order of its lines");
}

class SqliteReader : public FormatReader {
 public:
  explicit SqliteReader(const std::string& file) : database(file, file, SQLITE_OPEN_READONLY) {}

  void beginTable(const TableShape& shape) override {
    select = std::make_unique<Statement>(database,
                                         "SELECT * FROM " + quoteName(shape.name) + " ORDER BY " + getRowNumber(shape));
    ++tables;
  }

  bool readLine(const TableShape& shape, std::vector<std::string>& fields) override {
    if (select->step() != SQLITE_ROW) return false;
    fields.assign(shape.columns.size(), "");
    for (std::size_t column = 0; column < fields.size(); ++column) {
      const int index = static_cast<int>(column);
      const unsigned char* const text = sqlite3_column_text(select->get(), index);
      const int length = sqlite3_column_bytes(select->get(), index);
      if (text != nullptr) fields[column].assign(text, text + length);
    }
    return true;
  }

  bool isAtEnd() override {
    const Statement count(database, "SELECT count(*) FROM sqlite_schema WHERE type = 'table'");
    return count.step() == SQLITE_ROW && sqlite3_column_int64(count.get(), 0) == tables;
  }

 private:
  Database database;
  std::unique_ptr<Statement> select;
  long tables = 0;
};

}  // namespace

std::unique_ptr<FormatWriter> makeSqliteWriter(const std::string& place) {
  return std::make_unique<SqliteWriter>(place);
}
std::unique_ptr<FormatReader> makeSqliteReader(const std::string& file) { return std::make_unique<SqliteReader>(file); }

}  // namespace xeltools

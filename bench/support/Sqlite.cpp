#include "bench/support/Sqlite.h"

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

Sqlite::Sqlite(const File& file) {
  expect(sqlite3_open(":memory:", &database) == SQLITE_OK);
  expect(sqlite3_enable_load_extension(database, 1) == SQLITE_OK);
  expect(sqlite3_load_extension(database, "libsqlite3_mod_csvtable", nullptr, nullptr) == SQLITE_OK);
  execute("create virtual table csv using csvtable('" + file.name + "', '', '', '" + file.input->separators +
          "', '\"')");
}

Sqlite::~Sqlite() {
  sqlite3_finalize(prepared);
  sqlite3_close(database);
}

void Sqlite::execute(const std::string& statement) {
  expect(sqlite3_exec(database, statement.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK);
}

long Sqlite::ask(const std::string& query) {
  sqlite3_stmt* statement = nullptr;
  expect(sqlite3_prepare_v2(database, query.c_str(), -1, &statement, nullptr) == SQLITE_OK);
  expect(sqlite3_step(statement) == SQLITE_ROW);
  const long answer = sqlite3_column_int64(statement, 0);
  sqlite3_finalize(statement);
  return answer;
}

void Sqlite::prepare(const std::string& query) {
  sqlite3_finalize(prepared);
  expect(sqlite3_prepare_v2(database, query.c_str(), -1, &prepared, nullptr) == SQLITE_OK);
}

long Sqlite::lookUp(const std::string& value) {
  sqlite3_bind_text(prepared, 1, value.c_str(), static_cast<int>(value.size()), SQLITE_STATIC);
  long bytes = 0;
  if (sqlite3_step(prepared) == SQLITE_ROW) {
    for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
      bytes += sqlite3_column_bytes(prepared, column);
    }
  }
  sqlite3_reset(prepared);
  return bytes;
}

void Sqlite::expect(bool isRight) {
  if (isRight) return;
  std::fprintf(stderr, "SQLite: %s\n", sqlite3_errmsg(database));
  std::exit(1);
}

void fillTable(Sqlite& database) {
  database.execute("create table lines (key text primary key, number, price, word) without rowid");
  database.execute("insert into lines select column_1, column_2, column_3, column_4 from csv");
}

}  // namespace bench

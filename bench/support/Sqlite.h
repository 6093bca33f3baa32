// SQLite as a peer: its virtual table over a CSV file, and a table in memory filled from it.
#pragma once

#include <string>

#include "bench/support/Files.h"

struct sqlite3;
struct sqlite3_stmt;

namespace bench {

// A database in memory in which a CSV file is the table csv; its columns are column_1 and so on.
class Sqlite {
 public:
  explicit Sqlite(const File& file);
  ~Sqlite();
  Sqlite(const Sqlite&) = delete;
  Sqlite& operator=(const Sqlite&) = delete;

  void execute(const std::string& statement);

  // The first column of the first row of a query that answers a number.
  long ask(const std::string& query);

  // Prepares the query that lookUp() runs.
  void prepare(const std::string& query);

  // Runs the prepared query with a value; answers the bytes of all its columns of its first row.
  long lookUp(const std::string& value);

 private:
  void expect(bool isRight);

  sqlite3* database = nullptr;
  sqlite3_stmt* prepared = nullptr;
};

// Fills the table lines from the table csv of a narrow file: its first column is the primary key.
void fillTable(Sqlite& database);

}  // namespace bench

// Handle of a data file, its iterators and the exceptions of the library.
#pragma once

#include "xelcsv/XelCsvTableReader.h"

// A data file: one table, or many named ones.
//
//   XelEnv env;
//   XelCsvReader reader(env, "data.csv");                       // one table, cached
//   double price = reader.getLineByKey(1, "p1").getFloatByHeader("price");
//   reader.end();
//   env.end();
//
// A handle; copies share the implementation but not the last line, and destroying a handle destroys neither: end()
// does, called once on any one of the handles. A line that was looked up belongs to the very handle that looked it up;
// assigning an empty handle gives the last line of one of several handles back without ending the reader. The file must
// be a regular file (a pipe or a directory is refused, an endless device is read for ever) and keep its contents while
// it is read; no file stays open between two calls, iterators excepted. One thread at a time; readers of different
// environments share nothing.
//
// A physical line is at most 9999 bytes long; a longer one is read as several. Lines are counted from 0, comment and
// empty ones included. Every operation that reads the file may throw XelFileNotFoundException when it cannot be opened,
// and std::bad_alloc. After an exception the reader, its tables and all other handles go on working, but for a table
// that a failed copy was to replace.
//
// Using an empty handle is a mistake of the caller: an assertion where the library is built without NDEBUG.
class XELCSV_API XelCsvReader {
 public:
  // Base of the family; thrown itself for a corrupted file and for a pipe. Its message names the place.
  class XELCSV_API XelCsvReaderException : public XelQuietException {
   public:
    // Message and code as XelQuietException takes them.
    XelCsvReaderException(const char* message, long code) noexcept;
    ~XelCsvReaderException() override;
    XelCsvReaderException(const XelCsvReaderException&) noexcept = default;
    XelCsvReaderException& operator=(const XelCsvReaderException&) noexcept = default;
  };

// One class per kind of failure, alike but for the name.
#define XELCSV_EXCEPTION(Name)                           \
  class XELCSV_API Name : public XelCsvReaderException { \
   public:                                               \
    Name(const char* message, long code) noexcept;       \
    ~Name() override;                                    \
    Name(const Name&) noexcept = default;                \
    Name& operator=(const Name&) noexcept = default;     \
  }
  XELCSV_EXCEPTION(XelFileNotFoundException);           // the file cannot be opened
  XELCSV_EXCEPTION(XelFieldNotFoundException);          // a line has no field at a position
  XELCSV_EXCEPTION(XelColumnHeaderNotFoundException);   // no heading line, or no such heading
  XELCSV_EXCEPTION(XelCsvReaderParameterException);     // separator, decimal, quote and comment clash
  XELCSV_EXCEPTION(XelDuplicatedTableException);        // a table name comes back without table splitting
  XELCSV_EXCEPTION(XelTableNotFoundException);          // no table of that name or number
  XELCSV_EXCEPTION(XelIncorrectCsvReaderUseException);  // an operation of the other kind of file
  XELCSV_EXCEPTION(XelLineNotFoundException);           // no line of that number or key
  XELCSV_EXCEPTION(XelDuplicatedLineException);         // two lines of a cached table with the same key
  XELCSV_EXCEPTION(XelOverflowException);               // an integer that does not fit in 32 bits
  XELCSV_EXCEPTION(XelNumberOfFieldsException);         // another number of fields than the table; never thrown yet
#undef XELCSV_EXCEPTION

  class TableIterator;
  class LineIterator;

  // An empty handle: no file.
  XelCsvReader() = default;

  // A handle over an existing implementation; null gives an empty handle.
  explicit XelCsvReader(XelCsvReaderI* reader) : impl(reader) {}

  // A reader of the file called fileName.
  //
  //   env                  where all that the reader makes lives; not an empty handle
  //   fileName             as the system takes names: bytes, relative to the folder in which the process runs
  //   isMultiTable         non-zero: several tables, each line begins with its table's name; the file is scanned once.
  //                        Zero: the whole file is one table.
  //   allowTableSplitting  non-zero: the lines of a table may be spread over the file. One table: of no account.
  //   separators           every character of it separates fields; with none each line is one field
  //   decimal              the decimal point of numbers; becomes '.' in every field, in texts too
  //   quote                switches quoting; separators in quotes are text, the quotes themselves vanish
  //   comment              a line that begins with it is skipped
  //   isCached             non-zero: tables keep an index of their lines, built in one pass, that finds them by key and
  //                        number; zero: each lookup scans the table
  //
  // Name and separators are copied.
  //
  // Throws XelFileNotFoundException when the file cannot be opened or its name is null, XelCsvReaderParameterException
  // when separators is null, a character is 0, or two of them clash, XelDuplicatedTableException when a table's name
  // comes back without table splitting, XelCsvReaderException for a pipe; for a one-table file also what the
  // constructor of XelCsvTableReader throws, but for the duplicated line: of two lines with one key the first is found
  // and the index ends at the second.
  XelCsvReader(XelEnv env, const char* fileName, long isMultiTable = 0, long allowTableSplitting = 0,
               const char* separators = ",", char decimal = '.', char quote = '"', char comment = '#',
               long isCached = 1);

  XelCsvReader(const XelCsvReader& other);                 // shares the file; no last line
  XelCsvReader& operator=(const XelCsvReader& other);      // ends the own last line, then shares the file
  XelCsvReader(XelCsvReader&& other) noexcept;             // takes file and last line; other is empty
  XelCsvReader& operator=(XelCsvReader&& other) noexcept;  // the same; ends the own last line first
  ~XelCsvReader() = default;

  // ---- Files of several tables. On a one-table file these throw XelIncorrectCsvReaderUseException.

  // A new reader of a table, which the caller ends. Names are compared byte for byte. Numbers count from 0 in the order
  // of the file, reserved tables included, which getNumberOfTables() leaves out. Throws XelTableNotFoundException when
  // there is no table of this name (null included) or number, and what the constructor of XelCsvTableReader throws.
  XelCsvTableReader getTableByName(const char* name);
  XelCsvTableReader getTableByNumber(long number);

  // Field 1 of line 0 of the table XELO_CSV_FORMAT, as a number as XelCsvLine::getFloatByPosition reads it, from the
  // file each time. This and the two below throw XelTableNotFoundException when the file has no such table,
  // XelFieldNotFoundException when its line has no such field, and what getTableByName and
  // XelCsvTableReader::getLineByNumber throw.
  double getCsvFormat();

  // Field 2 as a number and field 1 as a text of line 0 of the table XELO_DATA_SCHEMA, read once. The text is trimmed,
  // zero-terminated, and lives as long as the reader. When field 2 is missing the first call throws, but the text is
  // known from then on, and the version is 0.0.
  double getFileVersion();
  const char* getRequiredBy();

  // ---- Files of one table. On a file of several tables these throw XelIncorrectCsvReaderUseException.

  // The table itself, lent: it lives as long as the reader.
  XelCsvTableReader getReaderForUniqueTableFile() const;

  // As the operations of XelCsvTableReader, exceptions included, for the one table. The line of a lookup belongs to
  // this handle and lives until its next lookup, or its end().
  XelCsvLine getLineByNumber(long number);
  XelCsvLine getLineByKey(long numberOfKeys, const char* key, ...);
  long getNumberOfItems();
  long getNumberOfColumns() const;
  XelCsvLine getFirstLine() const;
  bool isHeadingExists(const char* heading) const;
  long getNumberOfKeys() const;
  void printKeys() const;
  long getPosition(const char* heading) const;

  // ---- Both kinds.

  // Never returns a table, whatever the file: use getTableByName or getReaderForUniqueTableFile. Throws
  // XelIncorrectCsvReaderUseException.
  XelCsvTableReader getTable();

  // Number of tables, without XELO_CSV_FORMAT and XELO_DATA_SCHEMA at the start of the file. 1 for a one-table file.
  long getNumberOfTables() const;

  // Whether the file has a table of this name, a reserved one included. A one-table file has none, and null names none.
  bool isTableExists(const char* name) const;

  // The environment that the reader lives in.
  XelEnv getEnv() const;

  // Destroys the last line and the reader. The handle is empty afterwards; twice is harmless. Other handles of the same
  // reader must not be used any more.
  void end();

  // Whether the handle holds no file.
  bool isEmpty() const { return impl == nullptr; }

  // The implementation behind the handle, null for an empty one.
  XelCsvReaderI* getImpl() const { return impl; }

 private:
  void createImpl(XelEnv env, const char* fileName, long isCached, long isMultiTable, long allowTableSplitting,
                  const char* separators, char decimal, char quote, char comment);

  XelCsvReaderI* impl = nullptr;
  int notCached = 0;  // what the constructor was told; nothing asks
  XelCsvLineI* lastLine = nullptr;
};

// Walk over the tables of a file of several tables, in the order of the file; the reserved tables at its start are left
// out:
//
//   for (XelCsvReader::TableIterator it(reader); it.ok(); ++it) use(*it);
//
// The reader must outlive the walk. A copy stands on the same table with a table reader of its own, so that copying and
// assigning throw what getTableByName throws.
class XELCSV_API XelCsvReader::TableIterator : public XelCsvTableIteratorI {
 public:
  // An iterator over nothing; ok() is false.
  TableIterator() = default;

  // Stands on the first table. Throws XelIncorrectCsvReaderUseException on a one-table file, and what getTableByName
  // throws for the table.
  explicit TableIterator(XelCsvReader reader);

  // The current table, lent: it lives until the next ++ or end(), and no longer than the iterator. An empty handle when
  // there is none.
  XelCsvTableReader operator*() const;

  // Goes to the next table. When it cannot be made, its exception comes through, *it is an empty handle, and the next
  // ++ goes on to the table after it. An iterator that has gone past the last table stays so.
  TableIterator& operator++() override;

  // Whether the iterator stands on a table. After end() it answers what it answered before.
  bool ok() const { return valid != 0; }

  // Destroys the current table. A following ++ goes on to the next table.
  void end() { clear(); }
};

// Walk over the lines of a one-table file; as XelCsvTableReader::LineIterator.
class XELCSV_API XelCsvReader::LineIterator {
 public:
  // An iterator over nothing; ok() is false.
  LineIterator() = default;

  // Stands on the first line. Throws XelIncorrectCsvReaderUseException on a file of several tables, and what the
  // constructor of XelCsvTableReader::LineIterator throws.
  explicit LineIterator(XelCsvReader reader);

  // The current line; it belongs to the iterator and lives until the next ++. An empty handle when there is none.
  XelCsvLine operator*() const { return *lines; }

  // Goes to the next line. An iterator that has ended stays so. Throws as the constructor does.
  LineIterator& operator++();

  // Whether the iterator stands on a line. After end() it answers what it answered before.
  bool ok() const { return lines.ok(); }

  // Ends the walk: closes the file and gives the memory back. The destructor does the same.
  void end() { lines.end(); }

 private:
  XelCsvTableReader::LineIterator lines;
};

// Handle of one table of a data file, and the iterator over its lines.
#pragma once

#include "xelcsv/XelCsvIteratorI.h"
#include "xelcsv/XelCsvLine.h"

// One table: lookups of its lines by number and by key, its columns and its keys.
//
// A handle; copies share the table reader behind it but not the last line, and destroying a handle destroys neither:
// end() does. A table made by a reader's getTableByName, getTableByNumber or by the constructor below is ended once, by
// any one of its handles; the table of a one-table file and the current table of an iterator are lent and stay with
// their owner. The reader must outlive the use of its tables; no order of destruction does harm. One thread at a time.
//
// A line that was looked up belongs to the very handle that looked it up. To give back the last line of one of several
// handles without ending the table, assign an empty handle to it: handle = XelCsvTableReader(). Functions that look
// lines up best take the handle by reference.
//
// Exceptions are nested in XelCsvReader and derive from XelQuietException. Every operation that reads the file may
// throw XelFileNotFoundException when it cannot be opened, XelCsvReaderException when it cannot be positioned, and
// std::bad_alloc. A failed lookup leaves the table as it was, but it too ends the former last line.
//
// Using an empty handle is a mistake of the caller: an assertion where the library is built without NDEBUG.
class XELCSV_API XelCsvTableReader {
 public:
  class LineIterator;

  // An empty handle: no table.
  XelCsvTableReader() = default;

  // A handle over an existing table reader; null gives an empty handle.
  explicit XelCsvTableReader(XelCsvTableReaderI* tableReader);

  // A new reader of the table called tableName in the file of reader, which XelCsvReader::getImpl() gives and which is
  // not null; cached or not as that is. Ended by the user. The name is compared byte for byte and not kept.
  // Throws XelTableNotFoundException when the file has no such table (a one-table file has none, and null names none),
  // XelDuplicatedLineException when two lines of a cached table have the same key,
  // XelCsvReaderException for a corrupted file and a line with fewer fields than there are key columns,
  // XelFieldNotFoundException when a line of a cached table lacks a key field, XelOverflowException when a number of
  // a key line does not fit in 32 bits.
  XelCsvTableReader(XelCsvReaderI* reader, const char* tableName);

  XelCsvTableReader(const XelCsvTableReader& other);                 // shares the table; no last line
  XelCsvTableReader& operator=(const XelCsvTableReader& other);      // ends the own last line, then shares the table
  XelCsvTableReader(XelCsvTableReader&& other) noexcept;             // takes table and last line; other is empty
  XelCsvTableReader& operator=(XelCsvTableReader&& other) noexcept;  // the same; ends the own last line first
  ~XelCsvTableReader() = default;

  // The line whose key columns hold the given values, in the order of the columns: at least as many as there are key
  // columns, numberOfKeys in number, each a const char* (the compiler does not look: no number and no std::string);
  // values beyond the key columns are not looked at. The values, which nothing trims, are joined with "-", and so are
  // the trimmed fields of the lines: "a-b" and "c" find the line "a", "b-c" too. The line belongs to this handle and
  // lives until its next lookup. Values may point into the former last line.
  // Throws XelLineNotFoundException when no line has this key, a value is null, or there are too few values;
  // a table that is not cached also XelCsvReaderException when a line that it reads, of whatever table, has fewer
  // fields than there are key columns, and XelFieldNotFoundException when one lacks a key field.
  XelCsvLine getLineByKey(long numberOfKeys, const char* key, ...);

  // The data line that is number lineNumber among the table's data lines, counted from 0; XelCsvLine::getLineNumber()
  // counts all lines of the file. It belongs to this handle and lives until its next lookup. Throws
  // XelLineNotFoundException when lineNumber is negative or not below getNumberOfItems(). But a table that is not
  // cached looks at its end only after counting a line: there the number getNumberOfItems() gives the line that follows
  // the table, or, behind the last line of the file, what is left of that: its first field alone. Where the table is a
  // file of its own, or its last line ends the file without a line feed, every number from there on gives that field.
  XelCsvLine getLineByNumber(long lineNumber);

  // Whether the file reader makes cached tables, whose lines are found through an index in memory. A table that was
  // copied keeps its own kind, which may be the other.
  bool isCached() const;

  // Name of the table, null for the table of a one-table file. It lives as long as the file reader.
  const char* getNameOfTable() const;

  // Number of key columns.
  long getNumberOfKeys() const;

  // Prints one line "key 0 ----> Heading" per key column on standard output, "key 0 ----> Column 1" when there is no
  // heading line. In a one-table file the heading is that of the column to the left, for the mark in front of the
  // heading line is not left out. Answers true. Throws XelFieldNotFoundException when the heading line is too short.
  bool printKeys() const;

  // Position of the column with this heading, to be used with the getters by position. The leftmost wins.
  // The mark in front of a one-table file's heading line is found too, at -1. Spaces around a heading in the file do
  // not count; heading itself is taken as it is. Throws XelColumnHeaderNotFoundException when there is no heading line
  // or no such heading.
  long getPosition(const char* heading) const;

  // The heading line, an empty handle when there is none (in a copy of a table without one, a line without fields). It
  // lives as long as the table, and until copy() into it.
  XelCsvLine getFirstLine() const;

  // Makes this handle's table a copy of other's, last line included. An empty handle gets a new table, which the user
  // ends; an existing one keeps its kind, cached or not, and changes for all its handles. other's file reader must
  // outlive the use of the copy; both environments must outlive a copy from one to the other. When other has no last
  // line, the own one ends. Throws as the constructor does; the handle is empty then, its table ended unless it is
  // lent, which stays as it was.
  void copy(const XelCsvTableReader& other);

  // Number of columns. In a file of several tables the fields of the table's first line, its name included. In a
  // one-table file the fields behind the mark of the heading line, without one those behind the mark of the key line,
  // without either the fields of the first line.
  long getNumberOfColumns() const;

  // Number of data lines. A table that is not cached counts them in the file each time. Where two lines of a cached
  // one-table file have the same key, the second is the last that counts.
  long getNumberOfItems();

  // The environment that the table lives in.
  XelEnv getEnv() const;

  // Whether the table has a heading line with this heading, the mark in front of a one-table file's heading line
  // included; compared as in getPosition(). Trims the spaces of the heading line's fields in place.
  bool isHeadingExists(const char* heading) const;

  // Destroys the last line, and the table unless it is lent. The handle is empty afterwards; twice is harmless. Other
  // handles of the same table must not be used any more.
  void end();

  // Whether the handle holds no table.
  bool isEmpty() const { return impl == nullptr; }

  // The table reader behind the handle, null for an empty one.
  XelCsvTableReaderI* getImpl() const { return impl; }

 private:
  XelCsvTableReaderI* impl = nullptr;
  XelCsvLineI* lastLine = nullptr;
  bool lent = false;  // the table is another's; known here, for it may be gone when the handle ends
};

// Walk over the lines of a table, in the order of the file:
//
//   for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) use(*it);
//
// The table must outlive the walk. Copying an iterator takes its position over and ends the source; assigning one
// starts again at the first line and leaves the source alone. The source of a copy is void: its *it is an empty handle,
// while its ok() answers what it answered before.
class XELCSV_API XelCsvTableReader::LineIterator {
 public:
  // An iterator over nothing; ok() is false.
  LineIterator() = default;

  // Stands on the first line of the table. This and all that moves or copies an iterator may throw
  // XelFileNotFoundException, XelCsvReaderException when the file cannot be positioned, for a cached table
  // XelLineNotFoundException when its index lacks a line, and std::bad_alloc; the iterator has ended then:
  // *it is an empty handle, and ok() is false from the next ++ on.
  explicit LineIterator(XelCsvTableReader table);

  LineIterator(const LineIterator& other);             // takes the position over; other is void
  LineIterator& operator=(const LineIterator& other);  // stands on the first line of other's table
  ~LineIterator() = default;

  // The current line; it belongs to the iterator and lives until the next ++. An empty handle when there is none.
  XelCsvLine operator*() const;

  // Goes to the next line. An iterator that has ended stays so. Throws as the constructor does.
  LineIterator& operator++();

  // Whether the iterator stands on a line. After end() it answers what it answered before.
  bool ok() const;

  // Ends the walk: closes the file and gives the memory back. The destructor does the same.
  void end();

 private:
  void start(XelCsvTableReaderI* walked);

  XelCachedCsvLineIteratorI cachedIterator;
  XelNonCachedCsvLineIteratorI nonCachedIterator;
  XelCsvTableReaderI* table = nullptr;
  long cached = 0;
};

// Implementation iterators. They are complete here only because the public iterators hold them by value: use
// XelCsvTableReader::LineIterator, XelCsvReader::LineIterator and XelCsvReader::TableIterator instead.
#pragma once

#include "xelcsv/XelEnv.h"

class XelCachedCsvTableReaderI;
class XelCsvLineI;
class XelCsvReaderI;
class XelCsvTableReaderI;
class XelCsvWalk;
class XelNonCachedCsvTableReaderI;

// Walk over the lines of a table by scanning its file.
//
// Copying takes the position over and ends the source, also a const one, hence the mutable members.
class XELCSV_API XelNonCachedCsvLineIteratorI {
 public:
  // An iterator over nothing.
  XelNonCachedCsvLineIteratorI() = default;

  // Stands on the table's first line, which is not asked for its table's name. All that moves or copies the iterator
  // throws what XelCsvTableReader::LineIterator throws.
  explicit XelNonCachedCsvLineIteratorI(XelNonCachedCsvTableReaderI* table);

  XelNonCachedCsvLineIteratorI(const XelNonCachedCsvLineIteratorI& other);
  XelNonCachedCsvLineIteratorI& operator=(const XelNonCachedCsvLineIteratorI& other);
  virtual ~XelNonCachedCsvLineIteratorI();

  // Starts at the first line.
  virtual void initIterator();

  // Goes to the next line. An iterator that has ended stays so.
  virtual XelNonCachedCsvLineIteratorI& operator++();

  // Takes over the position of other, which has ended afterwards. In a one-table file the copy stands on the table's
  // first line with other's line number.
  void copy(const XelNonCachedCsvLineIteratorI& other);

  // Gives the stream and all memory back; ok stays what it was.
  void clear() const noexcept;

  // Whether the iterator stands on a line.
  bool isOk() const { return ok != 0; }

  // The current line; it belongs to the iterator. Null when the iterator has ended.
  XelCsvLineI* getLine() const;

 private:
  void openAt(long position);
  bool goToNextLine();
  bool skipOtherTables();

  mutable XelCsvWalk* walk = nullptr;  // file, buffer and line; null when the iterator has ended
  mutable XelNonCachedCsvTableReaderI* table = nullptr;
  long ok = 0;
  long lineNumber = 0;
  long endOffset = 0;
  mutable long offset = 0;
};

// Walk over the lines of a table in the order of its index.
//
// Copying takes the position over and ends the source, also a const one, hence the mutable members.
class XELCSV_API XelCachedCsvLineIteratorI {
 public:
  // An iterator over nothing.
  XelCachedCsvLineIteratorI() = default;

  // Stands on the table's first line. All that moves or copies the iterator throws what XelCsvTableReader::LineIterator
  // throws.
  explicit XelCachedCsvLineIteratorI(XelCachedCsvTableReaderI* table);

  XelCachedCsvLineIteratorI(const XelCachedCsvLineIteratorI& other);
  XelCachedCsvLineIteratorI& operator=(const XelCachedCsvLineIteratorI& other);
  virtual ~XelCachedCsvLineIteratorI();

  // Stands on the line of its place in the index, the first one unless it has moved.
  virtual void initIterator();

  // Goes to the next line. An iterator that has ended stays so.
  virtual XelCachedCsvLineIteratorI& operator++();

  // Takes over the position of other, which has ended afterwards.
  void copy(const XelCachedCsvLineIteratorI& other);

  // Gives the stream and all memory back; ok stays what it was.
  void clear() const noexcept;

  // Whether the iterator stands on a line.
  bool isOk() const { return ok != 0; }

  // The current line; it belongs to the iterator. Null when the iterator has ended.
  XelCsvLineI* getLine() const;

 private:
  void readLine(const char* mode);

  mutable XelCsvWalk* walk = nullptr;  // file, buffer and line; null when the iterator has ended
  mutable XelCachedCsvTableReaderI* table = nullptr;
  long ok = 0;
  long index = 0;
  mutable long count = 0;
  long offset = 0;
};

// Walk over the tables of a file, the reserved ones at its start left out.
class XELCSV_API XelCsvTableIteratorI {
 public:
  // An iterator over nothing.
  XelCsvTableIteratorI() = default;

  // Stands on the first table. Throws what XelCsvReader::getTableByName throws.
  explicit XelCsvTableIteratorI(XelCsvReaderI* reader);

  XelCsvTableIteratorI(const XelCsvTableIteratorI& other);
  XelCsvTableIteratorI& operator=(const XelCsvTableIteratorI& other);
  virtual ~XelCsvTableIteratorI();

  // Starts at the first table.
  virtual void initIterator();

  // Goes to the next table. An iterator that has ended stays so.
  virtual XelCsvTableIteratorI& operator++();

  // Stands on the table that other stands on, with a table reader of its own.
  void copy(const XelCsvTableIteratorI& other);

  // Destroys the current table reader.
  void clear();

 protected:
  XelCsvReaderI* reader = nullptr;
  XelCsvTableReaderI* currentTable = nullptr;
  long currentIndex = 0;
  long valid = 0;
  long endIndex = 0;

 private:
  void openTable(long index);
};

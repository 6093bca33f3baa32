// Reader of a table that keeps an index of its data lines in memory.
#pragma once

#include <typeinfo>

#include "csv/table/XelCsvIndex.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "xelcsv/XelCsvIteratorI.h"

// Reads the table's lines once when it is made and keeps, for every line, its composed key and where it begins. A
// lookup costs one search in memory, one seek and one line read. Fields are never kept.
//
// It calls its own lookups through the virtual operations, so a derived class that overrides one changes the others.
class XelCachedCsvTableReaderI : public XelCsvTableReaderI {
 public:
  using CachedCsvLineIteratorI = XelCachedCsvLineIteratorI;

  explicit XelCachedCsvTableReaderI(XelEnv environment);

  // Indexes the table. When two lines have one key it stops at the second: the creator asks getDuplicatedKey().
  // Throws, besides what the base throws, XelCsvReaderException when a line of the table has fewer fields than there
  // are key columns, XelFieldNotFoundException when one lacks a key field.
  XelCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName, const OffsetAndLineNumber* start);
  ~XelCachedCsvTableReaderI() override;

  // The line number in file order, 0 <= number < getNumberOfItems(). Throws XelLineNotFoundException.
  XelCsvLineI* getLineByNumber(long number) override;

  // Throws XelLineNotFoundException when no line has this key. The line read is not compared with the key again.
  XelCsvLineI* getLineByKey(const char* key) override;

  // Number of keys; 0 for a reader of no table. A duplicated key counts.
  long getNumberOfItems() override;

  // Where a line begins, by its key; null when there is none. It stays until the index is cleared.
  OffsetAndLineNumber* getOffsetAndLineNumber(const char* key) const override;

  // Gives back all keys and records; the index is empty then.
  void clearCachedTable() noexcept;
  void clearTable() override;
  void copy(XelCsvTableReaderI* other) override;

  // Reads the table's lines into the index from a file that stands before the first of them. Answers 1 when it stopped
  // at a duplicated key, which is then the last key of the list, else 0.
  long stockLineOffsets(XelCsvLines& lines);

  // Lets a key be found that no line of the list need have; the key must live as long as the index. Answers 1, the record
  // is the index's then, or 0 when an equal key is there: the first record stays, the given one is still the caller's.
  // Throws std::bad_alloc.
  long addLineOffset(const char* key, OffsetAndLineNumber* record);

  // Where a line begins, by its number in file order (0 <= number), but found by its key; null when there is none. Asks
  // getOffsetAndLineNumber() only where that may answer otherwise than the list.
  const OffsetAndLineNumber* getLineStart(long number) const {
    // A derived class may look keys up in another way.
    const bool isAsListed =
        index.isComplete() && added.get() == nullptr && typeid(*this) == typeid(XelCachedCsvTableReaderI);
    if (isAsListed && number < index.getSize()) return &index.getLine(number).start;
    return getOffsetAndLineNumber(getLineKey(number));
  }

  // Key of a line by its number in file order; null when there is none.
  const char* getLineKey(long number) const noexcept;

  // The key at which the indexing stopped because an earlier line has it; null when there is none.
  const char* getDuplicatedKey() const noexcept;

 private:
  struct Unindexed {};

  // The public constructor continues from it, so that the destructor runs when the indexing throws.
  XelCachedCsvTableReaderI(XelCsvReaderI* fileReader, const char* tableName, const OffsetAndLineNumber* start,
                           Unindexed);

  using AddedLines = XelEnvHashTable<const char*, OffsetAndLineNumber*>;

  void makeIndex();
  XelCsvLineI* readLine(XelCsvFile& opened, long lineNumber);
  bool addLine(const XelCsvSpan& key, const OffsetAndLineNumber& start);
  void copyIndex(XelCachedCsvTableReaderI* other);

  XelCsvIndex index;
  XelEnvOwner<AddedLines> added;  // by addLineOffset(), made by its first call
  long duplicatedLine = 0;
};

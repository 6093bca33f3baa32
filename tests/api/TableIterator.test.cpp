// The walks over a data file: over the tables of a file of several, and over the lines of a file of one.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using Names = std::vector<std::string>;

constexpr long BothReaders[] = {0, 1};
constexpr std::size_t MostVisits = 100;  // a walk that does not end is stopped there

XelCsvReader openTables(XelEnv env, const DataFile& file, long isCached, long isSplit = 0) {
  return XelCsvReader(env, file.getName(), 1, isSplit, ",", '.', '"', '#', isCached);
}

XelCsvReader openOneTable(XelEnv env, const DataFile& file, long isCached) {
  return XelCsvReader(env, file.getName(), 0, 0, ",", '.', '"', '#', isCached);
}

std::string noSuchFile(const std::string& name) {
  return "While trying to open file " + name +
         " : No such file or directory. The specified file or directory does not exist or cannot be found. This message "
         "can occur whenever a specified file does not exist or a component of a path does not specify an existing "
         "directory. ";
}

Names walk(XelCsvReader::TableIterator& it) {
  Names names;
  for (; it.ok() && names.size() < MostVisits; ++it) names.emplace_back((*it).getNameOfTable());
  EXPECT_TRUE((*it).isEmpty());
  return names;
}

TEST(TableIterator, VisitsTheTablesBehindTheReservedOnes) {
  const char* format = "XELO_CSV_FORMAT";
  const char* schema = "XELO_DATA_SCHEMA";
  const struct {
    Names tables;
    Names visited;
  } rows[] = {
      {{}, {}},
      {{"A"}, {"A"}},
      {{format}, {}},
      {{schema}, {}},
      {{format, schema}, {}},
      {{format, schema, "A", "B"}, {"A", "B"}},
      {{format, "A", "B"}, {"A", "B"}},
      {{schema, "A", "B"}, {"A", "B"}},
      {{"A", format}, {"A", format}},
      {{"A", format, schema}, {"A", format, schema}},
      {{schema, format}, {format}},
      {{schema, format, "A"}, {format, "A"}},
      {{format, "A", schema}, {"A", schema}},
      {{"A", "B", "C"}, {"A", "B", "C"}},
  };
  for (const auto& row : rows) {
    std::string content = "# comment\n\n";
    for (const auto& table : row.tables) content += table + ",1,2\n";
    SCOPED_TRACE(content);
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(content);
      XelCsvReader reader = openTables(env, file, isCached);
      const long blocks = env.getAllocator().getBlocksOut();
      {
        XelCsvReader::TableIterator it(reader);
        EXPECT_EQ(it.ok(), !row.visited.empty());
        EXPECT_EQ((*it).isEmpty(), row.visited.empty());
        EXPECT_EQ(walk(it), row.visited);
        EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);  // nothing is held behind the end
        ++it;
        ++it;
        EXPECT_FALSE(it.ok());
        EXPECT_TRUE((*it).isEmpty());
      }
      EXPECT_EQ(static_cast<long>(row.visited.size()), reader.getNumberOfTables());
      EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
      reader.end();
    }
  }
}

TEST(TableIterator, LendsATableReaderThatWorks) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1\nA|NAMES,x\nA,1\nA,2\nB,3\nA,4\n");
    XelCsvReader reader = openTables(env, file, isCached, 1);
    XelCsvReader::TableIterator it(reader);
    XelCsvTableReader table = *it;
    EXPECT_EQ(table.isCached(), isCached != 0);
    EXPECT_EQ(table.getNumberOfItems(), 3);
    EXPECT_EQ(table.getLineByNumber(2).getIntByHeader("x"), 4);
    EXPECT_EQ(table.getImpl(), (*it).getImpl());
    table.end();  // only let go
    EXPECT_TRUE(table.isEmpty());
    EXPECT_EQ((*it).getNumberOfItems(), 3);
    ++it;
    EXPECT_STREQ((*it).getNameOfTable(), "B");
    EXPECT_EQ((*it).getNumberOfItems(), 1);
    it.end();
    reader.end();
  }
}

TEST(TableIterator, HoldsOneTableReaderAtATime) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\nB,1\nC,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    const long without = env.getAllocator().getBlocksOut();
    XelCsvReader::TableIterator it(reader);
    const long with = env.getAllocator().getBlocksOut();
    EXPECT_GT(with, without);
    ++it;
    EXPECT_EQ(env.getAllocator().getBlocksOut(), with);
    it.end();
    EXPECT_EQ(env.getAllocator().getBlocksOut(), without);
    it.end();
    reader.end();
  }
}

TEST(TableIterator, OutlivesTheReaderWhenItIsOnlyDestroyed) {
  TestEnv env;
  const long blocks = env.getAllocator().getBlocksOut();
  const DataFile file("A,1\n");
  XelCsvReader reader = openTables(env, file, 1);
  {
    const XelCsvReader::TableIterator it(reader);
    reader.end();
  }
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
}

TEST(TableIterator, GoesOnAfterItsEnd) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\nB,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    XelCsvReader::TableIterator it(reader);
    it.end();
    EXPECT_TRUE(it.ok());  // what it was before
    EXPECT_TRUE((*it).isEmpty());
    ++it;
    EXPECT_TRUE(it.ok());
    EXPECT_STREQ((*it).getNameOfTable(), "B");
    it.end();
    EXPECT_TRUE(it.ok());
    ++it;
    EXPECT_FALSE(it.ok());
    EXPECT_TRUE((*it).isEmpty());
    it.end();
    EXPECT_FALSE(it.ok());
    reader.end();
  }
}

TEST(TableIterator, IsEmptyWithoutAReader) {
  XelCsvReader::TableIterator it;
  EXPECT_FALSE(it.ok());
  EXPECT_TRUE((*it).isEmpty());
  ++it;
  EXPECT_FALSE(it.ok());
  it.end();
  XelCsvReader::TableIterator copy(it);
  copy = it;
  EXPECT_FALSE(copy.ok());
  EXPECT_TRUE((*copy).isEmpty());
}

TEST(TableIterator, CopiesStandOnTheSameTableWithATableReaderOfTheirOwn) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\nB,1\nB,2\nC,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    XelCsvReader::TableIterator it(reader);
    ++it;
    XelCsvReader::TableIterator copy(it);
    EXPECT_TRUE(it.ok());  // the source goes on
    EXPECT_STREQ((*it).getNameOfTable(), "B");
    EXPECT_STREQ((*copy).getNameOfTable(), "B");
    EXPECT_NE((*copy).getImpl(), (*it).getImpl());
    it.end();
    EXPECT_EQ((*copy).getNumberOfItems(), 2);
    ++copy;
    EXPECT_STREQ((*copy).getNameOfTable(), "C");
    EXPECT_TRUE((*it).isEmpty());
    ++it;
    EXPECT_STREQ((*it).getNameOfTable(), "C");
    it.end();
    copy.end();
    reader.end();
  }
}

TEST(TableIterator, ACopyOfAnEndedOneHasATableAgain) {
  // end() lets only the table reader go: the place is kept, and a copy opens the table of that place.
  TestEnv env;
  const DataFile file("A,1\nB,1\n");
  XelCsvReader reader = openTables(env, file, 1);
  XelCsvReader::TableIterator it(reader);
  it.end();
  XelCsvReader::TableIterator copy(it);
  EXPECT_TRUE(copy.ok());
  EXPECT_STREQ((*copy).getNameOfTable(), "A");
  while (it.ok()) ++it;
  copy = it;
  EXPECT_FALSE(copy.ok());
  EXPECT_TRUE((*copy).isEmpty());
  copy.end();
  reader.end();
}

TEST(TableIterator, AssigningGivesTheFormerTableBack) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\nB,1\nC,1\n");
    const DataFile otherFile("X,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    XelCsvReader otherReader = openTables(env, otherFile, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    {
      XelCsvReader::TableIterator it(reader);
      XelCsvReader::TableIterator other(otherReader);
      ++it;
      other = it;
      EXPECT_STREQ((*other).getNameOfTable(), "B");
      EXPECT_NE((*other).getImpl(), (*it).getImpl());
      ++other;
      EXPECT_STREQ((*other).getNameOfTable(), "C");
      EXPECT_STREQ((*it).getNameOfTable(), "B");
      // To itself: nothing changes, and no other table reader takes the place of the one there is.
      const XelCsvTableReaderI* table = (*it).getImpl();
      const long allocations = env.getAllocator().getAllocations();
      XelCsvReader::TableIterator& self = it;
      it = self;
      EXPECT_EQ((*it).getImpl(), table);
      it.copy(self);
      EXPECT_EQ((*it).getImpl(), table);
      EXPECT_EQ(env.getAllocator().getAllocations(), allocations);
      // From a new one, as in it = TableIterator(reader).
      it = XelCsvReader::TableIterator(otherReader);
      EXPECT_EQ(walk(it), Names{"X"});
    }
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    otherReader.end();
    reader.end();
  }
}

TEST(TableIterator, InitIteratorStartsTheWalkAgain) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1\nA,1\nB,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    XelCsvReader::TableIterator it(reader);
    const long blocks = env.getAllocator().getBlocksOut();
    ++it;
    it.initIterator();
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);  // one table reader is held, not two
    EXPECT_EQ(walk(it), (Names{"A", "B"}));
    it.initIterator();
    EXPECT_EQ(walk(it), (Names{"A", "B"}));
    reader.end();
  }
}

TEST(TableIterator, PassesOverATableThatCannotBeMade) {
  TestEnv env;
  const DataFile file("A,1\nB,k\nB,k\nC,1\nD,l\nD,l\n");
  const std::string message = "XelCsvReader::XelDuplicatedLineException : Another line with key  ";
  XelCsvReader reader = openTables(env, file, 1);
  const long blocks = env.getAllocator().getBlocksOut();
  XelCsvReader::TableIterator it(reader);
  EXPECT_XEL_THROW(++it, XelCsvReader::XelDuplicatedLineException, message + "k already exists In Table B .");
  EXPECT_TRUE((*it).isEmpty());
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
  ++it;
  EXPECT_TRUE(it.ok());
  EXPECT_STREQ((*it).getNameOfTable(), "C");
  EXPECT_XEL_THROW(++it, XelCsvReader::XelDuplicatedLineException, message + "l already exists In Table D .");
  EXPECT_TRUE((*it).isEmpty());
  ++it;
  EXPECT_FALSE(it.ok());
  EXPECT_TRUE((*it).isEmpty());
  it.end();
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
  reader.end();
}

TEST(TableIterator, CannotBeginWithATableThatCannotBeMade) {
  TestEnv env;
  const DataFile file("XELO_CSV_FORMAT,1\nA,k\nA,k\nB,1\n");
  XelCsvReader reader = openTables(env, file, 1);
  const long blocks = env.getAllocator().getBlocksOut();
  EXPECT_XEL_THROW(XelCsvReader::TableIterator{reader}, XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  k already exists In Table A .");
  EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
  reader.end();
}

TEST(TableIterator, ReportsAFileThatIsGoneAndGoesOnWhenItIsBack) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const std::string content = "A,1\nB,1\nC,1\n";
    const DataFile file(content);
    XelCsvReader reader = openTables(env, file, isCached);
    XelCsvReader::TableIterator it(reader);
    const long blocks = env.getAllocator().getBlocksOut();
    file.remove();
    EXPECT_XEL_THROW(XelCsvReader::TableIterator{reader}, XelCsvReader::XelFileNotFoundException,
                     noSuchFile(file.getName()));
    EXPECT_XEL_THROW(XelCsvReader::TableIterator{it}, XelCsvReader::XelFileNotFoundException,
                     noSuchFile(file.getName()));
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    EXPECT_STREQ((*it).getNameOfTable(), "A");
    EXPECT_XEL_THROW(++it, XelCsvReader::XelFileNotFoundException, noSuchFile(file.getName()));
    EXPECT_TRUE((*it).isEmpty());
    file.write(content);
    ++it;
    EXPECT_STREQ((*it).getNameOfTable(), "C");
    it.end();
    reader.end();
  }
}

TEST(TableIterator, RefusesAOneTableFile) {
  for (const char* content : {"A,1\n", "", "XELO_CSV_FORMAT,1\n"}) {
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(content);
      XelCsvReader reader = openOneTable(env, file, isCached);
      EXPECT_XEL_THROW(XelCsvReader::TableIterator{reader}, XelCsvReader::XelIncorrectCsvReaderUseException,
                       std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName() +
                           " is a unique-Table file. cann't use this member function getTableByName with this reader.");
      reader.end();
    }
  }
}

TEST(TableIterator, GivesEverythingBackWhenMemoryEnds) {
  const DataFile file("XELO_CSV_FORMAT,1\nA|NAMES,x\nA,1\nB,1\nC,1\n");
  for (const long isCached : BothReaders) {
    const long injected = forEachFailingAllocation([&](XelEnv env) {
      XelCsvReader reader = openTables(env, file, isCached);
      const EndGuard<XelCsvReader> guard(reader);
      XelCsvReader::TableIterator it(reader);
      ++it;
      XelCsvReader::TableIterator copy(it);
      ++copy;
      it = copy;
      EXPECT_STREQ((*it).getNameOfTable(), "C");
      ++it;
      EXPECT_FALSE(it.ok());
    });
    EXPECT_GT(injected, 60);
  }
}

TEST(TableIterator, GoesOnAfterEveryFailingAllocation) {
  const DataFile file("A,1\nB,1\nC,1\n");
  for (const long isCached : BothReaders) {
    for (long countdown = 0, isDone = 0; isDone == 0; ++countdown) {
      TestEnv env;
      XelCsvReader reader = openTables(env, file, isCached);
      XelCsvReader::TableIterator it(reader);
      env.getAllocator().failAfter(countdown);
      try {
        ++it;
        isDone = 1;
        EXPECT_GT(countdown, 0);
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE((*it).isEmpty());
      }
      env.getAllocator().neverFail();
      ++it;
      EXPECT_STREQ((*it).getNameOfTable(), "C");
      it.end();
      reader.end();
    }
  }
}

// ---- The lines of a one-table file.

constexpr const char* Cities = "|NAMES,city,value\n|KEYS,1,0\nParis,7\n# comment\n\nRome,8\nOslo,9\n";

struct Visit {
  std::string text;
  long lineNumber;

  bool operator==(const Visit& other) const { return text == other.text && lineNumber == other.lineNumber; }
};

std::vector<Visit> walk(XelCsvReader::LineIterator& it) {
  std::vector<Visit> visits;
  for (; it.ok() && visits.size() < MostVisits; ++it)
    visits.push_back({(*it).getStringByPosition(0), (*it).getLineNumber()});
  EXPECT_TRUE((*it).isEmpty());
  return visits;
}

const std::vector<Visit> AllCities = {{"Paris", 2}, {"Rome", 5}, {"Oslo", 6}};

TEST(ReaderLineIterator, VisitsTheDataLinesInTheOrderOfTheFile) {
  for (const long isCached : BothReaders) {
    for (const char* end : {"", "\n\n#\n"}) {
      TestEnv env;
      const DataFile file(std::string(Cities) + end);
      XelCsvReader reader = openOneTable(env, file, isCached);
      const long blocks = env.getAllocator().getBlocksOut();
      const long openFiles = countOpenFiles();
      {
        XelCsvReader::LineIterator it(reader);
        EXPECT_EQ(walk(it), AllCities);
        EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);  // an iterator that has ended holds nothing
        EXPECT_EQ(countOpenFiles(), openFiles);
        ++it;
        EXPECT_FALSE(it.ok());
        EXPECT_TRUE((*it).isEmpty());
      }
      reader.end();
    }
  }
}

TEST(ReaderLineIterator, GivesLinesThatKnowTheirHeadings) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    XelCsvReader::LineIterator it(reader);
    EXPECT_EQ((*it).getIntByHeader("value"), 7);
    EXPECT_EQ((*++it).getIntByHeader("value"), 8);
    // Lookups through the reader do not disturb the walk, and the walk not the last line.
    const XelCsvLine paris = reader.getLineByKey(1, "Paris");
    ++it;
    EXPECT_EQ((*it).getIntByHeader("value"), 9);
    EXPECT_EQ(paris.getIntByHeader("value"), 7);
    it.end();
    reader.end();
  }
}

TEST(ReaderLineIterator, HasNothingToVisitInAFileWithoutDataLines) {
  for (const char* content : {"", "# comment\n", "|NAMES,a\n", "|NAMES,a\n|KEYS,1\n#\n"}) {
    for (const long isCached : BothReaders) {
      SCOPED_TRACE(content);
      TestEnv env;
      const DataFile file(content);
      XelCsvReader reader = openOneTable(env, file, isCached);
      XelCsvReader::LineIterator it(reader);
      EXPECT_FALSE(it.ok());
      EXPECT_TRUE((*it).isEmpty());
      ++it;
      EXPECT_FALSE(it.ok());
      it.end();
      reader.end();
    }
  }
}

TEST(ReaderLineIterator, KeepsItsAnswerAfterItsEnd) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    XelCsvReader::LineIterator it(reader);
    ++it;
    it.end();
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    EXPECT_TRUE(it.ok());
    EXPECT_TRUE((*it).isEmpty());
    it.end();
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    ++it;  // an iterator that has ended stays so
    EXPECT_TRUE((*it).isEmpty());
    reader.end();

    XelCsvReader::LineIterator empty;
    EXPECT_FALSE(empty.ok());
    EXPECT_TRUE((*empty).isEmpty());
    empty.end();
  }
}

TEST(ReaderLineIterator, AssigningStartsAgainAtTheFirstLine) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    {
      XelCsvReader::LineIterator it(reader);
      ++it;
      XelCsvReader::LineIterator other;
      other = it;
      EXPECT_EQ((*it).getLineNumber(), 5);  // the source is left alone
      EXPECT_EQ(walk(other), AllCities);
      ++it;
      other = it;  // and over one that was in use
      EXPECT_EQ(walk(other), AllCities);
      XelCsvReader::LineIterator& self = it;
      it = self;
      EXPECT_EQ(walk(it), AllCities);
    }
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    reader.end();
  }
}

TEST(ReaderLineIterator, CopyingEndsTheSource) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    {
      XelCsvReader::LineIterator it(reader);
      ++it;
      const XelCsvReader::LineIterator copy(it);
      EXPECT_TRUE((*it).isEmpty());
      EXPECT_TRUE(it.ok());
      EXPECT_TRUE(copy.ok());
      EXPECT_EQ((*copy).getLineNumber(), 5);
      // Kept: in a one-table file the scanning walk does not keep its offset up to date, so that its copy stands on the
      // first line, with the number of the source's line.
      EXPECT_STREQ((*copy).getStringByPosition(0), isCached != 0 ? "Rome" : "Paris");
    }
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    reader.end();
  }
}

TEST(ReaderLineIterator, RefusesAFileOfSeveralTables) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    EXPECT_XEL_THROW(XelCsvReader::LineIterator{reader}, XelCsvReader::XelIncorrectCsvReaderUseException,
                     std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName() +
                         " is a multi-Table file. There is no reader for unique table.");
    reader.end();
  }
}

TEST(ReaderLineIterator, ReachesTheFirstLineOfADuplicatedKeyAgain) {
  // The index of a one-table file ends at a duplicated key without a word; the duplicate counts as an item.
  TestEnv env;
  const DataFile file("a,1\nb,2\na,1\nc,3\n");
  XelCsvReader cached = openOneTable(env, file, 1);
  XelCsvReader::LineIterator it(cached);
  EXPECT_EQ(walk(it), (std::vector<Visit>{{"a", 0}, {"b", 1}, {"a", 0}}));
  cached.end();
  XelCsvReader scanning = openOneTable(env, file, 0);
  XelCsvReader::LineIterator each(scanning);
  EXPECT_EQ(walk(each), (std::vector<Visit>{{"a", 0}, {"b", 1}, {"a", 2}, {"c", 3}}));
  scanning.end();
}

TEST(ReaderLineIterator, GivesEverythingBackWhenMemoryEnds) {
  const DataFile file(Cities);
  for (const long isCached : BothReaders) {
    forEachFailingAllocation([&](XelEnv env) {
      XelCsvReader reader = openOneTable(env, file, isCached);
      const EndGuard<XelCsvReader> guard(reader);
      XelCsvReader::LineIterator it(reader);
      ++it;
      XelCsvReader::LineIterator other;
      other = it;
      XelCsvReader::LineIterator copy(it);
      EXPECT_EQ((*copy).getLineNumber(), 5);
      EXPECT_EQ(walk(other), AllCities);
    });
  }
}

}  // namespace

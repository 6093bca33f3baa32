// A file that changes between construction and lookup: a record of what is there, or an exception, and never a loop.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;
using testing::AnyOf;
using testing::StartsWith;

// A directory in the place of a file, removed at the end of the scope.
class DirectoryInstead {
 public:
  explicit DirectoryInstead(const DataFile& file) : name(file.getName()) {
    file.remove();
    std::filesystem::create_directory(name);
  }
  ~DirectoryInstead() { std::filesystem::remove(name); }
  DirectoryInstead(const DirectoryInstead&) = delete;
  DirectoryInstead& operator=(const DirectoryInstead&) = delete;

 private:
  std::string name;
};

}  // namespace

TEST(ChangedFile, RemovedIsReportedByEveryLookup) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nA,2\nB,3\n", kind, "A");
    open.file.remove();
    EXPECT_XEL_THROW(open.table.getLineByNumber(1), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    EXPECT_XEL_THROW(open.table.getLineByKey(1, "2"), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    EXPECT_XEL_THROW(XelCsvTableReader::LineIterator(open.table), XelCsvReader::XelFileNotFoundException,
                     textOfMissing(open.file));
    XelCsvTableReader copied;
    EXPECT_XEL_THROW(copied.copy(open.table), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    EXPECT_TRUE(copied.isEmpty());
    EXPECT_XEL_THROW(XelCsvTableReader(open.reader.getImpl(), "A"), XelCsvReader::XelFileNotFoundException,
                     textOfMissing(open.file));
    EXPECT_XEL_THROW(open.reader.getTableByName("A"), XelCsvReader::XelFileNotFoundException, textOfMissing(open.file));
    // What has come back is read again.
    open.file.write("A,1\nA,2\nB,3\n");
    EXPECT_EQ(open.getByKey("2"), "1: [A][2]");
  });
}

TEST(ChangedFile, RemovedIsToldApartFromAKeyThatIsNotThere) {
  OpenTable cached("A,1\n", Kind::Cached, "A");
  cached.file.remove();
  EXPECT_XEL_THROW(cached.table.getLineByKey(1, "x"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key x in table A.");
  OpenTable scanned("A,1\n", Kind::Scanning, "A");
  scanned.file.remove();
  EXPECT_XEL_THROW(scanned.table.getLineByKey(1, "x"), XelCsvReader::XelFileNotFoundException,
                   textOfMissing(scanned.file));
  // A negative number is refused after the open.
  EXPECT_XEL_THROW(scanned.table.getLineByNumber(-1), XelCsvReader::XelFileNotFoundException,
                   textOfMissing(scanned.file));
}

TEST(ChangedFile, TruncatedGivesEmptyLinesWhereTheIndexPoints) {
  OpenTable open("a,1\nb,2\nc,3\n", Kind::Cached);
  open.file.write("a,1\nb");
  EXPECT_EQ(open.getByNumber(0), "0: [a][1]");
  EXPECT_EQ(open.getByNumber(1), "1: [b]");
  EXPECT_EQ(open.getByNumber(2), "2: []");
  EXPECT_EQ(open.getByKey("c", "3"), "2: []");
  EXPECT_EQ(open.table.getNumberOfItems(), 3);
  EXPECT_EQ(open.getAll().size(), 3U);
}

TEST(ChangedFile, TruncatedEndsTheScan) {
  OpenTable open("A,1\nA,2\nA,3\nB,4\n", Kind::Scanning, "A");
  open.file.write("A,1\nA,2\n");
  EXPECT_EQ(open.table.getNumberOfItems(), 2);
  // The end of the file still lies inside the table.
  EXPECT_EQ(open.getByNumber(2), "2: [A]");
  EXPECT_EQ(open.getByNumber(1L << 40), "2: [A]");
  EXPECT_XEL_THROW(open.table.getLineByKey(1, "3"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key 3 in table A.");
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1]", "1: [A][2]"}));
}

TEST(ChangedFile, TruncatedBeforeTheTableHasNoLines) {
  OpenTable open("A,1\nB,2\nB,3\n", Kind::Scanning, "B");
  open.file.write("A");
  EXPECT_EQ(open.table.getNumberOfItems(), 0);
  EXPECT_EQ(open.getByNumber(0), "1: []");
  EXPECT_EQ(open.getByNumber(1L << 40), "1: []");
  EXPECT_TRUE(open.getAll().empty());
  OpenTable split("A,1\nB,2\nA,3\nB,4\n", Kind::Scanning, "B", true);
  split.file.write("A,1\n");
  EXPECT_EQ(split.table.getNumberOfItems(), 0);
  EXPECT_XEL_THROW(split.table.getLineByNumber(0), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 0 in table B.");
  EXPECT_XEL_THROW(split.table.getLineByNumber(1L << 40), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 1099511627776 in table B.");
}

TEST(ChangedFile, TruncatedInsideALineOfAnotherTableEndsASplitWalk) {
  OpenTable open("A,1\nB,2\nB,3\nA,4\n", Kind::Scanning, "A", true);
  open.file.write("A,1\nB,2\nB");
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1]"}));
  EXPECT_EQ(open.table.getNumberOfItems(), 1);
  EXPECT_XEL_THROW(open.table.getLineByNumber(1), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 1 in table A.");
}

TEST(ChangedFile, ReplacedByADirectoryHasNoLines) {
  forBothKinds([](Kind kind) {
    for (const bool isMultiTable : {false, true}) {
      SCOPED_TRACE(isMultiTable);
      const char* content = "A,1\nA,2\nB,3\n";
      TestEnv env;
      DataFile file(content);
      XelCsvReader reader = openReader(env, file, kind, isMultiTable);
      XelCsvTableReader table = isMultiTable ? reader.getTableByName("A") : reader.getReaderForUniqueTableFile();
      {
        const DirectoryInstead directory(file);
        // Whether a directory can be positioned is the file system's affair, reading it never works.
        if (kind == Kind::Cached) {
          EXPECT_THAT(outcomeOf([&] { return table.getLineByNumber(1); }),
                      AnyOf("1: []", StartsWith("XelLineNotFoundException")));
        } else {
          EXPECT_THAT(outcomeOf([&] { return table.getNumberOfItems(); }),
                      AnyOf("0", StartsWith("XelCsvReaderException")));
          EXPECT_THAT(outcomeOf([&] { return table.getLineByNumber(1L << 40); }),
                      AnyOf("0: []", StartsWith("XelCsvReaderException")));
          EXPECT_THAT(outcomeOf([&] { return table.getLineByKey(2, "A", "1"); }),
                      AnyOf(StartsWith("XelLineNotFoundException"), StartsWith("XelCsvReaderException")));
          EXPECT_THAT(outcomeOf([&] {
                        XelCsvTableReader::LineIterator it(table);
                        return static_cast<long>(it.ok());
                      }),
                      AnyOf("0", StartsWith("XelCsvReaderException")));
        }
      }
      file.write(content);
      EXPECT_EQ(textOf(table.getLineByNumber(1)), "1: [A][2]");
      table.end();
      reader.end();
    }
  });
}

TEST(ChangedFile, ReplacedByADirectoryGivesNoIndexAndALentTableStaysAsItWas) {
  OpenTable source("c,3\nd,4\n", Kind::Scanning);
  OpenTable target("a,1\nb,2\n", Kind::Cached);
  XelCsvTableReader table = target.reader.getReaderForUniqueTableFile();
  {
    const DirectoryInstead directory(source.file);
    EXPECT_XEL_THROW(table.copy(source.table), XelCsvReader::XelFileNotFoundException,
                     std::string("While trying to open file ") + source.file.getName() +
                         " : The named file is a directory and mode requires write access.");
    EXPECT_TRUE(table.isEmpty());
  }
  EXPECT_EQ(target.table.getNumberOfItems(), 2);
  EXPECT_EQ(target.getByKey("b", "2"), "1: [b][2]");
}

TEST(ChangedFile, GrownIsSeenByTheScanOnlyAsFarAsTheFileReachedBefore) {
  forBothKinds([](Kind kind) {
    OpenTable open("a,1\nb,2", kind);
    open.file.write("a,1\nb,22,x\nc,3\n");
    EXPECT_EQ(open.table.getNumberOfItems(), 2);
    EXPECT_EQ(open.getByNumber(1), "1: [b][22][x]");
    if (kind == Kind::Scanning) {
      EXPECT_EQ(open.getByNumber(2), "2: [c][3]");
      EXPECT_THROW(open.table.getLineByNumber(3), XelCsvReader::XelLineNotFoundException);
      EXPECT_EQ(open.getAll(), (Lines{"0: [a][1]", "1: [b][22][x]", "2: [c][3]"}));
    } else {
      EXPECT_EQ(open.getAll(), (Lines{"0: [a][1]", "1: [b][22][x]"}));
    }
  });
}

TEST(ChangedFile, RemovedDuringAWalkChangesNothingForIt) {
  forBothKinds([](Kind kind) {
    OpenTable open("A,1\nA,2\nB,3\n", kind, "A");
    XelCsvTableReader::LineIterator it(open.table);
    open.file.remove();
    EXPECT_EQ(walk(it), (Lines{"0: [A][1]", "1: [A][2]"}));
  });
}

TEST(ChangedFile, LastLineWhoseNameComesOutWhenItIsFormattedAgainBelongsToASplitTable) {
  OpenTable open("A,1\nB,2\nA,3\n", Kind::Scanning, "A", true);
  open.file.write("A,1\n\"A,x\"");
  // First the quotes keep the name and the comma together; when nothing follows, the comma separates the next time.
  EXPECT_EQ(open.getAll(), (Lines{"0: [A][1]", "1: [A][x]"}));
  EXPECT_EQ(open.getByNumber(1), "1: [A][x]");
  EXPECT_EQ(open.getByNumber(2), "1: [A]");
  EXPECT_EQ(open.getByNumber(1L << 40), "1: [A]");
  EXPECT_EQ(open.table.getNumberOfItems(), 1);
}

TEST(ChangedFile, ReplacedByADirectoryGivesNoNewTable) {
  forBothKinds([](Kind kind) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1\nXELO_DATA_SCHEMA,tool,2\nA,1\n");
    XelCsvReader reader = openReader(env, file, kind, true);
    {
      const DirectoryInstead directory(file);
      const std::string message = std::string("While trying to open file ") + file.getName() +
                                  " : The named file is a directory and mode requires write access.";
      EXPECT_XEL_THROW(reader.getTableByName("A"), XelCsvReader::XelFileNotFoundException, message);
      EXPECT_XEL_THROW(reader.getTableByNumber(2), XelCsvReader::XelFileNotFoundException, message);
      EXPECT_XEL_THROW(reader.getCsvFormat(), XelCsvReader::XelFileNotFoundException, message);
      EXPECT_XEL_THROW(reader.getFileVersion(), XelCsvReader::XelFileNotFoundException, message);
      EXPECT_XEL_THROW(reader.getRequiredBy(), XelCsvReader::XelFileNotFoundException, message);
      EXPECT_XEL_THROW(XelCsvReader::TableIterator(reader), XelCsvReader::XelFileNotFoundException, message);
      EXPECT_EQ(reader.getNumberOfTables(), 1);
    }
    file.write("XELO_CSV_FORMAT,1\nXELO_DATA_SCHEMA,tool,2\nA,1\n");
    EXPECT_EQ(reader.getCsvFormat(), 1.0);
    EXPECT_STREQ(reader.getRequiredBy(), "tool");
    reader.end();
  });
}

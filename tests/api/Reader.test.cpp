// The handle of a data file: construction, lookups of a one-table file, and how handles live and end.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectAssertion.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/SystemText.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using FileException = XelCsvReader::XelFileNotFoundException;
using ParameterException = XelCsvReader::XelCsvReaderParameterException;
using LineException = XelCsvReader::XelLineNotFoundException;
using UseException = XelCsvReader::XelIncorrectCsvReaderUseException;

// The four kinds of reader.
struct Kind {
  long isMultiTable;
  long isCached;
  const char* name;
};
constexpr Kind AllKinds[] = {
    {0, 0, "one table, scanning"}, {0, 1, "one table, cached"}, {1, 0, "tables, scanning"}, {1, 1, "tables, cached"}};
constexpr long BothReaders[] = {0, 1};

XelCsvReader open(XelEnv env, const char* file, const Kind& kind) {
  return XelCsvReader(env, file, kind.isMultiTable, 0, ",", '.', '"', '#', kind.isCached);
}

XelCsvReader openOneTable(XelEnv env, const DataFile& file, long isCached) {
  return open(env, file.getName(), {0, isCached, ""});
}

XelCsvReader openTables(XelEnv env, const DataFile& file, long isCached) {
  return open(env, file.getName(), {1, isCached, ""});
}

std::string getText(const XelCsvLine& line, long position) { return line.getStringByPosition(position); }

std::string noSuchFile(const std::string& name) {
  return "While trying to open file " + name +
         " : No such file or directory. The specified file or directory does not exist or cannot be found. This message "
         "can occur whenever a specified file does not exist or a component of a path does not specify an existing "
         "directory. ";
}

std::string isDirectory(const std::string& name) {
  return "While trying to open file " + name + " : The named file is a directory and mode requires write access.";
}

const std::string NoCharacter =
    "XelCsvReader::XelCsvReaderParameterException : You must specify a value different of 0 for separator, decimal, quote "
    "and comment characters";

// Answers what the operation prints on standard output.
std::string getOutput(const std::function<void()>& operation) {
  std::ostringstream output;
  std::streambuf* former = std::cout.rdbuf(output.rdbuf());
  operation();
  std::cout.rdbuf(former);
  return output.str();
}

// Whether the environment holds no more blocks than when this was made.
class Balance {
 public:
  explicit Balance(TestEnv& watched) : memory(watched.getAllocator()), before(memory.getBlocksOut()) {}
  bool isEven() const { return memory.getBlocksOut() == before; }

 private:
  const TestAllocator& memory;
  long before;
};

// ---- Construction: the file.

TEST(ReaderConstruction, WantsAFileName) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const Balance balance(env);
    EXPECT_XEL_THROW(open(env, nullptr, kind), FileException, "XelCsvReader::testFile : Empty file name");
    EXPECT_XEL_THROW(open(env, "", kind), FileException, noSuchFile(""));
    EXPECT_TRUE(balance.isEven());
  }
}

TEST(ReaderConstruction, TellsWhyTheFileCannotBeOpened) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const Balance balance(env);
    const DataFile file("a,1\n");
    const DataDirectory directory;
    const std::string name = file.getName();
    EXPECT_XEL_THROW(open(env, (name + "/x").c_str(), kind), FileException,
                     "While trying to open file " + name +
                         "/x : No such file or directory. A component of the path prefix is not a directory. ");
    // Kept: a name that is too long has the text of too many open files.
    const std::string longName(300, 'x');
    EXPECT_XEL_THROW(open(env, longName.c_str(), kind), FileException,
                     "While trying to open file " + longName +
                         " : The maximum allowable number of files is currently open in the system.");
    // A message is cut at 499 bytes.
    const std::string longerName(600, 'x');
    EXPECT_XEL_THROW(open(env, longerName.c_str(), kind), FileException,
                     ("While trying to open file " + longerName).substr(0, 499));
    // An error number without a text of the library has the system's.
    const std::string loop = std::string(directory.getName()) + "/loop";
    ASSERT_EQ(symlink(loop.c_str(), loop.c_str()), 0);
    EXPECT_XEL_THROW(open(env, loop.c_str(), kind), FileException,
                     "While trying to open file " + loop + " : " + getSystemText(ELOOP) + ".");
    file.remove();
    EXPECT_XEL_THROW(open(env, name.c_str(), kind), FileException, noSuchFile(name));
    EXPECT_TRUE(balance.isEven());
  }
}

TEST(ReaderConstruction, RefusesADirectory) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const Balance balance(env);
    const DataDirectory directory;
    EXPECT_XEL_THROW(open(env, directory.getName(), kind), FileException, isDirectory(directory.getName()));
    const std::string link = std::string(directory.getName()) + "/link";
    ASSERT_EQ(symlink(directory.getName(), link.c_str()), 0);
    EXPECT_XEL_THROW(open(env, link.c_str(), kind), FileException, isDirectory(link));
    // A directory can be opened, so the characters are tested before its reading fails.
    EXPECT_XEL_THROW(XelCsvReader(env, directory.getName(), kind.isMultiTable, 0, nullptr), ParameterException,
                     NoCharacter);
    EXPECT_TRUE(balance.isEven());
  }
}

TEST(ReaderConstruction, RefusesAPipeAndDoesNotWaitForIt) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const Balance balance(env);
    const DataDirectory directory;
    const std::string pipe = std::string(directory.getName()) + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string message =
        "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table ";
    alarm(30);  // ends the program instead of waiting for ever
    EXPECT_XEL_THROW(open(env, pipe.c_str(), kind), XelCsvReader::XelCsvReaderException, message + pipe);
    const std::string link = std::string(directory.getName()) + "/link";
    ASSERT_EQ(symlink(pipe.c_str(), link.c_str()), 0);
    EXPECT_XEL_THROW(open(env, link.c_str(), kind), XelCsvReader::XelCsvReaderException, message + link);
    alarm(0);
    EXPECT_TRUE(balance.isEven());
  }
}

// An ordinary user for the time of a scope, when the tests run as the superuser, who may read everything.
class OrdinaryUser {
 public:
  OrdinaryUser() : isSuper(geteuid() == 0) {
    if (isSuper && seteuid(65534) != 0) std::abort();
  }
  ~OrdinaryUser() {
    if (isSuper && seteuid(0) != 0) std::abort();
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;

 private:
  bool isSuper;
};

TEST(ReaderConstruction, TellsThatTheFileMayNotBeRead) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const DataFile file("a,1\n");
    ASSERT_EQ(chmod(file.getName(), 0), 0);
    const OrdinaryUser user;
    EXPECT_XEL_THROW(
        open(env, file.getName(), kind), FileException,
        std::string("While trying to open file ") + file.getName() +
            " : Search permission is denied on a component of the path prefix, or the file exists and the "
            "permissions specified by mode (rb) are denied, or the file does not exist and write permission "
            "is denied for the parent directory of the file to be created.");
  }
}

// Memory whose bookkeeping leaves an error number of an open behind, as a user's own may.
class NoisyAllocator : public XelAllocator {
 public:
  void* allocate(long size) override {
    void* block = std::malloc(static_cast<std::size_t>(size));
    errno = ENOENT;
    return block;
  }
  void free(void* pointer, long) override {
    std::free(pointer);
    errno = EMFILE;
  }
};

TEST(ReaderConstruction, IsNotMisledByErrorNumbersOfOthers) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    const DataFile file("a,1\nb,2\n");
    {
      TestEnv env;
      errno = ENOENT;
      XelCsvReader reader = open(env, file.getName(), kind);
      reader.end();
    }
    NoisyAllocator allocator;
    XelEnv env(&allocator);
    try {
      XelCsvReader reader = open(env, file.getName(), kind);
      if (kind.isMultiTable != 0) {
        XelCsvTableReader table = reader.getTableByName("a");
        EXPECT_EQ(table.getNumberOfItems(), 1);
        table.end();
      }
      reader.end();
    } catch (const XelQuietException& exception) {
      ADD_FAILURE() << exception.getMessage();
    }
    env.end();
  }
}

TEST(ReaderConstruction, LeavesNoFileOpen) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const DataFile file("a,1\na,2\nb,1\n");
    const long openFiles = countOpenFiles();
    XelCsvReader reader = open(env, file.getName(), kind);
    EXPECT_EQ(countOpenFiles(), openFiles);
    if (kind.isMultiTable != 0) {
      XelCsvTableReader table = reader.getTableByName("a");
      EXPECT_EQ(countOpenFiles(), openFiles);
      table.getLineByNumber(1);
      EXPECT_EQ(countOpenFiles(), openFiles);
      table.end();
    } else {
      reader.getLineByNumber(1);
      EXPECT_EQ(countOpenFiles(), openFiles);
    }
    reader.end();
  }
}

// ---- Construction: the characters.

TEST(ReaderConstruction, RefusesCharactersThatClash) {
  const std::string includes = "XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = ";
  const std::string same = "XelCsvReader::XelCsvReader::testCharacter: you are using a ";
  const std::string notAllowed = "  You are not allowed to use a same character for ";
  const struct {
    const char* separators;
    char decimal;
    char quote;
    char comment;
    std::string message;
  } rows[] = {
      {nullptr, '.', '"', '#', NoCharacter},
      {";", '\0', '"', '#', NoCharacter},
      {";", '.', '\0', '#', NoCharacter},
      {";", '.', '"', '\0', NoCharacter},
      {";,", '.', ',', '#', includes + ";, and a Quote = ,  Quote  must not be a separator. "},
      {";,", ',', '"', '#', includes + ";, and a Decimal = ,  Decimal  must not be a separator. "},
      {";,", '.', '"', ';', includes + ";, and a Comment = ;  Comment  must not be a separator. "},
      {";,", ',', ';', '#', includes + ";, and a Quote = ;  Quote  must not be a separator. "},
      {";,", '#', '#', ',', includes + ";, and a Comment = ,  Comment  must not be a separator. "},
      {";", '.', '#', '#', same + "Comment  =  # and  Quote =  #" + notAllowed + "Comment and Quote "},
      {";", '#', '"', '#', same + "Comment  =  # and  Decimal =  #" + notAllowed + "Comment and Decimal "},
      {";", '"', '"', '#', same + "Decimal  =  \" and  Quote =  \"" + notAllowed + "Decimal and Quote "},
      {";", '#', '#', '#', same + "Comment  =  # and  Quote =  #" + notAllowed + "Comment and Quote "},
  };
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const Balance balance(env);
    const DataFile file("a;1\n");
    for (const auto& row : rows) {
      EXPECT_XEL_THROW(XelCsvReader(env, file.getName(), kind.isMultiTable, 0, row.separators, row.decimal, row.quote,
                                    row.comment, kind.isCached),
                       ParameterException, row.message);
    }
    EXPECT_TRUE(balance.isEven());
  }
}

TEST(ReaderConstruction, LooksAtTheFileBeforeTheCharacters) {
  TestEnv env;
  const DataFile file("a;1\n");
  EXPECT_XEL_THROW(XelCsvReader(env, nullptr, 0, 0, nullptr), FileException,
                   "XelCsvReader::testFile : Empty file name");
  file.remove();
  EXPECT_XEL_THROW(XelCsvReader(env, file.getName(), 0, 0, nullptr), FileException, noSuchFile(file.getName()));
}

TEST(ReaderConstruction, TakesAnEmptySetOfSeparators) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const DataFile file("a,1;2\n");
    XelCsvReader reader(env, file.getName(), kind.isMultiTable, 0, "", '.', '"', '#', kind.isCached);
    if (kind.isMultiTable != 0) {
      EXPECT_TRUE(reader.isTableExists("a,1;2"));
    } else {
      const XelCsvLine line = reader.getLineByNumber(0);
      EXPECT_EQ(line.getNumberOfFields(), 1);
      EXPECT_EQ(getText(line, 0), "a,1;2");
    }
    reader.end();
  }
}

TEST(ReaderConstruction, HasDefaultsForAnOrdinaryFile) {
  const DecimalPoint point;
  TestEnv env;
  const DataFile file("|NAMES,a,b\n# c\n\"x,y\",2.5;\n");
  XelCsvReader reader(env, file.getName());
  EXPECT_EQ(reader.getNumberOfItems(), 1);
  const XelCsvLine line = reader.getLineByNumber(0);
  EXPECT_EQ(line.getNumberOfFields(), 2);
  EXPECT_EQ(line.getLineNumber(), 2);
  EXPECT_EQ(getText(line, 0), "x,y");
  EXPECT_EQ(getText(line, 1), "2.5;");
  EXPECT_EQ(line.getFloatByHeader("b"), 2.5);
  EXPECT_TRUE(reader.getReaderForUniqueTableFile().isCached());
  reader.end();

  // No splitting, unless asked for.
  file.write("A,1\nB,1\nA,2\n");
  EXPECT_THROW(XelCsvReader(env, file.getName(), 1), XelCsvReader::XelDuplicatedTableException);
  XelCsvReader split(env, file.getName(), 1, 1);
  EXPECT_EQ(split.getNumberOfTables(), 2);
  split.end();
}

TEST(ReaderConstruction, TakesEveryParameterInItsOrder) {
  const DecimalPoint point;
  TestEnv env;
  const DataFile file("%c\nA;'x;y';1,5\nB:1\nA;z;2\n");
  XelCsvReader reader(env, file.getName(), 7, -1, ";:", ',', '\'', '%', 0);  // any value but 0 is true
  EXPECT_EQ(reader.getNumberOfTables(), 2);
  XelCsvTableReader table = reader.getTableByName("A");
  EXPECT_FALSE(table.isCached());
  EXPECT_EQ(table.getNumberOfItems(), 2);
  const XelCsvLine line = table.getLineByNumber(0);
  EXPECT_EQ(getText(line, 1), "x;y");
  EXPECT_EQ(line.getFloatByPosition(2), 1.5);
  table.end();
  reader.end();
}

// ---- Construction: the scan.

TEST(ReaderConstruction, NamesTheTableThatComesBackWithoutSplitting) {
  const struct {
    const char* content;
    const char* name;
  } rows[] = {
      {"A,1\nB,1\nA,2\n", "A"},           {"A,1\nB,1\n  A  |NAMES,x\n", "A"}, {"A,1\n\"B\",1\nC,1\n\"B\"\n", "\"B\""},
      {"A\nXELO_CSV_FORMAT,1\nA\n", "A"}, {"%s%n,1\nB,1\n%s%n,2\n", "%s%n"},
  };
  for (const long isCached : BothReaders) {
    TestEnv env;
    const Balance balance(env);
    for (const auto& row : rows) {
      const DataFile file(row.content);
      EXPECT_XEL_THROW(openTables(env, file, isCached), XelCsvReader::XelDuplicatedTableException,
                       std::string("XelCsvReader::XelDuplicatedTableException : Another table with name ") + row.name +
                           " already exists. Table splitting is not specified. ");
    }
    // A name of nearly a line's length is cut with the message.
    const std::string longName(9000, 'n');
    const DataFile file(longName + "\nB,1\n" + longName + "\n");
    EXPECT_XEL_THROW(
        openTables(env, file, isCached), XelCsvReader::XelDuplicatedTableException,
        ("XelCsvReader::XelDuplicatedTableException : Another table with name " + longName).substr(0, 499));
    EXPECT_TRUE(balance.isEven());
  }
}

TEST(ReaderConstruction, PassesOnWhatIsWrongWithAOneTableFile) {
  TestEnv env;
  const Balance balance(env);
  const DataFile overflow("|KEYS,99999999999\na\n");
  const DataFile tooShort("|KEYS,1,1\n#\na\n");
  for (const long isCached : BothReaders) {
    EXPECT_XEL_THROW(
        openOneTable(env, overflow, isCached), XelCsvReader::XelOverflowException,
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 1  of line number 0 as integer");
  }
  EXPECT_XEL_THROW(openOneTable(env, tooShort, 1), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (2) exceeds the number of "
                   "fields of the current line (1), line number 2");
  EXPECT_TRUE(balance.isEven());
  XelCsvReader reader = openOneTable(env, tooShort, 0);  // the scanning reader finds out when it looks for a line
  EXPECT_XEL_THROW(reader.getLineByKey(2, "a", "b"), XelCsvReader::XelCsvReaderException,
                   "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (2) exceeds the number of "
                   "fields of the current line (1), line number 2");
  EXPECT_EQ(getText(reader.getLineByNumber(0), 0), "a");
  reader.end();
}

TEST(ReaderConstruction, LeavesAHandleAloneWhenANewReaderFails) {
  TestEnv env;
  const DataFile file("a,1\n");
  XelCsvReader reader(env, file.getName());
  const XelCsvReaderI* impl = reader.getImpl();
  EXPECT_THROW(reader = XelCsvReader(env, file.getName(), 0, 0, nullptr), ParameterException);
  EXPECT_EQ(reader.getImpl(), impl);
  EXPECT_EQ(reader.getNumberOfItems(), 1);
  reader.end();
}

TEST(ReaderConstruction, ReadsAFileOfFiveHundredTables) {
  std::string content;
  for (long number = 0; number < 500; ++number) {
    content += "T" + std::to_string(number) + ",k," + std::to_string(number * 7) + "\n";
  }
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(content);
    XelCsvReader reader = openTables(env, file, isCached);
    EXPECT_EQ(reader.getNumberOfTables(), 500);
    for (long number = 0; number < 500; number += 7) {
      XelCsvTableReader byName = reader.getTableByName(("T" + std::to_string(number)).c_str());
      EXPECT_EQ(byName.getLineByNumber(0).getIntByPosition(2), number * 7);
      EXPECT_EQ(byName.getLineByNumber(0).getLineNumber(), number);
      byName.end();
    }
    XelCsvTableReader byNumber = reader.getTableByNumber(499);
    EXPECT_STREQ(byNumber.getNameOfTable(), "T499");
    byNumber.end();
    reader.end();
  }
}

// ---- Files of several tables through the handle.

TEST(ReaderOfTables, HandsOutTablesByNameAndNumber) {
  const DecimalPoint point;
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT,1.5\nXELO_DATA_SCHEMA, tool ,2\nA|NAMES,x\nA,1\nA,2\nB,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    EXPECT_EQ(reader.getEnv().getImpl(), env.get().getImpl());
    EXPECT_EQ(reader.getNumberOfTables(), 2);
    EXPECT_EQ(reader.getCsvFormat(), 1.5);
    EXPECT_EQ(reader.getFileVersion(), 2.0);
    EXPECT_STREQ(reader.getRequiredBy(), "tool");
    EXPECT_TRUE(reader.isTableExists("A"));
    EXPECT_TRUE(reader.isTableExists("XELO_CSV_FORMAT"));
    EXPECT_FALSE(reader.isTableExists("C"));
    EXPECT_FALSE(reader.isTableExists(nullptr));
    XelCsvTableReader table = reader.getTableByName("A");
    EXPECT_EQ(table.isCached(), isCached != 0);
    EXPECT_STREQ(table.getNameOfTable(), "A");
    EXPECT_EQ(table.getNumberOfItems(), 2);
    table.end();
    table = reader.getTableByNumber(0);
    EXPECT_STREQ(table.getNameOfTable(), "XELO_CSV_FORMAT");
    table.end();
    EXPECT_XEL_THROW(reader.getTableByName("C"), XelCsvReader::XelTableNotFoundException,
                     "XelCsvReader::XelTableNotFoundException : No Table having this name C.");
    for (const long number : {4L, -1L}) {
      EXPECT_XEL_THROW(reader.getTableByNumber(number), XelCsvReader::XelTableNotFoundException,
                       "XelCsvReader::XelTableNotFoundException : No Table number " + std::to_string(number) +
                           ".The number of tables is 4.");
    }
    reader.end();
  }
}

TEST(ReaderOfTables, RefusesTheOperationsOfOneTableFiles) {
  const struct {
    const char* guardName;
    std::function<void(XelCsvReader&)> run;
  } operations[] = {
      {"getLineByNumber", [](XelCsvReader& reader) { reader.getLineByNumber(0); }},
      {"getNumberOfKeys", [](XelCsvReader& reader) { reader.getLineByKey(1, "k"); }},  // asked first by getLineByKey
      {"getNumberOfKeys", [](XelCsvReader& reader) { reader.getLineByKey(0, nullptr); }},
      {"getNumberOfItems", [](XelCsvReader& reader) { reader.getNumberOfItems(); }},
      {"getNumberOfColumns", [](XelCsvReader& reader) { reader.getNumberOfColumns(); }},
      {"getFirstLine", [](XelCsvReader& reader) { reader.getFirstLine(); }},
      {"isHeadingExists", [](XelCsvReader& reader) { reader.isHeadingExists("h"); }},
      {"getNumberOfKeys", [](XelCsvReader& reader) { reader.getNumberOfKeys(); }},
      {"printKeys", [](XelCsvReader& reader) { reader.printKeys(); }},
      {"getPosition", [](XelCsvReader& reader) { reader.getPosition("h"); }},
      {"getTable", [](XelCsvReader& reader) { reader.getTable(); }},
  };
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\n");
    XelCsvReader reader = openTables(env, file, isCached);
    const std::string begin = std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName();
    for (const auto& operation : operations) {
      EXPECT_XEL_THROW(operation.run(reader), UseException,
                       begin + " is a multi-Table file. No table have been specified while trying to do a " +
                           operation.guardName + ".");
    }
    const std::string noReader = begin + " is a multi-Table file. There is no reader for unique table.";
    EXPECT_XEL_THROW(reader.getReaderForUniqueTableFile(), UseException, noReader);
    EXPECT_XEL_THROW(XelCsvReader::LineIterator(reader), UseException, noReader);
    EXPECT_EQ(reader.getNumberOfTables(), 1);
    reader.end();
  }
}

TEST(ReaderOfOneTable, RefusesTheOperationsOfFilesOfSeveralTables) {
  const struct {
    const char* guardName;
    std::function<void(XelCsvReader&)> run;
  } operations[] = {
      {"getTableByName", [](XelCsvReader& reader) { reader.getTableByName("A"); }},
      {"getTableByNumber", [](XelCsvReader& reader) { reader.getTableByNumber(0); }},
      {"getTableByName", [](XelCsvReader& reader) { reader.getTable(); }},
      {"getTableByName", [](XelCsvReader& reader) { XelCsvReader::TableIterator iterator(reader); }},
      {"getCsvFormat", [](XelCsvReader& reader) { reader.getCsvFormat(); }},
      {"getFileVersion", [](XelCsvReader& reader) { reader.getFileVersion(); }},
      {"getRequiredBy", [](XelCsvReader& reader) { reader.getRequiredBy(); }},
  };
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("A,1\n");
    XelCsvReader reader = openOneTable(env, file, isCached);
    for (const auto& operation : operations) {
      EXPECT_XEL_THROW(operation.run(reader), UseException,
                       std::string("XelCsvReader::XelIncorrectCsvReaderUseException : ") + file.getName() +
                           " is a unique-Table file. cann't use this member function " + operation.guardName +
                           " with this reader.");
    }
    EXPECT_EQ(reader.getNumberOfTables(), 1);
    EXPECT_FALSE(reader.isTableExists("A"));
    reader.end();
  }
}

// ---- One-table files through the handle.

constexpr const char* Cities =
    "|NAMES,city,year,value\n"
    "|KEYS,1,1,0\n"
    "Paris,2004,7\n"
    "# comment\n"
    " Rome ,2005,8\n"
    "Oslo,2004,Rome\n";

TEST(ReaderOfOneTable, AnswersAboutItsTable) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    EXPECT_EQ(reader.getNumberOfItems(), 3);
    EXPECT_EQ(reader.getNumberOfColumns(), 3);
    EXPECT_EQ(reader.getNumberOfKeys(), 2);
    EXPECT_TRUE(reader.isHeadingExists("city"));
    EXPECT_FALSE(reader.isHeadingExists("town"));
    EXPECT_FALSE(reader.isHeadingExists(nullptr));
    EXPECT_EQ(reader.getPosition("value"), 2);
    EXPECT_XEL_THROW(reader.getPosition("town"), XelCsvReader::XelColumnHeaderNotFoundException,
                     "XelCsvReader::XelColumnHeaderNotFoundException : Heading town not found");
    EXPECT_EQ(getOutput([&] { reader.printKeys(); }), "key 0 ----> |NAMES\nkey 1 ----> city\n");
    EXPECT_EQ(getText(reader.getFirstLine(), 3), "value");
    const XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    EXPECT_EQ(table.getNameOfTable(), nullptr);
    EXPECT_EQ(table.isCached(), isCached != 0);
    EXPECT_EQ(table.getImpl(), reader.getReaderForUniqueTableFile().getImpl());
    reader.end();

    file.write("Paris,2004\n");
    reader = openOneTable(env, file, isCached);
    EXPECT_TRUE(reader.getFirstLine().isEmpty());
    EXPECT_EQ(reader.getNumberOfKeys(), 2);  // without a key line every column is one
    EXPECT_XEL_THROW(
        reader.getPosition("city"), XelCsvReader::XelColumnHeaderNotFoundException,
        std::string("XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file ") +
            file.getName() + " ");
    EXPECT_EQ(getOutput([&] { reader.printKeys(); }), "key 0 ----> Column 0\nkey 1 ----> Column 1\n");
    reader.end();
  }
}

TEST(GetLineByNumber, CountsDataLinesFromZero) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const std::array<long, 3> lineNumbers = {2, 4, 5};
    for (const long number : {2L, 0L, 1L}) {
      EXPECT_EQ(reader.getLineByNumber(number).getLineNumber(), lineNumbers.at(static_cast<std::size_t>(number)));
    }
    EXPECT_XEL_THROW(reader.getLineByNumber(-1), LineException,
                     isCached != 0 ? "XelCsvReader::XelLineNotFoundException : No line number -1 "
                                   : "XelCsvReader::XelLineNotFoundException : No line number -1 .");
    if (isCached != 0) {
      EXPECT_XEL_THROW(reader.getLineByNumber(3), LineException,
                       "XelCsvReader::XelLineNotFoundException : No line number 3 ");
    } else {
      // Kept: past the end of a one-table file the scanning reader gives the last line, reduced to its first field.
      const XelCsvLine line = reader.getLineByNumber(3);
      EXPECT_EQ(line.getNumberOfFields(), 1);
      EXPECT_EQ(getText(line, 0), "Oslo");
    }
    reader.end();
  }
}

TEST(GetLineByNumber, DestroysTheFormerLastLine) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const Balance balance(env);
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const TestAllocator& memory = env.getAllocator();
    const long withoutLine = memory.getBlocksOut();
    reader.getLineByNumber(0);
    const long withLine = memory.getBlocksOut();
    EXPECT_GT(withLine, withoutLine);
    for (int call = 0; call < 3; ++call) {
      reader.getLineByNumber(call);
      EXPECT_EQ(memory.getBlocksOut(), withLine);
    }
    EXPECT_THROW(reader.getLineByNumber(-1), LineException);
    EXPECT_EQ(memory.getBlocksOut(), withoutLine);  // a lookup that fails ends it too
    reader.getLineByNumber(0);
    EXPECT_EQ(memory.getBlocksOut(), withLine);
    reader.end();
    EXPECT_TRUE(balance.isEven());  // the environment itself
  }
}

TEST(GetLineByKey, JoinsTheValuesOfTheKeyColumns) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    EXPECT_EQ(reader.getLineByKey(2, "Paris", "2004").getIntByHeader("value"), 7);
    EXPECT_EQ(reader.getLineByKey(2, "Rome", "2005").getIntByHeader("value"), 8);  // the line's fields are trimmed
    EXPECT_EQ(reader.getLineByKey(2, "Rome", "2005").getLineNumber(), 4);
    // Values beyond the key columns are not looked at, however many are announced.
    EXPECT_EQ(reader.getLineByKey(3, "Paris", "2004", "nothing").getLineNumber(), 2);
    EXPECT_EQ(reader.getLineByKey(1000, "Paris", "2004").getLineNumber(), 2);
    reader.end();

    // The hyphen is not escaped, so another split of the same text finds the line too.
    file.write("a-b,c\n");
    reader = openOneTable(env, file, isCached);
    EXPECT_EQ(reader.getLineByKey(2, "a-b", "c").getLineNumber(), 0);
    EXPECT_EQ(reader.getLineByKey(2, "a", "b-c").getLineNumber(), 0);
    reader.end();
  }
}

TEST(GetLineByKey, SaysHowManyKeysThereAreWhenTooFewValuesAreGiven) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    for (const long given : {1L, 0L, -1L}) {
      reader.getLineByNumber(0);
      EXPECT_XEL_THROW(reader.getLineByKey(given, "Paris"), LineException,
                       "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 2");
      EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);  // the former last line is gone
    }
    EXPECT_EQ(reader.getLineByKey(2, "Paris", "2004").getLineNumber(), 2);
    reader.end();
  }
}

TEST(GetLineByKey, NamesNoTableWhenTooFewValuesAreGivenEvenWhenTheOneTableHasAName) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    const DataFile tables("A,1,2,3\n");
    XelCsvReader reader = openOneTable(env, file, isCached);
    XelCsvReader other = openTables(env, tables, isCached);
    XelCsvTableReader named = other.getTableByName("A");
    XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    table.copy(named);
    EXPECT_XEL_THROW(
        table.getLineByKey(1, "1"), LineException,
        "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 3 for table A");
    EXPECT_XEL_THROW(reader.getLineByKey(1, "1"), LineException,
                     "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : 3");
    table.end();
    named.end();
    reader.end();
    other.end();
  }
}

TEST(GetLineByKey, NamesTheKeyThatItDidNotFind) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    const std::string begin = "XelCsvReader::XelLineNotFoundException : No line having key ";
    const std::string end = isCached != 0 ? " ." : ".";
    reader.getLineByNumber(0);
    EXPECT_XEL_THROW(reader.getLineByKey(2, "Paris", "2005"), LineException, begin + "Paris-2005" + end);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    EXPECT_XEL_THROW(reader.getLineByKey(2, "", ""), LineException, begin + "-" + end);
    EXPECT_XEL_THROW(reader.getLineByKey(2, " Paris", "2004"), LineException, begin + " Paris-2004" + end);
    EXPECT_XEL_THROW(reader.getLineByKey(2, "%s%n", "%d"), LineException, begin + "%s%n-%d" + end);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    reader.end();
  }
}

TEST(GetLineByKey, FindsNoLineForANullValue) {
  const char* none = nullptr;
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    const std::string message = isCached != 0 ? "XelCsvReader::XelLineNotFoundException : No line having key  ."
                                              : "XelCsvReader::XelLineNotFoundException : No line having key .";
    reader.getLineByNumber(0);
    EXPECT_XEL_THROW(reader.getLineByKey(2, none, "2004"), LineException, message);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    EXPECT_XEL_THROW(reader.getLineByKey(2, "Paris", none), LineException, message);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    EXPECT_EQ(reader.getLineByKey(3, "Paris", "2004", none).getLineNumber(), 2);  // not a value of a key column
    reader.end();
  }
}

TEST(GetLineByKey, TakesValuesThatPointIntoTheFormerLastLine) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const XelCsvLine oslo = reader.getLineByKey(2, "Oslo", "2004");
    const XelCsvLine rome = reader.getLineByKey(2, oslo.getStringByHeader("value"), "2005");
    EXPECT_EQ(rome.getLineNumber(), 4);
    const XelCsvLine again = reader.getLineByKey(2, rome.getStringByHeader("city"), rome.getStringByHeader("year"));
    EXPECT_EQ(again.getLineNumber(), 4);
    // Also when nothing is found.
    const std::string end = isCached != 0 ? " ." : ".";
    EXPECT_XEL_THROW(reader.getLineByKey(2, again.getStringByHeader("city"), again.getStringByHeader("value")),
                     LineException, "XelCsvReader::XelLineNotFoundException : No line having key Rome-8" + end);
    reader.end();
  }
}

TEST(GetLineByKey, LooksKeysOfAnyLengthUp) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const std::string value(5000, 'v');
    // Each key line repeats the positions, so the key of the line is four times its value and longer than any line.
    const DataFile file("|KEYS,1\n|KEYS,1\n|KEYS,1\n|KEYS,1\nw,,,\n" + value + ",,,\n");
    XelCsvReader reader = openOneTable(env, file, isCached);
    EXPECT_EQ(reader.getNumberOfKeys(), 4);
    const char* text = value.c_str();
    EXPECT_EQ(reader.getLineByKey(4, text, text, text, text).getLineNumber(), 5);
    EXPECT_EQ(reader.getLineByKey(4, "w", "w", "w", "w").getLineNumber(), 4);
    const std::string longValue(20000, 'v');
    EXPECT_XEL_THROW(reader.getLineByKey(4, longValue.c_str(), text, text, longValue.c_str()), LineException,
                     ("XelCsvReader::XelLineNotFoundException : No line having key " + longValue).substr(0, 499));
    reader.end();
  }
}

TEST(GetLineByKey, HasTheEmptyKeyForATableWithoutColumns) {
  // A heading line of its marker alone leaves no column to be a key.
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("|NAMES\na,b\n");
    XelCsvReader reader = openOneTable(env, file, isCached);
    EXPECT_EQ(reader.getNumberOfKeys(), 0);
    EXPECT_EQ(reader.getLineByKey(0, nullptr).getLineNumber(), 1);
    EXPECT_EQ(reader.getLineByKey(1, "anything").getLineNumber(), 1);
    reader.end();
  }
}

TEST(ReaderOfOneTable, ReportsAFileThatIsGoneAndGoesOnWhenItIsBack) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    file.remove();
    reader.getNumberOfKeys();
    EXPECT_XEL_THROW(reader.getLineByNumber(0), FileException, noSuchFile(file.getName()));
    EXPECT_XEL_THROW(reader.getLineByKey(2, "Paris", "2004"), FileException, noSuchFile(file.getName()));
    EXPECT_XEL_THROW(XelCsvReader::LineIterator(reader), FileException, noSuchFile(file.getName()));
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    file.write(Cities);
    EXPECT_EQ(reader.getLineByKey(2, "Paris", "2004").getLineNumber(), 2);
    reader.end();
  }
}

// ---- Handles.

static_assert(std::is_nothrow_move_constructible_v<XelCsvReader> && std::is_nothrow_move_assignable_v<XelCsvReader>);
static_assert(std::is_trivially_destructible_v<XelCsvReader>);
static_assert(sizeof(XelCsvReader) == 3 * sizeof(void*), "the reader, whether it is cached, and the last line");

TEST(ReaderHandle, IsEmptyUntilItGetsAReader) {
  XelCsvReader reader;
  EXPECT_TRUE(reader.isEmpty());
  EXPECT_EQ(reader.getImpl(), nullptr);
  reader.end();
  reader.end();
  EXPECT_TRUE(reader.isEmpty());
  EXPECT_TRUE(XelCsvReader(static_cast<XelCsvReaderI*>(nullptr)).isEmpty());
  XelCsvReader copy(reader);
  EXPECT_TRUE(copy.isEmpty());
  XelCsvReader moved(std::move(copy));
  EXPECT_TRUE(moved.isEmpty());
}

TEST(ReaderHandle, EndsTwiceWithoutHarm) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const long before = env.getAllocator().getBlocksOut();
    const DataFile file("A,1\n");
    XelCsvReader reader = open(env, file.getName(), kind);
    EXPECT_FALSE(reader.isEmpty());
    EXPECT_GT(env.getAllocator().getBlocksOut(), before);
    reader.end();
    EXPECT_TRUE(reader.isEmpty());
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
    reader.end();
    EXPECT_TRUE(reader.isEmpty());
  }
}

TEST(ReaderHandle, DestroysNothingWhenItIsDestroyed) {
  TestEnv env;
  const DataFile file(Cities);
  XelCsvReaderI* impl = nullptr;
  {
    const XelCsvReader reader(env, file.getName());
    impl = reader.getImpl();
  }
  XelCsvReader reader(impl);
  EXPECT_EQ(reader.getNumberOfItems(), 3);
  reader.end();
}

TEST(ReaderHandle, CopiesShareTheReaderAndNotTheLastLine) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long withoutLine = env.getAllocator().getBlocksOut();
    const XelCsvLine paris = reader.getLineByNumber(0);
    const long withLine = env.getAllocator().getBlocksOut();
    XelCsvReader copy(reader);
    EXPECT_EQ(copy.getImpl(), reader.getImpl());
    EXPECT_EQ(env.getAllocator().getBlocksOut(), withLine);
    copy.getLineByNumber(1);
    copy.getLineByNumber(2);
    EXPECT_EQ(getText(paris, 0), "Paris");
    // Assigning ends the target's own last line and takes no line over.
    copy = reader;
    EXPECT_EQ(env.getAllocator().getBlocksOut(), withLine);
    EXPECT_EQ(getText(paris, 0), "Paris");
    // Assigning to itself changes nothing.
    XelCsvReader& self = reader;
    reader = self;
    EXPECT_EQ(getText(paris, 0), "Paris");
    reader = XelCsvReader();
    EXPECT_TRUE(reader.isEmpty());
    EXPECT_EQ(env.getAllocator().getBlocksOut(), withoutLine);  // its last line went, the shared reader stayed
    EXPECT_EQ(copy.getNumberOfItems(), 3);
    copy.end();
  }
}

TEST(ReaderHandle, MovingTakesTheLastLineAlong) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    const XelCsvReaderI* impl = reader.getImpl();
    const long withoutLine = env.getAllocator().getBlocksOut();
    const XelCsvLine paris = reader.getLineByNumber(0);
    XelCsvReader moved(std::move(reader));
    EXPECT_TRUE(reader.isEmpty());  // NOLINT(bugprone-use-after-move): a moved handle is empty
    reader.end();
    EXPECT_EQ(moved.getImpl(), impl);
    EXPECT_EQ(getText(paris, 0), "Paris");
    XelCsvReader other(moved);
    other.getLineByNumber(1);
    other = std::move(moved);      // the line of other goes, that of moved comes
    EXPECT_TRUE(moved.isEmpty());  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(getText(paris, 0), "Paris");
    XelCsvReader& self = other;
    other = std::move(self);
    EXPECT_EQ(other.getImpl(), impl);
    EXPECT_EQ(getText(paris, 0), "Paris");
    EXPECT_THROW(other.getLineByNumber(-1), LineException);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), withoutLine);
    other.end();
  }
}

TEST(ReaderHandle, KeepsItsLinesApartFromThoseOfTheTable) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    const XelCsvLine ofReader = reader.getLineByNumber(0);
    const XelCsvLine ofTable = table.getLineByNumber(1);
    table.getLineByNumber(2);
    EXPECT_EQ(getText(ofReader, 0), "Paris");
    static_cast<void>(ofTable);
    table.end();  // lent: the handle is let go, the table stays with the reader
    EXPECT_TRUE(table.isEmpty());
    EXPECT_EQ(reader.getNumberOfItems(), 3);
    EXPECT_EQ(getText(reader.getLineByNumber(2), 0), "Oslo");
    reader.end();
  }
}

// Calls the operations in every order, each time on things newly made.
template <class Make>
void inEveryOrder(std::size_t count, Make make) {
  std::vector<std::size_t> order(count);
  for (std::size_t index = 0; index < count; ++index) order[index] = index;
  do {
    SCOPED_TRACE(testing::PrintToString(order));
    TestEnv env;
    const long before = env.getAllocator().getBlocksOut();
    std::vector<std::function<void()>> ends = make(env.get());
    ASSERT_EQ(ends.size(), count);
    for (const std::size_t index : order) ends[index]();
    EXPECT_EQ(env.getAllocator().getBlocksOut(), before);
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST(Handles, OfSeveralTablesEndInAnyOrder) {
  const DataFile file("A|NAMES,x\nA,1\nA,2\nB,1\n");
  for (const long isCached : BothReaders) {
    for (const bool isDestroyed : {false, true}) {  // iterators end, or are destroyed
      inEveryOrder(5, [&](XelEnv env) {
        auto reader = std::make_shared<XelCsvReader>(openTables(env, file, isCached));
        auto table = std::make_shared<XelCsvTableReader>(reader->getTableByName("A"));
        auto line = std::make_shared<XelCsvLine>();
        line->copy(table->getLineByNumber(1));
        auto lines = std::make_shared<std::unique_ptr<XelCsvTableReader::LineIterator>>(
            std::make_unique<XelCsvTableReader::LineIterator>(*table));
        ++**lines;
        auto tables = std::make_shared<std::unique_ptr<XelCsvReader::TableIterator>>(
            std::make_unique<XelCsvReader::TableIterator>(*reader));
        const auto finish = [isDestroyed](auto& iterator) {
          if (!isDestroyed) iterator->end();
          iterator.reset();
        };
        return std::vector<std::function<void()>>{[=] { reader->end(); }, [=] { table->end(); }, [=] { line->end(); },
                                                  [=] { finish(*lines); }, [=] { finish(*tables); }};
      });
    }
  }
}

TEST(Handles, OfOneTableEndInAnyOrder) {
  const DataFile file(Cities);
  for (const long isCached : BothReaders) {
    inEveryOrder(4, [&](XelEnv env) {
      auto reader = std::make_shared<XelCsvReader>(openOneTable(env, file, isCached));
      reader->getLineByNumber(0);
      auto line = std::make_shared<XelCsvLine>();
      line->copy(reader->getLineByNumber(1));
      auto heading = std::make_shared<XelCsvLine>();
      heading->copy(reader->getFirstLine());
      auto lines = std::make_shared<std::unique_ptr<XelCsvReader::LineIterator>>(
          std::make_unique<XelCsvReader::LineIterator>(*reader));
      return std::vector<std::function<void()>>{[=] { reader->end(); }, [=] { line->end(); }, [=] { heading->end(); },
                                                [=] { lines->reset(); }};
    });
  }
}

TEST(Handles, OfTheTableOfAOneTableFileIsEndedBeforeOrWithTheReader) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const Balance balance(env);
    const DataFile file(Cities);
    XelCsvReader reader = openOneTable(env, file, isCached);
    XelCsvTableReader table = reader.getReaderForUniqueTableFile();
    table.getLineByNumber(0);
    table.end();
    table.end();
    reader.getLineByNumber(0);
    reader.end();
    EXPECT_TRUE(balance.isEven());
  }
}

#ifndef NDEBUG
TEST(ReaderHandleDeathTest, UsingAnEmptyHandleIsAnAssertion) {
  XelCsvReader empty;
  EXPECT_XEL_ASSERTION(empty.getTableByName("A"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getTableByNumber(0), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getTable(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getReaderForUniqueTableFile(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getCsvFormat(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFileVersion(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getRequiredBy(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfTables(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.isTableExists("A"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getLineByNumber(0), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getLineByKey(1, "k"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfItems(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfColumns(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getFirstLine(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.isHeadingExists("h"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getNumberOfKeys(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.printKeys(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getPosition("h"), "impl != nullptr");
  EXPECT_XEL_ASSERTION(empty.getEnv(), "impl != nullptr");
  EXPECT_XEL_ASSERTION(XelCsvReader::TableIterator{empty}, "reader != nullptr");
  EXPECT_XEL_ASSERTION(XelCsvReader::LineIterator{empty}, "impl != nullptr");
}

TEST(ReaderHandleDeathTest, UsingAnEndedHandleIsAnAssertion) {
  for (const Kind& kind : AllKinds) {
    SCOPED_TRACE(kind.name);
    TestEnv env;
    const DataFile file("A,1\n");
    XelCsvReader reader = open(env, file.getName(), kind);
    reader.end();
    EXPECT_XEL_ASSERTION(reader.getNumberOfTables(), "impl != nullptr");
  }
}
#endif

// ---- Failing allocations.

TEST(Reader, GivesEverythingBackWhenMemoryEnds) {
  const DataFile cities(Cities);
  const DataFile tables("XELO_CSV_FORMAT,1\nXELO_DATA_SCHEMA,tool,2\nA|NAMES,x\nA,1\nA,2\nB,1\n");
  for (const long isCached : BothReaders) {
    const long injected = forEachFailingAllocation([&](XelEnv env) {
      XelCsvReader reader = openOneTable(env, cities, isCached);
      const EndGuard<XelCsvReader> guard(reader);
      EXPECT_EQ(reader.getLineByNumber(1).getLineNumber(), 4);
      EXPECT_EQ(reader.getLineByKey(2, "Oslo", "2004").getLineNumber(), 5);
      long count = 0;
      for (XelCsvReader::LineIterator it(reader); it.ok(); ++it) ++count;
      EXPECT_EQ(count, 3);
    });
    EXPECT_GT(injected, 60);
    forEachFailingAllocation([&](XelEnv env) {
      XelCsvReader reader = openTables(env, tables, isCached);
      const EndGuard<XelCsvReader> guard(reader);
      XelCsvTableReader byName = reader.getTableByName("A");
      const EndGuard<XelCsvTableReader> nameGuard(byName);
      XelCsvTableReader byNumber = reader.getTableByNumber(3);
      const EndGuard<XelCsvTableReader> numberGuard(byNumber);
      EXPECT_EQ(byName.getNumberOfItems(), 2);
      EXPECT_EQ(byNumber.getNumberOfItems(), 1);
      EXPECT_EQ(reader.getCsvFormat(), 1.0);
      EXPECT_EQ(reader.getFileVersion(), 2.0);
      EXPECT_STREQ(reader.getRequiredBy(), "tool");
    });
  }
}

TEST(Reader, AnswersRightAfterEveryFailingAllocation) {
  const DataFile file(Cities);
  for (const long isCached : BothReaders) {
    TestEnv env;
    XelCsvReader reader = openOneTable(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    const std::function<long()> lookups[] = {
        [&] { return reader.getLineByNumber(2).getLineNumber(); },
        [&] { return reader.getLineByKey(2, "Oslo", "2004").getLineNumber(); },
        [&] {
          XelCsvReader::LineIterator it(reader);
          ++it;
          ++it;
          return (*it).getLineNumber();
        },
    };
    for (const auto& lookup : lookups) {
      for (const bool always : {false, true}) {
        for (long countdown = 0;; ++countdown) {
          reader.getLineByNumber(0);
          env.getAllocator().failAfter(countdown, always);
          bool isFailed = false;
          try {
            EXPECT_EQ(lookup(), 5);
          } catch (const std::bad_alloc&) {
            isFailed = true;
          }
          const bool isInjected = env.getAllocator().getFailures() > 0;
          env.getAllocator().neverFail();
          ASSERT_EQ(isFailed, isInjected);
          EXPECT_EQ(lookup(), 5);
          EXPECT_THROW(reader.getLineByNumber(-1), LineException);  // no line is left
          ASSERT_EQ(env.getAllocator().getBlocksOut(), blocks);
          if (!isInjected) {
            EXPECT_GT(countdown, 0);
            break;
          }
        }
      }
    }
    reader.end();
  }
}

}  // namespace

// The limits that are cheap to reach: long names, long numbers, long file names, many readers at once. The dear ones,
// gigabytes and millions, are in limits/.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <deque>
#include <filesystem>
#include <fstream>
#include <limits>
#include <utility>
#include <vector>

#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/OpenTable.h"

namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t Long = 9000;
constexpr std::size_t LongestPiece = 9999;
constexpr int ReaderCount = 1000;
constexpr int CopyCount = 1000;

// A text of n equal characters but for its last, by which such texts differ.
std::string longText(char character, char last = '.', std::size_t size = Long) {
  return std::string(size - 1, character) + last;
}

std::string cutToMessage(const std::string& text) { return text.substr(0, XelMessageSize - 1); }

}  // namespace

// ---- Names, headings and keys of 9000 bytes.

TEST(Limits, ATablesNameMayFillNearlyAllOfALine) {
  const std::string name = longText('n');
  const std::string other = longText('n', '!');
  const std::string content = name + "|KEYS,1,0\n" + name + ",a,1\n" + name + ",b,2\n" + other + ",c,3\n";
  forBothKinds([&](Kind kind) {
    OpenTable open(content, kind, name.c_str());
    EXPECT_EQ(open.reader.getNumberOfTables(), 2);
    EXPECT_TRUE(open.reader.isTableExists(other.c_str()));
    EXPECT_FALSE(open.reader.isTableExists(longText('n', '?').c_str()));
    EXPECT_EQ(open.table.getNameOfTable(), name);
    EXPECT_EQ(open.table.getNumberOfItems(), 2);
    EXPECT_EQ(open.getByNumber(1), "2: [" + name + "][b][2]");
    EXPECT_EQ(open.getByKey("a"), "1: [" + name + "][a][1]");
    EXPECT_EQ(open.getAll(), (Lines{"1: [" + name + "][a][1]", "2: [" + name + "][b][2]"}));
    EXPECT_XEL_THROW(open.table.getLineByNumber(-1), XelCsvReader::XelLineNotFoundException,
                     cutToMessage("XelCsvReader::XelLineNotFoundException : No line number -1 in table " + name));
    EXPECT_XEL_THROW(open.table.getLineByKey(1, "c"), XelCsvReader::XelLineNotFoundException,
                     cutToMessage("XelCsvReader::XelLineNotFoundException : No line having key c in table " + name));
    EXPECT_XEL_THROW(open.reader.getTableByName(longText('n', '?').c_str()), XelCsvReader::XelTableNotFoundException,
                     cutToMessage("XelCsvReader::XelTableNotFoundException : No Table having this name " + name));
  });
}

TEST(Limits, AHeadingMayFillNearlyAllOfALine) {
  const std::string heading = longText('h');
  forBothKinds([&](Kind kind) {
    OpenTable open("|NAMES,a," + heading + "\nx,7\n", kind);
    EXPECT_EQ(open.table.getPosition(heading.c_str()), 1);
    EXPECT_TRUE(open.table.isHeadingExists(heading.c_str()));
    EXPECT_FALSE(open.table.isHeadingExists(longText('h', '!').c_str()));
    EXPECT_EQ(open.table.getLineByNumber(0).getIntByHeader(heading.c_str()), 7);
    EXPECT_XEL_THROW(
        open.table.getPosition(longText('h', '!').c_str()), XelCsvReader::XelColumnHeaderNotFoundException,
        cutToMessage("XelCsvReader::XelColumnHeaderNotFoundException : Heading " + heading + " not found"));
  });
}

TEST(Limits, AKeyValueMayFillNearlyAllOfALine) {
  const std::string first = longText('k', '1');
  const std::string second = longText('k', '2');
  forBothKinds([&](Kind kind) {
    OpenTable open("|KEYS,1,0\n" + first + ",a\n" + second + ",b\n", kind);
    EXPECT_EQ(open.getByKey(first.c_str()), "1: [" + first + "][a]");
    EXPECT_EQ(open.getByKey(second.c_str()), "2: [" + second + "][b]");
    EXPECT_EQ(open.getByNumber(1), "2: [" + second + "][b]");
    EXPECT_EQ(open.getAll(), (Lines{"1: [" + first + "][a]", "2: [" + second + "][b]"}));
    EXPECT_XEL_THROW(open.table.getLineByKey(1, longText('k', '3').c_str()), XelCsvReader::XelLineNotFoundException,
                     cutToMessage("XelCsvReader::XelLineNotFoundException : No line having key " + first));
  });
}

TEST(Limits, ADuplicatedKeyOf9000BytesIsNamedAsFarAsTheMessageGoes) {
  const std::string key = longText('k');
  TestEnv env;
  const DataFile file("T|KEYS,1,0\nT," + key + ",a\nT," + key + ",b\n");
  XelCsvReader reader = openReader(env, file, Kind::Cached, true);
  EXPECT_XEL_THROW(reader.getTableByName("T"), XelCsvReader::XelDuplicatedLineException,
                   cutToMessage("XelCsvReader::XelDuplicatedLineException : Another line with key  " + key));
  reader.end();
}

TEST(Limits, KeyValuesMayBeLongerTogetherThanAnyLine) {
  const std::string first = longText('a');
  const std::string second = longText('b');
  forBothKinds([&](Kind kind) {
    OpenTable open("|KEYS,1,1\na,b\n", kind);
    EXPECT_XEL_THROW(open.table.getLineByKey(2, first.c_str(), second.c_str()), XelCsvReader::XelLineNotFoundException,
                     cutToMessage("XelCsvReader::XelLineNotFoundException : No line having key " + first));
    EXPECT_EQ(open.getByKey("a", "b"), "1: [a][b]");
  });
}

// ---- Pieces of long lines.

TEST(Limits, PiecesOfALongLineAreKeysOf9999Bytes) {
  const std::string first = longText('x', '1', LongestPiece);
  const std::string second = longText('x', '2', LongestPiece);
  const std::string third = longText('x', '3', LongestPiece - 1);
  forBothKinds([&](Kind kind) {
    // The fourth line ends with its own line feed; behind pieces alone that is an empty line, which counts as a line.
    OpenTable open("|KEYS,1\n" + first + second + third + "\nlast\n", kind);
    EXPECT_EQ(open.table.getNumberOfItems(), 4);
    EXPECT_EQ(open.getByKey(first.c_str()), "1: [" + first + "]");
    EXPECT_EQ(open.getByKey(second.c_str()), "2: [" + second + "]");
    EXPECT_EQ(open.getByKey(third.c_str()), "3: [" + third + "]");
    EXPECT_EQ(open.getByNumber(3), "4: [last]");
  });
}

TEST(Limits, EqualPiecesOfALongLineAreEqualKeysAndEndTheIndexOfAOneTableFile) {
  const std::string piece(LongestPiece, 'x');
  const std::string content = "|KEYS,1\n" + piece + piece + "end\nlast\n";
  OpenTable cached(content, Kind::Cached);
  EXPECT_EQ(cached.table.getNumberOfItems(), 2);
  EXPECT_EQ(cached.getByNumber(1), "1: [" + piece + "]");
  EXPECT_EQ(cached.getByKey("last"),
            "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line having key last .");
  OpenTable scanning(content, Kind::Scanning);
  EXPECT_EQ(scanning.table.getNumberOfItems(), 4);
  EXPECT_EQ(scanning.getByNumber(1), "2: [" + piece + "]");
  EXPECT_EQ(scanning.getByKey("last"), "4: [last]");
}

TEST(Limits, EqualPiecesOfALongLineAreDuplicatedLinesOfATable) {
  const std::string key(LongestPiece - 2, 'x');
  const std::string piece = "T," + key;
  const std::string content = "T|KEYS,1\n" + piece + piece + "\nT,last\n";
  EXPECT_XEL_THROW(OpenTable(content, Kind::Cached, "T"), XelCsvReader::XelDuplicatedLineException,
                   cutToMessage("XelCsvReader::XelDuplicatedLineException : Another line with key  " + key));
  OpenTable scanning(content, Kind::Scanning, "T");
  EXPECT_EQ(scanning.table.getNumberOfItems(), 3);
  EXPECT_EQ(scanning.getByKey(key.c_str()), "1: [T][" + key + "]");
  EXPECT_EQ(scanning.getByKey("last"), "4: [T][last]");
}

// ---- Numbers.

TEST(Limits, NumbersMayHaveThousandsOfDigits) {
  const DecimalPoint point;
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::string nines(Long, '9');
  const std::string zeros(Long - 10, '0');
  struct Row {
    std::string text;
    double asFloat;
    bool fits;
    long asInt;
  };
  const std::vector<Row> rows = {
      {nines, infinity, false, 0},
      {"-" + nines, -infinity, false, 0},
      {zeros + "7", 7.0, true, 7},
      {"-" + zeros + "2147483648", -2147483648.0, true, -2147483648L},
      {zeros + "2147483648", 2147483648.0, false, 0},
      {"0." + zeros + "1", 0.0, true, 0},
      {"1." + std::string(Long, '3'), 4.0 / 3.0, true, 1},
      {"1" + zeros + "e-" + std::to_string(zeros.size()), 1.0, false, 0},
      {"2147483647." + nines, 2147483648.0, true, 2147483647},
  };
  std::string content;
  for (const Row& row : rows) content += row.text + "\n";
  TestEnv env;
  const DataFile file(content);
  XelCsvReader reader = openReader(env, file, Kind::Scanning, false);
  long number = 0;
  for (XelCsvReader::LineIterator it(reader); it.ok(); ++it, ++number) {
    SCOPED_TRACE(number);
    const Row& row = rows[static_cast<std::size_t>(number)];
    const XelCsvLine line = *it;
    EXPECT_EQ(line.getFloatByPosition(0), row.asFloat);
    EXPECT_EQ(line.getFloatByPositionOrDefaultValue(0, 5.0), row.asFloat);
    if (row.fits) {
      EXPECT_EQ(line.getIntByPosition(0), row.asInt);
      EXPECT_EQ(line.getIntByPositionOrDefaultValue(0, 5), row.asInt);
    } else {
      const std::string message =
          "XelCsvReader::XelOverflowException : OVERFLOW while reading field 0  of line number " +
          std::to_string(number) + " as integer";
      EXPECT_XEL_THROW(line.getIntByPosition(0), XelCsvReader::XelOverflowException, message);
      EXPECT_XEL_THROW(line.getIntByPositionOrDefaultValue(0, 5), XelCsvReader::XelOverflowException, message);
    }
  }
  EXPECT_EQ(number, static_cast<long>(rows.size()));
  reader.end();
}

TEST(Limits, PositionsAndNumbersAtTheEndsOfTheirType) {
  forBothKinds([&](Kind kind) {
    OpenTable open("T|KEYS,1,0\nT,a,1\nT,b,2\nU,c,3\n", kind, "T");
    const std::string period = kind == Kind::Cached ? "" : ".";
    for (const long end : {LONG_MAX, LONG_MIN}) {
      EXPECT_XEL_THROW(
          open.table.getLineByNumber(end), XelCsvReader::XelLineNotFoundException,
          "XelCsvReader::XelLineNotFoundException : No line number " + std::to_string(end) + " in table T" + period);
      EXPECT_XEL_THROW(open.reader.getTableByNumber(end), XelCsvReader::XelTableNotFoundException,
                       "XelCsvReader::XelTableNotFoundException : No Table number " + std::to_string(end) +
                           ".The number of tables is 2.");
      EXPECT_XEL_THROW(open.table.getLineByNumber(0).getStringByPosition(end), XelCsvReader::XelFieldNotFoundException,
                       "XelCsvReader::XelFieldNotFoundException : Field Not Found at position " + std::to_string(end) +
                           " in line number 1, in table T while trying getStringByPosition");
    }
  });
}

// A table that is scanned gives its last line, cut to its first field, for every number behind it; no number is too
// large to be answered at once.
TEST(Limits, TheLargestLineNumberOfAScannedFileIsAnsweredAtOnce) {
  OpenTable open("|KEYS,1,0\na,1\nb,2\n", Kind::Scanning);
  EXPECT_EQ(open.getByNumber(LONG_MAX), "3: [b]");
  EXPECT_EQ(
      open.getByNumber(LONG_MIN),
      "XelLineNotFoundException | XelCsvReader::XelLineNotFoundException : No line number -9223372036854775808 .");
}

// ---- File names.

namespace {

// The path of a file in nested directories under top, size bytes long.
std::string makeLongPath(const std::string& top, std::size_t size) {
  constexpr std::size_t component = 200;
  std::string path = top;
  while (size - path.size() > 2 * component) path += "/" + std::string(component, 'd');
  std::filesystem::create_directories(path);
  const std::size_t rest = size - path.size() - 1;
  if (rest <= NAME_MAX) return path + "/" + std::string(rest, 'f');
  path += "/" + std::string(component - 1, 'd');
  std::filesystem::create_directories(path);
  return path + "/" + std::string(size - path.size() - 1, 'f');
}

}  // namespace

TEST(Limits, AFileNameMayBeAsLongAsThatOfAnyFile) {
  const DataDirectory directory;
  const std::string path = makeLongPath(directory.getName(), PATH_MAX - 1);
  ASSERT_EQ(path.size(), static_cast<std::size_t>(PATH_MAX - 1));
  std::ofstream(path) << "T|KEYS,1,0\nT,a,1\nT,b,2\n";
  forBothKinds([&](Kind kind) {
    TestEnv env;
    const long isCached = kind == Kind::Cached ? 1 : 0;
    XelCsvReader reader(env, path.c_str(), 1, 0, ",", '.', '"', '#', isCached);
    XelCsvTableReader table = reader.getTableByName("T");
    EXPECT_EQ(textOf(table.getLineByNumber(0)), "1: [T][a][1]");
    EXPECT_EQ(textOf(table.getLineByKey(1, "b")), "2: [T][b][2]");
    EXPECT_XEL_THROW(
        reader.getReaderForUniqueTableFile(), XelCsvReader::XelIncorrectCsvReaderUseException,
        cutToMessage("XelCsvReader::XelIncorrectCsvReaderUseException : " + path + " is a multi-Table file."));
    table.end();
    reader.end();
  });
}

// Kept: of a name that is too long it is said that too many files are open.
TEST(Limits, ALongerFileNameIsRefused) {
  TestEnv env;
  const DataDirectory directory;
  const std::string text = " : The maximum allowable number of files is currently open in the system.";
  const std::string component = std::string(directory.getName()) + "/" + std::string(NAME_MAX + 1, 'f');
  EXPECT_XEL_THROW(XelCsvReader(env, component.c_str()), XelCsvReader::XelFileNotFoundException,
                   "While trying to open file " + component + text);
  std::string path;
  while (path.size() < PATH_MAX) path += "/d";
  EXPECT_XEL_THROW(XelCsvReader(env, path.c_str()), XelCsvReader::XelFileNotFoundException,
                   cutToMessage("While trying to open file " + path + text));
}

// ---- Many readers, iterators and copies.

namespace {

// Lets the process open so many files more, until the end of the scope.
class FewDescriptors {
 public:
  explicit FewDescriptors(int more) {
    getrlimit(RLIMIT_NOFILE, &former);
    // The descriptors that come next: the limit is on their numbers, and there may be gaps.
    std::vector<int> next;
    for (int count = 0; count < more; ++count) next.push_back(dup(STDIN_FILENO));
    rlimit few = former;
    few.rlim_cur = static_cast<rlim_t>(next.back()) + 1;
    setrlimit(RLIMIT_NOFILE, &few);
    for (const int descriptor : next) close(descriptor);
  }
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &former); }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;

 private:
  rlimit former{};
};

}  // namespace

TEST(Limits, AThousandReadersOfAFileHoldNoDescriptor) {
  const DataFile file("T|KEYS,1,0\nT,a,1\nT,b,2\n");
  forBothKinds([&](Kind kind) {
    TestEnv env;
    const FewDescriptors few(1);
    const long openFiles = countOpenFiles();
    std::vector<XelCsvReader> readers;
    std::vector<XelCsvTableReader> tables;
    for (int count = 0; count < ReaderCount; ++count) {
      readers.push_back(openReader(env, file, kind, true));
      tables.push_back(readers.back().getTableByName("T"));
    }
    for (XelCsvTableReader& table : tables) {
      ASSERT_EQ(textOf(table.getLineByNumber(0)), "1: [T][a][1]");
      ASSERT_EQ(textOf(table.getLineByKey(1, "b")), "2: [T][b][2]");
    }
    EXPECT_EQ(countOpenFiles(), openFiles);
    for (XelCsvTableReader& table : tables) table.end();
    for (XelCsvReader& reader : readers) reader.end();
  });
}

TEST(Limits, EachIteratorHoldsADescriptorAndTheOneTooManyIsTold) {
  constexpr int free = 5;
  forBothKinds([&](Kind kind) {
    OpenTable open("|KEYS,1,0\na,1\nb,2\n", kind);
    const std::string tooMany = "while trying to open file " + std::string(open.file.getName()) +
                                " : Too many open files. No more file descriptors are available, so no more files can "
                                "be opened.";
    const FewDescriptors few(free);
    std::deque<XelCsvTableReader::LineIterator> iterators;
    for (int count = 0; count < free; ++count) iterators.emplace_back(open.table);
    EXPECT_XEL_THROW(iterators.emplace_back(open.table), XelCsvReader::XelFileNotFoundException, tooMany);
    EXPECT_XEL_THROW(open.table.getLineByKey(1, "a"), XelCsvReader::XelFileNotFoundException, tooMany);
    EXPECT_XEL_THROW(open.table.getLineByNumber(0), XelCsvReader::XelFileNotFoundException, tooMany);
    for (XelCsvTableReader::LineIterator& it : iterators) EXPECT_EQ(textOf(*++it), "2: [b][2]");
    iterators.pop_back();
    EXPECT_EQ(open.getByKey("a"), "1: [a][1]");
    EXPECT_EQ(open.getByNumber(0), "1: [a][1]");
  });
}

TEST(Limits, ACopyOfACopyOfACopyIsStillTheTable) {
  forBothKinds([&](Kind kind) {
    OpenTable open("T|NAMES,id,value\nT|KEYS,1,0\nT,a,1\nT,b,2\n", kind, "T");
    XelCsvTableReader last;
    last.copy(open.table);
    for (int count = 1; count < CopyCount; ++count) {
      XelCsvTableReader next;
      next.copy(last);
      last.end();
      last = std::move(next);
    }
    EXPECT_EQ(last.getNumberOfItems(), 2);
    EXPECT_EQ(last.getPosition("value"), 2);
    EXPECT_EQ(textOf(last.getLineByNumber(1)), "3: [T][b][2]");
    EXPECT_EQ(textOf(last.getLineByKey(1, "a")), "2: [T][a][1]");
    last.end();
  });
}

TEST(Limits, AThousandCopiesOfATableLiveSideBySide) {
  forBothKinds([&](Kind kind) {
    OpenTable open("T|KEYS,1,0\nT,a,1\nT,b,2\n", kind, "T");
    std::deque<XelCsvTableReader> copies(1);
    copies.front().copy(open.table);
    while (copies.size() < CopyCount) {
      XelCsvTableReader next;
      next.copy(copies.back());
      copies.push_back(std::move(next));
    }
    for (XelCsvTableReader& copy : copies) ASSERT_EQ(textOf(copy.getLineByKey(1, "b")), "2: [T][b][2]");
    for (XelCsvTableReader& copy : copies) copy.end();
    EXPECT_EQ(open.getByKey("b"), "2: [T][b][2]");
  });
}

TEST(Limits, ACopyOfACopyOfALineIsStillTheLine) {
  OpenTable open("|NAMES,id,value\na,1\nb,2\n", Kind::Cached);
  XelCsvLine last;
  last.copy(open.table.getLineByNumber(1));
  for (int count = 1; count < CopyCount; ++count) {
    XelCsvLine next;
    next.copy(last);
    last.end();
    last = next;
  }
  EXPECT_EQ(textOf(last), "2: [b][2]");
  EXPECT_EQ(last.getIntByHeader("value"), 2);
  last.end();
}

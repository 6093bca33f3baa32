// One line of more than a gigabyte.
#include <gtest/gtest.h>

#include <memory>

#include "tests/limits/Figures.h"
#include "tests/limits/LargeFile.h"
#include "tests/support/ExpectThrow.h"

namespace {

constexpr long PieceSize = 9999;
constexpr long PieceCount = (1L << 30) / PieceSize + 1;
constexpr long KeyDigits = 8;
constexpr long MostScanningBytes = 1L << 20;
constexpr long MostCachedBytes = MostScanningBytes + PieceCount * 200;

// Of one length, so that one replaces the other: with several tables fields 1 and 2 are the key, with one table the
// second of the two columns that the key line names.
const std::string ManyTablesHeader = "T|KEYS,1,0\n";
const std::string OneTableHeader = ".|KEYS,0,1\n";

std::string keyOf(long piece) {
  const std::string digits = std::to_string(piece);
  return std::string(static_cast<std::size_t>(KeyDigits) - digits.size(), '0') + digits;
}

// A file whose line 1 has more than 2^30 bytes without a line feed. It is read in pieces of 9999 bytes, and each piece
// looks like a line of a table: "T,00000042,xxx...". One more line of the table follows.
class LineOfAGigabyte : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    file = std::make_unique<LargeFile>();
    file->append(OneTableHeader);
    std::string piece = "T," + std::string(KeyDigits, '0') + ",";
    piece.append(static_cast<std::size_t>(PieceSize) - piece.size(), 'x');
    for (long number = 0; number < PieceCount; ++number) {
      piece.replace(2, static_cast<std::size_t>(KeyDigits), keyOf(number));
      file->append(piece);
    }
    file->append("\nT,last,end\n");
    file->finish();
  }
  static void TearDownTestSuite() { file.reset(); }

  // The piece with this number stands on line number + 1.
  static void expectPiece(const XelCsvLine& line, long number) {
    ASSERT_EQ(line.getNumberOfFields(), 3);
    EXPECT_EQ(line.getLineNumber(), number + 1);
    EXPECT_STREQ(line.getFields()[0], "T");
    EXPECT_EQ(line.getFields()[1], keyOf(number));
    EXPECT_EQ(line.getFields()[2], std::string(static_cast<std::size_t>(PieceSize - KeyDigits - 3), 'x'));
  }

  static std::unique_ptr<LargeFile> file;
};

std::unique_ptr<LargeFile> LineOfAGigabyte::file;

// Behind the last piece its line feed is a line of its own, an empty one.
const std::string LastLine = std::to_string(PieceCount + 2) + ": [T][last][end]";

}  // namespace

TEST_F(LineOfAGigabyte, IsReadInPiecesByBothKindsOfTables) {
  file->replace(0, OneTableHeader);
  forBothKinds([&](Kind kind) {
    CountedEnv env;
    XelCsvReader reader;
    const std::string what = std::string("line of 1 GiB, ") + nameOf(kind) + ": ";
    const long peak = env.getPeakOf([&] {
      const double seconds = getSecondsOf([&] {
        reader = openFile(env, file->getName(), kind, false);
        EXPECT_EQ(reader.getNumberOfItems(), PieceCount + 1);
      });
      report(what + "opening it and counting its pieces", seconds, "s");
      for (const long number : {0L, PieceCount / 2, PieceCount - 1}) {
        expectPiece(reader.getLineByNumber(number), number);
        expectPiece(reader.getLineByKey(1, keyOf(number).c_str()), number);
      }
      EXPECT_EQ(textOf(reader.getLineByNumber(PieceCount)), LastLine);
      EXPECT_EQ(textOf(reader.getLineByKey(1, "last")), LastLine);
      long lines = 0;
      for (XelCsvReader::LineIterator it(reader); it.ok(); ++it, ++lines) {
        if (lines < PieceCount) {
          expectPiece(*it, lines);
        } else {
          EXPECT_EQ(textOf(*it), LastLine);
        }
      }
      EXPECT_EQ(lines, PieceCount + 1);
      reader.end();
    });
    EXPECT_LT(peak, kind == Kind::Scanning ? MostScanningBytes : MostCachedBytes);
    report(what + "memory at most", static_cast<double>(peak), "bytes");
  });
}

TEST_F(LineOfAGigabyte, IsManyLinesOfATableInAFileOfSeveral) {
  file->replace(0, ManyTablesHeader);
  CountedEnv env;
  const long peak = env.getPeakOf([&] {
    XelCsvReader reader = openFile(env, file->getName(), Kind::Scanning, true);
    EXPECT_EQ(reader.getNumberOfTables(), 1);
    XelCsvTableReader table = reader.getTableByName("T");
    EXPECT_EQ(table.getNumberOfItems(), PieceCount + 1);
    expectPiece(table.getLineByNumber(PieceCount - 1), PieceCount - 1);
    EXPECT_EQ(textOf(table.getLineByNumber(PieceCount)), LastLine);
    table.end();
    reader.end();
  });
  EXPECT_LT(peak, MostScanningBytes);
}

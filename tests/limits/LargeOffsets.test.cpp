// Offsets that do not fit in 32 bits.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "csv/reader/XelCsvReaderI.h"
#include "csv/table/XelCsvTableReaderI.h"
#include "tests/limits/Figures.h"
#include "tests/limits/LargeFile.h"

namespace {

using Lines = std::vector<std::string>;

constexpr long PieceSize = 9999;
constexpr long FullPieces = (5L << 30) / PieceSize + 1;
constexpr long RestOfHole = 100;
constexpr long HoleSize = FullPieces * PieceSize + RestOfHole;
constexpr long MostRoom = 1L << 20;
constexpr long MostBytes = 1L << 20;

// A hole is a line of bytes 0 without a line feed. It is read in pieces of 9999 bytes, each a line that ends with its
// first byte 0 and is therefore empty; so is the last piece with the text that follows the hole on its line.
constexpr long FirstLineBehindHole = 3 + FullPieces + 1;

const std::string BeforeHole = "Near,n0,10\nNear,n1,11\nWide,w0,20\n";
const std::string RestOfLine = "Lost,l0,40\n";
const std::string BehindHole = "Wide,w1,21\nFar,f0,30\nFar,f1,31\n";
constexpr long LineSize = 11;  // of the tables Near and Wide
constexpr long FarLineSize = 10;

const long OffsetBehindHole = static_cast<long>(BeforeHole.size()) + HoleSize + LineSize;

std::string lineBehind(long line, const std::string& fields) {
  return std::to_string(FirstLineBehindHole + line) + ": " + fields;
}

class FileOfFiveGigabytes : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    file = std::make_unique<LargeFile>(Storage::Memory);
    file->append(BeforeHole);
    file->skip(HoleSize);
    file->append(RestOfLine + BehindHole);
    file->finish();
  }
  static void TearDownTestSuite() { file.reset(); }

  static std::unique_ptr<LargeFile> file;
};

std::unique_ptr<LargeFile> FileOfFiveGigabytes::file;

// What a table of two lines answers to every kind of lookup.
void expectTable(XelCsvTableReader& table, const Lines& lines, const char* key, const char* value) {
  EXPECT_EQ(table.getNumberOfItems(), 2);
  EXPECT_EQ(textOf(table.getLineByNumber(0)), lines[0]);
  EXPECT_EQ(textOf(table.getLineByNumber(1)), lines[1]);
  EXPECT_EQ(textOf(table.getLineByKey(2, key, value)), lines[1]);
  Lines walked;
  for (XelCsvTableReader::LineIterator it(table); it.ok(); ++it) walked.push_back(textOf(*it));
  EXPECT_EQ(walked, lines);
}

// Where the index of a cached table says that a line begins.
void expectOffset(const XelCsvTableReader& table, const char* key, long offset, long lineNumber) {
  const OffsetAndLineNumber* record = table.getImpl()->getOffsetAndLineNumber(key);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->offset, offset);
  EXPECT_EQ(record->lineNumber, lineNumber);
}

}  // namespace

TEST_F(FileOfFiveGigabytes, TakesHardlyAnyRoom) {
  EXPECT_GT(file->getSize(), 5L << 30);
  EXPECT_LT(file->getRoom(), MostRoom);
}

TEST_F(FileOfFiveGigabytes, HasTablesOnBothSidesOfAHole) {
  forBothKinds([&](Kind kind) {
    CountedEnv env;
    const std::string what = std::string("file of 5 GiB, ") + nameOf(kind) + ": ";
    const long peak = env.getPeakOf([&] {
      XelCsvReader reader;
      report(what + "making the directory", getSecondsOf([&] { reader = openFile(env, file->getName(), kind, true); }),
             "s");
      EXPECT_EQ(reader.getNumberOfTables(), 3);
      EXPECT_FALSE(reader.isTableExists("Lost")) << "it begins with bytes 0";
      const OffsetAndLineNumber* start = reader.getImpl()->getOffsetAndLineNumber("Far");
      ASSERT_NE(start, nullptr);
      EXPECT_EQ(start->offset, OffsetBehindHole + LineSize);
      EXPECT_EQ(start->lineNumber, FirstLineBehindHole + 1);
      EXPECT_EQ(reader.getImpl()->getEndOffset("Far"), OffsetBehindHole + LineSize + FarLineSize);
      EXPECT_EQ(reader.getImpl()->getEndOffset("Wide"), OffsetBehindHole);

      XelCsvTableReader near = reader.getTableByName("Near");
      expectTable(near, {"0: [Near][n0][10]", "1: [Near][n1][11]"}, "n1", "11");
      near.end();
      XelCsvTableReader wide = reader.getTableByName("Wide");
      expectTable(wide, {"2: [Wide][w0][20]", lineBehind(0, "[Wide][w1][21]")}, "w1", "21");
      XelCsvTableReader far = reader.getTableByName("Far");
      expectTable(far, {lineBehind(1, "[Far][f0][30]"), lineBehind(2, "[Far][f1][31]")}, "f1", "31");
      if (kind == Kind::Cached) {
        expectOffset(wide, "w0-20", 2 * LineSize, 2);
        expectOffset(wide, "w1-21", OffsetBehindHole, FirstLineBehindHole);
        expectOffset(far, "f1-31", OffsetBehindHole + LineSize + FarLineSize, FirstLineBehindHole + 2);
      }
      wide.end();
      far.end();
      reader.end();
    });
    EXPECT_LT(peak, MostBytes);
  });
}

TEST_F(FileOfFiveGigabytes, OfOneTableIsReadThroughTheHole) {
  const Lines lines = {"0: [Near][n0][10]",
                       "1: [Near][n1][11]",
                       "2: [Wide][w0][20]",
                       lineBehind(0, "[Wide][w1][21]"),
                       lineBehind(1, "[Far][f0][30]"),
                       lineBehind(2, "[Far][f1][31]")};
  forBothKinds([&](Kind kind) {
    CountedEnv env;
    const long peak = env.getPeakOf([&] {
      XelCsvReader reader = openFile(env, file->getName(), kind, false);
      EXPECT_EQ(reader.getNumberOfItems(), static_cast<long>(lines.size()));
      EXPECT_EQ(textOf(reader.getLineByNumber(5)), lines[5]);
      EXPECT_EQ(textOf(reader.getLineByKey(3, "Far", "f0", "30")), lines[4]);
      Lines walked;
      for (XelCsvReader::LineIterator it(reader); it.ok(); ++it) walked.push_back(textOf(*it));
      EXPECT_EQ(walked, lines);
      reader.end();
    });
    EXPECT_LT(peak, MostBytes);
  });
}

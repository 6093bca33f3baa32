// Ten million lines in one table.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "tests/limits/Figures.h"
#include "tests/limits/LargeFile.h"
#include "tests/support/ExpectThrow.h"

namespace {

constexpr long LineCount = 10'000'000;
constexpr long Digits = 8;
constexpr long LookupCount = 1000;
constexpr long MostBytesPerLine = 100;  // without the key's text
constexpr long MostScanningBytes = 1L << 20;

const std::string Header = "|KEYS,1,0\n";

// A number of fixed width that counts up.
class Counter {
 public:
  void next() {
    std::size_t at = text.size();
    while (text[--at] == '9') text[at] = '0';
    ++text[at];
  }
  const std::string& get() const { return text; }

 private:
  std::string text = std::string(Digits, '0');
};

std::string keyOf(long number) {
  const std::string digits = std::to_string(number);
  return std::string(static_cast<std::size_t>(Digits) - digits.size(), '0') + digits;
}

// The line with this number among the table's: its key, and a value that begins with it.
std::string lineOf(long number) {
  return std::to_string(number + 1) + ": [" + keyOf(number) + "][v" + keyOf(number) + "]";
}

class TenMillionLines : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    file = std::make_unique<LargeFile>();
    file->append(Header);
    Counter counter;
    for (long line = 0; line < LineCount; ++line, counter.next()) {
      file->append(counter.get());
      file->append(",v");
      file->append(counter.get());
      file->append("\n");
    }
    file->finish();
  }
  static void TearDownTestSuite() { file.reset(); }

  // Walks over all lines and counts those that are not what they should be.
  static void expectWalk(const XelCsvReader& reader) {
    Counter counter;
    long lines = 0;
    long wrong = 0;
    for (XelCsvReader::LineIterator it(reader); it.ok(); ++it, ++lines, counter.next()) {
      const XelCsvLine line = *it;
      const bool isRight = line.getNumberOfFields() == 2 && line.getLineNumber() == lines + 1 &&
                           counter.get() == line.getFields()[0] && line.getFields()[1][0] == 'v' &&
                           counter.get() == line.getFields()[1] + 1;
      if (!isRight) ++wrong;
    }
    EXPECT_EQ(lines, LineCount);
    EXPECT_EQ(wrong, 0);
  }

  static std::unique_ptr<LargeFile> file;
};

std::unique_ptr<LargeFile> TenMillionLines::file;

}  // namespace

TEST_F(TenMillionLines, AreFoundAndWalkedByAScanningTableInConstantMemory) {
  CountedEnv env;
  const long peak = env.getPeakOf([&] {
    XelCsvReader reader = openFile(env, file->getName(), Kind::Scanning, false);
    report("10 million lines, scanning: counting them",
           getSecondsOf([&] { EXPECT_EQ(reader.getNumberOfItems(), LineCount); }), "s");
    for (const long number : {0L, LineCount / 2, LineCount - 1}) {
      EXPECT_EQ(textOf(reader.getLineByNumber(number)), lineOf(number));
      EXPECT_EQ(textOf(reader.getLineByKey(1, keyOf(number).c_str())), lineOf(number));
    }
    report("10 million lines, scanning: a lookup of the last key", getSecondsOf([&] {
             EXPECT_EQ(textOf(reader.getLineByKey(1, keyOf(LineCount - 1).c_str())), lineOf(LineCount - 1));
           }),
           "s");
    EXPECT_XEL_THROW(reader.getLineByKey(1, "10000000"), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line having key 10000000.");
    report("10 million lines, scanning: a walk over all", getSecondsOf([&] { expectWalk(reader); }), "s");
    reader.end();
  });
  EXPECT_LT(peak, MostScanningBytes);
  report("10 million lines, scanning: memory at most", static_cast<double>(peak), "bytes");
}

TEST_F(TenMillionLines, AreFoundAndWalkedByACachedTable) {
  CountedEnv env;
  XelCsvReader reader;
  const double seconds = getSecondsOf([&] { reader = openFile(env, file->getName(), Kind::Cached, false); });
  report("10 million lines, cached: making the index", seconds, "s");
  const double perLine = static_cast<double>(env.getBytes()) / LineCount;
  report("10 million lines, cached: memory per line, keys of 8 bytes", perLine, "bytes");
  EXPECT_LT(perLine, Digits + MostBytesPerLine);

  EXPECT_EQ(reader.getNumberOfItems(), LineCount);
  const double lookups = getSecondsOf([&] {
    for (long lookup = 0; lookup < LookupCount; ++lookup) {
      const long number = lookup * (LineCount - 1) / (LookupCount - 1);
      ASSERT_EQ(textOf(reader.getLineByNumber(number)), lineOf(number));
      ASSERT_EQ(textOf(reader.getLineByKey(1, keyOf(number).c_str())), lineOf(number));
    }
  });
  report("10 million lines, cached: a lookup", lookups / (2 * LookupCount) * 1e6, "us");
  EXPECT_XEL_THROW(reader.getLineByKey(1, "10000000"), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key 10000000 .");
  EXPECT_XEL_THROW(reader.getLineByNumber(LineCount), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line number 10000000 ");
  report("10 million lines, cached: a walk over all", getSecondsOf([&] { expectWalk(reader); }), "s");
  reader.end();
}

// How much memory tables take, and what it depends on.
#include <gtest/gtest.h>

#include "tests/limits/Figures.h"
#include "tests/limits/LargeFile.h"

namespace {

constexpr long MostBytesPerLine = 100;        // of an index, without the key's text
constexpr long MostBytesPerLineAtOnce = 125;  // the same while the index grows
constexpr long MostBytesOfManager = 150;      // the same in an environment's own manager, which rounds sizes up
constexpr long MostBytesBesideIndex = 1L << 20;
constexpr double MostGrowth = 1.5;  // of the bytes per line, from few lines to many
constexpr long LineSize = 200;

// A one-table file whose lines have keys of the given length in their first column and the given length themselves.
void writeLines(LargeFile& file, long count, long keySize, long lineSize) {
  file.append("|KEYS,1,0\n");
  std::string line(static_cast<std::size_t>(lineSize), 'x');
  line[static_cast<std::size_t>(keySize)] = ',';
  line.back() = '\n';
  for (long number = 0; number < count; ++number) {
    const std::string digits = std::to_string(number);
    line.replace(static_cast<std::size_t>(keySize) - digits.size(), digits.size(), digits);
    file.append(line);
  }
  file.finish();
}

// Everything that a table of lines can be asked for.
void useTable(XelCsvReader& reader, long lines) {
  EXPECT_EQ(reader.getNumberOfItems(), lines);
  const long half = lines / 2;
  const std::string key = reader.getLineByNumber(half).getStringByPosition(0);
  EXPECT_EQ(reader.getLineByKey(1, key.c_str()).getLineNumber(), half + 1);
  long walked = 0;
  for (XelCsvReader::LineIterator it(reader); it.ok(); ++it) ++walked;
  EXPECT_EQ(walked, lines);
}

}  // namespace

TEST(Memory, OfACachedTableIsAFewBytesPerLineBesideItsKeys) {
  for (const long keySize : {8L, 32L, 100L}) {
    double perLineOfFew = 0;
    for (const long lines : {10'000L, 100'000L, 1'000'000L}) {
      SCOPED_TRACE(std::to_string(lines) + " lines, keys of " + std::to_string(keySize));
      LargeFile file;
      writeLines(file, lines, keySize, keySize + 6);
      CountedEnv env;
      XelCsvReader reader;
      const long peak = env.getPeakOf([&] { reader = openFile(env, file.getName(), Kind::Cached, false); });
      const double perLine = static_cast<double>(env.getBytes()) / static_cast<double>(lines);
      const double perLineAtOnce = static_cast<double>(peak) / static_cast<double>(lines);
      const std::string what =
          "cached table, " + std::to_string(lines) + " lines, keys of " + std::to_string(keySize) + " bytes: ";
      report(what + "memory per line", perLine, "bytes");
      report(what + "at most while the index is made, per line", perLineAtOnce, "bytes");
      EXPECT_GT(perLine, keySize) << "the text of its key at least";
      EXPECT_LT(perLine, keySize + MostBytesPerLine);
      EXPECT_LT(peak, MostBytesBesideIndex + lines * (keySize + MostBytesPerLineAtOnce));
      if (perLineOfFew == 0) perLineOfFew = perLine;
      EXPECT_LT(perLine, MostGrowth * perLineOfFew);
      reader.end();
    }
  }
}

TEST(Memory, OfACachedTableInAnEnvironmentOfItsOwn) {
  constexpr long lines = 1'000'000;
  for (const long keySize : {8L, 32L}) {
    LargeFile file;
    writeLines(file, lines, keySize, keySize + 6);
    XelEnv env;
    XelCsvReader reader = openFile(env, file.getName(), Kind::Cached, false);
    const double perLine = static_cast<double>(env.getBytesAllocated()) / lines;
    report(
        "cached table, the environment's own manager, keys of " + std::to_string(keySize) + " bytes: memory per line",
        perLine, "bytes");
    EXPECT_GT(perLine, keySize);
    EXPECT_LT(perLine, keySize + MostBytesOfManager);
    reader.end();
    EXPECT_EQ(env.getBytesInUse(), 0);
    env.end();
  }
}

// Both files are larger than the blocks in which a file is read, which grow with what is read of it up to 256 KiB.
TEST(Memory, OfAScanningTableDoesNotDependOnTheSizeOfTheFile) {
  long peakOfFew = 0;
  long heldOfFew = 0;
  for (const long lines : {1'000L, 100'000L}) {
    SCOPED_TRACE(lines);
    LargeFile file;
    writeLines(file, lines, 8, LineSize);
    CountedEnv env;
    const long empty = env.getBytes();
    long held = 0;
    const long peak = env.getPeakOf([&] {
      XelCsvReader reader = openFile(env, file.getName(), Kind::Scanning, false);
      held = env.getBytes() - empty;
      useTable(reader, lines);
      reader.end();
    });
    const std::string what = "scanning table, " + std::to_string(lines) + " lines: ";
    report(what + "memory between two calls", static_cast<double>(held), "bytes");
    report(what + "memory at most", static_cast<double>(peak), "bytes");
    if (peakOfFew == 0) peakOfFew = peak;
    if (heldOfFew == 0) heldOfFew = held;
    EXPECT_EQ(peak, peakOfFew);
    EXPECT_EQ(held, heldOfFew);
  }
}

TEST(Memory, OfEverythingButTheIndexOfACachedTableDoesNotDependOnTheSizeOfTheFile) {
  long peakOfFew = 0;
  for (const long lines : {1'000L, 100'000L}) {
    SCOPED_TRACE(lines);
    LargeFile file;
    writeLines(file, lines, 8, LineSize);
    CountedEnv env;
    XelCsvReader reader = openFile(env, file.getName(), Kind::Cached, false);
    const long peak = env.getPeakOf([&] { useTable(reader, lines); });
    report("cached table, " + std::to_string(lines) + " lines: memory at most beside its index",
           static_cast<double>(peak), "bytes");
    if (peakOfFew == 0) peakOfFew = peak;
    EXPECT_EQ(peak, peakOfFew);
    reader.end();
  }
}

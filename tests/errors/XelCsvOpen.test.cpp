// What is said when a file cannot be opened, and the one place that opens, reads and closes it.
#include "csv/errors/XelCsvOpen.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/SystemText.h"
#include "tests/support/TestEnv.h"

namespace {

constexpr long BufferSize = 500;

struct Row {
  int error;
  int value;
  const char* format;
};

// Looked through from the top; the rows that come second for their errno are never reached.
constexpr Row Rows[] = {
    {EACCES, 13,
     "While trying to open file %s : Search permission is denied on a component of the path prefix, or the file exists and the permissions specified by mode (rb) are denied, or the file does not exist and write permission is denied for the parent directory of the file to be created."},
    {EISDIR, 21, "While trying to open file %s : The named file is a directory and mode requires write access."},
    {EMFILE, 24,
     "while trying to open file %s : Too many open files. No more file descriptors are available, so no more files can be opened."},
    {EMFILE, 24, "While trying to open file %s : Too many open files, no more files can be opened."},
    {ENFILE, 23,
     "While trying to open file %s : The maximum allowable number of files is currently open in the system."},
    {ENAMETOOLONG, 36,
     "While trying to open file %s : The maximum allowable number of files is currently open in the system."},
    {ENOSPC, 28,
     "While trying to open file %s : No space left on device. No more space for writing is available on the device (for example, when the disk is full)."},
    {ENOENT, 2,
     "While trying to open file %s : No such file or directory. The specified file or directory does not exist or cannot be found. This message can occur whenever a specified file does not exist or a component of a path does not specify an existing directory. "},
    {ENOTDIR, 20,
     "While trying to open file %s : No such file or directory. A component of the path prefix is not a directory. "},
    {ENXIO, 6,
     "While trying to open file %s : No such file or directory. The named file is a character special or block special file, and the device associated with this special file does not exist. "},
    {ENOMEM, 12, "While trying to open file %s : Insufficient storage space is available."},
    {ENOMEM, 12, "While trying to open file %s : Insufficient storage space is available."},
    {ENAMETOOLONG, 36,
     "While trying to open file %s : The length of the filename exceeds maximum length allowed or a pathname component is longer than maximum name length allowed."},
};

std::string fill(const std::string& format, const std::string& name) {
  const std::size_t hole = format.find("%s");
  return (format.substr(0, hole) + name + format.substr(hole + 2)).substr(0, BufferSize - 1);
}

// The text for an errno: that of its first row; none when it has no row.
const Row* findRow(int error) {
  for (const Row& row : Rows) {
    if (row.error == error) return &row;
  }
  return nullptr;
}

// errorTest's answer as a string, "(null)" for null. The buffer goes back with its size, which TestEnv compares.
std::string ask(XelEnv env, int error, const std::string& name, int argument) {
  errno = error;
  char* text = errorTest(env, argument, name.c_str());
  EXPECT_EQ(errno, error) << "errno is left alone";
  if (text == nullptr) return "(null)";
  std::string answer(text);
  env.free(text, BufferSize);
  return answer;
}

std::string ask(XelEnv env, int error, const std::string& name) { return ask(env, error, name, error); }

std::string catchOpenError(int error, const char* name) {
  try {
    XelThrowOpenError(error, name);
  } catch (const XelCsvReader::XelFileNotFoundException& exception) {
    EXPECT_EQ(typeid(exception), typeid(XelCsvReader::XelFileNotFoundException));
    EXPECT_EQ(exception.getCode(), 1);
    return exception.getMessage();
  }
}

}  // namespace

TEST(ErrorTest, HasATextForTheseValuesOfErrno) {
  TestEnv env;
  for (const Row& row : Rows) {
    EXPECT_EQ(row.error, row.value) << "the values are those of Linux";
    EXPECT_EQ(ask(env, row.error, "dir/data.csv"), fill(findRow(row.error)->format, "dir/data.csv")) << row.error;
  }
}

TEST(ErrorTest, NeverReachesTheSecondRowOfAValue) {
  TestEnv env;
  EXPECT_EQ(
      ask(env, EMFILE, "f"),
      "while trying to open file f : Too many open files. No more file descriptors are available, so no more files "
      "can be opened.");
  EXPECT_EQ(ask(env, ENAMETOOLONG, "f"), ask(env, ENFILE, "f")) << "a long name is told as too many open files";
  EXPECT_EQ(ask(env, ENOMEM, "f"), "While trying to open file f : Insufficient storage space is available.");
}

TEST(ErrorTest, KeepsTheTrailingBlanks) {
  TestEnv env;
  for (const int error : {ENOENT, ENOTDIR, ENXIO}) {
    const std::string text = ask(env, error, "f");
    EXPECT_EQ(text.back(), ' ') << error;
    EXPECT_NE(text.find(" : No such file or directory. "), std::string::npos) << error;
  }
}

TEST(ErrorTest, AnswersNullForEveryOtherErrno) {
  TestEnv env;
  long without = 0;
  for (int error = -5; error <= 5000; ++error) {
    if (findRow(error) != nullptr) continue;
    ++without;
    ASSERT_EQ(ask(env, error, "data.csv"), "(null)") << error;
    ASSERT_FALSE(XelHasOpenErrorText(error)) << error;
  }
  EXPECT_EQ(without, 5006 - 10) << "ten values have a text";
  EXPECT_EQ(ask(env, 0, "data.csv"), "(null)");
  EXPECT_EQ(env.getAllocator().getAllocations(), 1) << "no buffer is taken for nothing";
}

TEST(ErrorTest, ReadsErrnoAndNotItsArgument) {
  TestEnv env;
  EXPECT_EQ(ask(env, EISDIR, "f", 0), fill(findRow(EISDIR)->format, "f"));
  EXPECT_EQ(ask(env, EISDIR, "f", ENOENT), fill(findRow(EISDIR)->format, "f"));
  EXPECT_EQ(ask(env, 0, "f", ENOENT), "(null)");
  EXPECT_EQ(ask(env, ELOOP, "f", ENOENT), "(null)");
}

TEST(ErrorTest, TakesABufferOf500BytesFromTheEnvironment) {
  TestEnv env;
  const long before = env.getAllocator().getBytesOut();
  errno = ENOENT;
  char* text = errorTest(env, errno, "f");
  EXPECT_EQ(env.getAllocator().getBytesOut(), before + BufferSize);
  env.get().free(text, BufferSize);
}

TEST(ErrorTest, CutsLongNames) {
  TestEnv env;
  for (const Row& row : Rows) {
    const std::string whole = fill(findRow(row.error)->format, "");
    for (const std::size_t length : {std::size_t{1}, BufferSize - 1 - whole.size(), BufferSize - whole.size(),
                                     std::size_t{499}, std::size_t{9000}}) {
      const std::string name(length, 'n');
      const std::string text = ask(env, row.error, name);
      ASSERT_EQ(text, fill(findRow(row.error)->format, name));
      ASSERT_LT(text.size(), static_cast<std::size_t>(BufferSize));
    }
  }
}

TEST(ErrorTest, TakesTheNameAsText) {
  TestEnv env;
  EXPECT_EQ(ask(env, EISDIR, "100%s%n.csv"),
            "While trying to open file 100%s%n.csv : The named file is a directory and mode requires write access.");
}

TEST(ErrorTest, TakesANullNameAsTheEmptyText) {
  TestEnv env;
  errno = EISDIR;
  char* text = errorTest(env, errno, nullptr);
  ASSERT_NE(text, nullptr);
  EXPECT_STREQ(text, "While trying to open file  : The named file is a directory and mode requires write access.");
  env.get().free(text, BufferSize);
  EXPECT_EQ(catchOpenError(EISDIR, nullptr),
            "While trying to open file  : The named file is a directory and mode requires write access.");
  EXPECT_EQ(catchOpenError(ELOOP, nullptr), "While trying to open file  : Too many levels of symbolic links.");
}

TEST(ErrorTest, ExhaustionThrows) {
  TestEnv env;
  env.getAllocator().failAfter(0);
  errno = ENOENT;
  EXPECT_THROW(errorTest(env, errno, "f"), std::bad_alloc);
}

TEST(ErrorTest, ReportsWhatFopenSays) {
  TestEnv env;
  const DataFile file("a\n");
  const std::string below = std::string(file.getName()) + "/below";
  const std::string longName(5000, 'n');
  const std::string missing = std::string(file.getName()) + ".missing";
  const auto open = [&](const std::string& name) {
    errno = 0;
    std::FILE* stream = std::fopen(name.c_str(), "rb");
    char* text = errorTest(env, errno, name.c_str());
    if (stream != nullptr) std::fclose(stream);
    std::string answer = text == nullptr ? "(null)" : text;
    env.get().free(text, BufferSize);
    return answer;
  };
  EXPECT_EQ(
      open(missing),
      "While trying to open file " + missing +
          " : No such file or directory. The specified file or directory does not exist or cannot be found. This "
          "message can occur whenever a specified file does not exist or a component of a path does not specify an "
          "existing directory. ");
  EXPECT_EQ(open(below), "While trying to open file " + below +
                             " : No such file or directory. A component of the path prefix is not a directory. ");
  EXPECT_EQ(open(longName), fill(findRow(ENFILE)->format, longName));
  EXPECT_EQ(open(file.getName()), "(null)");
}

TEST(OpenErrors, HaveTheTextOfErrorTestOrTheSystems) {
  for (const Row& row : Rows) {
    EXPECT_TRUE(XelHasOpenErrorText(row.error));
    EXPECT_EQ(catchOpenError(row.error, "f.csv"), fill(findRow(row.error)->format, "f.csv"));
  }
  EXPECT_EQ(catchOpenError(ELOOP, "f.csv"), "While trying to open file f.csv : Too many levels of symbolic links.");
  EXPECT_EQ(catchOpenError(EROFS, "f.csv"), "While trying to open file f.csv : Read-only file system.");
  for (const int error : {ELOOP, EROFS, EIO, EINVAL, EINTR, EPERM}) {
    EXPECT_EQ(catchOpenError(error, "f.csv"), "While trying to open file f.csv : " + getSystemText(error) + ".");
  }
}

TEST(OpenErrors, AreCutAt499Bytes) {
  const std::string name(3000, 'n');
  for (const int error : {ENOENT, ELOOP}) {
    const std::string expected = ("While trying to open file " + name).substr(0, 499);
    EXPECT_EQ(catchOpenError(error, name.c_str()), expected);
  }
}

TEST(XelCsvFile, OpensReadsAndCloses) {
  const DataFile data("0123456789");
  const long before = countOpenFiles();
  XelCsvFile file;
  EXPECT_FALSE(file.isOpen());
  ASSERT_EQ(file.open(data.getName(), "rb"), 0);
  EXPECT_TRUE(file.isOpen());
  EXPECT_EQ(countOpenFiles(), before + 1);
  char buffer[16] = {};
  EXPECT_EQ(file.read(buffer, 4), 4);
  EXPECT_EQ(std::string(buffer, 4), "0123");
  EXPECT_EQ(file.read(buffer, 16), 6) << "fewer only at the end";
  EXPECT_EQ(std::string(buffer, 6), "456789");
  EXPECT_EQ(file.read(buffer, 16), 0);
  EXPECT_FALSE(file.hasFailed()) << "the end of the file is no failure";
  file.close();
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(countOpenFiles(), before);
  file.close();
  EXPECT_FALSE(file.isOpen());
}

TEST(XelCsvFile, ReadsNoByteThatIsNotAskedFor) {
  const DataFile data(std::string(100000, 'x'));
  const int next = dup(STDIN_FILENO);  // the descriptor that the next open gets
  ASSERT_GE(next, 0);
  ::close(next);
  XelCsvFile file;
  ASSERT_EQ(file.open(data.getName(), "rb"), 0);
  char buffer[16] = {};
  EXPECT_EQ(file.read(buffer, 4), 4);
  EXPECT_EQ(lseek(next, 0, SEEK_CUR), 4);
  EXPECT_TRUE(file.seek(50000));
  EXPECT_EQ(file.read(buffer, 16), 16);
  EXPECT_EQ(lseek(next, 0, SEEK_CUR), 50016);
}

TEST(XelCsvFile, ReadsOnFromAnOffsetAlsoAfterTheEnd) {
  const DataFile data("0123456789");
  XelCsvFile file;
  ASSERT_EQ(file.open(data.getName(), "r"), 0);
  char buffer[16] = {};
  EXPECT_EQ(file.read(buffer, 16), 10);
  EXPECT_TRUE(file.seek(7));
  EXPECT_EQ(file.read(buffer, 2), 2);
  EXPECT_EQ(std::string(buffer, 2), "78");
  EXPECT_EQ(file.goToEnd(), 10);
  EXPECT_EQ(file.read(buffer, 2), 0);
  EXPECT_TRUE(file.seek(0));
  EXPECT_EQ(file.read(buffer, 1), 1);
  EXPECT_EQ(buffer[0], '0');
  EXPECT_FALSE(file.seek(-1));
}

TEST(XelCsvFile, AnswersTheErrnoOfAnOpenThatFails) {
  const DataFile data("a\n");
  const std::string below = std::string(data.getName()) + "/below";
  const std::string missing = std::string(data.getName()) + ".missing";
  XelCsvFile file;
  errno = EISDIR;
  EXPECT_EQ(file.open(missing.c_str(), "rb"), ENOENT);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_FALSE(file.isOpen());
  EXPECT_EQ(file.open(below.c_str(), "rb"), ENOTDIR);
  EXPECT_EQ(file.open(std::string(6000, 'n').c_str(), "rb"), ENAMETOOLONG);
  EXPECT_EQ(file.open(data.getName(), "rb"), 0) << "it can be used again";
  EXPECT_TRUE(file.isOpen());
}

TEST(XelCsvFile, ALinkThatLeadsToItselfIsAFailureWithoutATextOfItsOwn) {
  const DataDirectory directory;
  const std::string link = std::string(directory.getName()) + "/loop";
  ASSERT_EQ(symlink(link.c_str(), link.c_str()), 0);
  XelCsvFile file;
  EXPECT_EQ(file.open(link.c_str(), "rb"), ELOOP);
  EXPECT_FALSE(file.isOpen());
}

TEST(XelCsvFile, SetsErrnoToZeroBeforeItOpens) {
  const DataFile data("a\n");
  for (const Row& row : Rows) {
    XelCsvFile file;
    errno = row.error;
    EXPECT_EQ(file.open(data.getName(), "rb"), 0) << "an errno left by an earlier call is not the open's";
    EXPECT_EQ(errno, 0);
  }
}

TEST(XelCsvFile, ClosingLeavesErrnoAlone) {
  const DataFile data("a\n");
  XelCsvFile file;
  ASSERT_EQ(file.open(data.getName(), "rb"), 0);
  errno = EISDIR;
  file.close();
  EXPECT_EQ(errno, EISDIR);
}

TEST(XelCsvFile, OpeningAnotherFileClosesTheFirst) {
  const DataFile first("first");
  const DataFile second("second");
  const long before = countOpenFiles();
  XelCsvFile file;
  ASSERT_EQ(file.open(first.getName(), "rb"), 0);
  ASSERT_EQ(file.open(second.getName(), "rb"), 0);
  EXPECT_EQ(countOpenFiles(), before + 1);
  char buffer[16] = {};
  EXPECT_EQ(file.read(buffer, 16), 6);
  EXPECT_EQ(std::string(buffer, 6), "second");
  ASSERT_EQ(file.open("/nonexistent/file", "rb"), ENOENT);
  EXPECT_EQ(countOpenFiles(), before) << "also when the next open fails";
}

TEST(XelCsvFile, ClosesAtTheEndOfItsScope) {
  const DataFile data("a\n");
  const long before = countOpenFiles();
  {
    XelCsvFile file;
    ASSERT_EQ(file.open(data.getName(), "rb"), 0);
    EXPECT_EQ(countOpenFiles(), before + 1);
  }
  EXPECT_EQ(countOpenFiles(), before);
}

TEST(XelCsvFile, ADirectoryOpensAndCannotBeRead) {
  const DataDirectory directory;
  XelCsvFile file;
  ASSERT_EQ(file.open(directory.getName(), "rb"), 0);
  char buffer[16] = {};
  EXPECT_EQ(file.read(buffer, 16), 0);
  EXPECT_TRUE(file.hasFailed());
  EXPECT_EQ(errno, EISDIR) << "the reason stays where the creator of a reader looks for it";
  EXPECT_TRUE(file.seek(0));
  EXPECT_FALSE(file.hasFailed()) << "no read has failed since";
  EXPECT_EQ(file.read(buffer, 16), 0);
  EXPECT_TRUE(file.hasFailed());
  errno = EISDIR;
  file.close();
  EXPECT_EQ(errno, EISDIR);
}

TEST(XelCsvFile, TooManyOpenFilesAreReported) {
  const DataFile data("a\n");
  std::vector<int> descriptors;
  for (;;) {
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) break;
    descriptors.push_back(descriptor);
    if (descriptors.size() > 100000) break;
  }
  XelCsvFile file;
  const int error = file.open(data.getName(), "rb");
  const bool isExhausted = descriptors.size() <= 100000;
  for (const int descriptor : descriptors) ::close(descriptor);
  if (!isExhausted) GTEST_SKIP() << "this process may open more files than the test wants to";
  EXPECT_EQ(error, EMFILE);
}

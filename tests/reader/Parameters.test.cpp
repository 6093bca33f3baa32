// The tests of what a user gives to the constructor of a reader: the file, then the characters.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "csv/reader/XelCsvParameters.h"
#include "csv/reader/XelCsvReaderI.h"
#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"

namespace {

using ParameterException = XelCsvReader::XelCsvReaderParameterException;
using FileException = XelCsvReader::XelFileNotFoundException;

const std::string NoCharacter =
    "XelCsvReader::XelCsvReaderParameterException : You must specify a value different of 0 for separator, decimal, quote "
    "and comment characters";

std::string includes(const std::string& separators, const std::string& what, char character) {
  const std::string text(1, character);
  return "XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = " + separators + " and a " + what +
         " = " + text + "  " + what + "  must not be a separator. ";
}

std::string same(const std::string& what1, char character1, const std::string& what2, char character2) {
  return "XelCsvReader::XelCsvReader::testCharacter: you are using a " + what1 + "  =  " + std::string(1, character1) +
         " and  " + what2 + " =  " + std::string(1, character2) + "  You are not allowed to use a same character for " +
         what1 + " and " + what2 + " ";
}

std::string noSuchFile(const std::string& name) {
  return "While trying to open file " + name +
         " : No such file or directory. The specified file or directory does not exist or cannot be found. This message "
         "can occur whenever a specified file does not exist or a component of a path does not specify an existing "
         "directory. ";
}

struct Characters {
  const char* separators;
  char decimal;
  char quote;
  char comment;
};

TEST(TestParameters, ReportsTheFirstRuleThatIsBroken) {
  const struct {
    Characters given;
    std::string message;
  } rows[] = {
      // Something is missing; a clash beside it is not looked at.
      {{nullptr, '.', '"', '#'}, NoCharacter},
      {{";", '\0', '"', '#'}, NoCharacter},
      {{";", '.', '\0', '#'}, NoCharacter},
      {{";", '.', '"', '\0'}, NoCharacter},
      {{nullptr, '#', '#', '#'}, NoCharacter},
      {{";", ';', '\0', ';'}, NoCharacter},
      {{"", '\0', '\0', '\0'}, NoCharacter},
      // Among the separators: quote, decimal, comment.
      {{";,", '.', ',', '#'}, includes(";,", "Quote", ',')},
      {{";,", ',', '"', '#'}, includes(";,", "Decimal", ',')},
      {{";#", '.', '"', '#'}, includes(";#", "Comment", '#')},
      {{";,", ',', ';', '#'}, includes(";,", "Quote", ';')},
      {{";,", ';', ',', ';'}, includes(";,", "Quote", ',')},
      {{";,", ',', '"', ';'}, includes(";,", "Decimal", ',')},
      {{";#", '"', '"', '#'}, includes(";#", "Comment", '#')},
      {{";", ';', ';', ';'}, includes(";", "Quote", ';')},
      {{";,", '#', ',', '#'}, includes(";,", "Quote", ',')},
      // A separator set is no format.
      {{"%s%n%d;", '.', ';', '#'}, includes("%s%n%d;", "Quote", ';')},
      {{"\xE9", '.', '"', '\xE9'}, includes("\xE9", "Comment", '\xE9')},
      // The same: comment and quote, comment and decimal, decimal and quote.
      {{";", '.', '#', '#'}, same("Comment", '#', "Quote", '#')},
      {{";", '#', '"', '#'}, same("Comment", '#', "Decimal", '#')},
      {{";", '"', '"', '#'}, same("Decimal", '"', "Quote", '"')},
      {{";", '#', '#', '#'}, same("Comment", '#', "Quote", '#')},
      {{"", '%', '%', '#'}, same("Decimal", '%', "Quote", '%')},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.message);
    TestEnv env;
    EXPECT_XEL_THROW(XelCsvParameters::testParameters(env, row.given.separators, row.given.decimal, row.given.quote,
                                                      row.given.comment),
                     ParameterException, row.message);
  }
}

TEST(TestParameters, TakesEverythingElse) {
  const Characters rows[] = {
      {";", '.', '"', '#'},    {"", '.', '"', '#'},  {" ", '.', '"', '#'},          {";,\t ", '.', '"', '#'},
      {";", ',', '\'', '%'},   {";", '|', '"', '#'}, {";;", '.', ' ', '\xE9'},      {"\n\r", '.', '"', '#'},
      {"\xE9", '.', '"', '#'}, {"|", '.', '"', '#'}, {"ABC0123", '.', '"', '\x01'},
  };
  for (const Characters& row : rows) {
    TestEnv env;
    EXPECT_NO_THROW(XelCsvParameters::testParameters(env, row.separators, row.decimal, row.quote, row.comment))
        << testing::PrintToString(row.separators);
  }
}

TEST(TestParameters, CutsALongMessage) {
  TestEnv env;
  const std::string separators(600, ';');
  EXPECT_XEL_THROW(XelCsvParameters::testParameters(env, separators.c_str(), '.', ';', '#'), ParameterException,
                   includes(separators, "Quote", ';').substr(0, 499));
}

TEST(InclusionTest, NamesWhatItWasTold) {
  TestEnv env;
  EXPECT_XEL_THROW(XelCsvParameters::inclusionTest(env, 'b', "abc", "Anything"), ParameterException,
                   includes("abc", "Anything", 'b'));
  EXPECT_NO_THROW(XelCsvParameters::inclusionTest(env, 'd', "abc", "Anything"));
  EXPECT_NO_THROW(XelCsvParameters::inclusionTest(env, 'd', "", "Anything"));
}

TEST(TestCharacter, NamesWhatItWasTold) {
  TestEnv env;
  EXPECT_XEL_THROW(XelCsvParameters::testCharacter(env, 'x', "One", 'x', "Other"), ParameterException,
                   same("One", 'x', "Other", 'x'));
  EXPECT_NO_THROW(XelCsvParameters::testCharacter(env, 'x', "One", 'y', "Other"));
}

TEST(TestFile, WantsAName) {
  TestEnv env;
  EXPECT_XEL_THROW(XelCsvParameters::testFile(env, nullptr), FileException, "XelCsvReader::testFile : Empty file name");
}

TEST(TestFile, OpensTheFileAndClosesIt) {
  TestEnv env;
  const DataFile file("A;1\n");
  const long openFiles = countOpenFiles();
  EXPECT_NO_THROW(XelCsvParameters::testFile(env, file.getName()));
  EXPECT_EQ(countOpenFiles(), openFiles);
  file.remove();
  EXPECT_XEL_THROW(XelCsvParameters::testFile(env, file.getName()), FileException, noSuchFile(file.getName()));
  EXPECT_XEL_THROW(XelCsvParameters::testFile(env, ""), FileException, noSuchFile(""));
}

TEST(MakeTests, LooksAtTheFileBeforeTheCharacters) {
  TestEnv env;
  const DataFile file("");
  EXPECT_NO_THROW(XelCsvParameters::makeTests(env, file.getName(), ";", '.', '"', '#'));
  EXPECT_XEL_THROW(XelCsvParameters::makeTests(env, file.getName(), nullptr, '#', '#', '#'), ParameterException,
                   NoCharacter);
  EXPECT_XEL_THROW(XelCsvParameters::makeTests(env, nullptr, nullptr, '#', '#', '#'), FileException,
                   "XelCsvReader::testFile : Empty file name");
  file.remove();
  EXPECT_XEL_THROW(XelCsvParameters::makeTests(env, file.getName(), nullptr, '#', '#', '#'), FileException,
                   noSuchFile(file.getName()));
}

// The tests of the file keep a pipe away from the implementation; one that gets there all the same, with a writer at its
// other end so that opening does not wait, cannot be positioned.
TEST(ReaderOnAPipe, IsACorruptedFileAndNothingWaits) {
  for (const long isMultiTable : {0L, 1L}) {
    for (const long isCached : {0L, 1L}) {
      TestEnv env;
      const DataDirectory directory;
      const std::string name = std::string(directory.getName()) + "/pipe";
      ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
      const int writer = open(name.c_str(), O_RDWR | O_CLOEXEC);
      ASSERT_GE(writer, 0);
      ASSERT_EQ(write(writer, "A;1\n", 4), 4);
      alarm(30);  // ends the program instead of waiting for ever
      EXPECT_XEL_THROW(
          XelNew<XelCsvReaderI>(env, env, name.c_str(), isCached, isMultiTable, 0L, ";", '.', '"', '#'),
          XelCsvReader::XelCsvReaderException,
          "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table " + name);
      alarm(0);
      close(writer);
    }
  }
}

}  // namespace

// Every failure of the library: its class and its text, as a table.
#include "csv/errors/XelCsvErrors.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <typeinfo>
#include <vector>

#include "xelcsv/XelCsvReader.h"

namespace {

// A failure: the class thrown, the format of its text with the arguments that fill it, and the function that throws it.
struct Failure {
  const std::type_info& type;
  std::string format;
  std::vector<std::string> arguments;
  std::function<void()> raise;
};

// The format with its arguments in the places of %s, %ld and %c, at the length that a message has.
std::string fill(const Failure& failure) {
  std::string text;
  std::size_t argument = 0;
  for (std::size_t at = 0; at < failure.format.size(); ++at) {
    if (failure.format[at] != '%') {
      text += failure.format[at];
      continue;
    }
    text += failure.arguments.at(argument++);
    at += failure.format.compare(at, 3, "%ld") == 0 ? 2U : 1U;
  }
  EXPECT_EQ(argument, failure.arguments.size()) << failure.format;
  return text.substr(0, 499);
}

// All failures, with text as the name of the file or table, or as the key where the text has no name.
std::vector<Failure> makeFailures(const char* text) {
  const XelCsvSite file{text, nullptr};
  const XelCsvSite table{"data.csv", text};
  return {
      {typeid(XelCsvReader::XelFieldNotFoundException),
       "XelCsvReader::XelFieldNotFoundException : Field Not Found at position %ld in line number %ld while trying %s",
       {"3", "12", text},
       [=] { XelCsvErrors::fieldNotFound(file, 3, 12, text); }},
      {typeid(XelCsvReader::XelFieldNotFoundException),
       "XelCsvReader::XelFieldNotFoundException : Field Not Found at position %ld in line number %ld, in table %s while trying %s",
       {"3", "12", text, "getIntByPosition"},
       [=] { XelCsvErrors::fieldNotFound(table, 3, 12, "getIntByPosition"); }},
      {typeid(XelCsvReader::XelOverflowException),
       "XelCsvReader::XelOverflowException : OVERFLOW while reading field %ld  of line number %ld as integer",
       {"3", "12"},
       [=] { XelCsvErrors::overflow(file, 3, 12); }},
      {typeid(XelCsvReader::XelOverflowException),
       "XelCsvReader::XelOverflowException : OVERFLOW while reading field %ld  of line number %ld in table %s as integer",
       {"3", "12", text},
       [=] { XelCsvErrors::overflow(table, 3, 12); }},
      {typeid(XelCsvReader::XelOverflowException),
       "XelOverflowException : OVERFLOW while reading field %ld  of line number %ld in table %s as integer",
       {"3", "12", text},
       [=] { XelCsvErrors::overflowBesideDefault(table, 3, 12); }},
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException : No Table having this name %s.",
       {text},
       [=] { XelCsvErrors::noTableForEndOffset(text); }},
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table %s",
       {text},
       [=] { XelCsvErrors::corruptedTable(table); }},
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException : corrupted file while trying to read data for table %s",
       {text},
       [=] { XelCsvErrors::corruptedIndexedTable(table); }},
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table %s = %ld and number of fields of line number %ld = %ld",
       {text, "4", "12", "5"},
       [=] { XelCsvErrors::otherNumberOfFields(table, true, 4, 12, 5); }},
      {typeid(XelCsvReader::XelNumberOfFieldsException),
       "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of the table = %ld and number of fields of line number %ld = %ld",
       {"4", "12", "5"},
       [=] { XelCsvErrors::otherNumberOfFields(file, false, 4, 12, 5); }},
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (%ld) exceeds the number of fields of the current line (%ld), line number %ld",
       {"3", "2", "12"},
       [=] { XelCsvErrors::tooFewFieldsForKeys(file, 3, 2, 12); }},
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException : corrupted file the number of keys (%ld) exceeds the number of fields of the current line (%ld), line number %ld in table %s",
       {"3", "2", "12", text},
       [=] { XelCsvErrors::tooFewFieldsForKeys(table, 3, 2, 12); }},
      {typeid(XelCsvReader::XelTableNotFoundException),
       "XelCsvReader::XelTableNotFoundException : No Table number %ld.The number of tables is %ld.",
       {"7", "2"},
       [=] { XelCsvErrors::tableNumberNotFound(7, 2); }},
      {typeid(XelCsvReader::XelTableNotFoundException),
       "XelCsvReader::XelTableNotFoundException : No Table having this name %s.",
       {text},
       [=] { XelCsvErrors::tableNotFound(text); }},
      {typeid(XelCsvReader::XelTableNotFoundException),
       "XelCsvReader::XelTableNotFoundException : No Table specified, the file %s is a multi-table file.",
       {text},
       [=] { XelCsvErrors::noTableSpecified(text); }},
      {typeid(XelCsvReader::XelIncorrectCsvReaderUseException),
       "XelCsvReader::XelIncorrectCsvReaderUseException : %s is a multi-Table file. No table have been specified while trying to do a %s.",
       {text, "getLineByKey"},
       [=] { XelCsvErrors::multiTableFile(text, "getLineByKey"); }},
      {typeid(XelCsvReader::XelIncorrectCsvReaderUseException),
       "XelCsvReader::XelIncorrectCsvReaderUseException : %s is a unique-Table file. cann't use this member function %s with this reader.",
       {text, "getTableByName"},
       [=] { XelCsvErrors::uniqueTableFile(text, "getTableByName"); }},
      {typeid(XelCsvReader::XelIncorrectCsvReaderUseException),
       "XelCsvReader::XelIncorrectCsvReaderUseException : %s is a multi-Table file. There is no reader for unique table.",
       {text},
       [=] { XelCsvErrors::noReaderForUniqueTable(text); }},
      {typeid(XelCsvReader::XelColumnHeaderNotFoundException),
       "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file %s ",
       {text},
       [=] { XelCsvErrors::noHeadingLine(file); }},
      {typeid(XelCsvReader::XelColumnHeaderNotFoundException),
       "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in table %s ",
       {text},
       [=] { XelCsvErrors::noHeadingLine(table); }},
      {typeid(XelCsvReader::XelColumnHeaderNotFoundException),
       "XelCsvReader::XelColumnHeaderNotFoundException : Heading %s not found",
       {"price"},
       [=] { XelCsvErrors::headingNotFound(file, "price"); }},
      {typeid(XelCsvReader::XelColumnHeaderNotFoundException),
       "XelCsvReader::XelColumnHeaderNotFoundException : Heading %s not found in table %s",
       {"price", text},
       [=] { XelCsvErrors::headingNotFound(table, "price"); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line number %ld .",
       {"-1"},
       [=] { XelCsvErrors::noLineScanned(file, -1); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line number %ld in table %s.",
       {"1099511627776", text},
       [=] { XelCsvErrors::noLineScanned(table, 1L << 40); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line number %ld ",
       {"-1"},
       [=] { XelCsvErrors::noLineIndexed(file, -1); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line number %ld in table %s",
       {"1099511627776", text},
       [=] { XelCsvErrors::noLineIndexed(table, 1L << 40); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line having key %s.",
       {text},
       [=] { XelCsvErrors::noKeyScanned(file, text); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line having key %s in table %s.",
       {"Oslo-1", text},
       [=] { XelCsvErrors::noKeyScanned(table, "Oslo-1"); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line having key %s .",
       {text},
       [=] { XelCsvErrors::noKeyIndexed(file, text); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line having key %s in table %s.",
       {"Oslo-1", text},
       [=] { XelCsvErrors::noKeyIndexed(table, "Oslo-1"); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line having key %s found.",
       {text},
       [=] { XelCsvErrors::noKeyIterated(file, text); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : No line having key %s found in table %s.",
       {"Oslo-1", text},
       [=] { XelCsvErrors::noKeyIterated(table, "Oslo-1"); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : %ld",
       {"3"},
       [=] { XelCsvErrors::notEnoughKeys(file, 3); }},
      {typeid(XelCsvReader::XelLineNotFoundException),
       "XelCsvReader::XelLineNotFoundException : Not enought keys, the number of keys is : %ld for table %s",
       {"3", text},
       [=] { XelCsvErrors::notEnoughKeys(table, 3); }},
      {typeid(XelCsvReader::XelDuplicatedLineException),
       "XelCsvReader::XelDuplicatedLineException : Another line with key  %s already exists.",
       {text},
       [=] { XelCsvErrors::duplicatedLine(file, text); }},
      {typeid(XelCsvReader::XelDuplicatedLineException),
       "XelCsvReader::XelDuplicatedLineException : Another line with key  %s already exists in table %s",
       {"Oslo-1", text},
       [=] { XelCsvErrors::duplicatedLine(table, "Oslo-1"); }},
      {typeid(XelCsvReader::XelDuplicatedLineException),
       "XelCsvReader::XelDuplicatedLineException : Another line with key  %s already exists In Table %s .",
       {"Oslo-1", text},
       [=] { XelCsvErrors::duplicatedLineInTable(text, "Oslo-1"); }},
      {typeid(XelCsvReader::XelDuplicatedTableException),
       "XelCsvReader::XelDuplicatedTableException : Another table with name %s already exists. Table splitting is not specified. ",
       {text},
       [=] { XelCsvErrors::duplicatedTable(text); }},
      {typeid(XelCsvReader::XelFileNotFoundException),
       "XelCsvReader::testFile : Empty file name",
       {},
       [=] { XelCsvErrors::emptyFileName(); }},
      {typeid(XelCsvReader::XelCsvReaderParameterException),
       "XelCsvReader::XelCsvReaderParameterException : You must specify a value different of 0 for separator, decimal, quote and comment characters",
       {},
       [=] { XelCsvErrors::noSeparatorOrCharacter(); }},
      {typeid(XelCsvReader::XelCsvReaderParameterException),
       "XelCsvReader::XelCsvReader::inclusionTest : you are using a separator = %s and a %s = %c  %s  must not be a separator. ",
       {text, "Quote", ",", "Quote"},
       [=] { XelCsvErrors::separatorIncludes(text, "Quote", ','); }},
      {typeid(XelCsvReader::XelCsvReaderParameterException),
       "XelCsvReader::XelCsvReader::testCharacter: you are using a %s  =  %c and  %s =  %c  You are not allowed to use a same character for %s and %s ",
       {"Comment", "#", "Quote", "#", "Comment", "Quote"},
       [=] { XelCsvErrors::sameCharacter("Comment", '#', "Quote", '#'); }},
  };
}

void expectFailure(const Failure& failure) {
  const std::string expected = fill(failure);
  SCOPED_TRACE(failure.format);
  try {
    failure.raise();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const XelQuietException& exception) {
    EXPECT_EQ(typeid(exception), failure.type) << typeid(exception).name();
    EXPECT_EQ(std::string(exception.getMessage()), expected);
    EXPECT_EQ(std::string(exception.what()), expected);
    EXPECT_EQ(exception.getCode(), 1);
  }
}

void expectMessage(const std::function<void()>& raise, const std::string& expected) {
  try {
    raise();
    ADD_FAILURE() << "nothing was thrown: " << expected;
  } catch (const XelQuietException& exception) {
    EXPECT_EQ(std::string(exception.getMessage()), expected);
  }
}

}  // namespace

TEST(XelCsvErrors, ThrowTheseClassesWithTheseTexts) {
  for (const Failure& failure : makeFailures("Stock")) expectFailure(failure);
}

TEST(XelCsvErrors, TakeNamesAsText) {
  for (const Failure& failure : makeFailures("100%s%n%ld \xE9 |")) expectFailure(failure);
}

TEST(XelCsvErrors, CutTheMessageAt499Bytes) {
  for (const std::size_t length : {300U, 400U, 450U, 499U, 500U, 501U, 12000U}) {
    const std::string name(length, 'x');
    for (const Failure& failure : makeFailures(name.c_str())) expectFailure(failure);
  }
}

TEST(XelCsvErrors, FitUpToTheLastByte) {
  const std::string before = "XelCsvReader::XelTableNotFoundException : No Table having this name ";
  const std::string name(499 - before.size() - 1, 'x');
  expectMessage([&] { XelCsvErrors::tableNotFound(name.c_str()); }, before + name + ".");
  const std::string longer = name + "y";
  expectMessage([&] { XelCsvErrors::tableNotFound(longer.c_str()); }, before + longer);
}

TEST(XelCsvErrors, TheFilesNameStandsWhereATableHasNoNameAndTheTextNoOtherWording) {
  const XelCsvSite file{"data.csv", nullptr};
  expectMessage([&] { XelCsvErrors::corruptedTable(file); },
                "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table data.csv");
  expectMessage([&] { XelCsvErrors::corruptedIndexedTable(file); },
                "XelCsvReader::XelCsvReaderException : corrupted file while trying to read data for table data.csv");
}

TEST(XelCsvErrors, OtherNumberOfFieldsIsWordedByTheKindOfFileNotByTheName) {
  const XelCsvSite file{"data.csv", nullptr};
  const XelCsvSite table{"data.csv", "Stock"};
  expectFailure({typeid(XelCsvReader::XelNumberOfFieldsException),
                 "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of the table = %ld and number "
                 "of fields of line number %ld = %ld",
                 {"4", "12", "5"},
                 [&] { XelCsvErrors::otherNumberOfFields(table, false, 4, 12, 5); }});
  expectFailure(
      {typeid(XelCsvReader::XelCsvReaderException),
       "XelCsvReader::XelCsvReaderException : Corrupted file, number of fields of table %s = %ld and number of "
       "fields of line number %ld = %ld",
       {"data.csv", "4", "12", "5"},
       [&] { XelCsvErrors::otherNumberOfFields(file, true, 4, 12, 5); }});
}

TEST(XelCsvErrors, OverflowBesideADefaultIsTheCommonOneWithoutATablesName) {
  expectFailure({typeid(XelCsvReader::XelOverflowException),
                 "XelCsvReader::XelOverflowException : OVERFLOW while reading field %ld  of line number %ld as integer",
                 {"3", "12"},
                 [] {
                   XelCsvErrors::overflowBesideDefault({"data.csv", nullptr}, 3, 12);
                 }});
}

TEST(XelCsvErrors, NullNamesStandAsTheEmptyText) {
  const XelCsvSite nowhere{};
  expectMessage([] { XelCsvErrors::tableNotFound(nullptr); },
                "XelCsvReader::XelTableNotFoundException : No Table having this name .");
  expectMessage([] { XelCsvErrors::noTableForEndOffset(nullptr); },
                "XelCsvReader::XelCsvReaderException : No Table having this name .");
  expectMessage([&] { XelCsvErrors::headingNotFound(nowhere, nullptr); },
                "XelCsvReader::XelColumnHeaderNotFoundException : Heading  not found");
  expectMessage(
      [&] {
        XelCsvErrors::headingNotFound({"data.csv", "Stock"}, nullptr);
      },
      "XelCsvReader::XelColumnHeaderNotFoundException : Heading  not found in table Stock");
  expectMessage([&] { XelCsvErrors::noKeyScanned(nowhere, nullptr); },
                "XelCsvReader::XelLineNotFoundException : No line having key .");
  expectMessage([&] { XelCsvErrors::noKeyIndexed(nowhere, nullptr); },
                "XelCsvReader::XelLineNotFoundException : No line having key  .");
  expectMessage([&] { XelCsvErrors::noKeyIterated(nowhere, nullptr); },
                "XelCsvReader::XelLineNotFoundException : No line having key  found.");
  expectMessage([&] { XelCsvErrors::noHeadingLine(nowhere); },
                "XelCsvReader::XelColumnHeaderNotFoundException : No header line for columns in file  ");
  expectMessage([&] { XelCsvErrors::corruptedTable(nowhere); },
                "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table ");
}

TEST(XelCsvErrors, CannotOpenThrowsItsTextAsItIs) {
  expectFailure(
      {typeid(XelCsvReader::XelFileNotFoundException), "While trying to open file data.csv : No such file.", {}, [] {
         XelCsvErrors::cannotOpen("While trying to open file data.csv : No such file.");
       }});
}

TEST(XelCsvErrors, OneHandlerOfTheFamilyCatchesAll) {
  long caught = 0;
  for (const Failure& failure : makeFailures("Stock")) {
    try {
      failure.raise();
    } catch (const XelCsvReader::XelCsvReaderException&) {
      ++caught;
    }
  }
  EXPECT_EQ(caught, static_cast<long>(makeFailures("Stock").size()));
}

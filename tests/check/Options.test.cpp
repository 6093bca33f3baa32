// What a caller asks for: kinds of findings, how many, when to stop; and what cannot be checked.
#include <stdexcept>

#include "tests/check/Checking.h"
#include "tests/support/OpenTable.h"

namespace {

const char* const Ragged = "|NAMES,a,b\n|KEYS,1,0\n1\n2\n3\n4\n5,6\n";

// The lines of the findings, and the result.
struct Checked {
  std::vector<long> lines;
  XelCsvCheckResult result;
};

Checked check(const char* text, const XelCsvCheckOptions& options,
              const XelCsvCheckParameters& parameters = oneTable()) {
  TestEnv env;
  DataFile file(text);
  Checked checked;
  checked.result = XelCsvCheck(env, file.getName(), parameters, options).run([&checked](const XelCsvFinding& finding) {
    checked.lines.push_back(finding.line);
    return true;
  });
  return checked;
}

using Lines = std::vector<long>;

}  // namespace

TEST(CheckOptions, OnlyAndSkipChooseTheKinds) {
  const char* const text = "a\tb\x01\n# c\n  # d";
  const auto codesOf = [text](XelCsvCheckOptions options) {
    std::string codes;
    const CheckedFile file(text, oneTable(), std::move(options));
    for (const XelCsvFinding& finding : file.getFindings()) codes += std::string(finding.code) + ' ';
    return codes;
  };
  EXPECT_EQ(codesOf({}), "control-character comment-with-blank no-final-eol ");
  EXPECT_EQ(codesOf(only({"no-final-eol", "control-character"})), "control-character no-final-eol ");
  XelCsvCheckOptions options;
  options.skip = {"control-character"};
  EXPECT_EQ(codesOf(options), "comment-with-blank no-final-eol ");
  options.only = {"control-character", "no-final-eol"};
  EXPECT_EQ(codesOf(options), "no-final-eol ");
}

TEST(CheckOptions, UnknownCodesAreRefused) {
  TestEnv env;
  DataFile file("a\n");
  for (const bool isOnly : {true, false}) {
    XelCsvCheckOptions options;
    (isOnly ? options.only : options.skip) = {"bom", "bomb"};
    try {
      const XelCsvCheck check(env, file.getName(), oneTable(), options);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const std::invalid_argument& exception) {
      EXPECT_STREQ(exception.what(), "There is no finding of this code: bomb");
    }
  }
}

TEST(CheckOptions, AllFindingsAreReportedUnlessAskedOtherwise) {
  const Checked all = check(Ragged, {});
  EXPECT_EQ(all.lines, (Lines{3, 4, 5, 6}));
  EXPECT_EQ(all.result.errors, 4);
  EXPECT_EQ(all.result.warnings, 0);
  EXPECT_EQ(all.result.notes, 0);
  EXPECT_EQ(all.result.reported, 4);
  EXPECT_TRUE(all.result.isWhole);
  EXPECT_EQ(all.result.bytes, static_cast<long>(std::string(Ragged).size()));
  EXPECT_EQ(all.result.lines, 7);
  EXPECT_EQ(all.result.tables, 1);
  EXPECT_TRUE(all.result.omitted.empty());
}

TEST(CheckOptions, MaxFindingsEndsTheCheck) {
  XelCsvCheckOptions options;
  options.maxFindings = 2;
  const Checked two = check(Ragged, options);
  EXPECT_EQ(two.lines, (Lines{3, 4}));
  EXPECT_EQ(two.result.reported, 2);
  EXPECT_FALSE(two.result.isWhole);
  EXPECT_EQ(two.result.lines, 4);
  options.maxFindings = 0;
  const Checked none = check(Ragged, options);
  EXPECT_EQ(none.lines, Lines{});
  EXPECT_FALSE(none.result.isWhole);
  EXPECT_EQ(none.result.lines, 0);
}

TEST(CheckOptions, MaxAlikeCountsTheOthersOfATable) {
  XelCsvCheckOptions options;
  options.maxAlike = 1;
  const Checked limited = check(
      "A|NAMES,a,b\nA|KEYS,0,1\nA,1\nA,2\nA,3\nB|NAMES,a,b\nB|KEYS,0,1\nB,1\nB,2\nC,\"\nC,\"\n", options, manyTables());
  EXPECT_EQ(limited.lines, (Lines{3, 8, 10, 11}));
  EXPECT_EQ(limited.result.errors, 8);
  EXPECT_EQ(limited.result.reported, 4);
  EXPECT_TRUE(limited.result.isWhole);
  ASSERT_EQ(limited.result.omitted.size(), 3U);
  EXPECT_STREQ(limited.result.omitted[0].code, "ragged");
  EXPECT_EQ(limited.result.omitted[0].table, "A");
  EXPECT_EQ(limited.result.omitted[0].count, 2);
  EXPECT_EQ(limited.result.omitted[1].table, "B");
  EXPECT_EQ(limited.result.omitted[1].count, 1);
}

TEST(CheckOptions, AFunctionThatAnswersFalseEndsTheCheck) {
  TestEnv env;
  DataFile file(Ragged);
  long reported = 0;
  const XelCsvCheckResult result = XelCsvCheck(env, file.getName()).run([&reported](const XelCsvFinding&) {
    ++reported;
    return false;
  });
  EXPECT_EQ(reported, 1);
  EXPECT_FALSE(result.isWhole);
}

TEST(CheckOptions, AFunctionMayThrow) {
  TestEnv env;
  DataFile file(Ragged);
  EXPECT_THROW(
      XelCsvCheck(env, file.getName()).run([](const XelCsvFinding&) -> bool { throw std::runtime_error("no"); }),
      std::runtime_error);
}

TEST(CheckOptions, ProgressIsToldAboutOnceAMegabyteAndMayStop) {
  std::string text;
  while (text.size() < (3U << 20U)) text += std::to_string(text.size()) + ",abcdefghijklmnopqrstuvwxyz\n";
  TestEnv env;
  DataFile file(text);
  const XelCsvCheck check(env, file.getName());
  const auto nothing = [](const XelCsvFinding&) { return true; };
  std::vector<long> told;
  EXPECT_TRUE(check
                  .run(nothing,
                       [&told](long bytes) {
                         told.push_back(bytes);
                         return true;
                       })
                  .isWhole);
  EXPECT_EQ(told.size(), 3U - 1U);
  EXPECT_GE(told[0], 1L << 20);
  EXPECT_LT(told[0], (1L << 20) + 100);
  const XelCsvCheckResult stopped = check.run(nothing, [](long) { return false; });
  EXPECT_FALSE(stopped.isWhole);
  EXPECT_EQ(stopped.bytes, told[0]);
}

TEST(CheckOptions, ACheckMayBeRunAgain) {
  TestEnv env;
  DataFile file(Ragged);
  const XelCsvCheck check(env, file.getName());
  EXPECT_EQ(check.collect().size(), 4U);
  file.write("1,2\n");
  EXPECT_EQ(check.collect().size(), 0U);
  file.remove();
  EXPECT_XEL_THROW(check.collect(), XelCsvReader::XelFileNotFoundException, textOfMissing(file));
}

TEST(Check, RefusesWhatTheReaderRefuses) {
  TestEnv env;
  DataFile file("a\n");
  XelCsvCheckParameters parameters = oneTable();
  parameters.comment = '"';
  EXPECT_XEL_THROW(
      XelCsvCheck(env, file.getName(), parameters), XelCsvReader::XelCsvReaderParameterException,
      "XelCsvReader::XelCsvReader::testCharacter: you are using a Comment  =  \" and  Quote =  \"  You are "
      "not allowed to use a same character for Comment and Quote ");
  file.remove();
  EXPECT_XEL_THROW(XelCsvCheck(env, file.getName()), XelCsvReader::XelFileNotFoundException, textOfMissing(file));
}

TEST(Check, AFolderIsNoCleanFile) {
  TestEnv env;
  const std::string text =
      "While trying to open file . : The named file is a directory and mode requires write access.";
  EXPECT_XEL_THROW(XelCsvReader(env, "."), XelCsvReader::XelFileNotFoundException, text);
  const XelCsvCheck check(env, ".");
  EXPECT_XEL_THROW(check.collect(), XelCsvReader::XelFileNotFoundException, text);
  XelCsvCheckParameters parameters;
  parameters.isMultiTable = true;
  EXPECT_XEL_THROW(XelCsvCheck(env, ".", parameters).collect(), XelCsvReader::XelFileNotFoundException, text);
}

TEST(Check, LooksForNoSplitTablesInAOneTableFile) {
  XelCsvCheckParameters parameters = oneTable();
  parameters.allowTableSplitting = true;
  CheckedFile file("1\n|NAMES,a\n", parameters);
  ASSERT_EQ(file.getFindings().size(), 1U);
  EXPECT_EQ(
      file.getFindings()[0].message,
      "heading and key lines count only in front of all other lines of a table: this one reads silently as a line "
      "of data");
  EXPECT_EQ(file.read().getNumberOfItems(), 2);
}

TEST(Check, SurvivesAFileThatChangesMeanwhile) {
  const std::string text =
      "|NAMES,a,b\n|KEYS,1,0\n1,x\x01\n1,2\n3,9\n4,1\n5,3000000000\n6,\"3,5\"\n7,1\n8,1\n9,1\n7,2\n7,5\n7,5\n";
  for (const char* changed : {"", "a", "|NAMES,c\n1\n2\n3\n4\n5\n6\n7\n8\n9\n"}) {
    TestEnv env;
    DataFile file(text);
    long findings = 0;
    XelCsvCheck(env, file.getName()).run([&](const XelCsvFinding&) {
      if (findings == 0) file.write(changed);
      ++findings;
      return true;
    });
    EXPECT_GT(findings, 2);
  }
}

TEST(Check, CountsTablesWithDifferentNames) {
  const Checked many = check("XELO_CSV_FORMAT,1\nA,1\nB,1\nA,2\n", {}, manyTables());
  EXPECT_EQ(many.result.tables, 3);
}

TEST(Check, SeveritiesHaveNames) {
  EXPECT_STREQ(XelGetSeverityName(XelCsvSeverity::Note), "note");
  EXPECT_STREQ(XelGetSeverityName(XelCsvSeverity::Warning), "warning");
  EXPECT_STREQ(XelGetSeverityName(XelCsvSeverity::Error), "error");
}

TEST(Check, EveryFailingAllocationComesThrough) {
  std::string text;
  for (int line = 0; line < 100; ++line) text += "A," + std::to_string(line) + ",x-" + std::to_string(line) + "\n";
  DataFile file("A|NAMES,a,b\nA|KEYS,1,1\n" + text + "B,1\nB,1\nB,2\nB,3\nB,4\nB,n/a\nA,1,x-1\n");
  const long injected = forEachFailingAllocation(
      [&file](XelEnv env) { EXPECT_EQ(XelCsvCheck(env, file.getName(), splitTables()).collect().size(), 5U); });
  EXPECT_GT(injected, 20);
}

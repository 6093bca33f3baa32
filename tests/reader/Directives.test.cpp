// The two directive tables: format of the file, version of its data, and what requires it.
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>

#include "csv/reader/XelCsvReaderI.h"
#include "tests/support/DataFile.h"
#include "tests/support/DecimalPoint.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"

namespace {

constexpr long BothReaders[] = {0, 1};

XelEnvOwner<XelCsvReaderI> makeReader(XelEnv env, const DataFile& file, long isCached, char decimal = '.') {
  return XelNew<XelCsvReaderI>(env, env, file.getName(), isCached, 1L, 0L, ";", decimal, '"', '#');
}

TEST(Directives, GiveTheFormatOfTheFile) {
  const DecimalPoint point;
  const struct {
    const char* content;
    double format;
  } rows[] = {
      {"XELO_CSV_FORMAT;1.0\nA;1\n", 1.0},
      {"XELO_CSV_FORMAT;  2.0  \n", 2.0},
      {"XELO_CSV_FORMAT;\"2.5\"\n", 2.5},
      {"XELO_CSV_FORMAT;\n", 0.0},
      {"XELO_CSV_FORMAT;   \n", 0.0},
      {"XELO_CSV_FORMAT;text\n", 0.0},
      {"XELO_CSV_FORMAT;1.5;more;fields\r\n", 1.5},
      {"XELO_CSV_FORMAT;+INF\n", std::numeric_limits<double>::infinity()},
      {"XELO_CSV_FORMAT; -3e2", -300.0},
      {"# c\n\nXELO_CSV_FORMAT|NAMES;v\n#c\nXELO_CSV_FORMAT;4\nXELO_CSV_FORMAT;5\n", 4.0},  // line 0 of the data lines
      {"A;1\nXELO_CSV_FORMAT;6\n", 6.0},                                                    // wherever it stands
      {"XELO_DATA_SCHEMA;t;1\nXELO_CSV_FORMAT;7\n", 7.0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.content);
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(row.content);
      EXPECT_EQ(makeReader(env, file, isCached)->getCsvFormat(), row.format);
    }
  }
}

TEST(Directives, ReadNumbersWithTheDecimalCharacterOfTheFile) {
  const DecimalPoint point;
  TestEnv env;
  const DataFile file("XELO_CSV_FORMAT;1,5\nXELO_DATA_SCHEMA;a,b;2,25\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, 1, ',');
  EXPECT_EQ(reader->getCsvFormat(), 1.5);
  EXPECT_EQ(reader->getFileVersion(), 2.25);
  EXPECT_STREQ(reader->getRequiredBy(), "a.b");  // the decimal character becomes a point in every field
}

// A file reader that reads each number as its text's length.
class LengthReader : public XelCsvReaderI {
 public:
  using XelCsvReaderI::XelCsvReaderI;

  double parseFloat(const char* text) const override { return static_cast<double>(std::string(text).size()); }
};

TEST(Directives, AreReadByTheReadersOwnParseFloat) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT; 1.25 \nXELO_DATA_SCHEMA;tool; 12\n");
    const auto reader = XelNew<LengthReader>(env, env, file.getName(), isCached, 1L, 0L, ";", '.', '"', '#');
    EXPECT_EQ(reader->getCsvFormat(), 4.0);  // the field is trimmed before
    EXPECT_EQ(reader->getFileVersion(), 2.0);
  }
}

// A file reader that refuses to read numbers.
class RefusingReader : public XelCsvReaderI {
 public:
  using XelCsvReaderI::XelCsvReaderI;

  double parseFloat(const char* text) const override { throw std::out_of_range(text); }
};

TEST(Directives, PassOnWhatTheReadersOwnParseFloatThrows) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT;1.25\nXELO_DATA_SCHEMA;tool;12\n");
    const auto reader = XelNew<RefusingReader>(env, env, file.getName(), isCached, 1L, 0L, ";", '.', '"', '#');
    const long openFiles = countOpenFiles();
    EXPECT_THROW(reader->getCsvFormat(), std::out_of_range);
    EXPECT_THROW(reader->getFileVersion(), std::out_of_range);
    EXPECT_STREQ(reader->getRequiredBy(), "tool");  // stored before the version was looked for
    EXPECT_EQ(countOpenFiles(), openFiles);
  }
}

TEST(Directives, GiveVersionAndRequiredByOfTheSchema) {
  const DecimalPoint point;
  const struct {
    const char* content;
    double version;
    const char* requiredBy;
  } rows[] = {
      {"XELO_DATA_SCHEMA;planner;2.5\nA;1\n", 2.5, "planner"},
      {"XELO_DATA_SCHEMA;  my planner  ;  2.5  \n", 2.5, "my planner"},
      {"XELO_DATA_SCHEMA;planner;0\n", 0.0, "planner"},
      {"XELO_DATA_SCHEMA;planner;\n", 0.0, "planner"},
      {"XELO_DATA_SCHEMA;;3\n", 3.0, ""},
      {"XELO_DATA_SCHEMA;  ;3\n", 3.0, ""},
      {"XELO_DATA_SCHEMA;\"a;b\";3\n", 3.0, "a;b"},
      {"A;1\nXELO_DATA_SCHEMA|NAMES;by;version\nXELO_DATA_SCHEMA;planner;4;x\n", 4.0, "planner"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.content);
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(row.content);
      const XelEnvOwner<XelCsvReaderI> versionFirst = makeReader(env, file, isCached);
      EXPECT_EQ(versionFirst->getFileVersion(), row.version);
      EXPECT_STREQ(versionFirst->getRequiredBy(), row.requiredBy);
      const XelEnvOwner<XelCsvReaderI> requiredByFirst = makeReader(env, file, isCached);
      EXPECT_STREQ(requiredByFirst->getRequiredBy(), row.requiredBy);
      EXPECT_EQ(requiredByFirst->getFileVersion(), row.version);
    }
  }
}

TEST(Directives, CsvFormatIsReadFromTheFileEachTime) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT;1.0\nA;1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
    EXPECT_EQ(reader->getCsvFormat(), 1.0);
    const long blocks = env.getAllocator().getBlocksOut();
    file.write("XELO_CSV_FORMAT;2.0\nA;1\n");
    EXPECT_EQ(reader->getCsvFormat(), 2.0);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
    file.remove();
    EXPECT_THROW(reader->getCsvFormat(), XelCsvReader::XelFileNotFoundException);
    file.write("XELO_CSV_FORMAT;3.0\nA;1\n");
    EXPECT_EQ(reader->getCsvFormat(), 3.0);
  }
}

TEST(Directives, SchemaIsReadOnce) {
  const DecimalPoint point;
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_DATA_SCHEMA;tool;2.5\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
    EXPECT_EQ(reader->getFileVersion(), 2.5);
    file.write("XELO_DATA_SCHEMA;tock;3.5\n");
    EXPECT_EQ(reader->getFileVersion(), 2.5);
    const char* requiredBy = reader->getRequiredBy();
    EXPECT_STREQ(requiredBy, "tool");
    file.remove();
    EXPECT_EQ(reader->getRequiredBy(), requiredBy);
    EXPECT_EQ(reader->getFileVersion(), 2.5);
  }
}

TEST(Directives, AVersionOfZeroIsNotReadAgainEither) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_DATA_SCHEMA;tool;0\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
    EXPECT_EQ(reader->getFileVersion(), 0.0);
    file.write("XELO_DATA_SCHEMA;tock;7\n");
    EXPECT_EQ(reader->getFileVersion(), 0.0);
    EXPECT_STREQ(reader->getRequiredBy(), "tool");
  }
}

TEST(Directives, RequiredByIsStoredBeforeTheVersionIsLookedFor) {
  const std::string noVersion =
      "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 2 in line number 1, in table "
      "XELO_DATA_SCHEMA while trying getFloatByPosition";
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("# c\nXELO_DATA_SCHEMA; tool \nA;1\n");
    const XelEnvOwner<XelCsvReaderI> versionFirst = makeReader(env, file, isCached);
    EXPECT_XEL_THROW(versionFirst->getFileVersion(), XelCsvReader::XelFieldNotFoundException, noVersion);
    EXPECT_EQ(versionFirst->getFileVersion(), 0.0);
    EXPECT_STREQ(versionFirst->getRequiredBy(), "tool");
    const XelEnvOwner<XelCsvReaderI> requiredByFirst = makeReader(env, file, isCached);
    EXPECT_XEL_THROW(requiredByFirst->getRequiredBy(), XelCsvReader::XelFieldNotFoundException, noVersion);
    EXPECT_STREQ(requiredByFirst->getRequiredBy(), "tool");
    EXPECT_EQ(requiredByFirst->getFileVersion(), 0.0);
  }
}

TEST(Directives, NameTheMissingField) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT\n#c\n\nXELO_DATA_SCHEMA\nA;1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    EXPECT_XEL_THROW(
        reader->getCsvFormat(), XelCsvReader::XelFieldNotFoundException,
        "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 1 in line number 0, in table "
        "XELO_CSV_FORMAT while trying getFloatByPosition");
    const std::string noRequiredBy =
        "XelCsvReader::XelFieldNotFoundException : Field Not Found at position 1 in line number 3, in table "
        "XELO_DATA_SCHEMA while trying getStringByPosition";
    // Nothing was stored, so each call reads again.
    for (int call = 0; call < 2; ++call) {
      EXPECT_XEL_THROW(reader->getFileVersion(), XelCsvReader::XelFieldNotFoundException, noRequiredBy);
      EXPECT_XEL_THROW(reader->getRequiredBy(), XelCsvReader::XelFieldNotFoundException, noRequiredBy);
    }
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
  }
}

TEST(Directives, NameTheMissingTable) {
  for (const char* content : {"A;1\n", "", "XELO_CSV_FORMATS;1\nxelo_data_schema;1;1\n"}) {
    for (const long isCached : BothReaders) {
      TestEnv env;
      const DataFile file(content);
      const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
      const std::string message = "XelCsvReader::XelTableNotFoundException : No Table having this name ";
      EXPECT_XEL_THROW(reader->getCsvFormat(), XelCsvReader::XelTableNotFoundException, message + "XELO_CSV_FORMAT.");
      EXPECT_XEL_THROW(reader->getFileVersion(), XelCsvReader::XelTableNotFoundException,
                       message + "XELO_DATA_SCHEMA.");
      EXPECT_XEL_THROW(reader->getRequiredBy(), XelCsvReader::XelTableNotFoundException, message + "XELO_DATA_SCHEMA.");
    }
  }
}

TEST(Directives, PassOnThatThereIsNoLine) {
  for (const long isCached : BothReaders) {
    TestEnv env;
    const DataFile file("XELO_CSV_FORMAT|NAMES;v\nXELO_DATA_SCHEMA|NAMES;by;v\nA;1\n");
    const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
    const long blocks = env.getAllocator().getBlocksOut();
    const std::string end = isCached != 0 ? "" : ".";  // each kind of table reader words it in its own way
    EXPECT_XEL_THROW(reader->getCsvFormat(), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line number 0 in table XELO_CSV_FORMAT" + end);
    EXPECT_XEL_THROW(reader->getRequiredBy(), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line number 0 in table XELO_DATA_SCHEMA" + end);
    EXPECT_XEL_THROW(reader->getFileVersion(), XelCsvReader::XelLineNotFoundException,
                     "XelCsvReader::XelLineNotFoundException : No line number 0 in table XELO_DATA_SCHEMA" + end);
    EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks);
  }
}

TEST(Directives, PassOnThatACachedTableHasADuplicatedLine) {
  TestEnv env;
  const DataFile file("XELO_CSV_FORMAT;1\nXELO_CSV_FORMAT;1\n");
  EXPECT_XEL_THROW(makeReader(env, file, 1)->getCsvFormat(), XelCsvReader::XelDuplicatedLineException,
                   "XelCsvReader::XelDuplicatedLineException : Another line with key  1 already exists In Table "
                   "XELO_CSV_FORMAT .");
  EXPECT_EQ(makeReader(env, file, 0)->getCsvFormat(), 1.0);
}

TEST(Directives, KeepTheLastFormatWhenReadingItAgainFails) {
  const DecimalPoint point;
  TestEnv env;
  const DataFile file("XELO_CSV_FORMAT;1.5\n");
  const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, 1);
  EXPECT_EQ(reader->getCsvFormat(), 1.5);
  file.write("XELO_CSV_FORMAT");
  EXPECT_THROW(reader->getCsvFormat(), XelCsvReader::XelFieldNotFoundException);
  file.write("XELO_CSV_FORMAT;2.5\n");
  EXPECT_EQ(reader->getCsvFormat(), 2.5);
}

TEST(Directives, GiveEverythingBackWhenMemoryEnds) {
  const DecimalPoint point;
  const DataFile file("XELO_CSV_FORMAT;1.5\nXELO_DATA_SCHEMA;tool;2\nA;1\n");
  for (const long isCached : BothReaders) {
    const long injected = forEachFailingAllocation([&](XelEnv env) {
      const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
      EXPECT_EQ(reader->getCsvFormat(), 1.5);
      EXPECT_EQ(reader->getFileVersion(), 2.0);
      EXPECT_STREQ(reader->getRequiredBy(), "tool");
    });
    EXPECT_GT(injected, 60);
  }
}

TEST(Directives, AnswerRightAfterEveryFailingAllocation) {
  const DataFile file("XELO_CSV_FORMAT;1.5\nXELO_DATA_SCHEMA;tool;2\nA;1\n");
  for (const long isCached : BothReaders) {
    for (long countdown = 0, isDone = 0; isDone == 0; ++countdown) {
      TestEnv env;
      const XelEnvOwner<XelCsvReaderI> reader = makeReader(env, file, isCached);
      env.getAllocator().failAfter(countdown);
      try {
        EXPECT_EQ(reader->getFileVersion(), 2.0);
        isDone = 1;
      } catch (const std::bad_alloc&) {
        EXPECT_EQ(env.getAllocator().getFailures(), 1);
      }
      env.getAllocator().neverFail();
      EXPECT_EQ(reader->getFileVersion(), 2.0);
      EXPECT_STREQ(reader->getRequiredBy(), "tool");
    }
  }
}

}  // namespace

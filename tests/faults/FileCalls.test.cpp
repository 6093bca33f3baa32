// Every operation in all its ways while the calls that reach its file fail one after the other.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "csv/errors/XelCsvOpen.h"
#include "tests/faults/FileFaults.h"
#include "tests/faults/Scenarios.h"
#include "tests/support/DataFile.h"
#include "tests/support/SystemText.h"
#include "tests/support/TestEnv.h"

namespace {

// More calls of one function than any scenario makes.
constexpr long MostCalls = 5000;

const std::vector<int>& getErrors() {
  static const std::vector<int> errors{EACCES, EMFILE, ENFILE, ENOMEM, EIO, ELOOP, EINTR, EISDIR};
  return errors;
}

// What an open that fails with this errno throws.
std::string getOpenFailure(const World& at, int error) {
  char message[XelMessageSize];
  XelFormatOpenError(error, at.file, message);
  return std::string("XelFileNotFoundException | ") + message;
}

// A table of a shape, and the keys of its lines.
struct TableKeys {
  const char* table;  // null: a one-table file
  std::vector<std::string> keys;
};

std::vector<TableKeys> getKeys(Shape shape) {
  switch (shape) {
    case Shape::Many:
      return {{"XELO_CSV_FORMAT", {"2.5"}},
              {"XELO_DATA_SCHEMA", {"planner-3"}},
              {"Cities", {"Paris-2004", "Rome-2005", "Oslo-2006"}},
              {"Stock", {"s1", "s2"}},
              {"Plain", {"x-y"}},
              {nullptr, {"XELO_DATA_SCHEMA-planner"}}};  // read as one table
    case Shape::One:
      return {
          {nullptr, {"Paris-2004", "Rome-2005", "Oslo-2006", ""}}};  // the last one with lines that are not separated
    case Shape::Split:
      return {{"A", {"p", "q", "r"}}, {"B", {"x", "y"}}};
    case Shape::Defects:
      break;
  }
  return {{"XELO_CSV_FORMAT", {""}},
          {"XELO_DATA_SCHEMA", {"planner"}},
          {"Bare", {""}},
          {"Twins", {"a"}},
          {"Torn", {}},
          {"Stub", {}},
          {"Huge", {}},
          {"Headed", {"v"}},
          {nullptr, {}}};
}

// What a file that cannot be positioned may give: the message of who reads a table, of who reads its index, or of who
// looks up a line of it by its key.
std::set<std::string> getSeekFailures(const World& at) {
  std::set<std::string> all;
  for (const TableKeys& entry : getKeys(at.shape)) {
    const std::string table = entry.table == nullptr ? at.file : entry.table;
    for (const char* colon : {" :", " : "}) {
      all.insert(std::string("XelCsvReaderException | XelCsvReader::XelCsvReaderException") + colon +
                 "corrupted file while trying to read data for table " + table);
    }
    for (const std::string& key : entry.keys) {
      all.insert(
          lineNotFound("No line having key " + key + (entry.table == nullptr ? " ." : " in table " + table + ".")));
    }
  }
  // Of a file of several tables that is scanned, and of the one table.
  all.insert(std::string("XelCsvReaderException | XelCsvReader::XelCsvReaderException :corrupted file while trying to "
                         "read data for table ") +
             at.file);
  return all;
}

// Makes the calls of one scenario fail. What is wanted of it in every case: the expected answer, no block and no stream
// lost, the same answer as ever when the scenario is done again, and nothing changed in what stands beside.
class Sweep {
 public:
  Sweep(const Scenario& swept, bool isCached)
      : scenario(swept), file(getContent(scenario.shape)), faults(file.getName()), cached(isCached) {
    makeWorld();
    rest = std::make_unique<World>(env, &env.getAllocator(), file.getName(), scenario.shape, cached)->walkOn();
  }

  ~Sweep() { EXPECT_EQ(at->walkOn(), rest) << "iterators that stood beside"; }
  Sweep(const Sweep&) = delete;
  Sweep& operator=(const Sweep&) = delete;

  // Fails the first, the second, ... call until the scenario makes no such call, each with each errno, once and for ever
  // after. expect(answer, error) looks at what came of it.
  template <class Expect>
  void failEach(FileCall call, const std::vector<int>& errors, Expect expect) {
    for (const bool forEver : {false, true}) {
      bool hasFailed = true;
      long number = 0;
      for (; hasFailed && number < MostCalls; ++number) {
        cutAnswer.clear();
        for (const int error : errors) {
          SCOPED_TRACE("call " + std::to_string(number) + (forEver ? " and all later ones: " : ": ") +
                       getSystemText(error));
          begin();
          faults.fail(call, number, forEver, error);
          const std::string answer = runScenario(scenario, *at);
          hasFailed = faults.getFaults() > 0;
          failedRead = faults.getFailedRead();
          faults.reset();
          if (hasFailed && !scenario.isCatching) {
            expect(answer, error, forEver);
          }
          if (!hasFailed) {
            EXPECT_EQ(answer, getAnswer());
          }
          expectUnharmed();
          if (!hasFailed) break;
        }
      }
      EXPECT_LT(number, MostCalls) << "never done";
    }
  }

  // Reads give at most so many bytes at a time, also where calls fail; 0 takes that back.
  void limitReads(std::size_t bytes) { readLimit = bytes; }

  std::string run() {
    begin();
    std::string answer = runScenario(scenario, *at);
    faults.reset();
    expectUnharmed();
    return answer;
  }

  // What the scenario answers when the file ends where the read failed: behind the last whole line before, for what is
  // left of a line when a read fails is not taken for a line. For ever after, the file is empty for who opens it later.
  const std::string& getCutAnswer(bool forEver) {
    if (!cutAnswer.empty()) return cutAnswer;
    const std::string content = getContent(scenario.shape);
    const std::string came = content.substr(0, static_cast<std::size_t>(failedRead.offset));
    const std::size_t feed = came.rfind('\n');
    const DataFile cut(feed == std::string::npos ? "" : came.substr(0, feed + 1));
    const DataFile empty("");
    begin();
    faults.setStandIn({failedRead.open, cut.getName(), forEver ? empty.getName() : "",
                       static_cast<long>(content.size()), failedRead.offset});
    cutAnswer = runScenario(scenario, *at);
    faults.reset();
    expectUnharmed();
    return cutAnswer;
  }

  const World& getWorld() const { return *at; }
  std::string getAnswer() const { return scenario.getAnswer(*at); }

 private:
  void makeWorld() {
    at.reset();
    at = std::make_unique<World>(env, &env.getAllocator(), file.getName(), scenario.shape, cached);
    before = at->askBystanders();
  }

  void begin() {
    if (scenario.isKept) makeWorld();
    blocks = env.getAllocator().getBlocksOut();
    streams = faults.getOpenStreams();
    faults.reset();
    faults.limitReads(readLimit);
  }

  void expectUnharmed() {
    if (!scenario.isKept) {
      EXPECT_EQ(env.getAllocator().getBlocksOut(), blocks) << "a block is missing";
    }
    EXPECT_EQ(faults.getOpenStreams(), streams) << "a file stayed open";
    EXPECT_EQ(runScenario(scenario, *at), getAnswer()) << "done again";
    EXPECT_EQ(faults.getOpenStreams(), streams) << "a file stayed open, done again";
    EXPECT_EQ(at->askBystanders(), before) << "what stood beside";
    faults.reset();
  }

  const Scenario& scenario;
  TestEnv env;
  DataFile file;
  FileFaults faults;
  bool cached;
  std::unique_ptr<World> at;
  std::string before;  // what stands beside the scenario, before anything failed
  std::string rest;
  std::string cutAnswer;
  FileFaults::FailedRead failedRead;
  std::size_t readLimit = 0;
  long blocks = 0;
  long streams = 0;
};

// Runs body(sweep) for every scenario, with scanning tables and with cached ones.
template <class Body>
void forEachSweep(Body body) {
  for (const Scenario& scenario : getScenarios()) {
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(std::string(scenario.name) + ", " + getNameOf(scenario.shape) +
                   (isCached ? ", cached" : ", scanning"));
      Sweep sweep(scenario, isCached);
      body(sweep);
    }
  }
}

}  // namespace

TEST(FailingFileCalls, OpensAreToldWithTheTextOfTheirErrno) {
  forEachSweep([](Sweep& sweep) {
    sweep.failEach(FileCall::Open, getErrors(), [&](const std::string& answer, int error, bool) {
      EXPECT_EQ(answer, getOpenFailure(sweep.getWorld(), error));
    });
  });
}

TEST(FailingFileCalls, ClosesBuffersAndTheKindOfTheFileAreNoFailure) {
  forEachSweep([](Sweep& sweep) {
    const auto expect = [&](const std::string& answer, int, bool) { EXPECT_EQ(answer, sweep.getAnswer()); };
    sweep.failEach(FileCall::Close, getErrors(), expect);
    sweep.failEach(FileCall::SetBuffer, {EACCES, EIO}, expect);
    sweep.failEach(FileCall::Status, {EACCES, EIO}, expect);
  });
}

TEST(FailingFileCalls, SeeksAndSizesAreCorruptedFilesOrLinesThatAreNotFound) {
  forEachSweep([](Sweep& sweep) {
    for (const FileCall call : {FileCall::Seek, FileCall::Tell}) {
      sweep.failEach(call, getErrors(), [&](const std::string& answer, int error, bool) {
        // Who makes a table asks errno, too.
        const bool isOpenFailure = XelHasOpenErrorText(error) && answer == getOpenFailure(sweep.getWorld(), error);
        EXPECT_TRUE(isOpenFailure || getSeekFailures(sweep.getWorld()).count(answer) > 0) << answer;
      });
    }
  });
}

TEST(FailingFileCalls, ReadsEndAPassLikeTheEndOfTheFile) {
  forEachSweep([](Sweep& sweep) {
    const auto expect = [&](const std::string& answer, int error, bool forEver) {
      // Who makes a reader or a table asks errno, too: that is how a directory is told.
      if (XelHasOpenErrorText(error) && answer == getOpenFailure(sweep.getWorld(), error)) return;
      EXPECT_EQ(answer, sweep.getCutAnswer(forEver));
    };
    sweep.failEach(FileCall::Read, getErrors(), expect);
    sweep.limitReads(24);
    sweep.failEach(FileCall::Read, {EIO, EISDIR}, expect);
  });
}

TEST(FailingFileCalls, ReadsThatAreShortGiveTheSameAnswers) {
  forEachSweep([](Sweep& sweep) {
    for (const std::size_t bytes : {1U, 7U, 511U, 4095U}) {
      sweep.limitReads(bytes);
      EXPECT_EQ(sweep.run(), sweep.getAnswer()) << "reads of at most " << bytes << " bytes";
    }
  });
}

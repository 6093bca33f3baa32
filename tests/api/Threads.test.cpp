// Threads that share files and nothing else: each has an environment and readers of its own.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/DecimalPoint.h"
#include "xelcsv/XelCsvReader.h"

namespace {

using LineException = XelCsvReader::XelLineNotFoundException;

constexpr long Threads = 8;
constexpr long Lines = 300;  // of table A

// The lines A,k<n>,<n + first> with the number as second key, a line of a table B, and directives.
std::string makeTables(long first) {
  std::string content = "XELO_CSV_FORMAT,1.5\nXELO_DATA_SCHEMA,tool,2\nA|NAMES,name,number\nA|KEYS,1,1\n";
  for (long number = 0; number < Lines; ++number) {
    content += "A,k" + std::to_string(number) + "," + std::to_string(first + number) + "\n";
  }
  return content + "B,1,1\n";
}

// What one thread found; compared after it has ended, for a test framework's checks belong to one thread.
struct Findings {
  long walked = 0;    // sum over the lines of a walk
  long found = 0;     // sum over lookups by key
  long numbered = 0;  // sum over lookups by number
  long missing = 0;   // keys that are not there
  std::string directives;
  std::string message;
  long bytesLeft = -1;

  bool operator==(const Findings& other) const {
    return walked == other.walked && found == other.found && numbered == other.numbered && missing == other.missing &&
           directives == other.directives && message == other.message && bytesLeft == other.bytesLeft;
  }
};

std::ostream& operator<<(std::ostream& to, const Findings& findings) {
  return to << findings.walked << ' ' << findings.found << ' ' << findings.numbered << ' ' << findings.missing << " '"
            << findings.directives << "' '" << findings.message << "' " << findings.bytesLeft;
}

// A reader's whole use: open, walk, look up, fail, end.
Findings readAll(XelEnv env, const std::string& file, long first, long isCached) {
  Findings findings;
  const long before = env.getBytesInUse();
  XelCsvReader reader(env, file.c_str(), 1, 0, ",", '.', '"', '#', isCached);
  for (XelCsvReader::TableIterator tables(reader); tables.ok(); ++tables) {
    for (XelCsvTableReader::LineIterator lines(*tables); lines.ok(); ++lines) {
      findings.walked += (*lines).getIntByPosition(2);
    }
  }
  XelCsvTableReader table = reader.getTableByName("A");
  for (long number = 0; number < Lines; number += 3) {
    const std::string name = "k" + std::to_string(number);
    const std::string value = std::to_string(first + number);
    findings.found += table.getLineByKey(2, name.c_str(), value.c_str()).getIntByHeader("number");
    findings.numbered += static_cast<long>(table.getLineByNumber(number).getFloatByPosition(2));
    try {
      table.getLineByKey(2, "none", value.c_str());
    } catch (const LineException& exception) {
      ++findings.missing;
      findings.message = exception.getMessage();
    }
  }
  findings.directives = std::to_string(reader.getCsvFormat()) + ' ' + reader.getRequiredBy() + ' ' +
                        std::to_string(reader.getFileVersion());
  table.end();
  reader.end();
  findings.bytesLeft = env.getBytesInUse() - before;
  return findings;
}

Findings expectedOf(long first) {
  Findings expected;
  for (long number = 0; number < Lines; ++number) expected.walked += first + number;
  expected.walked += 1;
  for (long number = 0; number < Lines; number += 3) {
    expected.found += first + number;
    ++expected.missing;
  }
  expected.numbered = expected.found;
  expected.directives = "1.500000 tool 2.000000";
  expected.message = "XelCsvReader::XelLineNotFoundException : No line having key none-" +
                     std::to_string(first + Lines - 3) + " in table A.";
  expected.bytesLeft = 0;
  return expected;
}

// Runs eight threads that begin together; thread t reads the files.at(t % files.size()), with both kinds of reader in turn.
void expectEightThreadsToAgree(const std::vector<std::unique_ptr<DataFile>>& files) {
  std::vector<Findings> scanning(Threads);
  std::vector<Findings> cached(Threads);
  const auto work = [&](std::size_t me) {
    XelEnv env;
    const std::size_t which = me % files.size();
    const std::string file = files.at(which)->getName();
    const long first = static_cast<long>(which) * 1000;
    for (const bool isCachedFirst : {me % 2 == 0, me % 2 != 0}) {
      (isCachedFirst ? cached : scanning).at(me) = readAll(env, file, first, isCachedFirst ? 1 : 0);
    }
    env.end();
  };
  std::vector<std::thread> threads;
  for (std::size_t me = 0; me < Threads; ++me) threads.emplace_back(work, me);
  for (std::thread& thread : threads) thread.join();
  for (std::size_t me = 0; me < Threads; ++me) {
    SCOPED_TRACE(me);
    const std::size_t which = me % files.size();
    const Findings expected = expectedOf(static_cast<long>(which) * 1000);
    EXPECT_EQ(scanning.at(me), expected);
    EXPECT_EQ(cached.at(me), expected);
  }
}

TEST(Threads, EightReadOneFileWithBothKindsOfReader) {
  const DecimalPoint point;
  std::vector<std::unique_ptr<DataFile>> files;
  files.push_back(std::make_unique<DataFile>(makeTables(0)));
  expectEightThreadsToAgree(files);
}

TEST(Threads, EightReadAFileEach) {
  const DecimalPoint point;
  std::vector<std::unique_ptr<DataFile>> files;
  for (long file = 0; file < Threads; ++file) files.push_back(std::make_unique<DataFile>(makeTables(file * 1000)));
  expectEightThreadsToAgree(files);
}

// An environment of the user's allocator in each thread, while others use managers of their own.
TEST(Threads, ManagersOfTheirOwnDoNotMeet) {
  const DecimalPoint point;
  class CountingAllocator : public XelAllocator {
   public:
    void* allocate(long size) override {
      bytes += size;
      return ::operator new(static_cast<std::size_t>(size));
    }
    void free(void* pointer, long size) override {
      bytes -= size;
      ::operator delete(pointer);
    }
    long getBytes() const { return bytes; }

   private:
    long bytes = 0;
  };

  const DataFile file(makeTables(0));
  const std::string name = file.getName();
  std::vector<Findings> findings(Threads);
  std::vector<long> bytesLeft(Threads, -1);
  std::vector<std::thread> threads;
  for (std::size_t me = 0; me < Threads; ++me) {
    threads.emplace_back([&, me] {
      CountingAllocator allocator;
      XelEnv env = me % 2 == 0 ? XelEnv(&allocator) : XelEnv();
      findings.at(me) = readAll(env, name, 0, static_cast<long>(me / 2 % 2));
      env.end();
      bytesLeft.at(me) = allocator.getBytes();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(findings, std::vector<Findings>(Threads, expectedOf(0)));
  EXPECT_EQ(bytesLeft, std::vector<long>(Threads, 0));
}

}  // namespace

// How the library opens, positions, reads and closes its file, and what it does when that fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "csv/errors/XelCsvOpen.h"
#include "tests/faults/FileFaults.h"
#include "tests/faults/Operations.h"
#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/SystemText.h"
#include "tests/support/TestEnv.h"

namespace {

using ::testing::StartsWith;
using BaseException = XelCsvReader::XelCsvReaderException;
using FileNotFound = XelCsvReader::XelFileNotFoundException;
using LineNotFound = XelCsvReader::XelLineNotFoundException;

// Values of errno with a text of their own, and some without.
constexpr int Known[] = {EACCES, EISDIR, EMFILE, ENFILE, ENAMETOOLONG, ENOSPC, ENOENT, ENOTDIR, ENXIO, ENOMEM};
constexpr int Unknown[] = {ELOOP, EROFS, EIO, EINTR};

std::vector<int> getErrors() {
  std::vector<int> errors(std::begin(Known), std::end(Known));
  errors.insert(errors.end(), std::begin(Unknown), std::end(Unknown));
  return errors;
}

// What an open that fails with this errno is told as.
std::string getOpenMessage(XelEnv env, int error, const std::string& file) {
  errno = error;
  char* text = errorTest(env, error, file.c_str());
  if (text == nullptr) return "While trying to open file " + file + " : " + getSystemText(error) + ".";
  std::string message(text);
  env.free(text, XelMessageSize);
  return message;
}

// The message of the exception that the action throws, which must be of exactly this class; "(nothing)" without one.
template <class Exception>
std::string catchMessage(const Action& action) {
  try {
    action();
  } catch (const Exception& exception) {
    EXPECT_EQ(typeid(exception), typeid(Exception)) << typeid(exception).name();
    return exception.getMessage();
  } catch (const XelQuietException& exception) {
    return std::string("another class: ") + typeid(exception).name() + ": " + exception.getMessage();
  }
  return "(nothing)";
}

// Runs body(operation, place, action, faults) for every operation, of scanning tables and of cached ones, where nothing is
// told to fail yet. Afterwards all memory is back and no stream is open.
template <class Body>
void forEachOperation(Body body) {
  for (const Operation& operation : getOperations()) {
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(std::string(operation.name) + (isCached ? ", cached" : ", scanning"));
      TestEnv env;
      const DataFile file(operation.isMultiTable ? ManyTables : OneTable);
      FileFaults faults(file.getName());
      const Place at{env, file.getName(), isCached, operation.isMultiTable};
      body(operation, at, faults);
    }
  }
}

// Does the operation again, with no fault: what failed before has left nothing behind.
void expectWorksAgain(const Operation& operation, const Action& action, FileFaults& faults) {
  faults.reset();
  if (operation.isRepeatable) {
    EXPECT_EQ(action(), operation.answer);
  } else {
    EXPECT_NO_THROW(action());
  }
}

}  // namespace

TEST(Faults, EveryOpenIsSeenAndClosed) {
  TestEnv env;
  const DataFile file(OneTable);
  FileFaults faults(file.getName());
  XelCsvReader reader(env, file.getName());
  EXPECT_EQ(faults.getOpens(), 3);
  EXPECT_EQ(faults.getCloses(), 3);
  EXPECT_GT(faults.getSeeks(), 0);
  EXPECT_GT(faults.getReads(), 0);
  faults.reset();
  EXPECT_EQ(describe(reader.getLineByNumber(1)), "Rome;2005;9;@3");
  EXPECT_EQ(faults.getOpens(), 1);
  EXPECT_EQ(faults.getCloses(), 1);
  EXPECT_EQ(faults.getSeeks(), 1);
  EXPECT_EQ(faults.getReads(), 1) << "a lookup reads no more than it needs";
  reader.end();
}

TEST(OpenModes, AreThoseOfEachOperation) {
  forEachOperation([](const Operation& operation, const Place& at, FileFaults& faults) {
    operation.run(at, [&](const Action& action) {
      faults.reset();
      EXPECT_EQ(action(), operation.answer);
      EXPECT_EQ(faults.getModes(), operation.getUse(at.isCached).modes);
    });
    EXPECT_EQ(faults.getOpenStreams(), 0);
  });
}

TEST(OpenModes, FailingLookupsOpenOnceToo) {
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file(OneTable);
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), isCached, false}.makeReader();
    faults.reset();
    EXPECT_THROW(reader.getLineByKey(2, "Oslo", "2005"), LineNotFound);
    EXPECT_EQ(faults.getModes(), isCached ? std::vector<std::string>{} : std::vector<std::string>{"rb"});
    faults.reset();
    EXPECT_THROW(reader.getLineByNumber(-1), LineNotFound);
    EXPECT_EQ(faults.getModes(), isCached ? std::vector<std::string>{} : std::vector<std::string>{"r"});
    EXPECT_EQ(faults.getReads(), 0) << "a negative number reads no line";
    reader.end();
  }
}

TEST(OpenModes, AnIteratorOverNoLineOfACachedTableOpensNothing) {
  TestEnv env;
  const DataFile file("|NAMES,name\n");
  FileFaults faults(file.getName());
  XelCsvReader reader(env, file.getName());
  faults.reset();
  {
    const XelCsvReader::LineIterator it(reader);
    EXPECT_FALSE(it.ok());
  }
  EXPECT_EQ(faults.getOpens(), 0);
  reader.end();
}

TEST(OpenFailures, ThrowTheTextOfTheirErrnoFromEveryOpenOfEveryOperation) {
  forEachOperation([](const Operation& operation, const Place& at, FileFaults& faults) {
    const long opens = static_cast<long>(operation.getUse(at.isCached).modes.size());
    for (const int error : getErrors()) {
      for (long open = 0; open < opens; ++open) {
        SCOPED_TRACE("open " + std::to_string(open) + ": " + getSystemText(error));
        operation.run(at, [&](const Action& action) {
          const std::string expected = getOpenMessage(at.env, error, at.file);
          faults.reset();
          faults.failOpen(open, error);
          EXPECT_EQ(catchMessage<FileNotFound>(action), expected);
          EXPECT_EQ(faults.getFaults(), 1);
          EXPECT_EQ(faults.getOpens(), open + 1) << "nothing is opened after the failure";
          expectWorksAgain(operation, action, faults);
        });
        faults.reset();
      }
    }
  });
}

TEST(OpenFailures, WithoutATextOfTheirOwnHaveTheSystems) {
  TestEnv env;
  const DataFile file(OneTable);
  FileFaults faults(file.getName());
  faults.failOpen(0, ELOOP);
  EXPECT_XEL_THROW(
      XelCsvReader(env, file.getName()), FileNotFound,
      "While trying to open file " + std::string(file.getName()) + " : Too many levels of symbolic links.");
}

TEST(OpenFailures, WithoutAnyErrnoUseNoStream) {
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file(OneTable);
    FileFaults faults(file.getName());
    faults.failOpen(0, 0);
    const auto make = [&] { return Place{env, file.getName(), isCached, false}.makeReader(); };
    EXPECT_THAT(catchMessage<FileNotFound>([&] {
                  make();
                  return std::string();
                }),
                StartsWith("While trying to open file " + std::string(file.getName()) + " : "));
    EXPECT_EQ(faults.getFaults(), 1);
    EXPECT_EQ(faults.getOpens(), 1);
    XelCsvReader reader = make();
    faults.reset();
    faults.failOpen(0, 0);
    EXPECT_THAT(catchMessage<FileNotFound>([&] { return describe(reader.getLineByNumber(0)); }),
                StartsWith("While trying to open file " + std::string(file.getName()) + " : "));
    EXPECT_EQ(describe(reader.getLineByNumber(1)), "Rome;2005;9;@3");
    reader.end();
  }
}

TEST(OpenFailures, AllOpensFailingIsNoOtherThanTheFirst) {
  forEachOperation([](const Operation& operation, const Place& at, FileFaults& faults) {
    if (operation.getUse(at.isCached).modes.empty()) return;
    for (const int error : {ENOENT, ELOOP}) {
      operation.run(at, [&](const Action& action) {
        const std::string expected = getOpenMessage(at.env, error, at.file);
        faults.reset();
        faults.failOpen(FileFaults::Every, error);
        EXPECT_EQ(catchMessage<FileNotFound>(action), expected);
        EXPECT_EQ(faults.getOpens(), 1);
        expectWorksAgain(operation, action, faults);
      });
      faults.reset();
    }
  });
}

// The errno is looked at, not the stream.
TEST(OpenFailures, AnOpenThatLeavesAKnownErrnoHasFailed) {
  forEachOperation([](const Operation& operation, const Place& at, FileFaults& faults) {
    const long opens = static_cast<long>(operation.getUse(at.isCached).modes.size());
    for (const int error : {EACCES, EMFILE}) {
      for (long open = 0; open < opens; ++open) {
        SCOPED_TRACE("open " + std::to_string(open) + ": " + getSystemText(error));
        operation.run(at, [&](const Action& action) {
          const std::string expected = getOpenMessage(at.env, error, at.file);
          faults.reset();
          faults.spoilErrnoOfOpen(open, error);
          EXPECT_EQ(catchMessage<FileNotFound>(action), expected);
          expectWorksAgain(operation, action, faults);
        });
        faults.reset();
      }
    }
  });
}

TEST(OpenFailures, AnOpenThatSucceedsAndLeavesAnUnknownErrnoHasNotFailed) {
  forEachOperation([](const Operation& operation, const Place& at, FileFaults& faults) {
    operation.run(at, [&](const Action& action) {
      faults.reset();
      faults.spoilErrnoOfOpen(FileFaults::Every, ELOOP);
      EXPECT_EQ(action(), operation.answer);
      EXPECT_EQ(faults.getFaults(), faults.getOpens());
    });
  });
}

TEST(OpenFailures, AnErrnoLeftByAnEarlierCallIsNoFailure) {
  for (const int error : Known) {
    forEachOperation([&](const Operation& operation, const Place& at, FileFaults& faults) {
      static_cast<void>(faults);
      if (operation.getUse(at.isCached).modes.empty()) return;
      operation.run(at, [&](const Action& action) {
        errno = error;
        EXPECT_EQ(action(), operation.answer) << getSystemText(error);
      });
    });
  }
}

TEST(OpenFailures, WhatClosingSaysIsNoFailureOfTheOpen) {
  for (const int error : {EACCES, EISDIR, ENOSPC, ENOENT, EIO}) {
    forEachOperation([&](const Operation& operation, const Place& at, FileFaults& faults) {
      operation.run(at, [&](const Action& action) {
        faults.reset();
        faults.failCloses(error);
        EXPECT_EQ(action(), operation.answer) << getSystemText(error);
      });
    });
  }
}

TEST(OpenFailures, WhatTheAllocatorLeavesInErrnoIsNoFailureOfTheOpen) {
  // An allocator may change errno on every call, a successful one included.
  class Spoiling : public TestAllocator {
   public:
    void* allocate(long size) override {
      void* block = TestAllocator::allocate(size);
      errno = ENOENT;
      return block;
    }
    void free(void* pointer, long size) override {
      TestAllocator::free(pointer, size);
      errno = EACCES;
    }
  };
  for (const Operation& operation : getOperations()) {
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(operation.name);
      Spoiling allocator;
      XelEnv env(&allocator);
      const DataFile file(operation.isMultiTable ? ManyTables : OneTable);
      operation.run({env, file.getName(), isCached, operation.isMultiTable},
                    [&](const Action& action) { EXPECT_EQ(action(), operation.answer); });
      env.end();
      EXPECT_EQ(allocator.getBlocksOut(), 0);
    }
  }
}

TEST(OpenFailures, ATableIteratorGoesOnToTheTableAfterTheOneThatCannotBeMade) {
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file("A,1\nB,1\nC,1\n");
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), isCached, true}.makeReader();
    {
      XelCsvReader::TableIterator it(reader);
      faults.reset();
      faults.failOpen(0, EMFILE);
      EXPECT_THROW(++it, FileNotFound);
      EXPECT_TRUE((*it).isEmpty());
      ++it;
      ASSERT_TRUE(it.ok());
      EXPECT_STREQ((*it).getNameOfTable(), "C");
    }
    reader.end();
  }
}

TEST(OpenFailures, OfACopyEndTheSourceAndLeaveNoCopy) {
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file(OneTable);
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), isCached, false}.makeReader();
    {
      XelCsvTableReader::LineIterator it(reader.getReaderForUniqueTableFile());
      faults.reset();
      faults.failOpen(0, ENFILE);
      EXPECT_THROW(XelCsvTableReader::LineIterator copy(it), FileNotFound);
      EXPECT_EQ(faults.getOpenStreams(), 0);
      EXPECT_TRUE((*it).isEmpty());
      ++it;
      EXPECT_FALSE(it.ok());
    }
    reader.end();
  }
}

TEST(OpenFailures, AFileThatGoesAwayFailsLookupsUntilItIsBack) {
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file(OneTable);
    XelCsvReader reader = Place{env, file.getName(), isCached, false}.makeReader();
    file.remove();
    const std::string message = getOpenMessage(env, ENOENT, file.getName());
    EXPECT_XEL_THROW(reader.getLineByNumber(0), FileNotFound, message);
    EXPECT_XEL_THROW(reader.getLineByKey(2, "Rome", "2005"), FileNotFound, message);
    EXPECT_XEL_THROW(XelCsvReader::LineIterator{reader}, FileNotFound, message);
    if (!isCached) {
      EXPECT_XEL_THROW(reader.getNumberOfItems(), FileNotFound, message);
    }
    file.write(OneTable);
    EXPECT_EQ(describe(reader.getLineByKey(2, "Rome", "2005")), "Rome;2005;9;@3");
    reader.end();
  }
}

TEST(SeekFailures, ThrowWhatBelongsToTheOpenThatCannotBePositioned) {
  forEachOperation([](const Operation& operation, const Place& at, FileFaults& faults) {
    const Use& use = operation.getUse(at.isCached);
    ASSERT_EQ(use.seeks.size(), use.modes.size());
    for (long open = 0; open < static_cast<long>(use.modes.size()); ++open) {
      SCOPED_TRACE("open " + std::to_string(open));
      const std::string table = operation.table == nullptr ? at.file : operation.table;
      operation.run(at, [&](const Action& action) {
        faults.reset();
        faults.failSeeksOfOpen(open);
        switch (use.seeks[static_cast<std::size_t>(open)]) {
          case '-':
            EXPECT_EQ(action(), operation.answer);
            EXPECT_EQ(faults.getFaults(), 0);
            break;
          case 'z':
            EXPECT_EQ(
                catchMessage<BaseException>(action),
                "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table " + table);
            EXPECT_GT(faults.getFaults(), 0);
            break;
          case 'i':
            EXPECT_EQ(
                catchMessage<BaseException>(action),
                "XelCsvReader::XelCsvReaderException : corrupted file while trying to read data for table " + table);
            EXPECT_GT(faults.getFaults(), 0);
            break;
          case 'k': {
            const std::string text = "XelCsvReader::XelLineNotFoundException : No line having key ";
            const std::string key = operation.key;
            EXPECT_EQ(catchMessage<LineNotFound>(action), operation.table == nullptr
                                                              ? text + key + " ."
                                                              : text + key + " in table " + operation.table + ".");
            EXPECT_GT(faults.getFaults(), 0);
            break;
          }
          default:
            ADD_FAILURE() << "no expectation";
        }
        EXPECT_EQ(faults.getOpens() - 1,
                  use.seeks[static_cast<std::size_t>(open)] == '-' ? faults.getOpens() - 1 : open)
            << "nothing is opened after the failure";
        expectWorksAgain(operation, action, faults);
      });
      faults.reset();
    }
  });
}

TEST(SeekFailures, OfACopyNameTheTableThatIsCopied) {
  const std::string text = "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table ";
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file(ManyTables);
    FileFaults faults(file.getName());
    XelCsvReader reader = Place{env, file.getName(), isCached, true}.makeReader();
    XelCsvTableReader cities = reader.getTableByName("Cities");
    XelCsvTableReader empty;
    XelCsvTableReader stock = reader.getTableByName("Stock");
    for (XelCsvTableReader* copy : {&empty, &stock}) {
      faults.reset();
      faults.failSeeksOfOpen(0);
      EXPECT_XEL_THROW(copy->copy(cities), BaseException, text + "Cities");
      EXPECT_TRUE(copy->isEmpty());
    }
    faults.reset();
    EXPECT_EQ(describe(cities.getLineByKey(2, "Rome", "2005")), "Cities;Rome;2005;9;@6");
    cities.end();
    reader.end();
  }
}

TEST(SeekFailures, ANameTooLongForTheMessageIsCut) {
  TestEnv env;
  const std::string name(600, 'T');
  const DataFile file(name + ",1\n");
  FileFaults faults(file.getName());
  XelCsvReader reader = Place{env, file.getName(), true, true}.makeReader();
  faults.reset();
  faults.failSeeksOfOpen(0);
  const std::string whole =
      "XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for table " + name;
  EXPECT_XEL_THROW(reader.getTableByName(name.c_str()), BaseException, whole.substr(0, 499));
  reader.end();
}

TEST(SeekFailures, AnUnknownEndOfAOneTableFileIsACorruptedFile) {
  for (const bool isCached : {false, true}) {
    TestEnv env;
    const DataFile file(OneTable);
    FileFaults faults(file.getName());
    faults.failTells();
    EXPECT_XEL_THROW(static_cast<void>(Place{env, file.getName(), isCached, false}.makeReader()), BaseException,
                     std::string("XelCsvReader::XelCsvReaderException :corrupted file while trying to read data for "
                                 "table ") +
                         file.getName());
    EXPECT_GT(faults.getFaults(), 0);
    faults.reset();
    XelCsvReader reader = Place{env, file.getName(), isCached, false}.makeReader();
    EXPECT_EQ(reader.getNumberOfItems(), 2);
    reader.end();
  }
}

// The family of exceptions: its tree, its messages, and how they are kept.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <typeinfo>

#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/VirtualSlot.h"
#include "xelcsv/XelCsvReader.h"
#include "xelcsv/XelEnv.h"

namespace {

using Base = XelCsvReader::XelCsvReaderException;

// The kinds below the base of the family.
using Kinds = ::testing::Types<XelCsvReader::XelFileNotFoundException, XelCsvReader::XelFieldNotFoundException,
                               XelCsvReader::XelColumnHeaderNotFoundException,
                               XelCsvReader::XelCsvReaderParameterException, XelCsvReader::XelDuplicatedTableException,
                               XelCsvReader::XelTableNotFoundException, XelCsvReader::XelIncorrectCsvReaderUseException,
                               XelCsvReader::XelLineNotFoundException, XelCsvReader::XelDuplicatedLineException,
                               XelCsvReader::XelOverflowException, XelCsvReader::XelNumberOfFieldsException>;

// Every class that keeps a message.
using Classes =
    ::testing::Types<XelQuietException, XelWrongUsage, Base, XelCsvReader::XelFileNotFoundException,
                     XelCsvReader::XelFieldNotFoundException, XelCsvReader::XelColumnHeaderNotFoundException,
                     XelCsvReader::XelCsvReaderParameterException, XelCsvReader::XelDuplicatedTableException,
                     XelCsvReader::XelTableNotFoundException, XelCsvReader::XelIncorrectCsvReaderUseException,
                     XelCsvReader::XelLineNotFoundException, XelCsvReader::XelDuplicatedLineException,
                     XelCsvReader::XelOverflowException, XelCsvReader::XelNumberOfFieldsException>;

// Names the tests by their class.
struct ClassNames {
  template <class T>
  static std::string GetName(int) {  // NOLINT(readability-identifier-naming): the name that GoogleTest asks for
    return typeid(T).name();
  }
};

template <class T>
class ExceptionKind : public ::testing::Test {};
TYPED_TEST_SUITE(ExceptionKind, Kinds, ClassNames);

template <class T>
class ExceptionClass : public ::testing::Test {};
TYPED_TEST_SUITE(ExceptionClass, Classes, ClassNames);

// How many of the kinds Thrown is, or derives from.
template <class Thrown, class... Others>
constexpr int countBases(const ::testing::Types<Others...>&) {
  return (0 + ... + (std::is_base_of_v<Others, Thrown> ? 1 : 0));
}

// Whether a thrown object is caught by a handler for Handled.
template <class Handled, class Thrown>
bool isCaughtAs() {
  try {
    throw Thrown("text", 1);
  } catch (const Handled&) {
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

static_assert(!std::is_base_of_v<XelQuietException, XelWrongUsage>);
static_assert(!std::is_base_of_v<XelWrongUsage, XelQuietException>);
static_assert(std::is_base_of_v<XelQuietException, Base>);
static_assert(std::is_base_of_v<std::exception, XelQuietException>);
static_assert(std::is_base_of_v<std::exception, XelWrongUsage>);
static_assert(sizeof(Base) == sizeof(XelQuietException), "no data member is added");

TYPED_TEST(ExceptionKind, DerivesFromTheBaseOfTheFamilyAndFromNoOtherKind) {
  static_assert(std::is_base_of_v<Base, TypeParam>);
  static_assert(countBases<TypeParam>(Kinds()) == 1, "only itself: the family is flat");
  static_assert(sizeof(TypeParam) == sizeof(XelQuietException), "no data member is added");
  EXPECT_TRUE((isCaughtAs<TypeParam, TypeParam>()));
  EXPECT_TRUE((isCaughtAs<Base, TypeParam>()));
  EXPECT_TRUE((isCaughtAs<XelQuietException, TypeParam>()));
  EXPECT_TRUE((isCaughtAs<std::exception, TypeParam>()));
  EXPECT_FALSE((isCaughtAs<XelWrongUsage, TypeParam>()));
  EXPECT_FALSE((isCaughtAs<TypeParam, Base>()));
}

TEST(Exceptions, TheBaseOfTheFamilyIsThrownItself) {
  EXPECT_TRUE((isCaughtAs<Base, Base>()));
  EXPECT_TRUE((isCaughtAs<XelQuietException, Base>()));
  EXPECT_TRUE((isCaughtAs<std::exception, Base>()));
}

TEST(Exceptions, WrongUsageIsNoQuietException) {
  EXPECT_TRUE((isCaughtAs<XelWrongUsage, XelWrongUsage>()));
  EXPECT_TRUE((isCaughtAs<std::exception, XelWrongUsage>()));
  EXPECT_FALSE((isCaughtAs<XelQuietException, XelWrongUsage>()));
  EXPECT_FALSE((isCaughtAs<Base, XelWrongUsage>()));
}

TYPED_TEST(ExceptionClass, CopyingNeverThrows) {
  static_assert(std::is_nothrow_copy_constructible_v<TypeParam>);
  static_assert(std::is_nothrow_copy_assignable_v<TypeParam>);
  static_assert(std::is_nothrow_move_constructible_v<TypeParam>);
  static_assert(std::is_nothrow_destructible_v<TypeParam>);
  static_assert(std::has_virtual_destructor_v<TypeParam>);
  const TypeParam first("first", 1);
  const TypeParam copy(first);
  EXPECT_STREQ(copy.getMessage(), "first");
  EXPECT_EQ(copy.getCode(), 1);
  EXPECT_NE(copy.getMessage(), first.getMessage()) << "a copy keeps a text of its own";
  TypeParam assigned("second", 2);
  assigned = first;
  EXPECT_STREQ(assigned.getMessage(), "first");
  EXPECT_EQ(assigned.getCode(), 1);
}

TYPED_TEST(ExceptionClass, KeepsTheMessageWhenTheBufferIsGone) {
  auto buffer = std::make_unique<std::string>("No line number 7 .");
  const TypeParam exception(buffer->c_str(), 1);
  std::memset(buffer->data(), 'x', buffer->size());
  buffer.reset();
  EXPECT_STREQ(exception.getMessage(), "No line number 7 .");
  EXPECT_STREQ(exception.what(), "No line number 7 .");
  const std::exception& standard = exception;
  EXPECT_STREQ(standard.what(), "No line number 7 .");
}

TEST(Exceptions, OutliveTheReaderAndTheEnvironmentThatTheyComeFrom) {
  std::exception_ptr kept;
  {
    const DataFile file("T|NAMES,a\nT,1\n");
    XelEnv env;
    XelCsvReader reader(env, file.getName(), 1);
    XelCsvTableReader table = reader.getTableByName("T");
    try {
      table.getLineByKey(1, std::string("Oslo").c_str());
    } catch (...) {
      kept = std::current_exception();
    }
    table.end();
    reader.end();
    env.end();
  }
  ASSERT_NE(kept, nullptr);
  EXPECT_XEL_THROW(std::rethrow_exception(kept), XelCsvReader::XelLineNotFoundException,
                   "XelCsvReader::XelLineNotFoundException : No line having key Oslo in table T.");
}

TYPED_TEST(ExceptionClass, KeepsTheCode) {
  EXPECT_EQ(TypeParam("text", 1).getCode(), 1);
  EXPECT_EQ(TypeParam("text", 0).getCode(), 0);
  EXPECT_EQ(TypeParam("text", -5).getCode(), -5);
}

TYPED_TEST(ExceptionClass, PrintsTheMessageAndNothingElse) {
  const TypeParam exception("No header line for columns in file %s ", 1);
  std::ostringstream stream;
  exception.print(stream);
  EXPECT_EQ(stream.str(), "No header line for columns in file %s ");
}

TYPED_TEST(ExceptionClass, EndLeavesTheMessageEmptyAndIsHarmlessTwice) {
  TypeParam exception("text", 1);
  const TypeParam copy(exception);
  exception.end();
  EXPECT_STREQ(exception.getMessage(), "");
  EXPECT_STREQ(exception.what(), "");
  exception.end();
  EXPECT_STREQ(exception.getMessage(), "");
  std::ostringstream stream;
  exception.print(stream);
  EXPECT_EQ(stream.str(), "");
  EXPECT_STREQ(copy.getMessage(), "text") << "a copy made before keeps its text";
}

TYPED_TEST(ExceptionClass, CutsTheMessageAt499Bytes) {
  for (const std::size_t length : {0U, 1U, 498U, 499U, 500U, 501U, 20000U}) {
    std::string text;
    while (text.size() < length) text.push_back(static_cast<char>('a' + text.size() % 26));
    EXPECT_EQ(std::string(TypeParam(text.c_str(), 1).getMessage()), text.substr(0, 499)) << length;
  }
  EXPECT_STREQ(TypeParam(nullptr, 1).getMessage(), "");
}

TYPED_TEST(ExceptionClass, CanBeDestroyedThroughEachBase) {
  const std::unique_ptr<std::exception> standard = std::make_unique<TypeParam>("text", 1);
  const std::exception& exception = *standard;
  EXPECT_STREQ(exception.what(), "text");
  EXPECT_EQ(typeid(exception), typeid(TypeParam));
}

#if defined(__x86_64__)

// Programs that are linked with another build of the library count on the order of the slots.
TYPED_TEST(ExceptionClass, VirtualOperationsStandInTheOrderDestructorsMessagePrintEnd) {
  const char* (TypeParam::*getMessage)() const = &TypeParam::getMessage;
  void (TypeParam::*print)(std::ostream&) const = &TypeParam::print;
  void (TypeParam::*end)() = &TypeParam::end;
  EXPECT_EQ(getSlot(getMessage), 2);
  EXPECT_EQ(getSlot(print), 3);
  EXPECT_EQ(getSlot(end), 4);
  TypeParam exception("text", 1);
  EXPECT_EQ(static_cast<void*>(&exception), dynamic_cast<void*>(&exception));
  auto* standard = static_cast<std::exception*>(&exception);
  EXPECT_GT(reinterpret_cast<char*>(standard), reinterpret_cast<char*>(&exception)) << "the standard base comes second";
}

#endif

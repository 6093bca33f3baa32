// The environment, the base exceptions and the exceptions of the reader.
#include <sstream>

#include "env/XelEnvOwned.h"
#include "tests/faults/Scenarios.h"

namespace {

// A copy of an exception, assigned, printed and ended.
template <class Exception>
std::string copyPrintAndEnd(const Exception& exception) {
  Exception copy(exception);
  Exception other("another", 7);
  other = copy;
  copy.end();
  copy.end();
  std::ostringstream printed;
  other.print(printed);
  return text(copy.getMessage()) + "," + printed.str() + "," + other.what() + "," + std::to_string(other.getCode());
}

template <class... Exceptions>
std::string makeEach() {
  std::string all;
  for (const std::string& each : {copyPrintAndEnd(Exceptions("text", 1))...}) all += each + " ";
  return all;
}

template <class Exception>
std::string throwAndCatch() {
  try {
    throw Exception("text", 1);
  } catch (const std::exception& exception) {
    return exception.what();
  }
}

std::string throwEach() {
  return throwAndCatch<XelQuietException>() + throwAndCatch<XelWrongUsage>() +
         throwAndCatch<XelCsvReader::XelCsvReaderException>() + throwAndCatch<XelCsvReader::XelOverflowException>();
}

}  // namespace

std::vector<Scenario> getEnvScenarios() {
  return {
      {"XelEnv()", Shape::One,
       [](const World&) {
         const Ending<XelEnv> env{XelEnv()};
         return std::string("made");
       },
       "made"},
      {"XelEnv(XelAllocator*)", Shape::One,
       [](const World& at) {
         Ending<XelEnv> env{XelEnv(at.allocator)};
         return text(env->isEmpty()) + "," + text(env->getImpl() == nullptr);
       },
       "no,no"},
      {"XelEnv(XelAllocator*), then a reader in it", Shape::One,
       [](const World& at) {
         Ending<XelEnv> env{XelEnv(at.allocator)};
         Ending<XelCsvReader> reader{XelCsvReader(*env, at.file)};
         return textOf(reader->getLineByNumber(0));
       },
       "2: [Paris][2004][7][a,b]"},
      {"XelEnv(nullptr), XelEnv(XelEnvI*), copies, end", Shape::One,
       [](const World& at) {
         XelEnv empty = nullptr;
         empty.end();
         XelEnv copy(at.env);
         const XelEnv same(copy.getImpl());
         copy = same;
         return text(empty.isEmpty()) + "," + text(copy.isEmpty()) + "," + text(copy.getImpl() == at.env.getImpl());
       },
       "yes,no,yes"},
      {"XelEnv::allocate, free", Shape::One,
       [](const World& at) {
         const XelEnvBlock<char> one(at.env, 1);
         const XelEnvBlock<char> some(at.env, 100);
         const XelEnvBlock<char> many(at.env, 300000);
         at.env.free(nullptr, 5);
         return text(one.get() != nullptr && some.get() != nullptr && many.get() != nullptr);
       },
       "yes"},
      {"XelEnv::allocate of nothing and of less", Shape::One,
       [](const World& at) {
         const std::string nothing = text(at.env.allocate(0) == nullptr);
         try {
           at.env.allocate(-1);
         } catch (const std::bad_alloc&) {
           return nothing + ",std::bad_alloc";
         }
         return nothing;
       },
       "yes,std::bad_alloc"},
      {"XelEnv::getBytesInUse, getBytesAllocated of an own manager", Shape::One,
       [](const World&) {
         Ending<XelEnv> env{XelEnv()};
         const XelEnvBlock<char> block(*env, 100);
         return text(env->getBytesInUse() >= 100 && env->getBytesAllocated() >= env->getBytesInUse());
       },
       "yes"},
      {"XelEnv::end with blocks out", Shape::One,
       [](const World&) {
         Ending<XelEnv> env{XelEnv()};
         env->allocate(10);
         env->allocate(100000);
         env->end();
         return text(env->isEmpty());
       },
       "yes"},
      {"XelGetInfinity", Shape::One, [](const World&) { return text(XelGetInfinity()); }, "inf"},

      // The message lies in the exception, so none of this takes memory of the environment.
      {"XelQuietException, XelWrongUsage", Shape::One,
       [](const World&) { return makeEach<XelQuietException, XelWrongUsage>(); }, ",text,text,1 ,text,text,1 "},
      {"exceptions of XelCsvReader", Shape::One,
       [](const World&) {
         using R = XelCsvReader;
         return makeEach<R::XelCsvReaderException, R::XelFileNotFoundException, R::XelFieldNotFoundException,
                         R::XelColumnHeaderNotFoundException, R::XelCsvReaderParameterException,
                         R::XelDuplicatedTableException, R::XelTableNotFoundException,
                         R::XelIncorrectCsvReaderUseException, R::XelLineNotFoundException,
                         R::XelDuplicatedLineException, R::XelOverflowException, R::XelNumberOfFieldsException>();
       },
       ",text,text,1 ,text,text,1 ,text,text,1 ,text,text,1 ,text,text,1 ,text,text,1 "
       ",text,text,1 ,text,text,1 ,text,text,1 ,text,text,1 ,text,text,1 ,text,text,1 "},
      {"exceptions thrown", Shape::One, [](const World&) { return throwEach(); }, "texttexttexttext"},
  };
}

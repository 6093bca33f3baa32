// Every operation in all its ways while memory runs out.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>

#include "tests/faults/FileFaults.h"
#include "tests/faults/Scenarios.h"
#include "tests/support/DataFile.h"
#include "tests/support/TestEnv.h"

namespace {

// More allocations than any scenario has.
constexpr long MostAllocations = 5000;

// Runs body(scenario, isCached) for every scenario, with scanning tables and with cached ones.
template <class Body>
void forEachScenario(Body body) {
  for (const Scenario& scenario : getScenarios()) {
    for (const bool isCached : {false, true}) {
      SCOPED_TRACE(std::string(scenario.name) + ", " + getNameOf(scenario.shape) +
                   (isCached ? ", cached" : ", scanning"));
      body(scenario, isCached);
    }
  }
}

// Lets an allocation of a scenario fail and looks at what it leaves behind. False when the scenario has no such
// allocation.
bool failAllocation(const Scenario& scenario, World& at, TestAllocator& allocator, FileFaults& streams, long number,
                    bool forEver) {
  const std::string before = at.askBystanders();
  const long blocks = allocator.getBlocksOut();
  const long open = streams.getOpenStreams();
  std::string answer;
  bool hasThrown = false;
  allocator.failAfter(number, forEver);
  try {
    answer = runScenario(scenario, at);
  } catch (const std::bad_alloc&) {
    hasThrown = true;
  }
  const bool hasFailed = allocator.getFailures() > 0;
  allocator.neverFail();

  EXPECT_EQ(hasThrown, hasFailed) << "std::bad_alloc is for failing allocations, and for all of them";
  if (!hasThrown) {
    EXPECT_EQ(answer, scenario.getAnswer(at));
  }
  EXPECT_EQ(streams.getOpenStreams(), open) << "a file stayed open";
  if (hasThrown || !scenario.isKept) {
    EXPECT_EQ(allocator.getBlocksOut(), blocks) << "a block is missing";
  }
  EXPECT_EQ(runScenario(scenario, at), scenario.getAnswer(at)) << "done again";
  EXPECT_EQ(streams.getOpenStreams(), open) << "a file stayed open, done again";
  EXPECT_EQ(at.askBystanders(), before) << "what stood beside";
  return hasFailed;
}

}  // namespace

TEST(Scenarios, AnswerAsTheyShould) {
  forEachScenario([](const Scenario& scenario, bool isCached) {
    TestEnv env;
    const DataFile file(getContent(scenario.shape));
    World at(env, &env.getAllocator(), file.getName(), scenario.shape, isCached);
    for (int time = 0; time < 2; ++time) EXPECT_EQ(runScenario(scenario, at), scenario.getAnswer(at));
  });
}

TEST(Scenarios, GiveAllBackToAMemoryManagerOfTheEnvironmentsOwn) {
  forEachScenario([](const Scenario& scenario, bool isCached) {
    XelEnv env;
    const long unused = env.getBytesInUse();
    {
      const DataFile file(getContent(scenario.shape));
      World at(env, nullptr, file.getName(), scenario.shape, isCached);
      const std::string beside = at.askBystanders();
      const long before = env.getBytesInUse();
      EXPECT_EQ(runScenario(scenario, at), scenario.getAnswer(at));
      if (!scenario.isKept) {
        EXPECT_EQ(env.getBytesInUse(), before);
      }
      EXPECT_EQ(at.askBystanders(), beside);
    }
    EXPECT_EQ(env.getBytesInUse(), unused);
    env.end();
  });
}

TEST(FailingAllocations, ReachTheCallerLoseNothingAndLeaveAllElseAtWork) {
  long injected = 0;
  forEachScenario([&](const Scenario& scenario, bool isCached) {
    for (const bool forEver : {false, true}) {
      SCOPED_TRACE(forEver ? "for ever" : "once");
      TestEnv env;
      const DataFile file(getContent(scenario.shape));
      FileFaults streams(file.getName());
      const auto makeWorld = [&] {
        return std::make_unique<World>(env, &env.getAllocator(), file.getName(), scenario.shape, isCached);
      };
      const std::string rest = makeWorld()->walkOn();
      std::unique_ptr<World> at = makeWorld();
      long number = 0;
      while (number < MostAllocations) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        if (!failAllocation(scenario, *at, env.getAllocator(), streams, number, forEver)) break;
        if (scenario.isKept) at = makeWorld();
        ++number;
      }
      EXPECT_LT(number, MostAllocations) << "never done";
      EXPECT_EQ(at->walkOn(), rest) << "iterators that stood beside";
      injected += number;
    }
  });
  EXPECT_GT(injected, 5000);
}

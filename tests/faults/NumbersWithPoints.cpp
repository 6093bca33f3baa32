// All tests of this program read and print numbers with fractions, and none is about the locale: each runs with a decimal
// point, whatever locale the program is told.
#include <gtest/gtest.h>

#include <optional>

#include "tests/support/DecimalPoint.h"

namespace {

class NumbersWithPoints : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo&) override { point.emplace(); }
  void OnTestEnd(const testing::TestInfo&) override { point.reset(); }

 private:
  std::optional<DecimalPoint> point;
};

// GoogleTest owns it.
[[maybe_unused]] const bool IsRegistered = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new NumbersWithPoints);
  return true;
}();

}  // namespace

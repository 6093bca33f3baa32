// The locale that a whole test program runs under.
//
// A test program runs in the locale "C" like every program that does not ask for another. When the environment variable
// XELCSV_TEST_LOCALE names a locale, it is the process's locale while the tests run; one that is not there fails the
// program, so that no run passes in a locale other than the one asked for.
#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

namespace {

class TestLocale : public testing::Environment {
 public:
  void SetUp() override {
    const char* name = std::getenv("XELCSV_TEST_LOCALE");
    if (name == nullptr) return;
    ASSERT_NE(std::setlocale(LC_ALL, name), nullptr) << "there is no locale " << name;
  }
};

// GoogleTest owns it.
[[maybe_unused]] const testing::Environment* const Registered = testing::AddGlobalTestEnvironment(new TestLocale);

}  // namespace

// Expectations about mistakes of the caller, which are assertions where the library is built with them.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

// The process that an assertion ends leaves by exit(): what was counted in it while coverage is measured is written then,
// and abort() would lose it.
inline void leaveAbortsByExit() {
  std::signal(SIGABRT, [](int) { std::exit(EXIT_FAILURE); });
}

// The statement fails an assertion with this text. It runs in a process of its own.
#define EXPECT_XEL_ASSERTION(statement, text) \
  EXPECT_DEATH(                               \
      {                                       \
        leaveAbortsByExit();                  \
        static_cast<void>(statement);         \
      },                                      \
      text)

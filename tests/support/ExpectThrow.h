// Expectations about exceptions: the exact class and the whole message.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "xelcsv/XelCsvReader.h"

// The statement throws exactly Class (no class derived from it) with exactly this message, and what() says the same.
#define EXPECT_XEL_THROW(statement, Class, message)                                                     \
  do {                                                                                                  \
    bool thrown = false;                                                                                \
    try {                                                                                               \
      static_cast<void>(statement);                                                                     \
    } catch (const Class& exception) {                                                                  \
      thrown = true;                                                                                    \
      EXPECT_EQ(typeid(exception), typeid(Class)) << typeid(exception).name();                          \
      EXPECT_EQ(std::string(exception.getMessage()), std::string(message));                             \
      EXPECT_EQ(std::string(exception.what()), std::string(message));                                   \
    } catch (const XelQuietException& exception) {                                                      \
      thrown = true;                                                                                    \
      ADD_FAILURE() << "another class: " << typeid(exception).name() << ": " << exception.getMessage(); \
    }                                                                                                   \
    EXPECT_TRUE(thrown) << #statement " threw nothing";                                                 \
  } while (false)

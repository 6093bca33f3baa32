// Where virtual operations stand in the table of their class.
#pragma once

#if defined(__x86_64__)

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>

// The slot of a virtual operation, counted from 0: here a pointer to a virtual member function holds 1 plus the offset in
// the table, and the offset of the base whose table that is.
template <class Operation>
long getSlot(Operation operation) {
  std::array<std::ptrdiff_t, 2> parts{};
  static_assert(sizeof operation == sizeof parts);
  std::memcpy(&parts, &operation, sizeof parts);
  EXPECT_EQ(parts[0] % 8, 1) << "not virtual";
  EXPECT_EQ(parts[1], 0) << "not in the first table";
  return static_cast<long>((parts[0] - 1) / 8);
}

#endif

// Where lines begin in a stretch of bytes: one pass that looks at nothing but line feeds.
#pragma once

#include <cstdint>

// Bytes of a stretch at most. No line that lies in one whole is too long to be read at once.
constexpr long XelStretchSize = 9984;

// Entries of the array that XelFindLineStarts() writes to: one a line, one more, and room for a few that do not count.
constexpr long XelMostLineStarts = XelStretchSize + 8;

// Finds the lines that lie whole, their line feeds included, in length bytes (XelStretchSize at most) that begin with a
// line. Answers their number n; starts[0] to starts[n - 1] are the indices of their first bytes, starts[n] that of the
// byte behind the last one.
long XelFindLineStarts(const char* bytes, long length, std::uint16_t* starts) noexcept;

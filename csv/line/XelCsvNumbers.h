// Functions on the text of a number alone.
#pragma once

// A text as a float: "+INF", "+1.#INF", "+Inf", "+Infinity" are XelGetInfinity(), with "-" its negative, as whole
// texts; anything else is what strtod reads in the process's locale, 0.0 when there is no number.
double XelParseFloat(const char* text) noexcept;

// The same, with "U" for XelGetInfinity() too.
double XelParseFloatOrUnbounded(const char* text) noexcept;

// A text as an integer: what strtol reads in base 10, 0 when there is no number. False, and value 0, when it does not
// fit in 32 bits, or when strtol reports ERANGE. errno is set to 0 before.
bool XelParseInt(const char* text, long& value) noexcept;

// The same without a look at errno.
bool XelParseIntIgnoringErrno(const char* text, long& value) noexcept;

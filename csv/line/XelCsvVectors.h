// Which vector instructions the loops over bytes use.
//
// Every such loop stands in a plain form, which every machine runs, and in forms for vectors of 16 and of 32 bytes; all
// give the same results. The widest that the machine has is taken, once, when the program starts to use it.
#pragma once

#if (defined(__x86_64__) || defined(_M_X64)) && (defined(__GNUC__) || defined(__clang__))
#define XELCSV_HAS_VECTORS 1
#else
#define XELCSV_HAS_VECTORS 0
#endif

enum class XelVectorLevel : int {
  Plain,    // a byte at a time
  Bytes16,  // SSE2, which every x86-64 has
  Bytes32   // AVX2
};

// The level in use: the best that the machine has, unless XelSetVectorLevel() chose a lower one.
XelVectorLevel XelGetVectorLevel() noexcept;

// The best level that this machine has.
XelVectorLevel XelGetBestVectorLevel() noexcept;

// Takes this level from now on, or the best when the machine does not have it; for tests and benchmarks, which compare
// the levels. Not to be called while another thread reads a file.
void XelSetVectorLevel(XelVectorLevel level) noexcept;

// What stands between these two is compiled for vectors of 32 bytes, and must run only where they are the level in use.
#if XELCSV_HAS_VECTORS
#if defined(__clang__)
#define XELCSV_BEGIN_VECTORS_32 \
  _Pragma("clang attribute push(__attribute__((target(\"avx2,bmi,popcnt\"))), apply_to = function)")
#define XELCSV_END_VECTORS_32 _Pragma("clang attribute pop")
#else
#define XELCSV_BEGIN_VECTORS_32 _Pragma("GCC push_options") _Pragma("GCC target(\"avx2,bmi,popcnt\")")
#define XELCSV_END_VECTORS_32 _Pragma("GCC pop_options")
#endif
#endif

// The hash and the comparison of the library's string keys.
#pragma once

// Buckets of every new hash table of the library.
constexpr long XelBucketCount = 128;

// Bucket of a key, 0 <= result < size, for size > 0.
//
// A variant of the ELF hash with a 64-bit accumulator: bits 28 to 31 are folded back, the bits above them stay. Bytes
// are taken as signed, on every platform.
long XeldReaderHashFunction(const char* key, long size) noexcept;

// 1 when the two keys are the same text, else 0.
long XeldReaderCmpFunction(const char* left, const char* right) noexcept;

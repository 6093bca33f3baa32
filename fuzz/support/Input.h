// An input of a fuzz target: words in its first line, written so that a human reads and a fuzzer mutates them easily, and
// the bytes of a data file after it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

struct Input {
  std::vector<std::string> words;  // of the first line, cut at blanks, with escapes read
  std::string rest;                // after the first line feed; empty when there is none
};

// Reads an input. In a word "\s" is a space, "\t", "\n" and "\r" are what they are in C, "\0" is the zero byte, "\xHH"
// the byte with that code; any other byte after a backslash stands for itself.
Input parseInput(const std::uint8_t* data, std::size_t size);

// The word at a position, empty when there is none.
const std::string& wordAt(const Input& input, std::size_t position);

// The text as C sees it: what stands before its first zero byte.
std::string upToZero(const std::string& text);

}  // namespace fuzz

// The least that reading can cost on this machine: what every reader has to do, and nothing else.
#pragma once

#include <string>

namespace bench {

// Reads the file in blocks of 256 KiB and counts its line feeds, 32 bytes at a time where the machine can. This is the
// floor F of everything that passes over a file.
long countLineFeeds(const std::string& fileName);

// Opens the file, reads 512 bytes at an offset, closes it. The floor of a lookup. Answers the bytes read.
long readAt(const std::string& fileName, long offset);

// Opens the file, reads all of a file of at most 4096 bytes, closes it. Answers the bytes read.
long readSmall(const std::string& fileName);

}  // namespace bench

// Headings by their text: which field of a heading line is the first that reads so.
#pragma once

#include <cstdint>

#include "env/XelEnvOwned.h"

class XelCsvLineI;

// A hash of the fields of one heading line, 16 to 32 bytes a field of the line's environment. Does not own the line, and
// is told by reset() when it goes. When the line's text is replaced, fields are compared one after the other again.
class XelCsvHeadings {
 public:
  // Takes the fields of a line, null for none, as they will be without the spaces around them. Throws std::bad_alloc.
  void make(const XelCsvLineI* line);

  // Position of the first field of the line that is this heading, without the spaces around it; -1 when there is none.
  // Trims all fields of the line in place. A line or heading that is null has no such field.
  long find(const XelCsvLineI* line, const char* heading) noexcept;

  // Forgets the line.
  void reset() noexcept;

  // Exchanges everything with another.
  void swap(XelCsvHeadings& other) noexcept;

 private:
  // A place of the hash: empty with position -1.
  struct Slot {
    std::uint32_t hash;
    std::int32_t position;
  };

  bool isOf(const XelCsvLineI* line) const noexcept;

  const XelCsvLineI* indexed = nullptr;
  long changes = 0;        // of the line when the hash was made
  bool isTrimmed = false;  // whether the line's fields were trimmed since then
  XelEnvBlock<Slot> slots;
};

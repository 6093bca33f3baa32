// What an iterator over the lines of a table holds while it walks.
#pragma once

#include "csv/line/XelCsvLineI.h"
#include "csv/line/XelCsvLines.h"
#include "csv/table/XelCsvTableReaderI.h"

// The walk's own file, one buffer and one field array for all lines, and the one record over them. A line that a user
// copies into the record gets storage of its own, which goes when the next line comes.
//
// What every line goes through stands in this header, to become one piece of code with the iterator's ++.
class XelCsvWalk : public XelEnvResident {
 public:
  // Opens the table's file with mode "r" or "rb". Throws XelFileNotFoundException, std::bad_alloc.
  XelCsvWalk(XelCsvTableReaderI* walked, const char* mode);

  // Goes to a byte offset; false when the file cannot be positioned.
  bool seek(long offset) noexcept { return file.seek(offset); }

  // Reads the line that the file stands at; what cannot be read is an empty line. Throws std::bad_alloc.
  void readLine(long lineNumber);

  // Reads on to the next line that is neither a comment nor empty, as XelCsvLines does; the record stays as it is.
  bool skipCommentAndEmptyLines(long& lineNumber, long& offset);

  // Goes to the next line that is neither a comment nor empty and makes it the record, all in one look at its bytes.
  // False, and nothing has changed but the text of the record before, when that takes more than a look: then it is
  // skipCommentAndEmptyLines() and formatLine() that do it.
  bool goToPlainLine(long& lineNumber) noexcept;

  // Makes the line at this offset the record when it is the next one, in one look at its bytes, whatever they are. False,
  // and nothing has changed but the text of the record before, when that takes more: then it is seek() and readLine().
  bool goToLineAt(long offset, long lineNumber) noexcept;

  // Whether the last skipCommentAndEmptyLines() read any line at all.
  bool hasRead() const noexcept { return file.hasRead(); }

  // Offset of the next line.
  long getOffset() const noexcept { return file.getOffset(); }

  // The line read last becomes the record.
  void formatLine(long lineNumber) noexcept;

  // The record's text is formatted once more; false when that changes nothing, nor ever will.
  bool formatAgain(long lineNumber) noexcept;

  // The record; it belongs to the walk.
  XelCsvLineI* getLine() noexcept { return &line; }

 private:
  // The next line, of which ahead are all bytes that are known, becomes the record, comment or not.
  // False when that takes more than a look at them.
  bool takePlainLine(const XelCsvSpan& ahead, long lineNumber) noexcept;

  // Formats a raw line of the file's into the buffer.
  XelFormattedLine formatLine(const XelCsvSpan& raw) const noexcept {
    return formatter(raw.begin, raw.end, buffer.get(), reader->getFormat(), fields.get());
  }

  // What was formatted becomes the record.
  void use(const XelFormattedLine& formatted, long lineNumber) noexcept {
    table->setFormatted(formatted);
    // A copy into the record may have given it storage of its own.
    if (line.getText() == buffer.get()) {
      line.adoptNext(lineNumber, formatted.fields);
    } else {
      line.adoptFields(buffer.get(), fields.get(), lineNumber, table);
    }
  }

  XelCsvTableReaderI* table;
  const XelCsvReaderI* reader;
  XelPaddedFormatter* formatter;
  XelCsvLines file;
  XelEnvBlock<char> buffer;
  XelEnvBlock<char*> fields;
  XelCsvLineI line;
};

inline bool XelCsvWalk::goToPlainLine(long& lineNumber) noexcept {
  const XelCsvSpan ahead = file.getAhead();
  const bool mayBeSkipped =
      ahead.getLength() == 0 || *ahead.begin == reader->getComment() || static_cast<unsigned char>(*ahead.begin) <= ' ';
  if (mayBeSkipped || !takePlainLine(ahead, lineNumber + 1)) return false;
  ++lineNumber;
  return true;
}

inline bool XelCsvWalk::goToLineAt(long offset, long lineNumber) noexcept {
  const XelCsvSpan ahead = file.getAhead();
  return offset == file.getOffset() && ahead.getLength() > 0 && takePlainLine(ahead, lineNumber);
}

inline bool XelCsvWalk::takePlainLine(const XelCsvSpan& ahead, long lineNumber) noexcept {
  const XelFormattedLine formatted = formatLine(ahead);
  if (!file.takeLine(ahead, formatted.stop)) return false;
  use(formatted, lineNumber);
  return true;
}

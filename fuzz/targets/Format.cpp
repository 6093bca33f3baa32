// Line formatting alone, compared with the slow reading of the same rules. First line: separators, decimal character and
// quote, as in ",; . \""; the rest is the raw line.
#include <algorithm>
#include <cstring>
#include <memory>

#include "csv/line/XelCsvText.h"
#include "csv/line/XelCsvVectors.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/SlowLine.h"

namespace fuzz {

namespace {

// Bytes in a block of exactly their number, so that an access beyond them is seen.
class Block {
 public:
  explicit Block(std::size_t count) : size(count), bytes(std::make_unique<char[]>(count)) {}
  explicit Block(const std::string& text) : Block(text.size()) { text.copy(bytes.get(), text.size()); }

  char* begin() const { return bytes.get(); }
  char* end() const { return bytes.get() + size; }
  std::string getText() const { return std::string(begin(), end()); }

 private:
  std::size_t size;
  std::unique_ptr<char[]> bytes;
};

char firstOf(const std::string& word, char otherwise) { return word.empty() ? otherwise : word[0]; }

void checkFormatted(const XelFormattedLine& formatted, const Block& written, const std::vector<std::string>& fields,
                    const std::string& way) {
  const std::string expected = slowText(fields);
  checkEqual(formatted.fields, static_cast<int>(fields.size()), "number of fields " + way);
  checkEqual(formatted.length, static_cast<int>(expected.size()), "length " + way);
  checkEqual(written.getText().substr(0, expected.size()), expected, "text " + way);
}

void checkStarts(const std::vector<char*>& starts, const Block& written, const std::vector<std::string>& fields) {
  const char* at = written.begin();
  for (std::size_t field = 0; field < fields.size(); ++field) {
    check(starts[field] == at, "start of field " + std::to_string(field));
    at += fields[field].size() + 1;
  }
}

// Formatting into other memory, in place, with and without the starts of the fields.
void checkFormatting(const std::string& line, const XelCsvFormat& format, const std::vector<std::string>& fields) {
  const Block raw(line);
  const Block elsewhere(line.size() + 1);
  checkFormatted(XelFormatLine(raw.begin(), raw.end(), elsewhere.begin(), format), elsewhere, fields, "elsewhere");
  checkEqual(raw.getText(), line, "the raw line afterwards");

  std::vector<char*> starts(line.size() + 1);
  const Block withStarts(line.size() + 1);
  checkFormatted(XelFormatLine(raw.begin(), raw.end(), withStarts.begin(), format, starts.data()), withStarts, fields,
                 "with starts");
  checkStarts(starts, withStarts, fields);

  const Block inPlace(line + '\0');
  const char* const end = inPlace.begin() + line.size();
  checkFormatted(XelFormatLine(inPlace.begin(), end, inPlace.begin(), format), inPlace, fields, "in place");

  const Block zeroEnded(line + '\0');
  checkFormatted(XelFormatLine(zeroEnded.begin(), zeroEnded.end(), zeroEnded.begin(), format, starts.data()), zeroEnded,
                 fields, "in place up to a zero byte");
  checkStarts(starts, zeroEnded, fields);
}

// The same under every level of vectors, in memory that has padding.
void checkPadded(const std::string& line, const XelCsvFormat& format, const std::vector<std::string>& fields) {
  std::string padding;
  while (padding.size() < static_cast<std::size_t>(XelTextPadding)) padding += line + ",\"\n.";
  padding.resize(static_cast<std::size_t>(XelTextPadding));
  const Block raw(line + padding);
  const char* const end = raw.begin() + line.size();
  std::vector<char*> starts(line.size() + 1 + static_cast<std::size_t>(XelFieldsPadding));
  for (const XelVectorLevel level : {XelVectorLevel::Plain, XelVectorLevel::Bytes16, XelVectorLevel::Bytes32}) {
    XelSetVectorLevel(level);
    const std::string way = "at level " + std::to_string(static_cast<int>(level));
    const Block written(line.size() + 1 + padding.size());
    const XelFormattedLine formatted =
        XelGetPaddedFormatter(format)(raw.begin(), end, written.begin(), format, starts.data());
    checkFormatted(formatted, written, fields, way);
    checkStarts(starts, written, fields);
    const std::size_t stop = std::min(line.find_first_of(std::string("\0\n\r", 3)), line.size());
    checkEqual(static_cast<std::size_t>(formatted.stop - raw.begin()), stop, "where the line stops " + way);
  }
  XelSetVectorLevel(XelGetBestVectorLevel());
}

void checkTrimming(const std::string& text) {
  const std::string expected = slowTrim(text);
  const Block inPlace(text + '\0');
  XelTrim(inPlace.begin());
  checkEqual(std::string(inPlace.begin()), expected, "trimmed in place");
  const Block apart(text);
  const XelCsvSpan span = XelTrimmed(apart.begin(), apart.end());
  check(span.begin >= apart.begin() && span.end <= apart.end(), "the trimmed span lies in its text");
  checkEqual(std::string(span.begin, span.end), expected, "trimmed span");
}

// A text that formatting leaves as it is, as one field, is settled.
void checkSettled(const std::string& text, const XelCsvFormat& format, const Characters& characters) {
  const Block block(text + '\0');
  const bool isSettled = slowFields(text, characters) == std::vector<std::string>{text};
  checkEqual(XelIsSettledText(block.begin(), format), isSettled, "settled: " + quoted(text));
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input = parseInput(data, size);
  const Characters characters{upToZero(wordAt(input, 0)), firstOf(wordAt(input, 1), '.'),
                              firstOf(wordAt(input, 2), '"')};
  if (characters.decimal == characters.quote) return 0;  // refused by the reader
  if (characters.separators.find(characters.decimal) != std::string::npos) return 0;
  if (characters.separators.find(characters.quote) != std::string::npos) return 0;
  const XelCsvFormat format(characters.separators.c_str(), characters.decimal, characters.quote);
  const std::string& line = input.rest;

  const std::vector<std::string> fields = slowFields(line, characters);
  checkFormatting(line, format, fields);
  checkPadded(line, format, fields);

  const Block raw(line);
  const XelCsvSpan first = XelFirstField(raw.begin(), raw.end(), format);
  check(first.begin == raw.begin(), "the first field begins where the line does");
  checkEqual(std::string(first.begin, first.end), slowFirstField(line, characters), "first field");
  checkEqual(XelIsEmptyLine(raw.begin(), raw.end()), slowIsEmpty(line), "emptiness of the line");
  const auto length = static_cast<long>(upToZero(line).size());
  checkEqual(XelTextLength(raw.begin(), static_cast<long>(line.size())), length, "length up to the zero byte");

  checkTrimming(upToZero(line));
  checkSettled(upToZero(line), format, characters);
  for (const std::string& field : fields) {
    checkTrimming(field);
    checkSettled(field, format, characters);
  }
  return 0;
}

}  // namespace fuzz

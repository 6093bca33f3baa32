#include "check/XelCsvByteChecks.h"

#include <cstring>

#include "check/XelCsvMessage.h"

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";
constexpr long CutLength = XelLineSize - 1;

bool beginsWith(const XelCsvSpan& text, std::string_view beginning) {
  return text.getLength() >= static_cast<long>(beginning.size()) &&
         std::memcmp(text.begin, beginning.data(), beginning.size()) == 0;
}

// Whether every second byte, from first on, is zero and no other is: Latin text in UTF-16 looks so, and no other text.
bool isEverySecondZero(const XelCsvSpan& text, long first) {
  long zeros = 0;
  for (long index = 0; index < text.getLength(); ++index) {
    const bool isZero = text.begin[index] == '\0';
    if (isZero != (index % 2 == first)) return false;
    if (isZero) ++zeros;
  }
  return zeros > 1;
}

bool isUtf16(const XelCsvSpan& firstLine) {
  return beginsWith(firstLine, "\xFF\xFE") || beginsWith(firstLine, "\xFE\xFF") || isEverySecondZero(firstLine, 0) ||
         isEverySecondZero(firstLine, 1);
}

}  // namespace

XelCsvByteChecks::XelCsvByteChecks(const XelCsvCheckContext& checked)
    : context(checked), parameters(checked.parameters), findings(checked.findings) {
  for (int value = 0; value < 256; ++value) {
    const bool isControl = (value < ' ' && value != '\t') || value == 0x7F;
    features[value] = value > 0x7F ? Above127 : isControl ? Control : Nothing;
  }
  features[0] = Nul;
  features[static_cast<unsigned char>('\r')] = CarriageReturn;
  // What the file is written with is no surprise in it.
  for (const char byte : parameters.separators) features[static_cast<unsigned char>(byte)] &= Above127;
  for (const char byte : {parameters.decimal, parameters.quote, parameters.comment}) {
    features[static_cast<unsigned char>(byte)] &= Above127;
  }
}

void XelCsvByteChecks::check(const XelCsvCheckedLine& line) {
  if (line.number == 0) {
    checkStart(line);
    if (findings.isStopped()) return;
  }
  unsigned char found = Nothing;
  const char* const end = line.text.end - (line.hasLineFeed() ? 1 : 0);
  for (const char* at = line.text.begin; at != end; ++at) found |= features[static_cast<unsigned char>(*at)];
  if (line.isRestOfLine()) checkLength(line);
  if ((found & Nul) != 0) checkNul(line);
  if ((found & Control) != 0) checkControl(line);
  if ((found & CarriageReturn) != 0) checkCarriageReturn(line);
  if ((found & Above127) != 0 || utf8.isInCharacter()) checkUtf8(line);
  if (line.hasLineFeed() && !hasMixedEnds) checkLineEnd(line);
}

void XelCsvByteChecks::end(const XelCsvCheckedLine& last, bool isHeading) {
  if (last.number < 0 || last.hasLineFeed()) return;
  if (utf8.isInCharacter() && findings.takes(XelCsvCode::InvalidUtf8)) {
    findings.report(
        XelCsvCode::InvalidUtf8, XelPlaceOf(last, {last.text.end, last.text.end}),
        "the file ends inside a character of UTF-8; the field reads silently with the bytes that there are");
  }
  if (findings.takes(XelCsvCode::NoFinalEol)) {
    findings.report(
        XelCsvCode::NoFinalEol, XelPlaceOf(last, {last.text.end, last.text.end}),
        isHeading
            ? "no line feed ends the last line: it reads as a heading or key line, and silently as a line of data too"
            : "no line feed ends the last line: it reads like any other");
  }
}

void XelCsvByteChecks::checkStart(const XelCsvCheckedLine& line) {
  const XelCsvSpan& text = line.text;
  if (isUtf16(text)) {
    if (findings.takes(XelCsvCode::Utf16)) {
      findings.report(XelCsvCode::Utf16, XelPlaceOf(line, {text.begin, text.begin + 2}),
                      "the text is UTF-16, of which every second byte may be 0: the library ends each line there and "
                      "reads one letter of it; nothing else of the file was looked at");
    }
    findings.stop();
    return;
  }
  if (!beginsWith(text, ByteOrderMark)) return;
  const XelCsvSpan field = XelFirstField(text.begin, text.end, context.format);
  const char* const name = text.begin + ByteOrderMark.size();
  // A byte of the mark that the parameters make a separator is one, and no surprise.
  if (field.end < name) return;
  const bool isComment = name != field.end && *name == parameters.comment;
  const bool isHeading = std::memchr(name, '|', static_cast<std::size_t>(field.end - name)) != nullptr;
  const bool isHarmless = !parameters.isMultiTable && isHeading && !isComment;
  if (!findings.takes(XelCsvCode::Bom, {}, isHarmless ? XelCsvSeverity::Note : XelCsvSeverity::Error)) return;
  std::string message =
      "the file begins with a byte-order mark, which the library takes for a part of the first field: ";
  if (isComment) {
    message += "the comment behind it is no comment but a line of data";
  } else if (parameters.isMultiTable) {
    const XelCsvSpan bare = XelTrimmed(name, field.end);
    const void* bar = std::memchr(bare.begin, '|', static_cast<std::size_t>(bare.getLength()));
    message += "getTableByName(" +
               XelQuoted(XelTrimmed(bare.begin, bar != nullptr ? static_cast<const char*>(bar) : bare.end)) +
               ") throws XelTableNotFoundException";
  } else if (isHarmless) {
    message += "in front of the headings it does no harm";
  } else {
    message += "as text it reads with it, as a number as 0";
  }
  findings.report(XelCsvCode::Bom, XelPlaceOf(line, {text.begin, name}), message);
}

// Looked at where the library goes on with the rest of a line as with a line of its own.
void XelCsvByteChecks::checkLength(const XelCsvCheckedLine& line) {
  if (line.before != CutLength) return;
  const bool isBlank = XelIsEmptyLine(line.text.begin, line.text.end);
  if (!findings.takes(XelCsvCode::LongLine, {}, isBlank ? XelCsvSeverity::Note : XelCsvSeverity::Error)) return;
  const XelCsvSpan content = line.getContent();
  findings.report(XelCsvCode::LongLine, XelPlaceOf(line, content),
                  isBlank
                      ? "this line has 9999 bytes before its line feed, which the library reads as an empty line of "
                        "its own: line numbers count one more from here on"
                      : "this line goes on behind 9999 bytes: the library reads silently what follows as a line of "
                        "its own, line number " +
                            std::to_string(line.number));
}

const char* XelCsvByteChecks::findFeature(const XelCsvSpan& text, Feature feature) const noexcept {
  for (const char* at = text.begin; at != text.end; ++at) {
    if ((features[static_cast<unsigned char>(*at)] & feature) != 0) return at;
  }
  return text.end;
}

void XelCsvByteChecks::checkNul(const XelCsvCheckedLine& line) {
  if (!findings.takes(XelCsvCode::Nul)) return;
  const XelCsvSpan content = line.getContent();
  const char* const at = findFeature(content, Nul);
  findings.report(XelCsvCode::Nul, XelPlaceOf(line, {at, at + 1}),
                  "a zero byte ends the line for the library, which does not read the " +
                      XelCounted(content.end - at - 1, "byte") + " behind it");
}

void XelCsvByteChecks::checkControl(const XelCsvCheckedLine& line) {
  if (!findings.takes(XelCsvCode::ControlCharacter)) return;
  const char* const at = findFeature(line.text, Control);
  findings.report(XelCsvCode::ControlCharacter, XelPlaceOf(line, {at, at + 1}),
                  "the control character " + XelHex(*at) + " reads silently as a part of its field");
}

// Carriage returns before the line feed, and those that end the file, take nothing away from the line.
void XelCsvByteChecks::checkCarriageReturn(const XelCsvCheckedLine& line) {
  XelCsvSpan content = line.getContent();
  while (content.end != content.begin && content.end[-1] == '\r') --content.end;
  const char* const at = findFeature(content, CarriageReturn);
  if (at == content.end || !findings.takes(XelCsvCode::LoneCr)) return;
  findings.report(XelCsvCode::LoneCr, XelPlaceOf(line, {at, at + 1}),
                  "a carriage return inside the line ends it for the library, which does not read the " +
                      XelCounted(content.end - at - 1, "byte") + " behind it");
}

void XelCsvByteChecks::checkLineEnd(const XelCsvCheckedLine& line) {
  const char* const feed = line.text.end - 1;
  const bool hasReturn = feed != line.text.begin && feed[-1] == '\r';
  const LineEnd lineEnd = hasReturn ? LineEnd::Both : LineEnd::LineFeed;
  if (firstEnd == LineEnd::None) firstEnd = lineEnd;
  if (lineEnd == firstEnd) return;
  hasMixedEnds = true;
  if (!findings.takes(XelCsvCode::MixedEol)) return;
  findings.report(XelCsvCode::MixedEol, XelPlaceOf(line, {hasReturn ? feed - 1 : feed, feed + 1}),
                  std::string("this is the first line that ends with ") +
                      (hasReturn ? "a carriage return and a line feed, the lines before end with a line feed alone"
                                 : "a line feed alone, the lines before end with a carriage return and a line feed") +
                      "; both read the same");
}

void XelCsvByteChecks::checkUtf8(const XelCsvCheckedLine& line) {
  const char* const wrong = utf8.findWrong(line.text);
  if (wrong == nullptr) return;
  if (!findings.takes(XelCsvCode::InvalidUtf8)) return;
  findings.report(XelCsvCode::InvalidUtf8, XelPlaceOf(line, {wrong, wrong + 1}),
                  "the byte " + XelHex(*wrong) +
                      " begins no character of UTF-8 here; the field reads silently with the bytes that there are");
}

#include "check/XelCsvQuoteChecks.h"

#include <cstring>

namespace {

bool isBlank(char byte) { return byte == ' ' || byte == '\t'; }

// Where the quotes of a line are not as programs that quote fields write them: the first place of each kind.
class Quotes {
 public:
  Quotes(const XelCsvSpan& line, const XelCsvFormat& lineFormat) : text(line), format(lineFormat) { walk(); }

  const char* getUnclosed() const noexcept { return opened; }
  const char* getStray() const noexcept { return stray; }
  const char* getDoubled() const noexcept { return doubled; }

 private:
  void walk() {
    bool isFieldStart = true;
    for (const char* at = text.begin; !isEnd(at); ++at) {
      if (!isQuote(at)) {
        isFieldStart = format.isSeparator(*at) || (isFieldStart && isBlank(*at));
        continue;
      }
      open(at, isFieldStart);
      at = findClosing(at + 1);
      if (at == nullptr) return;
      close(at);
      isFieldStart = false;
    }
  }

  void open(const char* at, bool isFieldStart) {
    opened = at;
    if (!isFieldStart && stray == nullptr) stray = at;
  }

  void close(const char* at) {
    opened = nullptr;
    const char* next = at + 1;
    while (!isEnd(next) && isBlank(*next) && !format.isSeparator(*next)) ++next;
    if (!isEnd(next) && !format.isSeparator(*next) && stray == nullptr) stray = at;
  }

  // The quote that closes what was opened before at, null when none does. Two in a row close and open again.
  const char* findClosing(const char* at) {
    for (; !isEnd(at); ++at) {
      if (!isQuote(at)) continue;
      if (!isQuote(at + 1)) return at;
      if (doubled == nullptr) doubled = at;
      ++at;
    }
    return nullptr;
  }

  bool isEnd(const char* at) const { return at == text.end || format.getClass(*at) == XelByteClass::LineEnd; }
  bool isQuote(const char* at) const { return at != text.end && format.getClass(*at) == XelByteClass::Quote; }

  XelCsvSpan text;
  const XelCsvFormat& format;
  const char* opened = nullptr;
  const char* stray = nullptr;
  const char* doubled = nullptr;
};

}  // namespace

void XelCsvQuoteChecks::check(const XelCsvCheckedLine& line) const {
  const XelCsvSpan& text = line.text;
  if (std::memchr(text.begin, context.parameters.quote, static_cast<std::size_t>(text.getLength())) == nullptr) return;
  const Quotes quotes(text, context.format);
  if (const char* const open = quotes.getUnclosed()) {
    report(XelCsvCode::UnclosedQuote, line, {open, open + 1},
           "nothing closes this quote in its line, which it does not leave: the rest of the line, separators included, "
           "reads silently as one field");
    return;  // what else the quotes of the line look like follows from it
  }
  if (const char* const stray = quotes.getStray()) {
    report(XelCsvCode::StrayQuote, line, {stray, stray + 1},
           "this quote is not at an end of its field: the field reads silently without its quotes, and a separator "
           "between them as text");
  }
  if (const char* const doubled = quotes.getDoubled()) {
    report(XelCsvCode::DoubledQuote, line, {doubled, doubled + 2},
           "a doubled quote yields no quote: the field reads silently without it");
  }
}

void XelCsvQuoteChecks::report(XelCsvCode code, const XelCsvCheckedLine& line, const XelCsvSpan& quotes,
                               const char* message) const {
  if (context.findings.takes(code)) context.findings.report(code, XelPlaceOf(line, quotes), message);
}

// Number parsing alone: the functions on text, and the getters of a line on one field. The input is the field's text, up
// to its first zero byte.
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "csv/line/XelCsvNumbers.h"
#include "fuzz/support/Check.h"
#include "fuzz/support/DataFile.h"
#include "fuzz/support/Input.h"
#include "fuzz/support/SlowLine.h"
#include "fuzz/support/SlowNumbers.h"
#include "xelcsv/XelCsvReader.h"

namespace fuzz {

namespace {

constexpr std::size_t LongestField = 9998;
constexpr double FloatDefault = -7.25;
constexpr long IntDefault = -77;
constexpr const char* StringDefault = "default";

void checkFloat(double got, double expected, const std::string& what) {
  checkEqual(shownFloat(got), shownFloat(expected), what);
}

void checkFunctions(const std::string& text) {
  checkFloat(XelParseFloat(text.c_str()), slowFloat(text), "float of " + quoted(text));
  checkFloat(XelParseFloatOrUnbounded(text.c_str()), slowFloatOrUnbounded(text),
             "float or unbounded of " + quoted(text));

  const SlowInt expected = slowInt(text);
  long value = -1;
  checkEqual(XelParseInt(text.c_str(), value), expected.fits, "fits in 32 bits: " + quoted(text));
  checkEqual(value, expected.value, "integer of " + quoted(text));
  errno = ERANGE;
  long again = -1;
  checkEqual(XelParseIntIgnoringErrno(text.c_str(), again), expected.fits, "fits, whatever errno: " + quoted(text));
  if (expected.fits) checkEqual(again, expected.value, "integer, whatever errno, of " + quoted(text));

  const long whole = std::strtol(text.c_str(), nullptr, 10);
  const bool fits = whole >= INT32_MIN && whole <= INT32_MAX;
  checkEqual(expected.fits, fits, "the slow integer and strtol on " + quoted(text));
  if (fits) checkEqual(expected.value, whole, "the slow integer and strtol on " + quoted(text));
}

// The table that the lines of the getters belong to: one table of one field in a file that stays for all inputs.
class OneFieldTable {
 public:
  OneFieldTable() {
    file.write("a\n");
    reader = XelCsvReader(env, file.getName(), 0, 0, "", '.', '"', '#', 0);
    reader.getLineByNumber(0);  // formats a line of one field
  }
  ~OneFieldTable() {
    reader.end();
    env.end();
  }
  OneFieldTable(const OneFieldTable&) = delete;
  OneFieldTable& operator=(const OneFieldTable&) = delete;

  // A line whose only field is the text; the caller ends it.
  XelCsvLine makeLine(const std::string& text) const {
    return XelCsvLine(text.c_str(), reader.getReaderForUniqueTableFile(), LineNumber);
  }

  static constexpr long LineNumber = 41;

 private:
  DataFile file;
  XelEnv env;
  XelCsvReader reader;
};

template <class Getter>
void checkIntGetter(Getter getter, const SlowInt& expected, const std::string& what) {
  try {
    const long value = getter();
    check(expected.fits, what + ": no overflow was thrown");
    checkEqual(value, expected.value, what);
  } catch (const XelCsvReader::XelOverflowException& exception) {
    check(!expected.fits, what + ": an overflow was thrown");
    checkEqual<std::string>(
        exception.getMessage(),
        "XelCsvReader::XelOverflowException : OVERFLOW while reading field 0  of line number 41 as integer", what);
  }
}

// Floats are read from the trimmed field, integers from the field as it stands, and a field is empty before it is
// trimmed.
void checkGetters(const std::string& text) {
  static const OneFieldTable Table;
  XelCsvLine line = Table.makeLine(text);
  checkEqual(line.getNumberOfFields(), 1L, "number of fields");
  checkEqual(line.emptyFieldByPosition(0), text.empty(), "emptiness of the field");
  checkIntGetter([&] { return line.getIntByPosition(0); }, slowInt(text), "getIntByPosition of " + quoted(text));
  checkIntGetter([&] { return line.getIntByPositionOrDefaultValue(0, IntDefault); },
                 text.empty() ? SlowInt{IntDefault, true} : slowInt(text),
                 "getIntByPositionOrDefaultValue of " + quoted(text));
  checkEqual<std::string>(line.getFields()[0], text, "the field after the getters of integers");

  const std::string trimmed = slowTrim(text);
  checkFloat(line.getFloatByPositionOrDefaultValue(0, FloatDefault),
             text.empty() ? FloatDefault : slowFloatOrUnbounded(trimmed),
             "getFloatByPositionOrDefaultValue of " + quoted(text));
  checkFloat(line.getFloatByPosition(0), slowFloat(trimmed), "getFloatByPosition of " + quoted(text));
  checkEqual<std::string>(line.getFields()[0], trimmed, "the field after the getters of floats");
  checkEqual<std::string>(line.getStringByPosition(0), trimmed, "getStringByPosition");
  if (trimmed.empty()) {
    check(line.getStringByPositionOrDefaultValue(0, StringDefault) == StringDefault, "the default itself comes back");
  } else {
    checkEqual<std::string>(line.getStringByPositionOrDefaultValue(0, StringDefault), trimmed,
                            "getStringByPositionOrDefaultValue");
  }
  line.end();
}

}  // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name that the fuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text = upToZero(std::string(data, data + size)).substr(0, LongestField);
  checkFunctions(text);
  checkGetters(text);
  return 0;
}

}  // namespace fuzz

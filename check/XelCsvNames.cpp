#include "check/XelCsvNames.h"

#include <cstring>

#include "check/XelCsvMessage.h"

namespace {

constexpr std::string_view Blanks[] = {" ", "\t", "\xC2\xA0"};

// The name without any blank around it.
XelCsvSpan strip(XelCsvSpan name) {
  for (bool isStripped = true; isStripped;) {
    isStripped = false;
    for (const std::string_view blank : Blanks) {
      const auto count = static_cast<long>(blank.size());
      if (name.getLength() >= count && std::memcmp(name.begin, blank.data(), blank.size()) == 0) {
        name.begin += count;
        isStripped = true;
      }
      if (name.getLength() >= count && std::memcmp(name.end - count, blank.data(), blank.size()) == 0) {
        name.end -= count;
        isStripped = true;
      }
    }
  }
  return name;
}

bool isStripped(const XelCsvSpan& name) { return strip(name).getLength() == name.getLength(); }

}  // namespace

bool XelHasBlankAround(const XelCsvSpan& field, const XelCsvSpan& name) {
  const bool hasSpaces = name.begin != field.begin || (name.end != field.end && *name.end == ' ');
  return hasSpaces || !isStripped(name);
}

void XelReportBlankAround(const XelCsvCheckContext& context, const std::string& table, const XelCsvCheckedLine& line,
                          const XelCsvSpan& name, const char* what, const char* lookup) {
  const bool isTrimmed = isStripped(name);
  const XelCsvSeverity severity = isTrimmed ? XelCsvSeverity::Note : XelCsvSeverity::Warning;
  if (!context.findings.takes(XelCsvCode::BlankAroundName, table, severity)) return;
  const std::string around = std::string(what) + ' ' + XelQuoted(isTrimmed ? name : strip(name));
  context.findings.report(XelCsvCode::BlankAroundName, XelPlaceOf(line, name),
                          isTrimmed ? "spaces stand around " + around + ", which " + lookup + " finds without them"
                                    : "a tab or no-break space stands beside " + around + " and belongs to it: " +
                                          lookup + "(" + XelQuoted(strip(name)) + ") finds nothing and throws");
}

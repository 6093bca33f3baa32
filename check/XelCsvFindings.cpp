#include "check/XelCsvFindings.h"

#include <algorithm>
#include <utility>

namespace {

bool holds(const std::vector<std::string>& codes, const char* code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}

}  // namespace

XelCsvFindings::XelCsvFindings(const std::string& file, const XelCsvCheckOptions& chosen, const XelCsvReport& handler)
    : options(chosen), handle(handler) {
  const std::vector<XelCsvCheckCode>& codes = XelGetCheckCodes();
  for (std::size_t index = 0; index < XelCsvCodeCount; ++index) {
    const char* code = codes[index].code;
    wanted[index] = (options.only.empty() || holds(options.only, code)) && !holds(options.skip, code);
  }
  finding.file = file;
  if (options.maxFindings == 0) stop();
}

bool XelCsvFindings::takes(XelCsvCode code, const std::string& table, XelCsvSeverity severity) {
  if (!isWanted(code) || isStopped()) return false;
  switch (severity) {
    case XelCsvSeverity::Error:
      ++result.errors;
      break;
    case XelCsvSeverity::Warning:
      ++result.warnings;
      break;
    default:
      ++result.notes;
      break;
  }
  if (isOneTooMany(code, table)) return false;
  finding.severity = severity;
  finding.table = table;
  return true;
}

bool XelCsvFindings::isOneTooMany(XelCsvCode code, const std::string& table) {
  if (options.maxAlike < 0) return false;
  const auto [place, isNew] = placesOfTables.try_emplace(table, alike.size());
  if (isNew) alike.push_back({table, {}});
  return ++alike[place->second].counts[XelIndexOf(code)] > options.maxAlike;
}

void XelCsvFindings::report(XelCsvCode code, const XelCsvPlace& place, std::string message) {
  finding.code = XelGetCheckCodes()[XelIndexOf(code)].code;
  finding.lineNumber = place.lineNumber;
  finding.line = place.line;
  finding.column = place.column;
  finding.offset = place.offset;
  finding.length = place.length;
  finding.message = std::move(message);
  finding.excerpt = place.excerpt;
  finding.excerptOffset = place.excerptOffset;
  ++result.reported;
  if (!handle(finding) || result.reported == options.maxFindings) stop();
}

XelCsvCheckResult XelCsvFindings::finish() {
  for (const Alike& table : alike) {
    for (std::size_t index = 0; index < XelCsvCodeCount; ++index) {
      const long count = table.counts[index] - options.maxAlike;
      if (count > 0) result.omitted.push_back({XelGetCheckCodes()[index].code, table.table, count});
    }
  }
  return std::move(result);
}

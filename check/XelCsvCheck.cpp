#include "xelcsv/XelCsvCheck.h"

#include <stdexcept>
#include <utility>

#include "check/XelCsvCheckPass.h"
#include "check/XelCsvFindings.h"
#include "csv/reader/XelCsvParameters.h"

namespace {

void testCodes(const std::vector<std::string>& codes) {
  for (const std::string& code : codes) {
    if (XelFindCheckCode(code) == nullptr) throw std::invalid_argument("There is no finding of this code: " + code);
  }
}

}  // namespace

const char* XelGetSeverityName(XelCsvSeverity severity) noexcept {
  switch (severity) {
    case XelCsvSeverity::Error:
      return "error";
    case XelCsvSeverity::Warning:
      return "warning";
    default:
      return "note";
  }
}

XelCsvCheck::XelCsvCheck(XelEnv environment, std::string name, XelCsvCheckParameters reading, XelCsvCheckOptions wanted)
    : env(environment), fileName(std::move(name)), parameters(std::move(reading)), options(std::move(wanted)) {
  XelCsvParameters::makeTests(env, fileName.c_str(), parameters.separators.c_str(), parameters.decimal,
                              parameters.quote, parameters.comment);
  testCodes(options.only);
  testCodes(options.skip);
}

XelCsvCheckResult XelCsvCheck::run(const XelCsvReport& report, const XelCsvProgress& progress) const {
  XelCsvFindings findings(fileName, options, report);
  const XelCsvCheckContext context(env, fileName, parameters, findings);
  XelCsvCheckPass(context).run(progress);
  return findings.finish();
}

std::vector<XelCsvFinding> XelCsvCheck::collect() const {
  std::vector<XelCsvFinding> all;
  run([&all](const XelCsvFinding& finding) {
    all.push_back(finding);
    return true;
  });
  return all;
}

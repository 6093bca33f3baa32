// What the tests of findings share.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/DataFile.h"
#include "tests/support/ExpectThrow.h"
#include "tests/support/TestEnv.h"
#include "xelcsv/XelCsvCheck.h"
#include "xelcsv/XelCsvReader.h"

// How a file is read: as one table, as several, as several whose lines may be spread.
inline XelCsvCheckParameters oneTable(const char* separators = ",") {
  XelCsvCheckParameters parameters;
  parameters.separators = separators;
  return parameters;
}

inline XelCsvCheckParameters manyTables() {
  XelCsvCheckParameters parameters;
  parameters.isMultiTable = true;
  return parameters;
}

inline XelCsvCheckParameters splitTables() {
  XelCsvCheckParameters parameters = manyTables();
  parameters.allowTableSplitting = true;
  return parameters;
}

inline XelCsvCheckOptions only(std::initializer_list<std::string> codes) {
  XelCsvCheckOptions options;
  options.only = codes;
  return options;
}

// A file that is checked, and that the library reads with the same parameters.
class CheckedFile {
 public:
  CheckedFile(std::string_view bytes, XelCsvCheckParameters reading, XelCsvCheckOptions options = {})
      : file(bytes), parameters(std::move(reading)) {
    findings = XelCsvCheck(env, file.getName(), parameters, std::move(options)).collect();
  }

  ~CheckedFile() { reader.end(); }
  CheckedFile(const CheckedFile&) = delete;
  CheckedFile& operator=(const CheckedFile&) = delete;

  // The findings as "line:column severity code: message", a line of text each.
  std::string show() const {
    std::string shown;
    for (const XelCsvFinding& finding : findings) {
      shown += std::to_string(finding.line) + ':' + std::to_string(finding.column) + ' ' +
               XelGetSeverityName(finding.severity) + ' ' + finding.code + ": " + finding.message + '\n';
    }
    return shown;
  }

  const std::vector<XelCsvFinding>& getFindings() const { return findings; }
  const char* getName() const { return file.getName(); }
  XelEnv getEnv() const { return env; }

  // A reader of the file; it lives until the next one.
  XelCsvReader& read(bool isCached = true) {
    reader.end();
    reader = XelCsvReader(env, file.getName(), parameters.isMultiTable ? 1 : 0, parameters.allowTableSplitting ? 1 : 0,
                          parameters.separators.c_str(), parameters.decimal, parameters.quote, parameters.comment,
                          isCached ? 1 : 0);
    return reader;
  }

 private:
  TestEnv env;
  DataFile file;
  XelCsvCheckParameters parameters;
  std::vector<XelCsvFinding> findings;
  XelCsvReader reader;
};

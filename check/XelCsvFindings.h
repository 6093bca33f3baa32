// Where the findings of a run go: chooses, counts and hands out.
#pragma once

#include <array>
#include <string>
#include <unordered_map>

#include "check/XelCsvCheckedLine.h"
#include "check/XelCsvCodes.h"

// Messages are made only of findings that are handed out:
//
//   if (findings.takes(XelCsvCode::Nul)) findings.report(XelCsvCode::Nul, place, message);
class XelCsvFindings {
 public:
  // All three must outlive it.
  XelCsvFindings(const std::string& file, const XelCsvCheckOptions& wanted, const XelCsvReport& handler);

  // Whether findings of this kind are asked for at all.
  bool isWanted(XelCsvCode code) const noexcept { return wanted[XelIndexOf(code)]; }

  // Counts a finding of a table, which is empty where there is none, with the catalogue's severity or another. True when
  // it is to be reported.
  bool takes(XelCsvCode code, const std::string& table = {}) { return takes(code, table, severityOf(code)); }
  bool takes(XelCsvCode code, const std::string& table, XelCsvSeverity severity);

  // Hands out the finding that was taken last.
  void report(XelCsvCode code, const XelCsvPlace& place, std::string message);

  // Ends the run before the end of the file.
  void stop() noexcept { result.isWhole = false; }
  bool isStopped() const noexcept { return !result.isWhole; }

  // What is read is counted by who reads.
  XelCsvCheckResult& getResult() noexcept { return result; }

  // The result of the run, with what was omitted. Once, at its end.
  XelCsvCheckResult finish();

 private:
  // Findings of one table by kind.
  struct Alike {
    std::string table;
    std::array<long, XelCsvCodeCount> counts;
  };

  static XelCsvSeverity severityOf(XelCsvCode code) { return XelGetCheckCodes()[XelIndexOf(code)].severity; }
  bool isOneTooMany(XelCsvCode code, const std::string& table);

  const XelCsvCheckOptions& options;
  const XelCsvReport& handle;
  std::array<bool, XelCsvCodeCount> wanted{};
  std::vector<Alike> alike;  // in the order in which tables had their first finding
  std::unordered_map<std::string, std::size_t> placesOfTables;
  XelCsvFinding finding;  // the one that was taken last
  XelCsvCheckResult result;
};

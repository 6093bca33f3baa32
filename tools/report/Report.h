// The findings of a check in the formats that people and programs read.
#pragma once

#include <xelcsv/XelCsvCheck.h>

#include <memory>
#include <string>

#include "tools/Output.h"
#include "tools/Terminal.h"

namespace xeltools {

// Takes the findings of one run of the program: any number of files, one after the other.
class Report {
 public:
  Report() = default;
  virtual ~Report() = default;
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;

  virtual void begin() {}
  virtual void beginFile(const std::string& /*file*/) {}
  virtual void add(const XelCsvFinding& finding) = 0;
  virtual void endFile(const XelCsvCheckResult& /*result*/) {}
  virtual void end() {}
};

// A line of text for each; with a width also the place in the file, cut to it, with a caret under what is meant.
std::unique_ptr<Report> makeTextReport(Output& output, const Painter& painter, std::size_t excerptWidth);

std::unique_ptr<Report> makeJsonReport(Output& output);
std::unique_ptr<Report> makeJsonLinesReport(Output& output);
std::unique_ptr<Report> makeCsvReport(Output& output);

// Version 2.1.0 of the format that services for the analysis of programs exchange.
std::unique_ptr<Report> makeSarifReport(Output& output);

// Annotations of GitHub's actions.
std::unique_ptr<Report> makeGithubReport(Output& output);

}  // namespace xeltools

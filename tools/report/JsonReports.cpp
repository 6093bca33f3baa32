// Findings for programs.
#include <xelcsv/XelCsvVersion.h>

#include <cstring>

#include "tools/report/Report.h"
#include "tools/text/Json.h"
#include "tools/text/Utf8.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

std::string makeObject(const XelCsvFinding& finding) {
  return "{\"file\": " + toJson(finding.file) + ", \"line\": " + std::to_string(finding.line) +
         ", \"column\": " + std::to_string(finding.column) +
         ", \"severity\": " + toJson(XelGetSeverityName(finding.severity)) + ", \"code\": " + toJson(finding.code) +
         ", \"message\": " + toJson(finding.message) +
         ", \"table\": " + (finding.table.empty() ? "null" : toJson(finding.table)) +
         ", \"lineNumber\": " + std::to_string(finding.lineNumber) + ", \"offset\": " + std::to_string(finding.offset) +
         ", \"length\": " + std::to_string(finding.length) + ", \"excerpt\": " + toJson(finding.excerpt) +
         ", \"excerptOffset\": " + std::to_string(finding.excerptOffset) + "}";
}

std::string makeSummary(const XelCsvCheckResult& result) {
  return "\"errors\": " + std::to_string(result.errors) + ", \"warnings\": " + std::to_string(result.warnings) +
         ", \"notes\": " + std::to_string(result.notes) + ", \"whole\": " + (result.isWhole ? "true" : "false") +
         ", \"bytes\": " + std::to_string(result.bytes) + ", \"lines\": " + std::to_string(result.lines) +
         ", \"tables\": " + std::to_string(result.tables);
}

class JsonReport : public Report {
 public:
  explicit JsonReport(Output& target) : output(target) {}

  void begin() override { output.write("{\"files\": ["); }

  void beginFile(const std::string& file) override {
    output.write(files++ > 0 ? ",\n" : "\n");
    output.write("  {\"file\": " + toJson(file) + ", \"findings\": [");
    findings = 0;
  }

  void add(const XelCsvFinding& finding) override {
    output.write(findings++ > 0 ? ",\n    " : "\n    ");
    output.write(makeObject(finding));
  }

  void endFile(const XelCsvCheckResult& result) override {
    output.write(findings > 0 ? "\n  ], " : "], ");
    output.write(makeSummary(result));
    output.write(", \"omitted\": [");
    for (const XelCsvOmitted& omitted : result.omitted) {
      if (&omitted != &result.omitted.front()) output.write(", ");
      output.write("{\"code\": " + toJson(omitted.code) +
                   ", \"table\": " + (omitted.table.empty() ? "null" : toJson(omitted.table)) +
                   ", \"count\": " + std::to_string(omitted.count) + "}");
    }
    output.write("]}");
  }

  void end() override { output.writeLine("\n]}"); }

 private:
  Output& output;
  long files = 0;
  long findings = 0;
};

class JsonLinesReport : public Report {
 public:
  explicit JsonLinesReport(Output& target) : output(target) {}
  void add(const XelCsvFinding& finding) override { output.writeLine(makeObject(finding)); }

 private:
  Output& output;
};

// ---- SARIF.

// A file's name as a reference of a URI.
std::string makeUri(const std::string& file) {
  std::string uri = file.empty() || file.front() != '/' ? "" : "file://";
  for (const char byte : file) {
    const bool isPlain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                         std::strchr("-._~/", byte) != nullptr;
    const auto code = static_cast<unsigned char>(byte);
    if (isPlain && byte != '\0') {
      uri += byte;
    } else {
      uri += std::string("%") + "0123456789ABCDEF"[code / 16] + "0123456789ABCDEF"[code % 16];
    }
  }
  return uri;
}

// Columns of SARIF are characters, not bytes; they are known when the excerpt begins where the line does.
std::string makeColumn(const XelCsvFinding& finding) {
  const long before = finding.offset - finding.excerptOffset;
  const bool isKnown = before == finding.column - 1 && before <= static_cast<long>(finding.excerpt.size());
  if (!isKnown) return {};
  long column = 1;
  const std::string_view text = std::string_view(finding.excerpt).substr(0, static_cast<std::size_t>(before));
  for (std::size_t position = 0; position < text.size(); ++column) position += readCharacter(text, position).bytes;
  return ", \"startColumn\": " + std::to_string(column);
}

class SarifReport : public Report {
 public:
  explicit SarifReport(Output& target) : output(target) {}

  void begin() override {
    output.write(
        "{\n  \"$schema\": \"https://json.schemastore.org/sarif-2.1.0.json\",\n  \"version\": \"2.1.0\",\n"
        "  \"runs\": [{\n    \"tool\": {\"driver\": {\"name\": \"xelcsv\", \"version\": " +
        toJson(XELCSV_VERSION) + ", \"rules\": [");
    for (const XelCsvCheckCode& code : XelGetCheckCodes()) {
      output.write(&code == &XelGetCheckCodes().front() ? "\n" : ",\n");
      output.write("      {\"id\": " + toJson(code.code) + ", \"shortDescription\": {\"text\": " + toJson(code.title) +
                   "}, \"fullDescription\": {\"text\": " + toJson(std::string(code.explanation) + " " + code.effect) +
                   "}, \"help\": {\"text\": " + toJson(code.remedy) +
                   "}, \"defaultConfiguration\": {\"level\": " + toJson(XelGetSeverityName(code.severity)) + "}}");
    }
    output.write("\n    ]}},\n    \"columnKind\": \"unicodeCodePoints\",\n    \"results\": [");
  }

  void add(const XelCsvFinding& finding) override {
    output.write(findings++ > 0 ? ",\n" : "\n");
    output.write(
        "      {\"ruleId\": " + toJson(finding.code) + ", \"level\": " + toJson(XelGetSeverityName(finding.severity)) +
        ", \"message\": {\"text\": " + toJson(finding.message) +
        "}, \"locations\": [{\"physicalLocation\": {\"artifactLocation\": {\"uri\": " + toJson(makeUri(finding.file)) +
        "}");
    if (finding.line > 0) {
      output.write(", \"region\": {\"startLine\": " + std::to_string(finding.line) + makeColumn(finding) +
                   ", \"byteOffset\": " + std::to_string(finding.offset) +
                   ", \"byteLength\": " + std::to_string(finding.length) + "}");
    }
    output.write("}");
    if (!finding.table.empty()) {
      output.write(", \"logicalLocations\": [{\"name\": " + toJson(finding.table) + ", \"kind\": \"table\"}]");
    }
    output.write("}]}");
  }

  void end() override { output.writeLine(findings > 0 ? "\n    ]\n  }]\n}" : "]\n  }]\n}"); }

 private:
  Output& output;
  long findings = 0;
};

}  // namespace

std::unique_ptr<Report> makeJsonReport(Output& output) { return std::make_unique<JsonReport>(output); }
std::unique_ptr<Report> makeJsonLinesReport(Output& output) { return std::make_unique<JsonLinesReport>(output); }
std::unique_ptr<Report> makeSarifReport(Output& output) { return std::make_unique<SarifReport>(output); }

}  // namespace xeltools

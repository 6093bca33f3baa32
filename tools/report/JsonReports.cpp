// Findings for programs.
#include <xelcsv/XelCsvVersion.h>

#include <cstring>

#include "tools/report/Report.h"
#include "tools/text/Json.h"
#include "tools/text/Utf8.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

std::string makeNullable(const std::string& text) { return text.empty() ? "null" : toJson(text); }

std::string makeObject(const XelCsvFinding& finding) {
  return toObject(
      {toMember("file", toJson(finding.file)), toMember("line", std::to_string(finding.line)),
       toMember("column", std::to_string(finding.column)),
       toMember("severity", toJson(XelGetSeverityName(finding.severity))), toMember("code", toJson(finding.code)),
       toMember("message", toJson(finding.message)), toMember("table", makeNullable(finding.table)),
       toMember("lineNumber", std::to_string(finding.lineNumber)), toMember("offset", std::to_string(finding.offset)),
       toMember("length", std::to_string(finding.length)), toMember("excerpt", toJson(finding.excerpt)),
       toMember("excerptOffset", std::to_string(finding.excerptOffset))});
}

// The members of a file's object that follow its findings.
std::string makeSummary(const XelCsvCheckResult& result) {
  std::vector<std::string> omitted;
  for (const XelCsvOmitted& it : result.omitted) {
    omitted.push_back(toObject({toMember("code", toJson(it.code)), toMember("table", makeNullable(it.table)),
                                toMember("count", std::to_string(it.count))}));
  }
  return join({toMember("errors", std::to_string(result.errors)), toMember("warnings", std::to_string(result.warnings)),
               toMember("notes", std::to_string(result.notes)), toMember("whole", result.isWhole ? "true" : "false"),
               toMember("bytes", std::to_string(result.bytes)), toMember("lines", std::to_string(result.lines)),
               toMember("tables", std::to_string(result.tables)), toMember("omitted", "[" + join(omitted, ", ") + "]")},
              ", ");
}

class JsonReport : public Report {
 public:
  explicit JsonReport(Output& target) : output(target) {}

  void begin() override { output.write("{" + toMember("files", "[")); }

  void beginFile(const std::string& file) override {
    output.write(files++ > 0 ? ",\n" : "\n");
    output.write("  {" + toMember("file", toJson(file)) + ", " + toMember("findings", "["));
    findings = 0;
  }

  void add(const XelCsvFinding& finding) override {
    output.write(findings++ > 0 ? ",\n    " : "\n    ");
    output.write(makeObject(finding));
  }

  void endFile(const XelCsvCheckResult& result) override {
    output.write(findings > 0 ? "\n  ], " : "], ");
    output.write(makeSummary(result) + "}");
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
std::string makeRegion(const XelCsvFinding& finding) {
  std::vector<std::string> members = {toMember("startLine", std::to_string(finding.line))};
  const long before = finding.offset - finding.excerptOffset;
  if (before == finding.column - 1 && before <= static_cast<long>(finding.excerpt.size())) {
    long column = 1;
    std::string_view text = finding.excerpt;
    text = text.substr(0, static_cast<std::size_t>(before));
    for (std::size_t position = 0; position < text.size(); ++column) position += readCharacter(text, position).bytes;
    members.push_back(toMember("startColumn", std::to_string(column)));
  }
  members.push_back(toMember("byteOffset", std::to_string(finding.offset)));
  members.push_back(toMember("byteLength", std::to_string(finding.length)));
  return toObject(members);
}

std::string makeText(const std::string& text) { return toObject({toMember("text", toJson(text))}); }

std::string makeRule(const XelCsvCheckCode& code) {
  return toObject(
      {toMember("id", toJson(code.code)), toMember("shortDescription", makeText(code.title)),
       toMember("fullDescription", makeText(std::string(code.explanation) + " " + code.effect)),
       toMember("help", makeText(code.remedy)),
       toMember("defaultConfiguration", toObject({toMember("level", toJson(XelGetSeverityName(code.severity)))}))});
}

class SarifReport : public Report {
 public:
  explicit SarifReport(Output& target) : output(target) {}

  void begin() override {
    std::vector<std::string> rules;
    for (const XelCsvCheckCode& code : XelGetCheckCodes()) rules.push_back("\n      " + makeRule(code));
    output.write("{\n  " + toMember("$schema", toJson("https://json.schemastore.org/sarif-2.1.0.json")) + ",\n  " +
                 toMember("version", toJson("2.1.0")) + ",\n  " + toMember("runs", "[{\n    "));
    const std::string driver =
        toObject({toMember("name", toJson("xelcsv")), toMember("version", toJson(XELCSV_VERSION)),
                  toMember("rules", "[" + join(rules, ",") + "\n    ]")});
    output.write(toMember("tool", toObject({toMember("driver", driver)})) + ",\n    ");
    output.write(toMember("columnKind", toJson("unicodeCodePoints")) + ",\n    " + toMember("results", "["));
  }

  void add(const XelCsvFinding& finding) override {
    std::vector<std::string> place = {
        toMember("artifactLocation", toObject({toMember("uri", toJson(makeUri(finding.file)))}))};
    if (finding.line > 0) place.push_back(toMember("region", makeRegion(finding)));
    std::vector<std::string> location = {toMember("physicalLocation", toObject(place))};
    if (!finding.table.empty()) {
      const std::string table = toObject({toMember("name", toJson(finding.table)), toMember("kind", toJson("table"))});
      location.push_back(toMember("logicalLocations", "[" + table + "]"));
    }
    output.write(findings++ > 0 ? ",\n      " : "\n      ");
    output.write(toObject(
        {toMember("ruleId", toJson(finding.code)), toMember("level", toJson(XelGetSeverityName(finding.severity))),
         toMember("message", makeText(finding.message)), toMember("locations", "[" + toObject(location) + "]")}));
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

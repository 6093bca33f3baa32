// xelcsv check and explain: what in a file is not what it seems.
#include <xelcsv/XelCsvCheck.h>

#include <algorithm>

#include "tools/Command.h"
#include "tools/DataFile.h"
#include "tools/Errors.h"
#include "tools/layout/AlignedTable.h"
#include "tools/report/Report.h"
#include "tools/text/Escape.h"
#include "tools/text/Width.h"
#include "tools/text/Words.h"
#include "tools/text/Wrap.h"

namespace xeltools {

namespace {

// In text no more findings of one code in one table are shown than these; the others are counted.
constexpr long UsualAlike = 20;

XelCsvCheckParameters makeCheckParameters(const ReaderParameters& from) {
  return {from.isMultiTable, from.allowTableSplitting, from.separators, from.decimal, from.quote, from.comment};
}

ReaderParameters makeReaderParameters(const XelCsvCheckParameters& from) {
  return {from.isMultiTable, from.allowTableSplitting, true, from.separators, from.decimal, from.quote, from.comment};
}

const XelCsvCheckCode& findCode(const std::string& name) {
  if (const XelCsvCheckCode* const found = XelFindCheckCode(name)) return *found;
  std::vector<std::string> codes;
  for (const XelCsvCheckCode& code : XelGetCheckCodes()) codes.emplace_back(code.code);
  const std::string similar = findSimilar(name, codes);
  throw UserError("there is no finding '" + makePrintable(name) + "'; " +
                  (similar.empty() ? "xelcsv explain lists them" : "is " + similar + " meant?"));
}

class Check : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "check",
        "find what in a file is not what it seems",
        {"Reads files once and lists what the library would stumble over, read otherwise than it was meant, or pass over "
         "without a word. Each finding has its place (line and byte, from 1), how bad it is, what the library does with it, "
         "and a code, about which xelcsv explain tells more.",
         "The status is 1 when there are errors or warnings; --fail-on says otherwise. Memory does not grow with the file "
         "but for the keys of its lines; --skip duplicate-key does without them."},
        {"xelcsv check data.csv", "xelcsv check --multi data.csv --skip ragged,no-final-eol",
         "xelcsv check --multi data.csv --format sarif -o findings.sarif",
         "xelcsv check data/*.csv --format github --fail-on error"}};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOperands("FILE", files, true, "the data files");
    options.addChoice("--format", {"text", "json", "jsonl", "sarif", "github", "csv"}, format, "how to write findings");
    options.addList("--only", "CODES", checkOptions.only, "only findings of these codes, with commas between");
    options.addList("--skip", "CODES", checkOptions.skip, "no findings of these codes");
    options.addNumber("--max-findings", "N", maxFindings, "stop after N findings");
    options.addNumber("--max-alike", "N", maxAlike,
                      "count what is more than N findings of one code in one table (20 in text, else without end)");
    options.addChoice("--fail-on", {"error", "warning", "never"}, failOn,
                      "what makes the status 1; warning by default");
  }

  std::string getFile() const override { return files.empty() ? std::string() : files.front(); }

  int run(Session& session) override {
    for (const auto* const codes : {&checkOptions.only, &checkOptions.skip}) {
      for (const std::string& code : *codes) findCode(code);
    }
    checkOptions.maxFindings = maxFindings.value_or(-1);
    checkOptions.maxAlike = maxAlike.value_or(format == "text" ? UsualAlike : -1);
    for (const std::string& file : files) checkReadable(file);

    const std::unique_ptr<Report> report = makeReport(session);
    int status = Good;
    report->begin();
    for (const std::string& file : files) {
      const XelCsvCheckResult result = checkFile(session, *report, file);
      const bool isBad = failOn == "never" ? false : result.errors > 0 || (failOn == "warning" && result.warnings > 0);
      if (isBad) status = NotGood;
    }
    report->end();
    return status;
  }

 private:
  std::unique_ptr<Report> makeReport(Session& session) const;
  XelCsvCheckResult checkFile(Session& session, Report& report, const std::string& file) const;

  std::vector<std::string> files;
  std::string format = "text";
  XelCsvCheckOptions checkOptions;
  std::optional<long> maxFindings;
  std::optional<long> maxAlike;
  std::string failOn = "warning";
};

std::unique_ptr<Report> Check::makeReport(Session& session) const {
  Output& output = session.getOutput();
  if (format == "json") return makeJsonReport(output);
  if (format == "jsonl") return makeJsonLinesReport(output);
  if (format == "sarif") return makeSarifReport(output);
  if (format == "github") return makeGithubReport(output);
  if (format == "csv") {
    if (session.isWatched()) output.guardTerminal();
    return makeCsvReport(output);
  }
  return makeTextReport(output, session.getPainter(), session.isWatched() ? session.getColumns() : 0);
}

XelCsvCheckResult Check::checkFile(Session& session, Report& report, const std::string& file) const {
  const XelScoped<XelEnv> env;
  const Settings& settings = session.openSettings(file);
  const XelCsvCheck check(*env, file, makeCheckParameters(settings.getParameters()), checkOptions);
  Progress& progress = session.getProgress();
  progress.begin(getFileSize(file));
  long done = 0;
  report.beginFile(file);
  XelCsvCheckResult result = check.run(
      [&](const XelCsvFinding& finding) {
        progress.end();
        report.add(finding);
        return true;
      },
      [&](long bytes) {
        progress.advance(bytes - done);
        done = bytes;
        return true;
      });
  progress.end();
  report.endFile(result);
  session.getOutput().flush();
  std::vector<std::string> counts;
  if (result.errors > 0) counts.push_back(countOf(result.errors, "error"));
  if (result.warnings > 0) counts.push_back(countOf(result.warnings, "warning"));
  if (result.notes > 0) counts.push_back(countOf(result.notes, "note"));
  session.say(makePrintable(file) + ": " + (counts.empty() ? "clean" : join(counts, ", ")) +
              (result.isWhole ? "" : "; not all of the file was looked at"));
  return result;
}

// ---- explain.

class Explain : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "explain",
        "explain a finding of check",
        {"Tells what a finding means, what the library does, how to mend it, and shows the smallest file that has it and "
         "one beside it that has not. Without a code it lists all of them."},
        {"xelcsv explain ragged", "xelcsv explain ragged --example -o ragged.csv; xelcsv check ragged.csv"},
        false};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOptionalOperand("CODE", name, "the code, as check prints it in brackets");
    options.addFlag("--example", writesExample, "write the example as it is, byte for byte");
    options.addFlag("--counter-example", writesCounterExample, "write the file beside it that has no finding");
  }

  int run(Session& session) override {
    if (!name) {
      if (writesExample || writesCounterExample) throw UsageError("CODE is missing");
      list(session);
      return Good;
    }
    const XelCsvCheckCode& code = findCode(*name);
    if (!writesExample && !writesCounterExample) {
      explain(session, code);
      return Good;
    }
    if (session.isWatched()) session.getOutput().guardTerminal();
    session.getOutput().write(writesExample ? code.example.bytes : code.counterExample.bytes);
    return Good;
  }

 private:
  static void list(Session& session);
  static void explain(Session& session, const XelCsvCheckCode& code);
  static void writeExample(Session& session, const std::string& title, const XelCsvCheckExample& example);

  std::optional<std::string> name;
  bool writesExample = false;
  bool writesCounterExample = false;
};

void Explain::list(Session& session) {
  AlignedTable layout({{"code"}, {"severity"}, {"what it is"}});
  const auto makeCells = [](const XelCsvCheckCode& code) {
    return std::vector<std::string>{code.code, XelGetSeverityName(code.severity), code.title};
  };
  for (const XelCsvCheckCode& code : XelGetCheckCodes()) layout.observe(makeCells(code));
  if (session.isWatched()) layout.limitWidth(session.getColumns());
  layout.writeHeadings(session.getOutput(), session.getPainter());
  for (const XelCsvCheckCode& code : XelGetCheckCodes()) {
    layout.write(session.getOutput(), session.getPainter(), makeCells(code));
  }
}

void Explain::explain(Session& session, const XelCsvCheckCode& code) {
  constexpr std::size_t Widest = 100;
  constexpr std::size_t Usual = 80;
  Output& output = session.getOutput();
  const Painter& painter = session.getPainter();
  const std::size_t width = session.isWatched() ? std::min(session.getColumns(), Widest) : Usual;
  output.writeLine(painter.paint(code.code, Look::Strong) + ": " + code.title + " (" +
                   XelGetSeverityName(code.severity) + ")");
  const auto writePart = [&](const char* title, const char* text) {
    output.writeLine("");
    output.writeLine(painter.paint(title, Look::Strong));
    output.writeLine("  " + wrap(text, width, 2, 2));
  };
  writePart("What is there", code.explanation);
  writePart("What the library does", code.effect);
  writePart("How to mend it", code.remedy);
  writeExample(session, "A file that has it", code.example);
  writeExample(session, "One beside it that has not", code.counterExample);
  const std::string options = formatOptions(makeReaderParameters(code.example.parameters));
  output.writeLine("");
  output.writeLine(painter.paint("Try it", Look::Strong));
  output.writeLine("  xelcsv explain " + std::string(code.code) + " --example -o example.csv");
  output.writeLine("  xelcsv check " + options + (options.empty() ? "" : " ") + "example.csv");
}

void Explain::writeExample(Session& session, const std::string& title, const XelCsvCheckExample& example) {
  constexpr std::size_t LongestShown = 70;
  constexpr std::size_t MostLines = 12;
  Output& output = session.getOutput();
  output.writeLine("");
  output.writeLine(session.getPainter().paint(title, Look::Strong));
  std::vector<std::string> lines = split(example.bytes, '\n');
  const bool isEnded = lines.back().empty();
  if (isEnded) lines.pop_back();
  for (std::size_t index = 0; index < std::min(lines.size(), MostLines); ++index) {
    const std::string line = makePrintable(lines[index]);
    const bool isLong = getWidth(line) > LongestShown;
    output.writeLine("  " + cutToWidth(line, LongestShown) +
                     (isLong ? " (" + countOf(static_cast<long>(lines[index].size()), "byte") + ")" : ""));
  }
  if (lines.size() > MostLines)
    output.writeLine("  ... " + countOf(static_cast<long>(lines.size() - MostLines), "line") + " more");
  if (!isEnded) output.writeLine("  (without an end of line)");
}

}  // namespace

std::unique_ptr<Command> makeCheck() { return std::make_unique<Check>(); }
std::unique_ptr<Command> makeExplain() { return std::make_unique<Explain>(); }

}  // namespace xeltools

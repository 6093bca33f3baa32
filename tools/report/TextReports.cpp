// Findings for people, for spreadsheets and for annotations.
#include <algorithm>

#include "tools/convert/PlainCsv.h"
#include "tools/report/Report.h"
#include "tools/text/Escape.h"
#include "tools/text/Width.h"
#include "tools/text/Words.h"
#include "tools/text/Wrap.h"

namespace xeltools {

namespace {

Look getLook(XelCsvSeverity severity) {
  if (severity == XelCsvSeverity::Error) return Look::Error;
  return severity == XelCsvSeverity::Warning ? Look::Warning : Look::Note;
}

// The excerpt of a finding with what is meant in the middle of three parts, fit for a terminal.
struct Excerpt {
  std::string before;
  std::string meant;
  std::string after;
};

Excerpt cutExcerpt(const XelCsvFinding& finding) {
  const std::string_view bytes = finding.excerpt;
  const auto begin =
      static_cast<std::size_t>(std::clamp(finding.offset - finding.excerptOffset, 0L, static_cast<long>(bytes.size())));
  const std::size_t length = std::min(static_cast<std::size_t>(std::max(finding.length, 0L)), bytes.size() - begin);
  return {makePrintable(bytes.substr(0, begin)), makePrintable(bytes.substr(begin, length)),
          makePrintable(bytes.substr(begin + length))};
}

// The end of a text that is at most width cells wide, with an ellipsis in front when it was cut.
std::string cutFront(const std::string& text, std::size_t width) {
  if (getWidth(text) <= width) return text;
  const std::string_view whole = text;
  std::size_t begin = 0;
  while (begin < text.size() && getWidth(whole.substr(begin)) + 1 > width) {
    ++begin;
    while (begin < text.size() && (static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U) ++begin;
  }
  return std::string("\xE2\x80\xA6").append(text, begin);
}

class TextReport : public Report {
 public:
  TextReport(Output& target, const Painter& lookPainter, std::size_t width)
      : output(target), painter(lookPainter), excerptWidth(width) {}

  void add(const XelCsvFinding& finding) override {
    std::string place = makePrintable(finding.file) + ":";
    if (finding.line > 0) place += std::to_string(finding.line) + ":" + std::to_string(finding.column) + ":";
    const std::string severity = XelGetSeverityName(finding.severity);
    const std::size_t used = getWidth(place) + severity.size() + 3;
    std::string text = makePrintable(finding.message) + " [" + finding.code + "]";
    if (excerptWidth > 0) text = wrap(text, excerptWidth, 4, used);
    const std::size_t code = text.rfind('[');
    output.writeLine(painter.paint(place, Look::Strong) + " " +
                     painter.paint(severity + ":", getLook(finding.severity)) + " " + text.substr(0, code) +
                     painter.paint(text.substr(code), Look::Faint));
    if (excerptWidth > 0 && finding.line > 0 && !finding.excerpt.empty()) writeExcerpt(finding);
  }

  void endFile(const XelCsvCheckResult& result) override {
    for (const XelCsvOmitted& omitted : result.omitted) {
      output.writeLine("... and " + std::to_string(omitted.count) + " more" +
                       (omitted.table.empty() ? "" : " in table " + makePrintable(omitted.table)) + " " +
                       painter.paint("[" + std::string(omitted.code) + "]", Look::Faint));
    }
  }

 private:
  void writeExcerpt(const XelCsvFinding& finding) const {
    const std::string number = std::to_string(finding.line);
    const std::string margin(number.size() + 2, ' ');
    const std::size_t room = excerptWidth > margin.size() + 12 ? excerptWidth - margin.size() - 3 : 10;
    Excerpt excerpt = cutExcerpt(finding);
    excerpt.before = cutFront(excerpt.before, room / 2);
    const std::size_t used = getWidth(excerpt.before);
    const std::string line = cutToWidth(excerpt.before + excerpt.meant + excerpt.after, room);
    output.writeLine(" " + painter.paint(number, Look::Faint) + " | " + line);
    const std::size_t meant = std::max<std::size_t>(1, std::min(getWidth(excerpt.meant), room - used));
    output.writeLine(margin + "| " + std::string(used, ' ') +
                     painter.paint("^" + std::string(meant - 1, '~'), getLook(finding.severity)));
  }

  Output& output;
  Painter painter;
  std::size_t excerptWidth;
};

class CsvReport : public Report {
 public:
  explicit CsvReport(Output& target) : output(target) {}

  void begin() override {
    writeRecord({"file", "line", "column", "severity", "code", "table", "line number", "offset", "length", "message",
                 "excerpt"});
  }

  void add(const XelCsvFinding& finding) override {
    writeRecord({finding.file, std::to_string(finding.line), std::to_string(finding.column),
                 XelGetSeverityName(finding.severity), finding.code, finding.table, std::to_string(finding.lineNumber),
                 std::to_string(finding.offset), std::to_string(finding.length), finding.message,
                 makePrintable(finding.excerpt)});
  }

 private:
  void writeRecord(const std::vector<std::string>& fields) const { output.writeLine(makePlainRecord(fields, ',')); }

  Output& output;
};

class GithubReport : public Report {
 public:
  explicit GithubReport(Output& target) : output(target) {}

  void add(const XelCsvFinding& finding) override {
    const char* const level =
        finding.severity == XelCsvSeverity::Note ? "notice" : XelGetSeverityName(finding.severity);
    std::string place = "file=" + escapeProperty(finding.file);
    if (finding.line > 0) place += ",line=" + std::to_string(finding.line) + ",col=" + std::to_string(finding.column);
    output.writeLine(std::string("::") + level + " " + place + ",title=" + finding.code +
                     "::" + escapeData(makePrintable(finding.message)));
  }

 private:
  static std::string escape(const std::string& text, std::string_view special) {
    std::string escaped;
    for (const char byte : text) {
      if (special.find(byte) == std::string_view::npos) {
        escaped += byte;
      } else {
        const auto code = static_cast<unsigned char>(byte);
        escaped += std::string("%") + "0123456789ABCDEF"[code / 16] + "0123456789ABCDEF"[code % 16];
      }
    }
    return escaped;
  }
  static std::string escapeData(const std::string& text) { return escape(text, "%\r\n"); }
  static std::string escapeProperty(const std::string& text) { return escape(text, "%\r\n:,"); }

  Output& output;
};

}  // namespace

std::unique_ptr<Report> makeTextReport(Output& output, const Painter& painter, std::size_t excerptWidth) {
  return std::make_unique<TextReport>(output, painter, excerptWidth);
}
std::unique_ptr<Report> makeCsvReport(Output& output) { return std::make_unique<CsvReport>(output); }
std::unique_ptr<Report> makeGithubReport(Output& output) { return std::make_unique<GithubReport>(output); }

}  // namespace xeltools

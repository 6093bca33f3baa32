// Lines with tabs between fields, and tables of Markdown.
#include <algorithm>
#include <cstdlib>

#include "tools/convert/Format.h"
#include "tools/convert/LineReader.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

// ---- Tabs.

std::string escapeTsv(std::string_view field) {
  std::string escaped;
  for (const char byte : field) {
    switch (byte) {
      case '\t':
        escaped += "\\t";
        break;
      case '\n':
        escaped += "\\n";
        break;
      case '\r':
        escaped += "\\r";
        break;
      case '\\':
        escaped += "\\\\";
        break;
      default:
        escaped += byte;
    }
  }
  return escaped;
}

std::string unescapeTsv(const std::string& field) {
  std::string text;
  for (std::size_t position = 0; position < field.size(); ++position) {
    if (field[position] != '\\' || position + 1 == field.size()) {
      text += field[position];
      continue;
    }
    const char kind = field[++position];
    text += kind == 't' ? '\t' : kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind;
  }
  return text;
}

class TsvWriter : public FormatWriter {
 public:
  TsvWriter(Output& target, const FormatOptions& options) : output(target), isWhole(options.isWhole) {}

  void beginTable(const TableShape& shape) override {
    if (tables++ > 0) output.writeLine("");
    std::vector<std::string> fields;
    if (isWhole) fields.emplace_back("table");
    for (const ShapedColumn& column : shape.columns) fields.push_back(escapeTsv(column.name));
    output.writeLine(join(fields, "\t"));
  }

  void writeLine(const TableShape& shape, const Line& line) override {
    std::vector<std::string> fields;
    if (isWhole) fields.push_back(escapeTsv(shape.name));
    for (const ShapedColumn& column : shape.columns) {
      fields.push_back(escapeTsv(line.getFieldOrNothing(column.position)));
    }
    output.writeLine(join(fields, "\t"));
  }

 private:
  Output& output;
  bool isWhole;
  long tables = 0;
};

class TsvReader : public FormatReader {
 public:
  TsvReader(const std::string& file, const FormatOptions& options) : lines(file), isWhole(options.isWhole) {}

  // The empty line in front of a table is skipped here: an empty line can also be a field that is empty.
  void beginTable(const TableShape& shape) override {
    std::string line;
    if (tables++ > 0) lines.read(line);
    lines.read(line);
    left = shape.lines;
  }

  bool readLine(const TableShape& shape, std::vector<std::string>& fields) override {
    std::string line;
    if (left-- <= 0 || !lines.read(line)) return false;
    fields = split(line, '\t');
    for (std::string& field : fields) field = unescapeTsv(field);
    if (!isWhole) return true;
    const bool isOwn = fields.front() == shape.name;
    fields.erase(fields.begin());
    return isOwn;
  }

  bool isAtEnd() override { return lines.isAtEnd(); }

 private:
  LineReader lines;
  bool isWhole;
  long left = 0;
  long tables = 0;
};

// ---- Markdown.

bool isWordByte(char byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

// An underscore inside a word means nothing; everything else that could mean something is escaped.
std::string escapeMarkdown(std::string_view text) {
  std::string escaped;
  for (std::size_t position = 0; position < text.size(); ++position) {
    const char byte = text[position];
    const bool isInWord =
        position > 0 && position + 1 < text.size() && isWordByte(text[position - 1]) && isWordByte(text[position + 1]);
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x20 || code == 0x7F) {
      escaped += "&#" + std::to_string(code) + ";";
      continue;
    }
    const bool isSpecial = std::string_view("\\|`*<>[]~&$").find(byte) != std::string_view::npos;
    if (isSpecial || (byte == '_' && !isInWord)) escaped += '\\';
    escaped += byte;
  }
  return escaped;
}

// The cells of a row, without the bars around them.
std::vector<std::string> splitRow(const std::string& row) {
  std::vector<std::string> cells;
  std::string cell;
  for (std::size_t position = 1; position < row.size(); ++position) {
    const char byte = row[position];
    if (byte == '\\' && position + 1 < row.size()) {
      cell += row[++position];
    } else if (byte == '&' && position + 2 < row.size() && row[position + 1] == '#') {
      cell += static_cast<char>(std::strtol(row.c_str() + position + 2, nullptr, 10));
      position = std::min(row.find(';', position), row.size());
    } else if (byte == '|') {
      cells.emplace_back(trimBlanks(cell));
      cell.clear();
    } else {
      cell += byte;
    }
  }
  return cells;
}

class MarkdownWriter : public FormatWriter {
 public:
  MarkdownWriter(Output& target, const FormatOptions& options) : output(target), isWhole(options.isWhole) {}

  void beginTable(const TableShape& shape) override {
    if (tables++ > 0) output.writeLine("");
    if (isWhole) output.writeLine("## " + escapeMarkdown(shape.name) + "\n");
    std::string names = "|";
    std::string rule = "|";
    for (const ShapedColumn& column : shape.columns) {
      names += " " + escapeMarkdown(column.name) + " |";
      rule += column.type == ColumnType::Text ? "---|" : "---:|";
    }
    output.writeLine(names);
    output.writeLine(rule);
  }

  void writeLine(const TableShape& shape, const Line& line) override {
    std::string row = "|";
    for (const ShapedColumn& column : shape.columns) {
      row += " " + escapeMarkdown(line.getFieldOrNothing(column.position)) + " |";
    }
    output.writeLine(row);
  }

 private:
  Output& output;
  bool isWhole;
  long tables = 0;
};

class MarkdownReader : public FormatReader {
 public:
  MarkdownReader(const std::string& file, const FormatOptions& options) : lines(file), isWhole(options.isWhole) {}

  void beginTable(const TableShape& shape) override {
    const int linesInFront = (tables++ > 0 ? 1 : 0) + (isWhole ? 2 : 0) + 2;
    std::string line;
    for (int index = 0; index < linesInFront; ++index) lines.read(line);
    left = shape.lines;
  }

  bool readLine(const TableShape&, std::vector<std::string>& fields) override {
    std::string line;
    if (left-- <= 0 || !lines.read(line)) return false;
    fields = splitRow(line);
    return true;
  }

  bool isAtEnd() override { return lines.isAtEnd(); }

 private:
  LineReader lines;
  bool isWhole;
  long left = 0;
  long tables = 0;
};

}  // namespace

std::unique_ptr<FormatWriter> makeTsvWriter(Output& output, const FormatOptions& options) {
  return std::make_unique<TsvWriter>(output, options);
}
std::unique_ptr<FormatReader> makeTsvReader(const std::string& file, const FormatOptions& options) {
  return std::make_unique<TsvReader>(file, options);
}
std::unique_ptr<FormatWriter> makeMarkdownWriter(Output& output, const FormatOptions& options) {
  return std::make_unique<MarkdownWriter>(output, options);
}
std::unique_ptr<FormatReader> makeMarkdownReader(const std::string& file, const FormatOptions& options) {
  return std::make_unique<MarkdownReader>(file, options);
}

}  // namespace xeltools

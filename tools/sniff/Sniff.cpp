#include "tools/sniff/Sniff.h"

#include <algorithm>
#include <map>
#include <set>

#include "tools/sniff/Sample.h"
#include "tools/text/Escape.h"
#include "tools/text/Number.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

using Lines = std::vector<std::string_view>;

// ---- Comments.

struct CommentGuess {
  char character = '#';
  std::size_t lines = 0;  // that begin with it
};

// A line of comment begins with the character and goes on in words; most lines are none.
CommentGuess guessComment(const Lines& lines) {
  CommentGuess best;
  for (const char candidate : {'#', '%', '!', '*', ';', '/'}) {
    std::size_t count = 0;
    bool goesOnInWords = true;
    for (const std::string_view line : lines) {
      if (line.front() != candidate) continue;
      ++count;
      const char next = line.size() > 1 ? line[1] : ' ';
      const bool isWord = next == ' ' || next == '\t' || next == candidate || (next >= 'A' && next <= 'Z') ||
                          (next >= 'a' && next <= 'z');
      goesOnInWords = goesOnInWords && (isWord || candidate == '#');
    }
    if (count == 0 || count * 2 > lines.size() || !goesOnInWords) continue;
    if (best.lines == 0) best = {candidate, count};
  }
  return best;
}

// ---- Quotes.

// How many fields are in such quotes: those that stand between separators or ends of lines.
std::size_t countQuoted(const Lines& lines, char quote) {
  const std::string_view separators = ",;\t|: ";
  std::size_t count = 0;
  for (const std::string_view line : lines) {
    std::size_t open = std::string_view::npos;
    for (std::size_t position = 0; position < line.size(); ++position) {
      if (line[position] != quote) continue;
      const bool isFirst = position == 0 || separators.find(line[position - 1]) != std::string_view::npos;
      const bool isLast = position + 1 == line.size() || separators.find(line[position + 1]) != std::string_view::npos;
      if (open != std::string_view::npos && isLast) {
        ++count;
        open = std::string_view::npos;
      } else if (open == std::string_view::npos && isFirst) {
        open = position;
      }
    }
  }
  return count;
}

// ---- Separators.

struct SeparatorGuess {
  char character = ',';
  std::size_t alike = 0;      // lines with as many fields as most of their table
  std::size_t separated = 0;  // lines that hold it at all
  std::size_t fields = 1;     // of most lines
  double score = 0;
};

using Counts = std::map<std::size_t, std::size_t>;  // lines by their number of fields

// The number of fields that most lines have, with how many those are.
std::pair<std::size_t, std::size_t> getMost(const Counts& counts) {
  return *std::max_element(counts.begin(), counts.end(),
                           [](const auto& left, const auto& right) { return left.second < right.second; });
}

// Lines of one table have equally many fields, and in a file of several tables those whose first field is the same. The
// heading lines of a file of one table have one more, their mark.
SeparatorGuess judge(const Lines& lines, char separator, char quote, double preference) {
  std::map<std::string_view, Counts> byTable;  // by first field
  Counts together;
  SeparatorGuess guess;
  guess.character = separator;
  for (const std::string_view line : lines) {
    const std::vector<std::string_view> fields = splitLine(line, separator, quote);
    const std::size_t marks = !line.empty() && line.front() == '|' && separator != '|' ? 1 : 0;
    ++byTable[cutAtBar(fields.front())][fields.size() - marks];
    ++together[fields.size() - marks];
    if (fields.size() > 1) ++guess.separated;
  }
  std::size_t alikeByTable = 0;
  for (const auto& [name, counts] : byTable) alikeByTable += getMost(counts).second;
  guess.fields = getMost(together).first;
  const bool areTables = byTable.size() * 2 <= lines.size();
  guess.alike = areTables ? std::max(alikeByTable, getMost(together).second) : getMost(together).second;
  const auto all = static_cast<double>(lines.size());
  const double coverage = static_cast<double>(guess.separated) / all;
  if (coverage < 0.5) return guess;
  const double consistency = static_cast<double>(guess.alike) / all;
  guess.score =
      consistency * coverage + preference + 0.01 * static_cast<double>(std::min<std::size_t>(guess.fields, 10));
  return guess;
}

// Whether the character mostly stands between digits, as a decimal point does.
bool isMostlyBetweenDigits(const Lines& lines, char character) {
  const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
  std::size_t all = 0;
  std::size_t between = 0;
  for (const std::string_view line : lines) {
    for (std::size_t position = 1; position + 1 < line.size(); ++position) {
      if (line[position] != character) continue;
      ++all;
      if (isDigit(line[position - 1]) && isDigit(line[position + 1])) ++between;
    }
  }
  return all > 0 && between * 10 > all * 8;
}

SeparatorGuess guessSeparator(const Lines& lines, char quote) {
  struct Candidate {
    char character;
    double preference;
  };
  // A rare character that is as regular as a common one is the better guess.
  const Candidate candidates[] = {{'\t', 0.2}, {';', 0.15}, {',', 0.1}, {'|', 0.05}, {':', -0.1}, {' ', -0.15}};
  SeparatorGuess best;
  for (const Candidate& candidate : candidates) {
    SeparatorGuess guess = judge(lines, candidate.character, quote, candidate.preference);
    if (candidate.character == ',' && isMostlyBetweenDigits(lines, ',')) guess.score -= 0.3;
    if (guess.score > best.score) best = guess;
  }
  return best;
}

// ---- Decimal point.

// Fields that are numbers with the character as decimal point.
std::size_t countFractions(const Lines& lines, const ReaderParameters& parameters, char decimal) {
  std::size_t count = 0;
  for (const std::string_view line : lines) {
    for (const std::string_view field : splitLine(line, parameters.separators.front(), parameters.quote)) {
      std::string text(trimBlanks(field));
      const std::size_t point = text.find(decimal);
      if (point == std::string::npos) continue;
      text[point] = '.';
      if (isNumber(text)) ++count;
    }
  }
  return count;
}

// ---- Tables.

struct TableGuess {
  bool isMultiTable = false;
  bool isSplit = false;
  std::string reason;
  std::string splitReason = "tables are not split";
};

bool holdsMark(std::string_view field, const char* mark) {
  return field.find('|') != std::string_view::npos && field.find(mark) != std::string_view::npos;
}

// What the first fields of the lines are like.
struct FirstFields {
  FirstFields(const Lines& lines, const ReaderParameters& parameters) {
    for (const std::string_view line : lines) {
      const auto fields = splitLine(line, parameters.separators.front(), parameters.quote);
      const std::string_view name = cutAtBar(fields.front());
      ++tables[name][fields.size()];
      noteMark(fields.front(), name);
      noteOrder(name);
    }
  }

  void noteMark(std::string_view field, std::string_view name) {
    hasDirective = hasDirective || name == "XELO_CSV_FORMAT" || name == "XELO_DATA_SCHEMA";
    if (!holdsMark(field, "NAMES") && !holdsMark(field, "KEYS")) return;
    if (name.empty()) hasOwnMark = true;
    if (!name.empty() && marked.empty()) marked = field;
  }

  void noteOrder(std::string_view name) {
    if (name == previous) return;
    if (returned.empty() && ended.count(name) > 0) returned = name;
    if (!previous.empty()) ended.insert(previous);
    previous = name;
  }

  std::map<std::string_view, Counts> tables;  // by name
  std::string_view marked;                    // the first mark with a name in front of it
  std::string_view returned;                  // the first name that comes back after another
  bool hasOwnMark = false;                    // "|NAMES" without a name
  bool hasDirective = false;

 private:
  std::set<std::string_view> ended;
  std::string_view previous;
};

// One of the names that come again and again, each with a number of fields of its own; nothing when they do not.
std::string_view findGroup(const std::map<std::string_view, Counts>& tables, std::size_t lines) {
  const std::size_t least = std::max<std::size_t>(3, lines / 50);
  std::size_t inLargeTables = 0;
  std::size_t nameless = 0;  // lines whose first field is a number or empty
  std::set<std::size_t> widths;
  std::string_view largest;
  for (const auto& [name, counts] : tables) {
    std::size_t count = 0;
    for (const auto& [fields, some] : counts) count += some;
    if (count < least) continue;
    inLargeTables += count;
    widths.insert(getMost(counts).first);
    if (name.empty() || isNumber(name)) {
      nameless += count;
    } else {
      largest = name;
    }
  }
  const bool areGrouped = nameless * 2 <= inLargeTables && widths.size() > 1 && inLargeTables * 2 >= lines;
  return areGrouped ? largest : std::string_view();
}

// One name for each table, in front of a bar in heading lines.
TableGuess guessTables(const Lines& lines, const ReaderParameters& parameters) {
  const FirstFields first(lines, parameters);
  const std::string_view group = findGroup(first.tables, lines.size());
  TableGuess guess;
  guess.isMultiTable = true;
  if (!first.marked.empty()) {
    guess.reason = "heading lines such as " + makePrintable(first.marked) + " name tables";
  } else if (first.hasOwnMark) {
    guess.isMultiTable = false;
    guess.reason = "heading lines begin with | and no table's name";
  } else if (first.hasDirective) {
    guess.reason = "a directive table is there";
  } else if (!group.empty()) {
    guess.reason = "first fields such as " + makePrintable(group) + " come again, each with its number of fields";
  } else {
    guess.isMultiTable = false;
    guess.reason = "first fields do not name tables";
  }
  if (!guess.isMultiTable) return guess;
  guess.isSplit = !first.returned.empty();
  guess.splitReason = guess.isSplit ? "table " + makePrintable(first.returned) + " comes back after another one"
                                    : "no table comes back";
  return guess;
}

}  // namespace

Proposals sniff(std::string_view text, bool isWhole) {
  const Sample sample(text, isWhole);
  Proposals proposals;
  ReaderParameters& parameters = proposals.parameters;

  const CommentGuess comment = guessComment(sample.lines);
  parameters.comment = comment.character;
  Lines lines;
  for (const std::string_view line : sample.lines) {
    if (line.front() != comment.character) lines.push_back(line);
  }
  const std::size_t inDouble = countQuoted(lines, '"');
  const std::size_t inSingle = countQuoted(lines, '\'');
  parameters.quote = inSingle > inDouble && inSingle > 1 ? '\'' : '"';

  SeparatorGuess separator;
  if (!lines.empty()) separator = guessSeparator(lines, parameters.quote);
  parameters.separators = std::string(1, separator.character);
  if (parameters.comment == separator.character) parameters.comment = '#';

  const bool mayBeComma = separator.character != ',';
  const std::size_t points = countFractions(lines, parameters, '.');
  const std::size_t commas = mayBeComma ? countFractions(lines, parameters, ',') : 0;
  parameters.decimal = commas > points ? ',' : '.';

  const TableGuess tables = guessTables(lines, parameters);
  parameters.isMultiTable = tables.isMultiTable;
  parameters.allowTableSplitting = tables.isSplit;

  const auto add = [&](const char* name, const std::string& value, const std::string& reason) {
    proposals.all.push_back({name, value, reason});
  };
  add("multi", tables.isMultiTable ? "yes" : "no", tables.reason);
  add("split", tables.isSplit ? "yes" : "no", tables.splitReason);
  add("sep", formatSeparators(parameters.separators),
      separator.score > 0
          ? "in " + std::to_string(separator.separated) + " of " + countOf(static_cast<long>(lines.size()), "line") +
                "; " + std::to_string(separator.alike) + " with their table's number of fields"
          : "nothing separates fields regularly; this is the usual one");
  const std::size_t fractions = std::max(points, commas);
  add("decimal", formatCharacter(parameters.decimal),
      fractions > 0 ? "in " + countOf(static_cast<long>(fractions), "number")
                    : "no number has a fraction; this is the usual one");
  const std::size_t quoted = std::max(inDouble, inSingle);
  add("quote", formatCharacter(parameters.quote),
      quoted > 0 ? "around " + countOf(static_cast<long>(quoted), "field")
                 : "no field is in quotes; this is the usual one");
  add("comment", formatCharacter(parameters.comment),
      comment.lines > 0 && parameters.comment == comment.character
          ? countOf(static_cast<long>(comment.lines), "line") + (comment.lines == 1 ? " begins" : " begin") + " with it"
          : "no line is a comment; this is the usual one");

  if (sample.isUtf16)
    proposals.remarks.emplace_back("the file seems to be UTF-16, which is not read: save it as UTF-8");
  if (sample.hasNul && !sample.isUtf16)
    proposals.remarks.emplace_back("there are bytes 0, each of which ends its line");
  if (sample.hasByteOrderMark) {
    proposals.remarks.emplace_back(
        "the file begins with a byte-order mark, which is read as a part of the first field");
  }
  return proposals;
}

}  // namespace xeltools

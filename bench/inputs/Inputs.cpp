#include "bench/inputs/Inputs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string_view>

namespace bench {

namespace {

// Numbers that look random and are the same everywhere (splitmix64).
class Random {
 public:
  explicit Random(std::uint64_t seed) : state(seed) {}

  std::uint64_t next() {
    state += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return mixed ^ (mixed >> 31U);
  }

  long below(long bound) { return static_cast<long>(next() % static_cast<std::uint64_t>(bound)); }

 private:
  std::uint64_t state;
};

// A file that grows by texts and numbers.
class Writer {
 public:
  explicit Writer(const std::string& fileName) : file(std::fopen(fileName.c_str(), "wb")), random(20240229) {
    if (file == nullptr) {
      std::perror(fileName.c_str());
      std::exit(1);
    }
    text.reserve(Capacity + LongestLine);
  }
  ~Writer() {
    flush();
    if (std::fclose(file) != 0) failed = true;
    if (failed) std::fprintf(stderr, "an input could not be written: is the disk full?\n");
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  Writer& add(std::string_view piece) {
    text.append(piece);
    return *this;
  }
  Writer& add(char piece) {
    text.push_back(piece);
    return *this;
  }
  Writer& number(long value, std::size_t width = 1) {
    std::array<char, 24> digits;
    const auto result = std::to_chars(digits.begin(), digits.end(), value);
    const auto length = static_cast<std::size_t>(result.ptr - digits.data());
    if (length < width) text.append(width - length, '0');
    text.append(digits.data(), length);
    return *this;
  }
  Writer& decimal(char point) {
    if (random.below(8) == 0) add('-');
    return number(random.below(1000)).add(point).number(random.below(100), 2);
  }
  Writer& word() { return add(Words[static_cast<std::size_t>(random.below(Words.size()))]); }
  Writer& hexadecimal(std::uint64_t value) {
    std::array<char, 17> digits;
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(value));
    return add(digits.data());
  }
  Writer& line() {
    text.push_back('\n');
    if (text.size() >= Capacity) flush();
    return *this;
  }

  Random& getRandom() { return random; }
  long getSize() const { return written + static_cast<long>(text.size()); }

 private:
  static constexpr std::size_t Capacity = 1U << 20U;
  static constexpr std::size_t LongestLine = 1U << 16U;
  static constexpr std::array<std::string_view, 16> Words = {"amber",  "birch", "copper",  "delta", "ember", "fjord",
                                                             "garnet", "heath", "indigo",  "jade",  "kelp",  "linden",
                                                             "marble", "north", "orchard", "pine"};

  void flush() {
    if (std::fwrite(text.data(), 1, text.size(), file) != text.size()) failed = true;
    written += static_cast<long>(text.size());
    text.clear();
  }

  std::FILE* file;
  Random random;
  std::string text;
  long written = 0;
  bool failed = false;
};

constexpr long Million = 1000000;

// ---- wide: 20 mixed columns

const std::vector<Kind>& wideColumns() {
  static const std::vector<Kind> Columns = {Kind::Text,    Kind::Integer, Kind::Float,   Kind::Text,    Kind::Float,
                                            Kind::Integer, Kind::Text,    Kind::Float,   Kind::Text,    Kind::Integer,
                                            Kind::Float,   Kind::Float,   Kind::Text,    Kind::Integer, Kind::Float,
                                            Kind::Text,    Kind::Float,   Kind::Integer, Kind::Float,   Kind::Text};
  return Columns;
}

void writeWide(Writer& out, long divisor, bool everyTextQuoted) {
  out.add("|NAMES");
  for (std::size_t column = 0; column < wideColumns().size(); ++column) {
    out.add(",column").number(static_cast<long>(column));
  }
  out.line().add("|KEYS,1");
  for (std::size_t column = 1; column < wideColumns().size(); ++column) out.add(",0");
  out.line();
  for (long number = 0; out.getSize() < 200 * Million / divisor; ++number) {
    // Three lines of a hundred hold a quoted text with a separator in it.
    const bool oneQuoted = out.getRandom().below(100) < 3;
    const char* separator = "";
    for (std::size_t column = 0; column < wideColumns().size(); ++column) {
      out.add(separator);
      separator = ",";
      if (column == 0) {
        if (everyTextQuoted) out.add('"');
        out.add('K').number(number, 7);
        if (everyTextQuoted) out.add('"');
      } else if (wideColumns()[column] == Kind::Integer) {
        out.number(out.getRandom().below(Million));
      } else if (wideColumns()[column] == Kind::Float) {
        out.decimal('.');
      } else if (everyTextQuoted || (oneQuoted && column == 12)) {
        out.add('"').word().add(", ").word().add('"');
      } else {
        out.word().add(' ').word();
      }
    }
    out.line();
  }
}

// ---- narrow and its relatives

void writeRest(Writer& out) { out.add(',').number(out.getRandom().below(10000)).add(',').decimal('.').add(',').word(); }

void writeNarrow(Writer& out, long lines, std::size_t width) {
  out.add("|NAMES,key,number,price,word").line().add("|KEYS,1,0,0,0").line();
  for (long number = 0; number < lines; ++number) {
    out.add('K').number(number, width);
    writeRest(out);
    out.line();
  }
}

void writeKeyLast(Writer& out, long lines) {
  out.add("|NAMES,number,price,word,key").line().add("|KEYS,0,0,0,1").line();
  for (long number = 0; number < lines; ++number) {
    out.number(out.getRandom().below(10000)).add(',').decimal('.').add(',').word();
    out.add(",K").number(number, 7).line();
  }
}

// ---- multi: 50 tables

void writeMulti(Writer& out, long divisor) {
  constexpr long Tables = 50;
  const long lines = 2 * Million / divisor / Tables;
  for (long table = 0; table < Tables; ++table) {
    out.add("# lines of table ").number(table).line();
    out.add("Table").number(table, 2).add("|NAMES;key;number;price;weight;word;remark").line();
    out.add("Table").number(table, 2).add("|KEYS;1;0;0;0;0;0").line();
    for (long number = 0; number < lines; ++number) {
      const long kind = out.getRandom().below(200);
      if (kind == 0) out.add("# a comment; nothing that a table holds").line();
      if (kind == 1) out.line();
      out.add("Table").number(table, 2).add(";K").number(number, 7).add(';');
      out.number(out.getRandom().below(10000)).add(';').decimal(',').add(';').decimal(',').add(';');
      out.word().add(';').word().line();
    }
  }
}

// ---- files to be indexed

void writeTwoKey(Writer& out, long divisor) {
  const long side = std::lround(std::floor(std::sqrt(static_cast<double>(2 * Million) / static_cast<double>(divisor))));
  out.add("|NAMES,i,j,value,word").line().add("|KEYS,1,1,0,0").line();
  for (long i = 0; i < side; ++i) {
    for (long j = 0; j < side; ++j) {
      out.number(i).add(',').number(j).add(',').decimal('.').add(',').word().line();
    }
  }
}

// A key of a shape, number counting from 0. Texts of every shape fill the line up to the same length.
using Shape = std::function<void(Writer&, long)>;

Shape shapeOf(std::string_view name) {
  if (name == "shape-pair") {
    return [](Writer& out, long number) { out.number(number / 707).add(',').number(number % 707); };
  }
  if (name == "shape-random") {
    return [](Writer& out, long number) {
      Random scattered(static_cast<std::uint64_t>(number));
      out.add('K').hexadecimal(scattered.next()).add(",x");
    };
  }
  if (name == "shape-prefix") {
    return [](Writer& out, long number) {
      out.add("/warehouse/northern-region/building-7/shelf/").number(number, 7).add(",x");
    };
  }
  if (name == "shape-suffix") {
    return [](Writer& out, long number) { out.number(number, 7).add("/shelf/building-7/northern-region/warehouse,x"); };
  }
  if (name == "shape-words") {
    return [](Writer& out, long number) {
      constexpr std::string_view Letters = "abcdefghijklmnopqrst";
      for (long rest = number, digit = 0; digit < 5; ++digit, rest /= 20) {
        if (digit > 0) out.add(' ');
        out.add(Letters[static_cast<std::size_t>(rest % 20)]).add("eta");
      }
      out.add(",x");
    };
  }
  return [](Writer& out, long number) { out.add('K').number(number, 7).add(",x"); };
}

void writeShape(Writer& out, const Input& input, long divisor) {
  constexpr long LineLength = 80;
  const bool isPair = std::string_view(input.name) == "shape-pair";
  const Shape shape = shapeOf(input.name);
  out.add(isPair ? "|KEYS,1,1,0" : "|KEYS,1,0,0").line();
  for (long number = 0; number < Million / 2 / divisor; ++number) {
    const long end = out.getSize() + LineLength - 1;
    shape(out, number);
    out.add(',');
    while (out.getSize() < end) out.add('z');
    out.line();
  }
}

// ---- what is rare, and slow where only the usual is quick

constexpr long CliffSize = 20 * Million;

void repeat(Writer& out, long divisor, const std::function<void(Writer&)>& writeLine) {
  while (out.getSize() < CliffSize / divisor) {
    writeLine(out);
    out.line();
  }
}

void writeCarriageReturns(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) {
    to.word();
    writeRest(to);
    to.add('\r');
  });
}

void writeUnclosedQuotes(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) {
    to.word().add(",\"").word();
    writeRest(to);
  });
}

void writeEmptyFields(Writer& out, long divisor) {
  const std::string commas(99, ',');
  repeat(out, divisor, [&commas](Writer& to) { to.add(commas); });
}

void writeTinyLines(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) { to.add(static_cast<char>('a' + to.getRandom().below(26))).add(",x"); });
}

void writeLongLines(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) {
    const long end = to.getSize() + 12000;
    while (to.getSize() < end) to.word().add(',');
  });
}

void writeOddSeparators(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) {
    constexpr std::string_view Separators = ",;:|\t/&!~+";
    for (std::size_t field = 0; field < 12; ++field) {
      to.word().add(Separators[static_cast<std::size_t>(to.getRandom().below(Separators.size()))]);
    }
  });
}

void writeSpaces(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) {
    for (std::size_t field = 0; field < 8; ++field) to.word().add(to.getRandom().below(2) == 0 ? " " : "   ");
  });
}

void writeHighSeparator(Writer& out, long divisor) {
  repeat(out, divisor, [](Writer& to) {
    for (std::size_t field = 0; field < 8; ++field) to.word().add('~');
  });
}

// ---- columns: many columns with headings

void writeColumns(Writer& out, long columns) {
  out.add("|NAMES");
  for (long column = 0; column < columns; ++column) out.add(",heading").number(column);
  out.line();
  for (long line = 0; line < 16; ++line) {
    for (long column = 0; column < columns; ++column) {
      if (column > 0) out.add(',');
      out.number(line * columns + column);
    }
    out.line();
  }
}

// ---- grow: how cost grows with columns, tables and the length of keys

void writeManyColumns(Writer& out, long columns, long divisor) {
  while (out.getSize() < 20 * Million / divisor) {
    for (long column = 0; column < columns; ++column) {
      if (column > 0) out.add(',');
      out.decimal('.');
    }
    out.line();
  }
}

void writeManyTables(Writer& out, long tables, long divisor) {
  const long lines = std::max(1L, 200000 / divisor / tables);
  for (long table = 0; table < tables; ++table) {
    for (long number = 0; number < lines; ++number) {
      out.add("Table").number(table, 6).add(",K").number(number, 7);
      writeRest(out);
      out.line();
    }
  }
}

void writeLongKeys(Writer& out, long keyLength, long divisor) {
  constexpr long LineLength = 160;
  out.add("|KEYS,1,0").line();
  for (long number = 0; number < 200000 / divisor; ++number) {
    const long begin = out.getSize();
    Random scattered(static_cast<std::uint64_t>(number));
    out.number(number, 8);
    while (out.getSize() < begin + keyLength) out.add(static_cast<char>('a' + scattered.below(26)));
    out.add(',');
    while (out.getSize() < begin + LineLength - 1) out.add('z');
    out.line();
  }
}

// The number at the end of a name such as "columns-5".
long numberIn(std::string_view name) { return std::atol(name.substr(name.rfind('-') + 1).data()); }

// ---- small: a file of 1 KB

void writeSmall(Writer& out) {
  out.add("|NAMES,key,number,price,word").line().add("|KEYS,1,0,0,0").line();
  for (long number = 0; out.getSize() < 1000; ++number) {
    out.add('K').number(number, 4);
    writeRest(out);
    out.line();
  }
}

Input plain(const char* name, std::vector<Kind> columns = {}) { return {name, false, ",", '.', std::move(columns)}; }

}  // namespace

const std::vector<Input>& getInputs() {
  static const std::vector<Kind> Narrow = {Kind::Text, Kind::Integer, Kind::Float, Kind::Text};
  static const std::vector<Kind> Multi = {Kind::Text,  Kind::Text, Kind::Integer, Kind::Float,
                                          Kind::Float, Kind::Text, Kind::Text};
  static const std::vector<Input> All = {
      plain("wide", wideColumns()),
      plain("wideq", wideColumns()),
      plain("narrow", Narrow),
      {"multi", true, ";", ',', Multi},
      plain("twokey"),
      plain("keylast"),
      plain("small"),
      plain("count-small"),
      plain("count-middle"),
      plain("count-large"),
      plain("shape-count"),
      plain("shape-pair"),
      plain("shape-random"),
      plain("shape-prefix"),
      plain("shape-suffix"),
      plain("shape-words"),
      plain("cliff-crlf"),
      plain("cliff-quotes"),
      plain("cliff-empty"),
      plain("cliff-tiny"),
      plain("cliff-long"),
      {"cliff-separators", false, ",;:|\t/&!~+", '.', {}},
      {"cliff-space", false, ", ", '.', {}},
      {"cliff-high", false, "~", '.', {}},
      plain("columns-5"),
      plain("columns-500"),
      plain("grow-columns-5"),
      plain("grow-columns-50"),
      plain("grow-columns-500"),
      {"grow-tables-10", true, ",", '.', {}},
      {"grow-tables-1000", true, ",", '.', {}},
      {"grow-tables-100000", true, ",", '.', {}},
      plain("grow-key-8"),
      plain("grow-key-32"),
      plain("grow-key-128"),
  };
  return All;
}

const Input& findInput(const std::string& name) {
  for (const Input& input : getInputs()) {
    if (name == input.name) return input;
  }
  std::fprintf(stderr, "there is no input called %s\n", name.c_str());
  std::exit(1);
}

void writeInput(const Input& input, const std::string& fileName, long divisor) {
  const std::string_view name = input.name;
  Writer out(fileName);
  if (name == "wide" || name == "wideq") writeWide(out, divisor, name == "wideq");
  if (name == "narrow") writeNarrow(out, 2 * Million / divisor, 7);
  if (name == "count-small") writeNarrow(out, Million / 5 / divisor, 8);
  if (name == "count-middle") writeNarrow(out, 2 * Million / divisor, 8);
  if (name == "count-large") writeNarrow(out, 20 * Million / divisor, 8);
  if (name == "multi") writeMulti(out, divisor);
  if (name == "twokey") writeTwoKey(out, divisor);
  if (name == "keylast") writeKeyLast(out, 2 * Million / divisor);
  if (name == "small") writeSmall(out);
  if (name.substr(0, 8) == "columns-") writeColumns(out, numberIn(name));
  if (name.substr(0, 13) == "grow-columns-") writeManyColumns(out, numberIn(name), divisor);
  if (name.substr(0, 12) == "grow-tables-") writeManyTables(out, numberIn(name), divisor);
  if (name.substr(0, 9) == "grow-key-") writeLongKeys(out, numberIn(name), divisor);
  if (name.substr(0, 6) == "shape-") writeShape(out, input, divisor);
  if (name == "cliff-crlf") writeCarriageReturns(out, divisor);
  if (name == "cliff-quotes") writeUnclosedQuotes(out, divisor);
  if (name == "cliff-empty") writeEmptyFields(out, divisor);
  if (name == "cliff-tiny") writeTinyLines(out, divisor);
  if (name == "cliff-long") writeLongLines(out, divisor);
  if (name == "cliff-separators") writeOddSeparators(out, divisor);
  if (name == "cliff-space") writeSpaces(out, divisor);
  if (name == "cliff-high") writeHighSeparator(out, divisor);
}

}  // namespace bench

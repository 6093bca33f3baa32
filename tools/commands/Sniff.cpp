// xelcsv sniff: how a file seems to be written.
#include "tools/sniff/Sniff.h"

#include <algorithm>
#include <fstream>

#include "tools/Command.h"
#include "tools/DataFile.h"
#include "tools/Errors.h"
#include "tools/layout/AlignedTable.h"
#include "tools/text/Escape.h"
#include "tools/text/Json.h"
#include "tools/text/Number.h"
#include "tools/text/Words.h"

namespace xeltools {

namespace {

constexpr long SampleSize = 4L << 20;

// An index takes memory and time; for larger files it is not tried whether one can be made.
constexpr long LargestIndexed = 64L << 20;

std::string readBeginning(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text(static_cast<std::size_t>(SampleSize), '\0');
  stream.read(text.data(), SampleSize);
  text.resize(static_cast<std::size_t>(stream.gcount()));
  return text;
}

Proposal& find(Proposals& proposals, const std::string& name) {
  return *std::find_if(proposals.all.begin(), proposals.all.end(), [&](const Proposal& it) { return it.name == name; });
}

// Opens the file as proposed. A table that comes back beyond the sample makes it one with table splitting.
std::unique_ptr<DataFile> open(const std::string& name, Proposals& proposals, Access access) {
  try {
    return std::make_unique<DataFile>(name, proposals.parameters, access);
  } catch (const XelCsvReader::XelDuplicatedTableException&) {
    proposals.parameters.allowTableSplitting = true;
    find(proposals, "split") = {"split", "yes", "a table comes back after another one"};
    return std::make_unique<DataFile>(name, proposals.parameters, access);
  }
}

// Whether every table can be read through an index: each line must have a key of its own, and its key fields.
Proposal tryIndex(const std::string& name, Proposals& proposals, const std::vector<long>& counts) {
  try {
    const auto file = open(name, proposals, Access::AsParameters);
    std::size_t index = 0;
    for (const std::string& table : file->getTableNames()) {
      const Table indexed(*file, table);
      // An index of a file of one table ends without a word at a key that comes again.
      const bool isWhole = file->isMultiTable() || Table(*file, table).countLines() == counts[index];
      if (!isWhole) return {"cache", "no", "a key comes again, which ends an index"};
      ++index;
    }
    return {"cache", "yes", "an index can be made: every line has a key of its own"};
  } catch (const XelQuietException& problem) {
    const std::string text = problem.getMessage();
    const std::size_t colon = text.find(" : ");
    const std::string shown = makePrintable(trimBlanks(colon == std::string::npos ? text : text.substr(colon + 3)));
    return {"cache", "no", "an index cannot be made: " + shown};
  }
}

class Sniff : public Command {
 public:
  const CommandText& getText() const override {
    static const CommandText text = {
        "sniff",
        "propose how to read a file",
        {"Looks at the beginning of a file, proposes every parameter of a reader with what speaks for it, tries it, and "
         "prints the call of the constructor in C++ and the options of this program. Settings from elsewhere are not "
         "looked at."},
        {"xelcsv sniff data.csv", "xelcsv sniff data.csv --format options > .xelcsvrc"},
        false};
    return text;
  }

  void declare(OptionSet& options) override {
    options.addOperand("FILE", fileName, "the data file");
    options.addChoice("--format", {"text", "json", "options"}, format,
                      "how to write; options is what a .xelcsvrc holds");
  }

  std::string getFile() const override { return fileName; }

  int run(Session& session) override {
    // Opening it in whatever way tells what is wrong with the file as such.
    const long size = DataFile(fileName, ReaderParameters()).getSize();
    Proposals proposals = sniff(readBeginning(fileName), size <= SampleSize);
    std::string outcome;
    try {
      std::vector<long> counts;
      const auto file = open(fileName, proposals, Access::Scanning);
      long lines = 0;
      for (const std::string& name : file->getTableNames()) {
        counts.push_back(Table(*file, name).countLines());
        const bool isReserved = static_cast<long>(counts.size()) <= file->getNumberOfReservedTables();
        if (!isReserved) lines += counts.back();
      }
      const long tables = static_cast<long>(counts.size()) - file->getNumberOfReservedTables();
      outcome = "read so, the file has " + (file->isMultiTable() ? countOf(tables, "table") + " with " : "") +
                countOf(lines, "line");
      proposals.all.push_back(size <= LargestIndexed
                                  ? tryIndex(fileName, proposals, counts)
                                  : Proposal{"cache", "yes", "the file is large, so no index was tried"});
      proposals.parameters.isCached = proposals.all.back().value == "yes";
    } catch (const XelQuietException& problem) {
      outcome = "read so, the library says: " + makePrintable(problem.getMessage());
    }
    write(session, proposals, outcome);
    return Good;
  }

 private:
  void write(Session& session, const Proposals& proposals, const std::string& outcome) const;
  void writeText(Session& session, const Proposals& proposals, const std::string& outcome) const;
  void writeJson(Output& output, const Proposals& proposals) const;

  std::string fileName;
  std::string format = "text";
};

void Sniff::write(Session& session, const Proposals& proposals, const std::string& outcome) const {
  if (format == "options") {
    session.getOutput().writeLine(formatOptions(proposals.parameters));
  } else if (format == "json") {
    writeJson(session.getOutput(), proposals);
  } else {
    writeText(session, proposals, outcome);
  }
}

void Sniff::writeText(Session& session, const Proposals& proposals, const std::string& outcome) const {
  Output& output = session.getOutput();
  const Painter& painter = session.getPainter();
  AlignedTable layout({{"setting"}, {"value"}, {"because"}});
  const auto makeCells = [](const Proposal& it) { return std::vector<std::string>{it.name, it.value, it.reason}; };
  for (const Proposal& it : proposals.all) layout.observe(makeCells(it));
  if (session.isWatched()) layout.limitWidth(session.getColumns());
  layout.writeHeadings(output, painter);
  for (const Proposal& it : proposals.all) layout.write(output, painter, makeCells(it));
  output.writeLine("");
  output.writeLine(outcome);
  for (const std::string& remark : proposals.remarks) output.writeLine("but: " + remark);
  output.writeLine("");
  const std::string options = formatOptions(proposals.parameters);
  output.writeLine("C++           " + painter.paint(formatConstructor(proposals.parameters, fileName), Look::Strong));
  output.writeLine("command line  " + painter.paint("xelcsv tables " + options + (options.empty() ? "" : " ") +
                                                        makeShellWord(makePrintable(fileName)),
                                                    Look::Strong));
}

void Sniff::writeJson(Output& output, const Proposals& proposals) const {
  std::vector<std::string> settings;
  for (const Proposal& it : proposals.all) {
    settings.push_back("\n    " + toObject({toMember("name", toJson(it.name)), toMember("value", toJson(it.value)),
                                            toMember("reason", toJson(it.reason))}));
  }
  output.writeLine("{\n  " + toMember("settings", "[" + join(settings, ",") + "\n  ]") + ",");
  output.writeLine("  " + toMember("remarks", toJson(proposals.remarks)) + ",");
  output.writeLine("  " + toMember("options", toJson(formatOptions(proposals.parameters))) + ",");
  output.writeLine("  " + toMember("constructor", toJson(formatConstructor(proposals.parameters, fileName))) + "\n}");
}

}  // namespace

std::unique_ptr<Command> makeSniff() { return std::make_unique<Sniff>(); }

}  // namespace xeltools

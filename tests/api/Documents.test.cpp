// What the documents show is true: programs, files and output are quoted from examples/, tests that they name exist, and
// their links lead somewhere.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

fs::path getRoot() { return fs::path(__FILE__).parent_path().parent_path().parent_path(); }

Strings readLines(const fs::path& name) {
  std::ifstream file(name);
  EXPECT_TRUE(file.is_open()) << name << " is missing";
  Strings lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::vector<fs::path> listFiles(const char* folder, const char* extension) {
  std::vector<fs::path> files;
  if (!fs::exists(getRoot() / folder)) return files;
  for (const auto& entry : fs::directory_iterator(getRoot() / folder)) {
    if (entry.path().extension() == extension) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<fs::path> listDocuments() {
  std::vector<fs::path> documents;
  for (const char* folder : {".", "docs", "examples", "tests", "fuzz", "bench"}) {
    for (const fs::path& file : listFiles(folder, ".md")) documents.push_back(file.lexically_normal());
  }
  return documents;
}

struct Block {
  long lineNumber = 0;  // of its head, from 1
  std::string kind;
  Strings lines;
};

std::vector<Block> readBlocks(const fs::path& document) {
  std::vector<Block> blocks;
  bool isInside = false;
  long lineNumber = 0;
  for (const std::string& line : readLines(document)) {
    ++lineNumber;
    if (line.compare(0, 3, "```") == 0) {
      isInside = !isInside;
      if (isInside) blocks.push_back({lineNumber, line.substr(3), {}});
    } else if (isInside) {
      blocks.back().lines.push_back(line);
    }
  }
  EXPECT_FALSE(isInside) << "the last block has no end";
  return blocks;
}

// The lines without the blanks that all of them begin with.
Strings unindent(const Strings& lines) {
  std::size_t indent = std::string::npos;
  for (const std::string& line : lines) {
    if (!line.empty()) indent = std::min(indent, line.find_first_not_of(' '));
  }
  Strings moved;
  for (const std::string& line : lines) moved.push_back(line.empty() ? line : line.substr(indent));
  return moved;
}

// Whether the lines stand in the file next to each other, further right perhaps.
bool holds(const Strings& file, const Strings& wanted) {
  const Strings lines = unindent(wanted);
  for (std::size_t start = 0; start + lines.size() <= file.size(); ++start) {
    const auto first = file.begin() + static_cast<std::ptrdiff_t>(start);
    if (unindent(Strings(first, first + static_cast<std::ptrdiff_t>(lines.size()))) == lines) return true;
  }
  return false;
}

bool isQuotedFrom(const char* folder, const char* extension, const Strings& lines) {
  for (const fs::path& file : listFiles(folder, extension)) {
    if (holds(readLines(file), lines)) return true;
  }
  return false;
}

// What a heading is called in a link, as the usual sites for repositories call it; in any locale.
std::string makeAnchor(const std::string& heading) {
  std::string anchor;
  for (const char c : heading) {
    if (c >= 'A' && c <= 'Z') {
      anchor += static_cast<char>(c - 'A' + 'a');
    } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_') {
      anchor += c;
    } else if (c == ' ') {
      anchor += '-';
    }
  }
  return anchor;
}

std::set<std::string> listAnchors(const fs::path& document) {
  std::set<std::string> anchors;
  bool isInside = false;
  for (const std::string& line : readLines(document)) {
    if (line.compare(0, 3, "```") == 0) isInside = !isInside;
    const std::size_t text = line.find_first_not_of('#');
    if (!isInside && text != std::string::npos && text > 0) anchors.insert(makeAnchor(line.substr(text + 1)));
  }
  return anchors;
}

}  // namespace

// These have tests of their own, which read and run what they show.
static bool isTestedElsewhere(const fs::path& document, const std::string& kind) {
  const std::string name = document.filename().string();
  return name == "format.md" || name == "messages.md" || (name == "findings.md" && kind != "cpp");
}

TEST(Documents, QuoteProgramsFilesAndOutputFromTheExamples) {
  long count = 0;
  for (const fs::path& document : listDocuments()) {
    for (const Block& block : readBlocks(document)) {
      if (isTestedElsewhere(document, block.kind)) continue;
      SCOPED_TRACE(document.string() + ":" + std::to_string(block.lineNumber));
      EXPECT_FALSE(block.lines.empty());
      EXPECT_NE(block.kind, "") << "a block without a kind";
      if (block.kind == "cpp") {
        EXPECT_TRUE(isQuotedFrom("examples", ".cpp", block.lines));
      } else if (block.kind == "csv") {
        EXPECT_TRUE(isQuotedFrom("examples/data", ".csv", block.lines));
      } else if (block.kind == "text") {
        EXPECT_TRUE(isQuotedFrom("examples/expected", ".txt", block.lines));
      } else {
        continue;
      }
      ++count;
    }
  }
  EXPECT_GE(count, 25) << "blocks got lost";
}

TEST(Documents, NameTestsThatExist) {
  std::set<std::string> tests;
  const std::regex head(R"re(TEST(?:_F|_P)?\((\w+), (\w+)\))re");
  for (const auto& entry : fs::recursive_directory_iterator(getRoot() / "tests")) {
    if (entry.path().extension() != ".cpp") continue;
    for (const std::string& line : readLines(entry.path())) {
      std::smatch parts;
      if (std::regex_search(line, parts, head)) tests.insert(parts[1].str() + "." + parts[2].str());
    }
  }
  const std::regex named(R"re(`([A-Z]\w+\.[A-Z]\w+)`)re");
  long count = 0;
  for (const char* document : {"docs/decisions.md", "docs/reliability.md"}) {
    for (const std::string& line : readLines(getRoot() / document)) {
      for (std::sregex_iterator it(line.begin(), line.end(), named); it != std::sregex_iterator(); ++it, ++count) {
        EXPECT_EQ(tests.count((*it)[1]), 1U) << document << ": " << (*it)[1];
      }
    }
  }
  EXPECT_GE(count, 25) << "names got lost";
}

TEST(Documents, LinkToWhatIsThere) {
  const std::regex link(R"re(\]\(([^)#]*)(?:#([^)]*))?\))re");
  long count = 0;
  for (const fs::path& document : listDocuments()) {
    bool isInside = false;
    for (const std::string& line : readLines(document)) {
      if (line.compare(0, 3, "```") == 0) isInside = !isInside;
      if (isInside) continue;
      for (std::sregex_iterator it(line.begin(), line.end(), link); it != std::sregex_iterator(); ++it, ++count) {
        const std::string target = (*it)[1];
        if (target.find("://") != std::string::npos) continue;
        const fs::path file = target.empty() ? document : document.parent_path() / target;
        EXPECT_TRUE(fs::exists(file)) << document << ": " << target;
        const std::string anchor = (*it)[2];
        if (anchor.empty() || file.extension() != ".md" || !fs::exists(file)) continue;
        EXPECT_EQ(listAnchors(file).count(anchor), 1U) << document << ": " << target << "#" << anchor;
      }
    }
  }
  EXPECT_GE(count, 50) << "links got lost";
}

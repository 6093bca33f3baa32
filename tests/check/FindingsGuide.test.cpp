// docs/findings.md says what the catalogue says. With XELCSV_WRITE_DOCS set in the environment it is written anew.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/check/Checking.h"

namespace {

const char* const GuideName = "docs/findings.md";

const char* const Introduction =
    R"(# What a check of a data file finds

The library keeps silent about much that a data file may hold: it cuts long lines, lets quotes vanish, reads `12abc` as 12.
Whoever prepares data files wants to know. `XelCsvCheck` of the library `xelcsv::check` reads a file once, as the library
does, and tells what it finds: where it is, and what the library makes of it. The header is `xelcsv/XelCsvCheck.h`
([check_data.cpp](../examples/check_data.cpp)):

```cpp
for (const XelCsvFinding& finding : XelCsvCheck(env, file).collect()) {
  std::cout << finding.line << ':' << finding.column << ": " << finding.message << " [" << finding.code << "]\n";
  if (finding.severity == XelCsvSeverity::Error) mayRun = false;
}
```

```cmake
find_package(xelcsv REQUIRED COMPONENTS static check)
target_link_libraries(app PRIVATE xelcsv::check)
```

An *error* makes a call throw, or makes data unreachable or wrong without a word. A *warning* reads, but probably not as it
was meant. A *note* reads as it was meant and is worth knowing. A finding may be less severe than its kind where it does
less harm.

Each kind below has a smallest file with this finding and no other, and one beside it without any; both are tests, and so
is what is said of the library. This page is made of the catalogue, which a program gets with `XelGetCheckCodes()`.

)";

// The bytes as text: what cannot be seen is written as in C++, and a long run of one byte as its number.
std::string showBytes(const std::string& bytes) {
  constexpr std::size_t LongRun = 100;
  std::ostringstream shown;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    const std::size_t end = std::min(bytes.find_first_not_of(bytes[at], at), bytes.size());
    if (end - at > LongRun) {
      shown << "(" << end - at << " times " << bytes[at] << ")";
      at = end;
      continue;
    }
    if (byte == '\n' || (byte >= ' ' && byte < 0x7F)) {
      shown << bytes[at];
    } else if (byte == '\t' || byte == '\r' || byte == '\0') {
      shown << (byte == '\t' ? "\\t" : byte == '\r' ? "\\r" : "\\0");
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", byte);
      shown << hex;
    }
    ++at;
  }
  return shown.str();
}

std::string showReading(const XelCsvCheckParameters& parameters) {
  std::string shown = "one table";
  if (parameters.isMultiTable)
    shown = parameters.allowTableSplitting ? "several tables, with table splitting" : "several tables";
  return parameters.separators == "," ? shown : shown + ", separated by " + parameters.separators;
}

std::string showExample(const char* title, const XelCsvCheckExample& example) {
  const bool isEnded = !example.bytes.empty() && example.bytes.back() == '\n';
  return std::string(title) + " (" + showReading(example.parameters) + (isEnded ? "" : "; no line feed at the end") +
         "):\n\n```text\n" + showBytes(example.bytes) + (isEnded ? "" : "\n") + "```\n\n";
}

std::string makeGuide() {
  std::string guide = Introduction;
  guide += "| code | at worst | what |\n|---|---|---|\n";
  for (const XelCsvCheckCode& code : XelGetCheckCodes()) {
    guide += std::string("| [") + code.code + "](#" + code.code + ") | " + XelGetSeverityName(code.severity) + " | " +
             code.title + " |\n";
  }
  for (const XelCsvCheckCode& code : XelGetCheckCodes()) {
    guide += std::string("\n## ") + code.code + "\n\n" + code.explanation + "\n\n*What the library does:* " +
             code.effect + "\n\n*What to do:* " + code.remedy + "\n\n" + showExample("With it", code.example) +
             showExample("Without", code.counterExample);
    guide.pop_back();
  }
  return guide;
}

std::string readGuide() {
  std::ifstream file(GuideName, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

TEST(FindingsGuide, SaysWhatTheCatalogueSays) {
  const std::string guide = makeGuide();
  if (std::getenv("XELCSV_WRITE_DOCS") != nullptr) {  // NOLINT(concurrency-mt-unsafe): tests have one thread
    std::ofstream(GuideName, std::ios::binary) << guide;
  }
  EXPECT_EQ(readGuide(), guide) << "XELCSV_WRITE_DOCS=1 writes " << GuideName << " anew";
}

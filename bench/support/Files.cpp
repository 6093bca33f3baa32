#include "bench/support/Files.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

namespace bench {

namespace {

std::string& getFolder() {
  static std::string folder;
  return folder;
}

literal::Settings settingsOf(const Input& input, const std::string& fileName) {
  return {fileName, input.isMultiTable, input.separators, input.decimal, '"', '#'};
}

void addTable(Facts& facts, const literal::Settings& settings, const literal::Table* table) {
  const literal::Zone zone = readHeadingZone(settings, table);
  literal::Walk walk(settings, zone);
  while (walk.next()) {
    const literal::Line& line = walk.getLine();
    ++facts.lines;
    facts.fields += line.numberOfFields;
    facts.sum += static_cast<unsigned char>(*line.fields[static_cast<std::size_t>(line.numberOfFields - 1)]);
  }
}

long countLineEnds(const std::string& fileName) {
  std::ifstream stream(fileName, std::ios::binary);
  return std::count(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>(), '\n');
}

// The literal reader says what is in a file.
Facts findFacts(const Input& input, const std::string& fileName) {
  Facts facts;
  facts.bytes = static_cast<long>(std::filesystem::file_size(fileName));
  facts.lineEnds = countLineEnds(fileName);
  const literal::Settings settings = settingsOf(input, fileName);
  if (input.isMultiTable) {
    for (const literal::Table& table : literal::scanTables(settings)) addTable(facts, settings, &table);
  } else {
    addTable(facts, settings, nullptr);
  }
  return facts;
}

std::string nameOf(const std::string& folder, const std::string& name) { return folder + "/" + name + ".csv"; }

std::map<std::string, File> readFacts(const std::string& folder) {
  std::map<std::string, File> files;
  std::ifstream stream(folder + "/facts.txt");
  std::string name;
  Facts facts;
  while (stream >> name >> facts.bytes >> facts.lineEnds >> facts.lines >> facts.fields >> facts.sum) {
    files[name] = {&findInput(name), nameOf(folder, name), facts};
  }
  return files;
}

}  // namespace

void setFolder(const std::string& folder) { getFolder() = folder; }

const File& getFile(const std::string& name) {
  static const std::map<std::string, File> Files = readFacts(getFolder());
  const auto found = Files.find(name);
  if (found == Files.end()) {
    std::cerr << "there is no generated file " << nameOf(getFolder(), name) << "; xelcsv-bench-data makes it\n";
    std::exit(1);
  }
  return found->second;
}

literal::Settings settingsOf(const File& file) { return settingsOf(*file.input, file.name); }

void generateFiles(const std::string& folder, long divisor) {
  std::filesystem::create_directories(folder);
  const std::map<std::string, File> present = readFacts(folder);
  for (const Input& input : getInputs()) {
    if (present.count(input.name) != 0) continue;
    const std::string fileName = nameOf(folder, input.name);
    writeInput(input, fileName, divisor);
    const Facts facts = findFacts(input, fileName);
    std::ofstream(folder + "/facts.txt", std::ios::app)
        << input.name << ' ' << facts.bytes << ' ' << facts.lineEnds << ' ' << facts.lines << ' ' << facts.fields << ' '
        << facts.sum << '\n';
    std::cout << fileName << ": " << facts.bytes << " bytes, " << facts.lines << " data lines\n";
  }
}

}  // namespace bench

// Every operation of the public headers, in all its ways to answer and to throw, as a table of scenarios.
//
// The rows stand in the order of the headers: EnvScenarios.cpp, ReaderScenarios.cpp, TableScenarios.cpp,
// LineScenarios.cpp, IteratorScenarios.cpp.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/World.h"
#include "tests/support/Outcome.h"

struct Scenario {
  const char* name;
  Shape shape;

  // What is done; it gives back what it took, also on its way out of an exception, and may be done again.
  std::function<std::string(const World&)> run;

  // What comes of it, or "Class | message" when it throws; {file} stands for the file's name.
  std::string answer;

  // The same where tables are cached and answer otherwise; empty where they do not.
  std::string cachedAnswer = {};

  // What it reads for the first time stays with the reader.
  bool isKept = false;

  // It catches exceptions and goes on, so what comes of it tells nothing of a call that failed.
  bool isCatching = false;

  std::string getAnswer(const World& at) const;
};

std::vector<Scenario> getEnvScenarios();
std::vector<Scenario> getReaderScenarios();
std::vector<Scenario> getTableScenarios();
std::vector<Scenario> getLineScenarios();
std::vector<Scenario> getIteratorScenarios();

// All rows of the parts, in their order.
std::vector<Scenario> joined(std::vector<std::vector<Scenario>> parts);

// All of them.
const std::vector<Scenario>& getScenarios();

// What comes of a scenario. Everything but the exceptions of the reader comes through.
std::string runScenario(const Scenario& scenario, const World& at);

// Ends a handle at the end of the scope.
template <class Handle>
class Ending {
 public:
  explicit Ending(Handle&& made) : handle(std::move(made)) {}
  ~Ending() { handle.end(); }
  Ending(const Ending&) = delete;
  Ending& operator=(const Ending&) = delete;
  Handle& operator*() { return handle; }
  Handle* operator->() { return &handle; }

 private:
  Handle handle;
};

// Shares what is behind a handle and gives its last line back at the end of the scope.
template <class Handle>
class Sharing {
 public:
  explicit Sharing(const Handle& shared) : handle(shared) {}
  ~Sharing() { handle = Handle(); }
  Sharing(const Sharing&) = delete;
  Sharing& operator=(const Sharing&) = delete;
  Handle& operator*() { return handle; }
  Handle* operator->() { return &handle; }

 private:
  Handle handle;
};

// A new reader as the world's own, and the reader that the world has.
inline Ending<XelCsvReader> ownReader(const World& at) { return Ending<XelCsvReader>(at.makeReader()); }
inline Sharing<XelCsvReader> sharedReader(const World& at) { return Sharing<XelCsvReader>(at.reader); }

// A table made by the world's reader, and the table that the world has.
inline Ending<XelCsvTableReader> namedTable(const World& at, const char* name) {
  return Ending<XelCsvTableReader>(at.reader.getTableByName(name));
}
inline Ending<XelCsvTableReader> ownTable(const World& at) { return Ending<XelCsvTableReader>(at.makeTable()); }
inline Sharing<XelCsvTableReader> sharedTable(const World& at) { return Sharing<XelCsvTableReader>(at.table); }

// Answers as text.
std::string text(double value);
std::string text(bool value);
std::string text(const char* value);

// Name and number of columns of a table, "no table" for an empty handle.
std::string text(const XelCsvTableReader& table);

// All lines of a table, by an iterator.
std::string walkThrough(const XelCsvTableReader& table);

// What an exception of each class makes of a message.
std::string thrown(const std::string& className, const std::string& message);
inline std::string lineNotFound(const std::string& message) { return thrown("XelLineNotFoundException", message); }
inline std::string fieldNotFound(const std::string& message) { return thrown("XelFieldNotFoundException", message); }
inline std::string wrongUse(const std::string& message) { return thrown("XelIncorrectCsvReaderUseException", message); }

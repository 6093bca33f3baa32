// Reads a transportation problem from a file of several tables, lets glpsol solve it and prints the plan.
//
//   transport FILE
//
// The solver's answer is a file of several tables too, and is read the same way.
#include <xelcsv/XelCsvComfort.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

struct Place {
  std::string name;
  long cases;  // capacity of a plant, demand of a market
};

struct Problem {
  std::vector<Place> plants;
  std::vector<Place> markets;
  std::vector<double> costs;  // thousand dollars per case, market by market of each plant
};

struct Plan {
  double cost;
  std::vector<double> cases;  // in the order of Problem::costs
};

// A new folder in the system's place for temporary files, removed at the end of the scope.
class TemporaryFolder {
 public:
  TemporaryFolder() : name((std::filesystem::temp_directory_path() / "transport-XXXXXX").string()) {
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a temporary folder");
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(name, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string getFile(const char* file) const { return name + '/' + file; }

 private:
  std::string name;
};

void printTables(XelCsvReader& reader) {
  std::printf("%s data, version %.1f, CSV format %.1f, %ld tables\n\n", reader.getRequiredBy(), reader.getFileVersion(),
              reader.getCsvFormat(), reader.getNumberOfTables());
  std::printf("%-12s%5s%6s  %s\n", "table", "lines", "keys", "columns");
  for (XelCsvReader::TableIterator it(reader); it.ok(); ++it) {
    XelCsvTableReader table = *it;
    std::printf("%-12s%5ld%6ld ", table.getNameOfTable(), table.getNumberOfItems(), table.getNumberOfKeys());
    // Field 0 of a heading line is the table's name and its mark.
    const XelCsvLine headings = table.getFirstLine();
    for (long k = 1; k < headings.getNumberOfFields(); ++k) std::printf(" %s", headings.getStringByPosition(k));
    std::printf("\n");
  }
}

std::vector<Place> readPlaces(XelCsvReader& reader, const char* tableName, const char* cases) {
  XelScoped<XelCsvTableReader> table(reader.getTableByName(tableName));
  std::vector<Place> places;
  for (XelCsvTableReader::LineIterator it(*table); it.ok(); ++it) {
    places.push_back({(*it).getStringByPosition(1), (*it).getIntByHeader(cases)});
  }
  return places;
}

Problem readProblem(XelCsvReader& reader) {
  Problem problem{readPlaces(reader, "plants", "capacity"), readPlaces(reader, "markets", "demand"), {}};
  XelScoped<XelCsvTableReader> parameters(reader.getTableByName("parameters"));
  const double freight = parameters->getLineByKey(1, "freight").getFloatByHeader("value");

  XelScoped<XelCsvTableReader> routes(reader.getTableByName("routes"));
  for (const Place& plant : problem.plants) {
    for (const Place& market : problem.markets) {
      const XelCsvLine route = routes->getLineByKey(2, plant.name.c_str(), market.name.c_str());
      const double rate = route.getFloatByHeaderOrDefaultValue("rate", freight);
      problem.costs.push_back(route.getFloatByHeader("distance") * rate / 1000);
    }
  }
  return problem;
}

// Writes the linear program as free MPS. Rows and columns go by number: names there must not hold blanks.
void writeModel(const Problem& problem, const std::string& fileName) {
  std::ofstream file(fileName);
  file.precision(15);
  file << "NAME transport\nROWS\n N cost\n";
  for (std::size_t i = 0; i < problem.plants.size(); ++i) file << " L plant" << i << '\n';
  for (std::size_t j = 0; j < problem.markets.size(); ++j) file << " G market" << j << '\n';
  file << "COLUMNS\n";
  for (std::size_t k = 0; k < problem.costs.size(); ++k) {
    const std::size_t i = k / problem.markets.size();
    const std::size_t j = k % problem.markets.size();
    file << " route" << k << " cost " << problem.costs[k] << '\n';
    file << " route" << k << " plant" << i << " 1 market" << j << " 1\n";
  }
  file << "RHS\n";
  for (std::size_t i = 0; i < problem.plants.size(); ++i) {
    file << " RHS plant" << i << ' ' << problem.plants[i].cases << '\n';
  }
  for (std::size_t j = 0; j < problem.markets.size(); ++j) {
    file << " RHS market" << j << ' ' << problem.markets[j].cases << '\n';
  }
  file << "ENDATA\n";
  file.close();
  if (!file) throw std::runtime_error("cannot write " + fileName);
}

void runSolver(const std::string& model, const std::string& solution) {
  if (std::system("command -v glpsol > /dev/null 2>&1") != 0) {
    throw std::runtime_error("the solver glpsol is not installed; Debian has it in the package glpk-utils");
  }
  const std::string command = "glpsol --freemps '" + model + "' --write '" + solution + "' > /dev/null";
  if (std::system(command.c_str()) != 0) throw std::runtime_error("glpsol failed: " + command);
}

// In the solver's file each line begins with its kind: a letter, which serves as the table's name. "s" is the summary,
// "j" a column of the model, and "c" a comment; blanks separate the fields.
Plan readPlan(XelEnv env, const std::string& solution) {
  XelScoped<XelCsvReader> reader(env, solution.c_str(), 1, 0, " ", '.', '"', 'c');
  XelScoped<XelCsvTableReader> summary(reader->getTableByName("s"));
  const XelCsvLine outcome = summary->getLineByNumber(0);
  for (const long position : {4L, 5L}) {
    if (std::strcmp(outcome.getStringByPosition(position), "f") != 0) throw std::runtime_error("there is no best plan");
  }
  Plan plan{outcome.getFloatByPosition(6), {}};
  XelScoped<XelCsvTableReader> columns(reader->getTableByName("j"));
  for (XelCsvTableReader::LineIterator it(*columns); it.ok(); ++it) plan.cases.push_back((*it).getFloatByPosition(3));
  return plan;
}

void printPlan(const Problem& problem, const Plan& plan) {
  std::printf("\n%-12s", "Cases");
  for (const Place& market : problem.markets) std::printf("%10s", market.name.c_str());
  std::printf("%10s%10s\n", "sum", "capacity");
  std::size_t k = 0;
  for (const Place& plant : problem.plants) {
    std::printf("%-12s", plant.name.c_str());
    double sum = 0;
    for (std::size_t j = 0; j < problem.markets.size(); ++j) {
      std::printf("%10.0f", plan.cases.at(k));
      sum += plan.cases.at(k++);
    }
    std::printf("%10.0f%10ld\n", sum, plant.cases);
  }
  std::printf("%-12s", "demand");
  for (const Place& market : problem.markets) std::printf("%10ld", market.cases);
  std::printf("\n\nCost: %.3f thousand dollars\n", plan.cost);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: transport FILE\n");
    return 2;
  }
  try {
    XelScoped<XelEnv> env;
    XelScoped<XelCsvReader> reader(*env, arguments[1], 1);
    printTables(*reader);
    const Problem problem = readProblem(*reader);

    const TemporaryFolder folder;
    writeModel(problem, folder.getFile("model.mps"));
    runSolver(folder.getFile("model.mps"), folder.getFile("solution.txt"));
    printPlan(problem, readPlan(*env, folder.getFile("solution.txt")));
    return 0;
  } catch (const XelQuietException& problem) {  // the data
    std::fprintf(stderr, "%s\n", problem.getMessage());
  } catch (const std::exception& problem) {  // the rest
    std::fprintf(stderr, "%s\n", problem.what());
  }
  return 1;
}

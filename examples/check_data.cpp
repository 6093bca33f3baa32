// Looks at a data file before a model gets it: what in it is not what it seems, and whether the model may run.
#include <xelcsv/XelCsvCheck.h>
#include <xelcsv/XelCsvComfort.h>

#include <iostream>

int main() {
  const char* const file = "examples/data/harvest.csv";
  bool mayRun = true;
  try {
    XelScoped<XelEnv> env;
    for (const XelCsvFinding& finding : XelCsvCheck(env, file).collect()) {
      std::cout << finding.line << ':' << finding.column << ": " << finding.message << " [" << finding.code << "]\n";
      if (finding.severity == XelCsvSeverity::Error) mayRun = false;
    }
  } catch (const XelQuietException& problem) {
    std::cerr << problem.getMessage() << '\n';
    return 1;
  }
  std::cout << (mayRun ? "The model may run.\n" : "Mend the file first.\n");
}

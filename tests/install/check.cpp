// Uses the installed xelcsv::check as a stranger would.
#include <xelcsv/XelCsvCheck.h>

#include <cstdio>
#include <fstream>

int main(int count, char** arguments) {
  if (count != 2) return 2;
  std::ofstream(arguments[1]) << "apple\npear\napple\n";
  XelEnv env;
  const std::vector<XelCsvFinding> findings = XelCsvCheck(env, arguments[1]).collect();
  env.end();
  const bool isRight = findings.size() == 1 && findings[0].line == 3 && XelFindCheckCode(findings[0].code) != nullptr;
  std::printf("findings: %s\n", isRight ? "all right" : "not as they should be");
  return isRight ? 0 : 1;
}

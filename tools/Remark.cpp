#include "tools/Remark.h"

#include <fstream>

#include "tools/text/Escape.h"

namespace xeltools {

void remarkOnTables(const Session& session, const DataFile& file) {
  constexpr int MostLines = 200;
  if (file.isMultiTable()) return;
  std::ifstream stream(file.getName(), std::ios::binary);
  std::string line;
  for (int count = 0; count < MostLines && std::getline(stream, line); ++count) {
    const std::string field = line.substr(0, line.find_first_of(file.getParameters().separators));
    const std::size_t bar = field.find('|');
    const bool isComment = !line.empty() && line.front() == file.getParameters().comment;
    const bool namesTable =
        bar != std::string::npos && bar > 0 &&
        (field.find("NAMES", bar) != std::string::npos || field.find("KEYS", bar) != std::string::npos);
    if (isComment || !namesTable) continue;
    session.say(makePrintable(file.getName()) + ": line " + std::to_string(count + 1) + " begins with " +
                makePrintable(field) + " as in a file of several tables; --multi reads it so");
    return;
  }
}

}  // namespace xeltools

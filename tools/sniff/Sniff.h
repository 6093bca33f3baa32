// Guesses how a data file is written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/Settings.h"

namespace xeltools {

// A setting that is proposed, with what speaks for it.
struct Proposal {
  std::string name;    // as the option is called, without dashes
  std::string value;   // as the option takes it
  std::string reason;  // what was seen, in a few words
};

struct Proposals {
  ReaderParameters parameters;
  std::vector<Proposal> all;
  std::vector<std::string> remarks;  // what else was seen and may matter
};

// Proposes how a text is to be read: the beginning of a file, or all of it. Whether an index can be used is not looked at.
Proposals sniff(std::string_view text, bool isWhole);

}  // namespace xeltools

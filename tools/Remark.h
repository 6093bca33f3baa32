// What a command remarks on a file beside its work.
#pragma once

#include "tools/DataFile.h"
#include "tools/Session.h"

namespace xeltools {

// Says so when a file is read as one table but has heading lines that name tables.
void remarkOnTables(const Session& session, const DataFile& file);

}  // namespace xeltools

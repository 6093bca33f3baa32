// Makes the reader of a table, and says what went wrong.
#pragma once

#include "csv/table/XelCsvTableReaderI.h"
#include "env/XelEnvOwned.h"

// A new reader of a table, cached or not as the file reader is, and of nothing else. A file that cannot be opened and a
// duplicated key are left for the creator to ask for.
XelEnvOwner<XelCsvTableReaderI> XelMakeTableReader(XelCsvReaderI* reader, const char* name,
                                                   const OffsetAndLineNumber* start);

// A new reader of no table in an environment, to copy another into.
XelEnvOwner<XelCsvTableReaderI> XelMakeEmptyTableReader(XelEnv env, bool isCached);

// The key that two lines of a table share, null when there is none or the table is not cached.
const char* XelGetDuplicatedKey(const XelCsvTableReaderI& table) noexcept;

// Throws XelFileNotFoundException when errno, as the construction or copy just before left it, or openError, which that
// construction remembers, says that a file could not be opened.
void XelCheckOpened(int openError, const char* fileName);

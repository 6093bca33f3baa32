#include "csv/table/XelCsvTableFactory.h"

#include <cerrno>

#include "csv/errors/XelCsvOpen.h"
#include "csv/table/XelCachedCsvTableReaderI.h"
#include "csv/table/XelNonCachedCsvTableReaderI.h"

XelEnvOwner<XelCsvTableReaderI> XelMakeTableReader(XelCsvReaderI* reader, const char* name,
                                                   const OffsetAndLineNumber* start) {
  if (reader->isCached()) return XelNew<XelCachedCsvTableReaderI>(reader->getEnv(), reader, name, start);
  return XelNew<XelNonCachedCsvTableReaderI>(reader->getEnv(), reader, name, start);
}

XelEnvOwner<XelCsvTableReaderI> XelMakeEmptyTableReader(XelEnv env, bool isCached) {
  if (isCached) return XelNew<XelCachedCsvTableReaderI>(env, env);
  return XelNew<XelNonCachedCsvTableReaderI>(env, env);
}

const char* XelGetDuplicatedKey(const XelCsvTableReaderI& table) noexcept {
  const auto* cached = dynamic_cast<const XelCachedCsvTableReaderI*>(&table);
  return cached == nullptr ? nullptr : cached->getDuplicatedKey();
}

void XelCheckOpened(int openError, const char* fileName) {
  const int error = errno;
  if (XelHasOpenErrorText(error)) XelThrowOpenError(error, fileName);
  if (openError != 0) XelThrowOpenError(openError, fileName);
}

// Blanks around the names of tables and columns.
#pragma once

#include "check/XelCsvCheckContext.h"

// Whether a name, as the library trims it out of a field, has spaces around it in the field, or begins or ends with a
// blank that is not trimmed: a tab, or a no-break space in UTF-8.
bool XelHasBlankAround(const XelCsvSpan& field, const XelCsvSpan& name);

// Reports it: what is the thing that is called so, lookup the operation that finds it.
void XelReportBlankAround(const XelCsvCheckContext& context, const std::string& table, const XelCsvCheckedLine& line,
                          const XelCsvSpan& name, const char* what, const char* lookup);

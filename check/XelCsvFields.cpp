#include "check/XelCsvFields.h"

XelCsvFields::XelCsvFields(XelEnv env, const XelCsvFormat& format)
    : settings(format),
      formatter(XelGetPaddedFormatter(format)),
      text(env, XelLineSize + XelTextPadding),
      starts(env, XelLineSize + XelFieldsPadding) {}

void XelCsvFields::format(const XelCsvSpan& raw) noexcept {
  const XelFormattedLine formatted = formatter(raw.begin, raw.end, text.get(), settings, starts.get());
  count = formatted.fields;
  length = formatted.length;
}

// Walks as formatting does: what separates there separates here.
std::vector<XelCsvSpan> XelSplitRaw(const XelCsvSpan& raw, const XelCsvFormat& format) {
  std::vector<XelCsvSpan> fields;
  const char* begin = raw.begin;
  bool isQuoted = false;
  bool isAfterSeparator = false;
  const char* at = raw.begin;
  for (; at != raw.end && format.getClass(*at) != XelByteClass::LineEnd; ++at) {
    const bool isSeparator = format.isSeparator(*at);
    if (isSeparator && !isQuoted) {
      const bool vanishes = format.getClass(*at) == XelByteClass::SpaceSeparator && isAfterSeparator;
      if (!vanishes) fields.push_back({begin, at});
      begin = at + 1;
    } else if (format.getClass(*at) == XelByteClass::Quote) {
      isQuoted = !isQuoted;
    }
    isAfterSeparator = isSeparator;
  }
  fields.push_back({begin, at});
  return fields;
}

XelCsvSpan XelRawField(const XelCsvSpan& raw, const XelCsvFormat& format, long position) {
  const std::vector<XelCsvSpan> fields = XelSplitRaw(raw, format);
  const auto index = static_cast<std::size_t>(position);
  if (index < fields.size()) return fields[index];
  return {fields.back().end, fields.back().end};
}

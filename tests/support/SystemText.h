// The system's text for an errno as messages carry it: in the language of the "C" locale, whatever the process's is.
#pragma once

#include <clocale>
#include <cstring>
#include <string>

inline std::string getSystemText(int error) {
  const locale_t plain = newlocale(LC_ALL_MASK, "C", locale_t());
  std::string text = strerror_l(error, plain);
  freelocale(plain);
  return text;
}

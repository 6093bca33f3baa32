// Numbers with a decimal point, whatever locale the tests run under.
#pragma once

#include <clocale>
#include <string>

// Until the end of the scope the process reads and writes numbers as in the locale "C". For tests whose expectations are
// numbers with fractions; what another locale makes of them is tested in line/Locale.test.cpp.
class DecimalPoint {
 public:
  DecimalPoint() : former(std::setlocale(LC_NUMERIC, nullptr)) { std::setlocale(LC_NUMERIC, "C"); }
  ~DecimalPoint() { std::setlocale(LC_NUMERIC, former.c_str()); }
  DecimalPoint(const DecimalPoint&) = delete;
  DecimalPoint& operator=(const DecimalPoint&) = delete;

 private:
  std::string former;
};

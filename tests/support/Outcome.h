// What an operation gives as one text: its answer, or the class and the message of its exception.
#pragma once

#include <string>
#include <typeinfo>
#include <vector>

#include "xelcsv/XelCsvReader.h"

// "3: [a][b]" for line number 3 with two fields, "no line" for an empty handle.
inline std::string textOf(const XelCsvLine& line) {
  if (line.isEmpty()) return "no line";
  std::string text = std::to_string(line.getLineNumber()) + ": ";
  for (long field = 0; field < line.getNumberOfFields(); ++field) {
    text += "[" + std::string(line.getFields()[field]) + "]";
  }
  return text;
}

inline std::string textOf(long number) { return std::to_string(number); }

inline std::string textOf(const std::string& text) { return text; }

// The name of the class of an exception, without the class that it is nested in.
inline std::string classOf(const XelCsvReader::XelCsvReaderException& exception) {
#define XELCSV_NAME_OF(Name) \
  if (typeid(exception) == typeid(XelCsvReader::Name)) return #Name
  XELCSV_NAME_OF(XelCsvReaderException);
  XELCSV_NAME_OF(XelFileNotFoundException);
  XELCSV_NAME_OF(XelFieldNotFoundException);
  XELCSV_NAME_OF(XelColumnHeaderNotFoundException);
  XELCSV_NAME_OF(XelCsvReaderParameterException);
  XELCSV_NAME_OF(XelDuplicatedTableException);
  XELCSV_NAME_OF(XelTableNotFoundException);
  XELCSV_NAME_OF(XelIncorrectCsvReaderUseException);
  XELCSV_NAME_OF(XelLineNotFoundException);
  XELCSV_NAME_OF(XelDuplicatedLineException);
  XELCSV_NAME_OF(XelOverflowException);
  XELCSV_NAME_OF(XelNumberOfFieldsException);
#undef XELCSV_NAME_OF
  return typeid(exception).name();
}

// The text of what the operation answers, or "Class | message" when it throws.
template <class Operation>
std::string outcomeOf(Operation operation) {
  try {
    return textOf(operation());
  } catch (const XelCsvReader::XelCsvReaderException& exception) {
    return classOf(exception) + " | " + exception.getMessage();
  }
}

// All lines from the iterator's current one on.
template <class Iterator>
std::vector<std::string> walk(Iterator& it) {
  std::vector<std::string> lines;
  for (; it.ok(); ++it) lines.push_back(textOf(*it));
  return lines;
}

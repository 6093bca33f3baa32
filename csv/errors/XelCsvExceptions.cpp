#include "xelcsv/XelCsvReader.h"

XelCsvReader::XelCsvReaderException::XelCsvReaderException(const char* message, long newCode) noexcept
    : XelQuietException(message, newCode) {}

XelCsvReader::XelCsvReaderException::~XelCsvReaderException() = default;

// Constructor and destructor stand here, out of line, so that each class has one vtable and one type in the program.
#define XELCSV_DEFINE_EXCEPTION(Name)                                                                               \
  XelCsvReader::Name::Name(const char* message, long newCode) noexcept : XelCsvReaderException(message, newCode) {} \
  XelCsvReader::Name::~Name() = default

XELCSV_DEFINE_EXCEPTION(XelFileNotFoundException);
XELCSV_DEFINE_EXCEPTION(XelFieldNotFoundException);
XELCSV_DEFINE_EXCEPTION(XelColumnHeaderNotFoundException);
XELCSV_DEFINE_EXCEPTION(XelCsvReaderParameterException);
XELCSV_DEFINE_EXCEPTION(XelDuplicatedTableException);
XELCSV_DEFINE_EXCEPTION(XelTableNotFoundException);
XELCSV_DEFINE_EXCEPTION(XelIncorrectCsvReaderUseException);
XELCSV_DEFINE_EXCEPTION(XelLineNotFoundException);
XELCSV_DEFINE_EXCEPTION(XelDuplicatedLineException);
XELCSV_DEFINE_EXCEPTION(XelOverflowException);
XELCSV_DEFINE_EXCEPTION(XelNumberOfFieldsException);

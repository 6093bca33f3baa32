#include <ostream>

#include "xelcsv/XelEnv.h"

XelExceptionMessage::XelExceptionMessage(const char* message, long newCode) noexcept : code(newCode) {
  if (message == nullptr) return;
  for (long index = 0; index < XelMessageSize - 1 && message[index] != '\0'; ++index) text[index] = message[index];
}

XelExceptionMessage::~XelExceptionMessage() = default;

const char* XelExceptionMessage::getMessage() const { return text; }

void XelExceptionMessage::print(std::ostream& stream) const { stream << text; }

void XelExceptionMessage::end() { text[0] = '\0'; }

XelQuietException::XelQuietException(const char* message, long newCode) noexcept
    : XelExceptionMessage(message, newCode) {}

XelQuietException::~XelQuietException() = default;

const char* XelQuietException::what() const noexcept { return getMessage(); }

XelWrongUsage::XelWrongUsage(const char* message, long newCode) noexcept : XelExceptionMessage(message, newCode) {}

XelWrongUsage::~XelWrongUsage() = default;

const char* XelWrongUsage::what() const noexcept { return getMessage(); }

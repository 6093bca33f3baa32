// The environment: where all memory of the library comes from, infinity, and the base exceptions.
#pragma once

#include <cstddef>
#include <exception>
#include <iosfwd>

#include "xelcsv/XelCsvVersion.h"

static_assert(sizeof(long) == 8, "offsets, line numbers and integers of the library are longs of 64 bits");

class XelEnvI;

// Bytes of an exception's message, its terminator included. A longer message is cut to fit.
constexpr long XelMessageSize = 500;

// What a user implements to supply the memory of an environment. It must outlive the environment.
class XELCSV_API XelAllocator {
 public:
  virtual ~XelAllocator();

  // A block of size bytes, size > 0, aligned for any object; null, or std::bad_alloc, when memory is exhausted.
  virtual void* allocate(long size) = 0;

  // Takes back a block that allocate() returned, with the size that it was asked with. Throws nothing.
  virtual void free(void* pointer, long size) = 0;
};

// An environment: every object, buffer and string of the library lives in one.
//
// A handle of one pointer, copied freely; copies share the environment. It must outlive every reader, table, line and
// iterator made in it. One thread at a time; environments of different threads share nothing.
class XELCSV_API XelEnv {
 public:
  // A new environment with a memory manager of its own. Throws std::bad_alloc.
  XelEnv();

  // A new environment whose every block comes from allocator, which stays the caller's and must outlive it. A pointer
  // that is null gives an environment with a memory manager of its own; the literal nullptr makes an empty handle.
  // Throws std::bad_alloc.
  explicit XelEnv(XelAllocator* allocator);

  // An empty handle: no environment.
  XelEnv(std::nullptr_t);

  // Ends the environment and leaves this handle empty; twice is harmless. An environment with its own manager gives
  // every block back to the system, those that a caller forgot included; one with a user's allocator gives back what it
  // holds itself. Other handles of the same environment must not be used any more.
  void end();

  // A block of size bytes, aligned for any object; null for size 0, never null otherwise. Throws std::bad_alloc when
  // memory is exhausted or size is negative. The caller gives it back with free().
  void* allocate(long size) const;

  // Takes back a block of allocate() with the size that it was asked with. Null is ignored. Leaves errno alone.
  void free(void* pointer, long size) const;

  // Own manager: bytes, rounded up to size classes, handed out and not yet returned. 0 with a user's allocator.
  long getBytesInUse() const;

  // Own manager: bytes held from the system. 0 with a user's allocator.
  long getBytesAllocated() const;

  // Whether the handle holds no environment.
  bool isEmpty() const;

  // The environment behind the handle, null for an empty one.
  XelEnvI* getImpl() const { return impl; }

  // A handle of an existing environment.
  explicit XelEnv(XelEnvI* environment);

 private:
  XelEnvI* impl;
};

// The value of infinity: IEEE positive infinity.
XELCSV_API double XelGetInfinity();

// Common part of the two base exceptions: a message, kept in the exception itself, and a code.
class XELCSV_API XelExceptionMessage {
 public:
  virtual ~XelExceptionMessage();

  // The message, zero-terminated. It lives as long as the exception; empty after end().
  virtual const char* getMessage() const;

  // Writes the message to the stream, without an end of line.
  virtual void print(std::ostream& stream) const;

  // Leaves the message empty; twice is harmless.
  virtual void end();

  // The code that the thrower gave: 1 from the reader, 0 from XelWrongUsage.
  long getCode() const { return code; }

 protected:
  // Copies the message, cut to XelMessageSize - 1 bytes; null is the empty message.
  XelExceptionMessage(const char* message, long code) noexcept;
  XelExceptionMessage(const XelExceptionMessage&) noexcept = default;
  XelExceptionMessage& operator=(const XelExceptionMessage&) noexcept = default;

 private:
  long code;
  char text[XelMessageSize] = {};
};

// Base of all exceptions that report a misuse of a reader or a defect of a file. Copying one never throws.
class XELCSV_API XelQuietException : public XelExceptionMessage, public std::exception {
 public:
  // Copies the message, cut to XelMessageSize - 1 bytes; null is the empty message. getCode() answers the code.
  XelQuietException(const char* message, long code) noexcept;
  ~XelQuietException() override;
  XelQuietException(const XelQuietException&) noexcept = default;
  XelQuietException& operator=(const XelQuietException&) noexcept = default;

  // The same as getMessage().
  const char* what() const noexcept override;
};

// Misuse of a service of the environment inside the library, such as a hash function that returns a bad index; no
// operation of the public headers gives cause for it. It is no XelQuietException.
class XELCSV_API XelWrongUsage : public XelExceptionMessage, public std::exception {
 public:
  // Copies the message, cut to XelMessageSize - 1 bytes; null is the empty message. getCode() answers the code.
  XelWrongUsage(const char* message, long code) noexcept;
  ~XelWrongUsage() override;
  XelWrongUsage(const XelWrongUsage&) noexcept = default;
  XelWrongUsage& operator=(const XelWrongUsage&) noexcept = default;

  // The same as getMessage().
  const char* what() const noexcept override;
};

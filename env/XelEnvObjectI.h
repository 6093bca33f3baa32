// Objects that live in an environment, and the base of those that remember it.
#pragma once

#include <cstddef>

#include "xelcsv/XelEnv.h"

// Gives a class the operators to live in an environment: new (env) Class(...) and delete.
//
// The environment and the size stand in a small header before the object, because operator delete runs when the object
// is dead and may not be asked any more. It has no members and no virtual operation.
class XelEnvResident {
 public:
  static void* operator new(std::size_t size, const XelEnv& env);
  static void operator delete(void* object, std::size_t size);

  // Called when the constructor throws.
  static void operator delete(void* object, const XelEnv& env);

 protected:
  XelEnvResident() = default;
  ~XelEnvResident() = default;
  XelEnvResident(const XelEnvResident&) = default;
  XelEnvResident& operator=(const XelEnvResident&) = default;
};

// Base of environment-owned objects that keep their environment. As a member or a local variable of another object such
// an object lives where that one does.
class XelEnvObjectI : public XelEnvResident {
 public:
  virtual ~XelEnvObjectI();
  XelEnvObjectI(const XelEnvObjectI&) = delete;
  XelEnvObjectI& operator=(const XelEnvObjectI&) = delete;

  XelEnv getEnv() const noexcept { return env; }

 protected:
  explicit XelEnvObjectI(XelEnv environment) noexcept : env(environment) {}

  XelEnv env;
};

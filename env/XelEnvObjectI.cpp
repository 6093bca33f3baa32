#include "env/XelEnvObjectI.h"

#include <new>

#include "env/XelEnvI.h"

namespace {

struct alignas(std::max_align_t) Header {
  XelEnvI* env;
  long size;
};

}  // namespace

void* XelEnvResident::operator new(std::size_t size, const XelEnv& env) {
  const long total = static_cast<long>(sizeof(Header) + size);
  auto* header = new (env.allocate(total)) Header{env.getImpl(), total};
  return header + 1;
}

void XelEnvResident::operator delete(void* object, std::size_t) {
  if (object == nullptr) return;  // a compiler may call this for delete of a null pointer
  Header* header = static_cast<Header*>(object) - 1;
  header->env->free(header, header->size);
}

void XelEnvResident::operator delete(void* object, const XelEnv&) { operator delete (object, std::size_t{0}); }

XelEnvObjectI::~XelEnvObjectI() = default;

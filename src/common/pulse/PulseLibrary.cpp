#include "common/pulse/PulseLibrary.h"

#include <dlfcn.h>

namespace voxtrel {

const PulseLibrary* PulseLibrary::get() {
  static const PulseLibrary kLibrary;
  return kLibrary.isComplete_ ? &kLibrary : nullptr;
}

PulseLibrary::PulseLibrary() : library_(::dlopen("libpulse.so.0", RTLD_NOW | RTLD_LOCAL)) {}

template <class Function>
Function PulseLibrary::find(const char* name) {
  void* const found = library_ == nullptr ? nullptr : ::dlsym(library_, name);
  if (found == nullptr) isComplete_ = false;
  return reinterpret_cast<Function>(found);
}

}  // namespace voxtrel

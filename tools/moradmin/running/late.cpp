#include "tools/moradmin/running/late.h"

#include "tools/moradmin/failure.h"

#include <dlfcn.h>
#include <string>

namespace mor::tool {

void* lateFunction(const char* module, const char* name) {
    // The program is linked with the folder, beside its own, in which modules are looked for.
    void* loaded = ::dlopen(module, RTLD_NOW | RTLD_LOCAL);
    void* function = loaded == nullptr ? nullptr : ::dlsym(loaded, name);
    if (function != nullptr) return function;
    const char* why = ::dlerror();
    throw Failure(kUnwritable,
                  "a part of moradmin cannot be loaded; install the program as a whole (" +
                      std::string(why == nullptr ? module : why) + ")");
}

}  // namespace mor::tool

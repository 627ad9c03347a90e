#include "tools/moradmin/running/late.h"

#include "tools/moradmin/failure.h"

#include <dlfcn.h>
#include <filesystem>
#include <string>
#include <system_error>

namespace mor::tool {

void* lateFunction(const char* module, const char* name) {
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const std::filesystem::path file = program.parent_path() / MORADMIN_MODULES / module;
    void* loaded = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* function = loaded == nullptr ? nullptr : ::dlsym(loaded, name);
    if (function != nullptr) return function;
    const char* why = ::dlerror();
    throw Failure(kUnwritable,
                  "a part of moradmin cannot be loaded; install the program as a whole (" +
                      std::string(why == nullptr ? module : why) + ")");
}

}  // namespace mor::tool

/* Loads the module of the formats that need large libraries, once a process. */
#include <dlfcn.h>

#include <stdexcept>

#include "scan/formats/containers/containers.h"

namespace scan {
namespace {

/* The library's run path finds it beside the shared library, wherever both are installed. */
constexpr char kModule[] = "clutterclassifier_containers.so";

const Containers& load() {
    using Entry = const Containers* (*)();
    void* module = dlopen(kModule, RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        throw std::runtime_error(
            std::string("needs the libraries of HDF5 and NetCDF, which cannot be loaded: ") +
            dlerror());
    }
    const auto entry = reinterpret_cast<Entry>(dlsym(module, "clutterclassifier_containers"));
    if (!entry || entry()->layout != kContainersLayout) {
        throw std::runtime_error(std::string(kModule) + " is of another version");
    }
    return *entry();
}

}  // namespace

const Containers& containers() {
    static const Containers& loaded = load();
    return loaded;
}

}  // namespace scan

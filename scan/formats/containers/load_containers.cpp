/* Loads the module of the formats that need large libraries, once a process. */
#include <stdexcept>

#include "scan/formats/containers/containers.h"

#ifdef CLUTTERCLASSIFIER_CONTAINERS_FROM_PROGRAM
#include <dlfcn.h>

#include <filesystem>

#include "scan/own_file.h"
#endif

namespace scan {
namespace {

#ifdef CLUTTERCLASSIFIER_CONTAINERS_FROM_PROGRAM
constexpr char kModule[] = "clutterclassifier_containers.so";

/* Beside the Python extension, in a folder beside the shared library, or in that folder as the
 * program finds it; the first that exists. */
std::string modulePath() {
    namespace fs = std::filesystem;
    const fs::path own = ownFile().parent_path();
    for (const char* folder :
         {".", "clutterclassifier", CLUTTERCLASSIFIER_CONTAINERS_FROM_PROGRAM}) {
        std::error_code error;
        if (const fs::path path = own / folder / kModule; fs::exists(path, error)) {
            return path.lexically_normal().string();
        }
    }
    return kModule;
}

const Containers& load() {
    using Entry = const Containers* (*)();
    void* module = dlopen(modulePath().c_str(), RTLD_NOW | RTLD_LOCAL);
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
#else
const Containers& load() {
    throw std::runtime_error(
        "ODIM_H5 and CfRadial need the libraries of HDF5 and NetCDF, which this build leaves out: "
        "configure it with CLUTTERCLASSIFIER_CONTAINERS=ON");
}
#endif

}  // namespace

const Containers& containers() {
    static const Containers& loaded = load();
    return loaded;
}

}  // namespace scan

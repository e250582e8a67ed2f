/* Asks the loader, and for a program the system: a program's own name may be relative. */
#include "scan/own_file.h"

#if defined(__linux__)
#include <dlfcn.h>
#include <link.h>
#elif defined(__APPLE__)
#include <dlfcn.h>
#endif

namespace scan {

namespace fs = std::filesystem;

#if defined(__linux__)
fs::path ownFile() {
    std::error_code error;
    Dl_info found;
    void* map = nullptr;
    if (dladdr1(reinterpret_cast<void*>(&ownFile), &found, &map, RTLD_DL_LINKMAP) != 0 && map) {
        const std::string library = static_cast<const link_map*>(map)->l_name;
        if (!library.empty()) {
            return fs::canonical(library, error);
        }
    }
    return fs::read_symlink("/proc/self/exe", error);
}
#elif defined(__APPLE__)
fs::path ownFile() {
    std::error_code error;
    Dl_info found;
    const bool known = dladdr(reinterpret_cast<void*>(&ownFile), &found) != 0;
    return known ? fs::canonical(found.dli_fname, error) : fs::path();
}
#else
fs::path ownFile() {
    return {};
}
#endif

}  // namespace scan

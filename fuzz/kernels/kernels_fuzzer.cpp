/*
 * Calls the library's kernels as they are compiled here, one version each, and as the release build
 * has them, several versions for several instruction sets by another compiler: the same bits. The
 * module with the others is named by CLUTTERCLASSIFIER_KERNELS.
 */
#include <dlfcn.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fuzz/kernels/kernel_calls.h"
#include "fuzz/support/require.h"
#include "support/directories.h"

namespace {

using namespace clutter::fuzz;

constexpr std::size_t kRoom = 8192;

ClutterKernelCalls loadOthers() {
    const char* path = std::getenv("CLUTTERCLASSIFIER_KERNELS");
    require(path != nullptr, "CLUTTERCLASSIFIER_KERNELS names the module of the release build");
    void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    require(module != nullptr, "the module of the release build can be loaded");
    return reinterpret_cast<ClutterKernelCalls>(dlsym(module, "clutterKernelCalls"));
}

void requireSameResults(const std::vector<float>& here, const std::vector<float>& there,
                        std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
        if (!sameBits(here[i], there[i])) {
            std::fprintf(stderr, "result %zu of %zu: %a here, %a in the release build\n", i, n,
                         static_cast<double>(here[i]), static_cast<double>(there[i]));
            require(false, "every version of a kernel gives the same bits");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ClutterKernelCalls others = loadOthers();
    std::vector<float> here(kRoom, 0.0f), there(kRoom, 0.0f);
    const std::size_t n = clutterKernelCalls(data, size, kMembershipDirectory, here.data(), kRoom);
    require(n <= kRoom, "there is room for every result");
    require(others(data, size, kMembershipDirectory, there.data(), kRoom) == n, "as many results");
    requireSameResults(here, there, n);
    return 0;
}

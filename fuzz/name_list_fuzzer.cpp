/* Reads a list of file names and takes each apart. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "clutterclassifier/CDSP.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = clutter::fuzz::inputFile(data, size);
    CDSP dsp;
    char* names = nullptr;
    int count = 0;
    if (dsp.OnReadFNames(in.data(), &names, count) != 1) std::abort();
    for (int i = 0; i < count; ++i) {
        char* slot = names + 1024 * static_cast<std::ptrdiff_t>(i);
        if (strnlen(slot, 1024) == 1024) std::abort();
        char name[1024];
        dsp.getfnameonly(slot, name);
    }
    delete[] names;
    return 0;
}

/* Reads a DX file and converts it. */
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "clutterclassifier/CGermanRadar.h"
#include "clutterclassifier/Cpluvek.h"
#include "input_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string in = clutter::fuzz::inputFile(data, size);
    const auto radar = std::make_unique<CGermanRadar>();
    Cpluvek records[2];
    const int result = radar->readbinaryfile(in.data());
    radar->german2pluvek(records);
    if ((records[1].data != nullptr) != (result == 1)) std::abort();
    return 0;
}

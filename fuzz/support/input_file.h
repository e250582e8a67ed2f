/*
 * input_file.h - hands the bytes of a fuzzer to an interface that wants a path.
 */
#ifndef CLUTTER_FUZZ_SUPPORT_INPUT_FILE_H
#define CLUTTER_FUZZ_SUPPORT_INPUT_FILE_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "support/temp_dir.h"

namespace clutter::fuzz {

/* One directory a process, reused for every input. */
inline test::TempDir& scratch() {
    static test::TempDir dir;
    return dir;
}

inline std::string inputFile(const std::uint8_t* data, std::size_t size,
                             const std::string& name = "input") {
    const std::string path = scratch().file(name);
    test::writeFile(path, test::ByteVector(data, data + size));
    return path;
}

}  // namespace clutter::fuzz

#endif

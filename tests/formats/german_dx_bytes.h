/*
 * german_dx_bytes.h - DX files built byte by byte, with no help from the library.
 */
#ifndef CLUTTER_TESTS_FORMATS_GERMAN_DX_BYTES_H
#define CLUTTER_TESTS_FORMATS_GERMAN_DX_BYTES_H

#include <string>

#include "support/temp_dir.h"

namespace clutter::test {

inline std::string dxHeader(const std::string& message = "  5hello") {
    return "DX021655109080608BY54213VS 2CO0CD2CS0EP0.30.30.40.50.50.40.40.4MS" + message;
}

inline ByteVector dxStart(const std::string& header = dxHeader(), int fillers = 1) {
    ByteVector bytes(header.begin(), header.end());
    bytes.insert(bytes.end(), static_cast<std::size_t>(fillers), 3);
    return bytes;
}

inline void appendDxRay(ByteVector& bytes, int azimuth, int elevation, const ByteVector& pairs) {
    for (const int word : {0x2000, azimuth, elevation}) {
        bytes.push_back(static_cast<unsigned char>(word & 0xFF));
        bytes.push_back(static_cast<unsigned char>(word >> 8));
    }
    bytes.insert(bytes.end(), pairs.begin(), pairs.end());
}

/* A sound scan: every ray has values r % 200 + 1 and 7, then empty bins. */
inline ByteVector dxFile(int bins, int rays = 360) {
    ByteVector bytes = dxStart();
    for (int r = 0; r < rays; ++r) {
        const auto value = static_cast<unsigned char>(r % 200 + 1);
        appendDxRay(bytes, 10 * r, r % 7,
                    {value, 0, 7, 128, static_cast<unsigned char>(bins - 3), 16, 9, 1});
    }
    bytes.push_back(4);
    return bytes;
}

}  // namespace clutter::test

#endif

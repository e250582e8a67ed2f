/* The plain reader, product by product. */
#include "literal_polar.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace literal {
namespace {

constexpr double kPi = 3.141592653589793;

double clutterIndex(int n) {
    const double table[16] = {0,    1.5, 2.0,  2.5, 2.75, 3.0, 3.25, 3.5,
                              3.75, 4.0, 4.25, 4.5, 5.0,  5.5, 6.0,  7.0};
    return n < 0 ? 0.0 : table[n];
}

std::vector<double> decode(int product, int layout, const unsigned char* b, double nyq) {
    const double z = ((b[1] & 15) * 256 + b[0]) * 0.1 - 32;
    const double v = ((b[3] & 15) * 256 + b[2]) * nyq / 2048 - nyq;
    const double w = nyq / kPi * b[4] * kPi / 256;
    switch (product) {
        case 2111: {
            std::int16_t word;
            std::memcpy(&word, b, 2);
            return {(word & 0xFFF) * 0.1 - 32, clutterIndex(word / 4096 < 0 ? -1 : word / 4096)};
        }
        case 2122:
            return {z, clutterIndex(b[1] >> 4), v, (b[3] >> 4) / 16.0};
        case 2141:
            return {z, clutterIndex(b[1] >> 4), ((b[3] & 3) * 256 + b[2]) * 2 * kPi / 1024,
                    (b[3] >> 2) * 0.625 - 40};
        case 2212:
            return {z, b[5] * 0.2 - 40, v, w, ((b[7] & 15) * 256 + b[6]) * kPi / 2048 - kPi};
        case 2213:
            return {z,
                    b[5] * 0.0625 - 8,
                    (((b[9] & 15) * 256 + b[8]) * kPi / 2048 - kPi) * 57.29578,
                    (b[7] * 256 + b[6]) * 0.00002 - 0.2,
                    v,
                    b[4] * kPi / 256,
                    clutterIndex(b[1] >> 4),
                    static_cast<double>(b[3] >> 4)};
        case 2214:
            return {z,
                    b[5] * 0.2 - 40,
                    v,
                    w,
                    ((b[7] & 15) * 256 + b[6]) * kPi / 2048 - kPi,
                    clutterIndex(b[1] >> 4),
                    (b[3] >> 4) / 16.0};
        default:
            break;
    }
    if (layout == 252) {
        return {z,
                b[5] * 0.0625 - 8,
                (b[7] * kPi / 256 - kPi) * 180 / kPi,
                b[8] * 0.005 - 0.2,
                (((b[3] & 15) * 256 + b[2]) * kPi / 2048 - kPi) / kPi * nyq,
                (b[4] * kPi / 256) / kPi * nyq,
                -10.0};
    }
    const int phase = layout == 260 ? 7 : 8, rho = layout == 260 ? 9 : 7;
    const double v260 = nyq / kPi * (((b[3] & 15) * 256 + b[2]) * kPi / 2048 - kPi);
    return {z,
            b[5] * 0.0625 - 8,
            (((b[phase + 1] & 15) * 256 + b[phase]) * kPi / 2048 - kPi) * 57.29578,
            b[rho] * 0.005 - 0.2,
            layout == 260 ? v260 : v,
            w,
            -10.0};
}

template <class Word>
Word wordAt(std::FILE* file, long offset) {
    Word word = 0;
    std::fseek(file, offset, SEEK_SET);
    if (std::fread(&word, 1, sizeof word, file) == 0) {
        word = 0;
    }
    return word;
}

std::size_t fill(void* buffer, std::size_t n, std::FILE* file) {
    return std::fread(buffer, 1, n, file);
}

/* One value of a single-parameter product out of its buffer. */
float singleValue(int product, const unsigned char* buffer) {
    const auto as = [&](auto value) {
        std::memcpy(&value, buffer, sizeof value);
        return static_cast<float>(value);
    };
    switch (product) {
        case 1115:
        case 1120:
        case 1127:
        case 1128:
            return as(std::uint8_t{});
        case 1521:
            return as(std::uint16_t{});
        case 1400:
        case 1500:
        case 3333:
            return as(std::int16_t{});
        case 1117:
        case 1118:
        case 1119:
        case 1122:
            return as(std::int32_t{});
        case 1126:
        case 1711:
        case 1712:
            return as(std::uint32_t{});
        default:
            return as(float{});
    }
}

int singleBytes(int product) {
    switch (product) {
        case 1115:
        case 1120:
        case 1127:
        case 1128:
            return 1;
        case 1521:
        case 1400:
        case 1500:
        case 3333:
            return 2;
        default:
            return 4;
    }
}

bool isFloatProduct(int product) {
    const int others[] = {1115, 1120, 1127, 1128, 1521, 1400, 1500, 3333,
                          1117, 1118, 1119, 1122, 1126, 1711, 1712};
    for (const int other : others) {
        if (product == other) {
            return false;
        }
    }
    return true;
}

}  // namespace

int packedBytes(int product, int layout) {
    const bool known = layout == 252 || layout == 260 || layout == 280;
    switch (product) {
        case 2111:
            return 2;
        case 2122:
        case 2141:
            return 4;
        case 2211:
            return !known ? 0 : layout == 252 ? 9 : 10;
        case 2212:
            return known ? 8 : 0;
        case 2213:
            return 10;
        case 2214:
            return 8;
        default:
            return 0;
    }
}

std::vector<float> unpackGate(int product, int layout, const unsigned char* b, float nyquist) {
    std::vector<float> values;
    if (packedBytes(product, layout) == 0) {
        return values;
    }
    for (const double value : decode(product, layout, b, static_cast<double>(nyquist))) {
        values.push_back(static_cast<float>(value));
    }
    return values;
}

PolarScan readPolar(const std::string& path, int layout) {
    PolarScan scan;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return scan;
    }
    scan.product = wordAt<std::int16_t>(file, 168);
    scan.nrays = wordAt<std::int16_t>(file, 112);
    scan.ngates = wordAt<std::int16_t>(file, 114);
    const int rays = wordAt<std::int16_t>(file, 258), gates = wordAt<std::int16_t>(file, 260);
    if (rays >= 1 && gates >= 1) {
        scan.nrays = rays;
        scan.ngates = gates;
    }
    scan.nyquist = static_cast<float>(wordAt<std::uint16_t>(file, 130) * 0.01);
    const bool single = scan.product < 2000 || scan.product == 3333;
    const int counts[][2] = {{2111, 2}, {2122, 4}, {2141, 4}, {2211, 7},
                             {2212, 5}, {2213, 8}, {2214, 7}};
    std::size_t nfields = 2;
    for (const auto& count : counts) {
        if (count[0] == scan.product) {
            nfields = static_cast<std::size_t>(count[1]);
        }
    }
    const std::size_t cells =
        static_cast<std::size_t>(scan.nrays) * static_cast<std::size_t>(scan.ngates);
    scan.fields.assign(nfields, std::vector<float>(cells, 0.0f));
    scan.angles.assign(static_cast<std::size_t>(scan.nrays) + 1, 0.0f);
    scan.angles[0] = static_cast<float>(wordAt<std::int16_t>(file, 274) / 10.0 * kPi / 180);
    if (scan.product == 2111) {
        const double table[] = {0.5, 1.0, 1.5, 2.5};
        const int index = wordAt<std::int16_t>(file, 276);
        scan.angles[0] =
            static_cast<float>(table[index >= 0 && index <= 3 ? index : 0] * kPi / 180);
    }
    std::fseek(file, 320, SEEK_SET);
    std::uint16_t header[5] = {};
    unsigned char gate[10] = {};
    std::vector<unsigned char> ray(4 * static_cast<std::size_t>(scan.ngates), 0);
    for (int r = 0; r < scan.nrays; ++r) {
        fill(header, sizeof header, file);
        const int word = header[1] <= 36000 ? header[1] : static_cast<std::int16_t>(header[1]);
        double azimuth = word * 0.01 * kPi / 180;
        if (azimuth >= 2 * kPi) {
            azimuth -= 2 * kPi;
        }
        scan.angles[static_cast<std::size_t>(r) + 1] = static_cast<float>(azimuth);
        if (scan.product == 2122) {
            scan.angles[0] =
                static_cast<float>(static_cast<std::int16_t>(header[2]) * 0.1 * kPi / 180);
        }
        const std::size_t n = static_cast<std::size_t>(scan.ngates);
        const bool whole = scan.product == 2111 || (single && isFloatProduct(scan.product));
        const std::size_t size = static_cast<std::size_t>(
            single ? singleBytes(scan.product) : packedBytes(scan.product, layout));
        if (whole) {
            fill(ray.data(), n * size, file);
        }
        for (std::size_t g = 0; g < n && size > 0; ++g) {
            if (!whole) {
                fill(gate, size, file);
            }
            const unsigned char* b = whole ? ray.data() + g * size : gate;
            const std::size_t at = static_cast<std::size_t>(r) * n + g;
            if (single) {
                scan.fields[0][at] = singleValue(scan.product, b);
                continue;
            }
            const std::vector<float> values = unpackGate(scan.product, layout, b, scan.nyquist);
            for (std::size_t f = 0; f < nfields; ++f) {
                scan.fields[f][at] = values[f];
            }
        }
    }
    if (single) {
        std::vector<unsigned char> layer(cells, 0);
        fill(layer.data(), cells, file);
        for (std::size_t i = 0; i < cells; ++i) {
            scan.fields[1][i] = layer[i];
        }
    }
    for (float& value : scan.fields[0]) {
        if (value == 377.5f) {
            value = -32.0f;
        }
    }
    std::fclose(file);
    return scan;
}

}  // namespace literal

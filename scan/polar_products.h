/* polar_products.h - products of polar data files, and how many bytes their gates take. */
#ifndef SCAN_POLAR_PRODUCTS_H
#define SCAN_POLAR_PRODUCTS_H

#include <cstddef>

namespace scan {

/* One parameter, and behind all rays a layer of one byte a gate. */
struct SingleProduct {
    int code;
    std::size_t gateBytes;
};
constexpr std::size_t kLayerBytes = 1;
constexpr SingleProduct kSingleProducts[] = {
    {1113, 4}, {1114, 4}, {1115, 1}, {1116, 4}, {1117, 4}, {1118, 4}, {1119, 4},
    {1120, 1}, {1122, 4}, {1124, 4}, {1125, 4}, {1126, 4}, {1127, 1}, {1128, 1},
    {1400, 2}, {1500, 2}, {1511, 4}, {1512, 4}, {1513, 4}, {1514, 4}, {1515, 4},
    {1519, 4}, {1521, 2}, {1610, 4}, {1611, 4}, {1711, 4}, {1712, 4}, {1811, 4},
    {1812, 4}, {1813, 4}, {1814, 4}, {1815, 4}, {3333, 2},
};

/* Several parameters in the bits of each gate. */
struct PackedProduct {
    int code;
    int layout; /* 0: any */
    std::size_t gateBytes;
};
constexpr PackedProduct kPackedProducts[] = {
    {2111, 0, 2},    {2122, 0, 4}, {2141, 0, 4},  {2211, 252, 9}, {2211, 260, 10},
    {2211, 280, 10}, {2212, 0, 8}, {2213, 0, 10}, {2214, 0, 8},
};

}  // namespace scan

#endif

/* raster.h - fields of a sweep as images of a view. */
#ifndef CLI_PICTURE_RASTER_H
#define CLI_PICTURE_RASTER_H

#include <cstdint>
#include <vector>

#include "picture/geometry.h"
#include "picture/quantity.h"

namespace cli {

/* Rows from the top, 0xaarrggbb with the colours multiplied by alpha: Cairo's ARGB32. Transparent
 * where there is no gate or no value. */
struct Image {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;
};

/* One image per field. All have the same size, so each point is looked up once for all of them. */
std::vector<Image> rasterise(const std::vector<scan::Field>& fields,
                             const std::vector<Quantity>& quantities, const GateFinder& finder,
                             const View& view, int width, int height);

}  // namespace cli

#endif

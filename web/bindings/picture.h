/* picture.h - layers of a sweep as images of a part of the plane. */
#ifndef WEB_BINDINGS_PICTURE_H
#define WEB_BINDINGS_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "picture/geometry.h"
#include "picture/quantity.h"

namespace studio {

/* Ends of the view, km: east and north of the radar, or along the ground and above the radar. */
struct Ends {
    double left = 0, right = 0, bottom = 0, top = 0;
    friend bool operator==(const Ends&, const Ends&) = default;
};

/* The gate behind each pixel. It is kept until the sweep, the view or the size changes, so that
 * another classification only changes colours. */
class PlaceFinder {
  public:
    void look(const scan::Sweep& sweep, double beamWidthDeg, const Ends& ends, int width,
              int height);

    /* Red, green, blue and opacity of each pixel, rows from the top. */
    std::vector<std::uint8_t> image(const std::vector<float>& values,
                                    const cli::ColourScale& scale) const;

  private:
    const scan::Sweep* sweep_ = nullptr;
    Ends ends_;
    int width_ = 0, height_ = 0;
    std::vector<std::ptrdiff_t> places_;
};

/* Index of the gate at a point, or -1. */
std::ptrdiff_t findGate(const scan::Sweep& sweep, double beamWidthDeg, double xKm, double yKm);

/* How a layer is shown. */
cli::Quantity quantityOfLayer(const scan::Sweep& sweep, const std::string& layer);

/* 256 colours from the low end to the high end; empty for codes. */
std::vector<std::uint8_t> scaleColours(const cli::ColourScale& scale);

}  // namespace studio

#endif

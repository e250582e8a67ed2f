/*
 * raster.cpp - resampling from polar gates to square pixels.
 *
 * Each pixel is the mean colour of kSide x kSide points in it, which smooths the edges of gates and
 * of the scan. Memory is needed for one row of points only, whatever the size of the scan.
 */
#include "picture/raster.h"

namespace cli {

namespace {

constexpr int kSide = 3;

/* Sums of the colours of the points in each pixel, and how many points have one. */
struct PixelSum {
    unsigned red = 0, green = 0, blue = 0, count = 0;

    void add(Rgb colour) {
        red += colour.red;
        green += colour.green;
        blue += colour.blue;
        ++count;
    }

    [[nodiscard]] std::uint32_t packed() const {
        constexpr unsigned kAll = kSide * kSide;
        const auto mean = [](unsigned sum) { return (sum + kAll / 2) / kAll; };
        return mean(255 * count) << 24 | mean(red) << 16 | mean(green) << 8 | mean(blue);
    }
};

void addRow(const scan::Field& field, const ColourScale& scale,
            const std::vector<std::ptrdiff_t>& places, std::vector<PixelSum>& sums) {
    for (std::size_t i = 0; i < places.size(); ++i) {
        Rgb colour;
        if (places[i] < 0 || !scale.colour(field.values[places[i]], colour)) {
            continue;
        }
        sums[i / kSide].add(colour);
    }
}

}  // namespace

std::vector<Image> rasterise(const std::vector<scan::Field>& fields,
                             const std::vector<Quantity>& quantities, const GateFinder& finder,
                             const View& view, int width, int height) {
    std::vector<Image> images(fields.size(), {width, height, {}});
    for (Image& image : images) {
        image.pixels.reserve(static_cast<std::size_t>(width) * height);
    }
    std::vector<std::vector<std::ptrdiff_t>> places(kSide);
    for (auto& row : places) {
        row.resize(static_cast<std::size_t>(width) * kSide);
    }
    const double columnKm = (view.right - view.left) / (width * kSide);
    const double stepKm = (view.top - view.bottom) / (height * kSide);
    for (int y = 0; y < height; ++y) {
        for (int k = 0; k < kSide; ++k) {
            finder.findRow(view.left, columnKm, width * kSide,
                           view.top - (y * kSide + k + 0.5) * stepKm, places[k].data());
        }
        for (std::size_t f = 0; f < fields.size(); ++f) {
            std::vector<PixelSum> sums(width);
            for (const auto& row : places) {
                addRow(fields[f], quantities[f].scale, row, sums);
            }
            for (const PixelSum& sum : sums) {
                images[f].pixels.push_back(sum.packed());
            }
        }
    }
    return images;
}

}  // namespace cli

/* picture.cpp - looks up gates for pixels, and colours for gates. */
#include "picture.h"

namespace studio {
namespace {

constexpr char kFieldPrefix[] = "field:";
constexpr double kMarginEnd = 8;  // a probability of 0.9997

cli::View wholeView(const scan::Sweep& sweep) {
    cli::View view;
    view.rhi = sweep.rhi;
    view.maxRangeKm = cli::sweepRangeKm(sweep);
    return view;
}

}  // namespace

void PlaceFinder::look(const scan::Sweep& sweep, double beamWidthDeg, const Ends& ends, int width,
                       int height) {
    if (sweep_ == &sweep && ends_ == ends && width_ == width && height_ == height) {
        return;
    }
    const cli::GateFinder finder(sweep, wholeView(sweep), beamWidthDeg);
    sweep_ = &sweep;
    ends_ = ends;
    width_ = width;
    height_ = height;
    places_.clear();
    places_.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const double dx = (ends.right - ends.left) / width, dy = (ends.top - ends.bottom) / height;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            places_.push_back(
                finder.find(ends.left + (column + 0.5) * dx, ends.top - (row + 0.5) * dy));
        }
    }
}

std::vector<std::uint8_t> PlaceFinder::image(const std::vector<float>& values,
                                             const cli::ColourScale& scale) const {
    constexpr std::uint8_t kOpaque = 255;
    std::vector<std::uint8_t> pixels(4 * places_.size(), 0);
    std::uint8_t* pixel = pixels.data();
    for (const std::ptrdiff_t place : places_) {
        cli::Rgb colour{};
        if (place >= 0 && scale.colour(values[static_cast<std::size_t>(place)], colour)) {
            pixel[0] = colour.red;
            pixel[1] = colour.green;
            pixel[2] = colour.blue;
            pixel[3] = kOpaque;
        }
        pixel += 4;
    }
    return pixels;
}

std::ptrdiff_t findGate(const scan::Sweep& sweep, double beamWidthDeg, double xKm, double yKm) {
    return cli::GateFinder(sweep, wholeView(sweep), beamWidthDeg).find(xKm, yKm);
}

cli::Quantity quantityOfLayer(const scan::Sweep& sweep, const std::string& layer) {
    if (layer.rfind(kFieldPrefix, 0) == 0) {
        const std::string name = layer.substr(sizeof kFieldPrefix - 1);
        for (const scan::Field& field : sweep.fields) {
            if (field.name == name) {
                return cli::quantityOf(field, sweep, {});
            }
        }
    }
    if (layer == "probability") {
        return {"Probability of precipitation", "",
                cli::ColourScale(cli::Palette::kSequential, 0, 1)};
    }
    if (layer == "margin") {
        return {"Margin", "", cli::ColourScale(cli::Palette::kDiverging, -kMarginEnd, kMarginEnd)};
    }
    if (layer == "deciding") {
        return {"Deciding input", "", cli::ColourScale::ofReasons()};
    }
    return {layer == "labels" ? "Labels" : "Classes", "", cli::ColourScale()};
}

std::vector<std::uint8_t> scaleColours(const cli::ColourScale& scale) {
    std::vector<std::uint8_t> colours;
    if (scale.classes || scale.reasons) {
        return colours;
    }
    for (int i = 0; i < 256; ++i) {
        const cli::Rgb colour = cli::colourAt(scale.palette, i / 255.0);
        colours.insert(colours.end(), {colour.red, colour.green, colour.blue});
    }
    return colours;
}

}  // namespace studio

/* picture.cpp - the layout of a picture: title, panels, scales. */
#include "picture/picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "picture/axes.h"
#include "scan/fields/role.h"
#include "scan/text.h"

namespace cli {

namespace {

constexpr int kNarrowestPanelPx = 240, kWidestPicturePx = 10000;
constexpr int kSinglePanelPx = 1000, kPanelOfSeveralPx = 900, kRangeHeightPx = 1200;
constexpr double kVectorOversampling = 1.5;  // image pixels per point
constexpr int kLargestImagePx = 2400;        // of an image in a vector file
constexpr double kHeadingEm = 2.4;

/* Where everything is drawn. Plan positions are in a grid, range-heights one above the other. */
struct Layout {
    int width = 0, height = 0;
    double em = 12, titleHeight = 0;
    std::vector<Frame> axes;  // one per panel
};

double emOf(double panelWidth) {
    return std::clamp(panelWidth / 54.0, 8.0, 60.0);
}

/* Up to three panels are side by side, more in a grid that is about square. */
std::size_t columnsOf(std::size_t panels) {
    return panels <= 3
               ? panels
               : static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(panels))));
}

Layout planLayout(int width, std::size_t panels) {
    Layout layout;
    layout.width = width;
    const std::size_t columns = columnsOf(panels);
    const double panelWidth = static_cast<double>(width) / static_cast<double>(columns);
    layout.em = emOf(panelWidth);
    layout.titleHeight = 5.0 * layout.em;
    const double side = std::floor(panelWidth - (kLeftEm + kRightEm) * layout.em);
    const double belowHeading = side + (kBelowAxesEm + kScaleEm + 1.0) * layout.em;
    const double rowHeight = kHeadingEm * layout.em + belowHeading;
    for (std::size_t i = 0; i < panels; ++i) {
        const auto column = static_cast<double>(i % columns);
        const auto row = static_cast<double>(i / columns);
        layout.axes.push_back(
            {std::round(column * panelWidth + kLeftEm * layout.em),
             std::round(layout.titleHeight + row * rowHeight + kHeadingEm * layout.em), side, side,
             layout.em});
    }
    layout.height = static_cast<int>(std::ceil(layout.axes.back().y + belowHeading));
    return layout;
}

Layout rangeHeightLayout(int width, std::size_t panels) {
    Layout layout;
    layout.width = width;
    layout.em = emOf(width / 1.6);
    layout.titleHeight = 5.0 * layout.em;
    const double across = std::floor(width - (kLeftEm + kRightEm) * layout.em);
    const double upwards = std::round(0.34 * across);
    const double panelHeight = upwards + (kHeadingEm + kBelowAxesEm + kScaleEm + 1.0) * layout.em;
    for (std::size_t i = 0; i < panels; ++i) {
        layout.axes.push_back(
            {std::round(kLeftEm * layout.em),
             std::round(layout.titleHeight + i * panelHeight + kHeadingEm * layout.em), across,
             upwards, layout.em});
    }
    layout.height = static_cast<int>(std::ceil(layout.titleHeight + panels * panelHeight));
    return layout;
}

Layout layOut(bool rhi, int widthPx, std::size_t panels) {
    const auto columns = static_cast<int>(columnsOf(panels));
    const int several = kPanelOfSeveralPx * columns;
    int width = rhi ? kRangeHeightPx : panels == 1 ? kSinglePanelPx : several;
    if (widthPx != 0) {
        width = widthPx;
    }
    const int narrowest = kNarrowestPanelPx * (rhi ? 1 : columns);
    if (width < narrowest || width > kWidestPicturePx) {
        throw std::invalid_argument("a picture of this many panels must be " +
                                    std::to_string(narrowest) + " to " +
                                    std::to_string(kWidestPicturePx) + " pixels wide");
    }
    return rhi ? rangeHeightLayout(width, panels) : planLayout(width, panels);
}

View viewOf(const Canvas& canvas, const Layout& layout, const scan::Sweep& sweep,
            double maxRangeKm) {
    const double range = maxRangeKm > 0.0 ? maxRangeKm : sweepRangeKm(sweep);
    if (!std::isfinite(range)) {
        throw std::invalid_argument("the largest range must be finite");
    }
    if (sweep.rhi) {
        return rangeHeightView(sweep, range);
    }
    const double reach = range / circleShare(canvas, layout.axes.front());
    return {false, range, -reach, reach, -reach, reach};
}

std::string titleOf(const scan::Scan& scan) {
    const std::string radar = scan::printable(scan.radarName),
                      site = scan::printable(scan.siteName);
    if (radar.empty() && site.empty()) {
        return scan::printable(std::filesystem::path(scan.path).filename().string());
    }
    if (radar.empty() || site.empty() || radar == site) {
        return radar.empty() ? site : radar;
    }
    return radar + ", " + site;
}

std::string subtitleOf(const scan::Scan& scan, const scan::Sweep& sweep) {
    char angle[64], time[64] = "";
    double shown = sweep.fixedAngleDeg;
    if (sweep.rhi && shown < 0.0) {
        shown += 360.0;
    }
    std::snprintf(angle, sizeof angle, "%s %.1f\u00b0", sweep.rhi ? "azimuth" : "elevation", shown);
    const scan::DateTime& t = scan.time;
    if (t.year > 1900) {  // 1900: the file does not say
        std::snprintf(time, sizeof time, "   %04d-%02d-%02d %02d:%02d:%02d UTC", t.year, t.month,
                      t.day, t.hour, t.minute, t.second);
    }
    return std::string(sweep.rhi ? "Height against range, " : "Plan position, ") + angle + time;
}

void drawTitle(const Canvas& canvas, const Layout& layout, const scan::Scan& scan,
               const scan::Sweep& sweep) {
    const Frame& frame = layout.axes.front();
    const double width = layout.width - frame.x - kRightEm * layout.em;
    canvas.textWithin(width, frame.x, 2.7 * layout.em, titleOf(scan),
                      {.size = 1.6 * layout.em, .bold = true});
    canvas.textWithin(width, frame.x, 4.5 * layout.em, subtitleOf(scan, sweep),
                      {.size = 1.1 * layout.em, .colour = {0x55, 0x55, 0x55}});
}

std::vector<Image> imagesOf(const Canvas& canvas, const Layout& layout, const View& view,
                            const GateFinder& finder, const std::vector<scan::Field>& fields,
                            const std::vector<Quantity>& quantities) {
    const Frame& frame = layout.axes.front();
    double scale = canvas.isBitmap() ? 1.0 : kVectorOversampling;
    if (!canvas.isBitmap()) {
        scale = std::min(scale, kLargestImagePx / frame.width);
    }
    return rasterise(fields, quantities, finder, view, static_cast<int>(frame.width * scale),
                     static_cast<int>(frame.height * scale));
}

void requireShapes(const scan::Sweep& sweep, const std::vector<scan::Field>& fields) {
    if (fields.empty()) {
        throw std::invalid_argument("there is no field to draw");
    }
    const auto rays = static_cast<std::size_t>(std::max(0, sweep.nrays));
    const std::size_t gates = rays * static_cast<std::size_t>(std::max(0, sweep.ngates));
    const std::size_t angles = sweep.rhi ? sweep.elevationDeg.size() : sweep.azimuthDeg.size();
    if (gates == 0) {
        throw std::invalid_argument("the sweep has no gates");
    }
    if (angles != rays) {
        throw std::invalid_argument("the sweep needs one angle per ray");
    }
    for (const scan::Field& field : fields) {
        if (field.values.size() == gates) {
            continue;
        }
        throw std::invalid_argument("field " + scan::printable(field.name) +
                                    " is not of the sweep's size");
    }
}

void drawPanel(const Canvas& canvas, const Frame& axes, const View& view, const Image& image,
               const Quantity& quantity, const std::vector<float>& values) {
    canvas.textWithin(axes.width, axes.x, axes.y - 0.7 * axes.em, quantity.heading,
                      {.size = 1.15 * axes.em, .bold = true});
    (view.rhi ? drawRangeHeight : drawPlanPosition)(canvas, axes, view, image);
    const Frame scale{axes.x, axes.y + axes.height + kBelowAxesEm * axes.em, axes.width,
                      kScaleEm * axes.em, axes.em};
    drawScale(canvas, scale, quantity, values);
}

}  // namespace

void drawPanels(const scan::Scan& scan, const scan::Sweep& sweep,
                const std::vector<scan::Field>& fields, const PictureOptions& options,
                const std::string& path) {
    checkPictureEnding(path);
    requireShapes(sweep, fields);
    std::vector<Quantity> quantities;
    quantities.reserve(fields.size());
    for (const scan::Field& field : fields) {
        quantities.push_back(quantityOf(field, sweep, options));
    }
    for (std::size_t i = 0; i < std::min(fields.size(), options.headings.size()); ++i) {
        quantities[i].heading = options.headings[i];
    }
    const Layout layout = layOut(sweep.rhi, options.widthPx, fields.size());
    Canvas canvas(path, layout.width, layout.height);
    const View view = viewOf(canvas, layout, sweep, options.maxRangeKm);
    drawTitle(canvas, layout, scan, sweep);
    const GateFinder finder(sweep, view, scan.beamWidthDeg);
    const auto images = imagesOf(canvas, layout, view, finder, fields, quantities);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        drawPanel(canvas, layout.axes[i], view, images[i], quantities[i], fields[i].values);
    }
    canvas.save();
}

void drawClasses(const scan::Scan& scan, const scan::Sweep& sweep, const scan::Field& field,
                 const std::vector<float>& classes, const PictureOptions& options,
                 const std::string& path) {
    drawPanels(scan, sweep, {field, {"CCl", "", classes}}, options, path);
}

void drawReasons(const scan::Scan& scan, const scan::Sweep& sweep,
                 const scan::ClassifiedSweep& result, const PictureOptions& options,
                 const std::string& path) {
    drawPanels(scan, sweep,
               {*result.fields[scan::Role::kZhh],
                {"CCl", "", result.classes},
                {kProbabilityField, "", result.probability},
                {kReasonField, "", result.deciding}},
               options, path);
}

}  // namespace cli

/* axes.cpp - a field on its axes: image, rings, marks, ticks and labels. */
#include "picture/axes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "scan/angles.h"

namespace cli {

namespace {

constexpr Rgb kInk{0x22, 0x22, 0x22}, kFrameColour{0x55, 0x55, 0x55};

double xOf(const Frame& frame, const View& view, double xKm) {
    return frame.x + (xKm - view.left) / (view.right - view.left) * frame.width;
}

double yOf(const Frame& frame, const View& view, double yKm) {
    return frame.y + (view.top - yKm) / (view.top - view.bottom) * frame.height;
}

void line(const Canvas& canvas, double x0, double y0, double x1, double y1) {
    cairo_move_to(canvas.context(), x0, y0);
    cairo_line_to(canvas.context(), x1, y1);
    cairo_stroke(canvas.context());
}

void circle(const Canvas& canvas, double x, double y, double radius) {
    cairo_new_sub_path(canvas.context());
    cairo_arc(canvas.context(), x, y, radius, 0.0, scan::kTwoPi);
}

void paintImage(const Canvas& canvas, const Frame& frame, const Image& image) {
    /* Cairo only reads from it. */
    auto* data = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(image.pixels.data()));
    cairo_surface_t* surface = cairo_image_surface_create_for_data(
        data, CAIRO_FORMAT_ARGB32, image.width, image.height, 4 * image.width);
    cairo_t* context = canvas.context();
    cairo_save(context);
    cairo_translate(context, frame.x, frame.y);
    cairo_scale(context, frame.width / image.width, frame.height / image.height);
    cairo_set_source_surface(context, surface, 0.0, 0.0);
    if (canvas.isBitmap()) {
        cairo_pattern_set_filter(cairo_get_source(context), CAIRO_FILTER_NEAREST);
    }
    cairo_paint(context);
    cairo_restore(context);
    cairo_surface_destroy(surface);
}

void drawFrame(const Canvas& canvas, const Frame& frame) {
    canvas.setColour(kFrameColour);
    cairo_set_line_width(canvas.context(), 0.08 * frame.em);
    cairo_rectangle(canvas.context(), frame.x, frame.y, frame.width, frame.height);
    cairo_stroke(canvas.context());
}

std::vector<double> xTicks(const Frame& frame, const View& view) {
    return ticksBetween(view.left, view.right, frame.width / (4.5 * frame.em));
}

/* In a plan position both axes have the same ticks. */
std::vector<double> yTicks(const Frame& frame, const View& view) {
    if (!view.rhi) {
        return xTicks(frame, view);
    }
    return ticksBetween(view.bottom, view.top, frame.height / (2.8 * frame.em));
}

void drawHorizontalTicks(const Canvas& canvas, const Frame& frame, const View& view,
                         const char* title) {
    const TextStyle style{.size = frame.em, .anchorX = 0.5, .anchorY = 1.0};
    const auto ticks = xTicks(frame, view);
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0;
    const double bottom = frame.y + frame.height;
    for (const double tick : ticks) {
        const double x = xOf(frame, view, tick);
        canvas.setColour(kFrameColour);
        line(canvas, x, bottom, x, bottom + 0.4 * frame.em);
        canvas.text(x, bottom + 0.7 * frame.em, tickText(tick, step), style);
    }
    canvas.text(frame.x + 0.5 * frame.width, bottom + 2.1 * frame.em, title, style);
}

void drawVerticalTicks(const Canvas& canvas, const Frame& frame, const View& view,
                       const char* title) {
    TextStyle style{.size = frame.em, .anchorX = 1.0, .anchorY = 0.5};
    const auto ticks = yTicks(frame, view);
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0;
    for (const double tick : ticks) {
        const double y = yOf(frame, view, tick);
        canvas.setColour(kFrameColour);
        line(canvas, frame.x - 0.4 * frame.em, y, frame.x, y);
        canvas.text(frame.x - 0.6 * frame.em, y, tickText(tick, step), style);
    }
    style.anchorX = 0.5;
    style.anchorY = 0.0;
    style.upwards = true;
    canvas.text(frame.x - 3.3 * frame.em, frame.y + 0.5 * frame.height, title, style);
}

void drawRings(const Canvas& canvas, const Frame& frame, const View& view) {
    const double x = xOf(frame, view, 0.0), y = yOf(frame, view, 0.0);
    const double pixelsPerKm = frame.width / (view.right - view.left);
    const double radius = view.maxRangeKm * pixelsPerKm;
    const auto rings = ticksBetween(0.0, view.maxRangeKm, std::min(6.0, radius / (3.0 * frame.em)));
    const double step = rings.size() > 1 ? rings[1] - rings[0] : 1.0;
    cairo_set_line_width(canvas.context(), 0.07 * frame.em);
    for (const double ring : rings) {
        if (ring <= 0.0 || ring * pixelsPerKm > radius - 0.1) {
            continue;
        }
        canvas.setColour(kInk, 0.45);
        circle(canvas, x, y, ring * pixelsPerKm);
        cairo_stroke(canvas.context());
    }
    for (const double ring : rings) {
        const double distance = ring * pixelsPerKm;
        if (ring <= 0.0 || distance > radius - 1.3 * frame.em || distance < 2.0 * frame.em) {
            continue;
        }
        const double diagonal = distance * std::numbers::sqrt2 / 2.0;
        const TextStyle style{
            .size = 0.9 * frame.em, .anchorX = 0.5, .anchorY = 0.5, .halo = true, .colour = kInk};
        canvas.text(x + diagonal, y - diagonal, tickText(ring, step) + " km", style);
    }
}

/* Azimuth marks outside the circle, and their labels, in em. */
constexpr double kMarkEm = 0.4, kGapEm = 0.3, kAzimuthEm = 0.9;

std::string azimuthText(int azimuth) {
    return std::to_string(azimuth) + "\u00b0";
}

void drawAzimuths(const Canvas& canvas, const Frame& frame, const View& view) {
    const double x = xOf(frame, view, 0.0), y = yOf(frame, view, 0.0);
    const double radius = view.maxRangeKm * frame.width / (view.right - view.left);
    cairo_set_line_width(canvas.context(), 0.07 * frame.em);
    for (int azimuth = 0; azimuth < 360; azimuth += 30) {
        const double east = std::sin(azimuth / 360.0 * scan::kTwoPi),
                     north = std::cos(azimuth / 360.0 * scan::kTwoPi);
        canvas.setColour(kInk, 0.2);
        line(canvas, x, y, x + radius * east, y - radius * north);
        canvas.setColour(kInk);
        const double outer = radius + kMarkEm * frame.em;
        line(canvas, x + radius * east, y - radius * north, x + outer * east, y - outer * north);
        /* The anchor turns with the azimuth, so that no label touches the circle. */
        const TextStyle style{.size = kAzimuthEm * frame.em,
                              .anchorX = 0.5 - 0.5 * east,
                              .anchorY = 0.5 - 0.5 * north};
        const double at = outer + kGapEm * frame.em;
        canvas.text(x + at * east, y - at * north, azimuthText(azimuth), style);
    }
}

}  // namespace

double circleShare(const Canvas& canvas, const Frame& frame) {
    const double label = canvas.textWidth(azimuthText(270), {.size = kAzimuthEm * frame.em});
    const double room = label + (kMarkEm + 2.0 * kGapEm) * frame.em;
    return 1.0 - room / (0.5 * frame.width);
}

void drawPlanPosition(const Canvas& canvas, const Frame& frame, const View& view,
                      const Image& image) {
    const double x = xOf(frame, view, 0.0), y = yOf(frame, view, 0.0);
    const double radius = view.maxRangeKm * frame.width / (view.right - view.left);
    canvas.setColour(kNoDataColour);
    circle(canvas, x, y, radius);
    cairo_fill(canvas.context());
    paintImage(canvas, frame, image);
    drawRings(canvas, frame, view);
    drawAzimuths(canvas, frame, view);
    canvas.setColour(kFrameColour);
    cairo_set_line_width(canvas.context(), 0.1 * frame.em);
    circle(canvas, x, y, radius);
    cairo_stroke(canvas.context());
    drawFrame(canvas, frame);
    drawHorizontalTicks(canvas, frame, view, "km east of the radar");
    drawVerticalTicks(canvas, frame, view, "km north of the radar");
}

void drawRangeHeight(const Canvas& canvas, const Frame& frame, const View& view,
                     const Image& image) {
    canvas.setColour(kNoDataColour);
    cairo_rectangle(canvas.context(), frame.x, frame.y, frame.width, frame.height);
    cairo_fill(canvas.context());
    paintImage(canvas, frame, image);
    canvas.setColour(kInk, 0.2);
    cairo_set_line_width(canvas.context(), 0.07 * frame.em);
    for (const double tick : yTicks(frame, view)) {
        line(canvas, frame.x, yOf(frame, view, tick), frame.x + frame.width,
             yOf(frame, view, tick));
    }
    for (const double tick : xTicks(frame, view)) {
        line(canvas, xOf(frame, view, tick), frame.y, xOf(frame, view, tick),
             frame.y + frame.height);
    }
    drawFrame(canvas, frame);
    drawHorizontalTicks(canvas, frame, view, "km along the ground");
    drawVerticalTicks(canvas, frame, view, "km above the radar");
}

}  // namespace cli

/* scale.cpp - the colour bar, and the legend of classes. */
#include <algorithm>
#include <cstdio>

#include "picture/axes.h"

namespace cli {

namespace {

constexpr Rgb kEdge{0x55, 0x55, 0x55};

constexpr struct {
    const char* text;
    float code;
} kLegend[] = {{"precipitation", 0.0f}, {"ground clutter", 5.0f}, {"noise", 3.0f},
               {"no data", -1.0f},      {"sea clutter", 6.0f},    {"turbine clutter", 7.0f}};

std::string legendText(int entry, double share) {
    char text[64];
    std::snprintf(text, sizeof text, "%s  %.1f %%", kLegend[entry].text, 100.0 * share);
    return text;
}

void drawLegend(const Canvas& canvas, const Frame& frame, const std::vector<float>& classes) {
    const auto shares = classShares(classes);
    const int entries = shares[4] + shares[5] > 0.0 ? 6 : 4;
    const int columns = entries / 2;
    const double em = frame.em, column = frame.width / columns;
    TextStyle style{.size = em, .anchorY = 0.5};
    for (int i = 0; i < entries; ++i) {  // one text size for all entries: the longest must fit
        const double width = canvas.textWidth(legendText(i, shares[i]), style);
        style.size *= std::min(1.0, (column - 2.6 * em) / width);
    }
    for (int i = 0; i < entries; ++i) {
        const int right = i / 2, down = i % 2;
        const double x = frame.x + right * column, y = frame.y + down * 1.7 * em;
        canvas.setColour(classColour(kLegend[i].code));
        cairo_rectangle(canvas.context(), x, y, 1.6 * em, 1.1 * em);
        cairo_fill_preserve(canvas.context());
        canvas.setColour(kEdge);
        cairo_set_line_width(canvas.context(), 0.07 * em);
        cairo_stroke(canvas.context());
        canvas.text(x + 2.1 * em, y + 0.55 * em, legendText(i, shares[i]), style);
    }
}

/* The ends of the bar are pointed: values past an end have the colour of that end. */
void drawBarEnd(const Canvas& canvas, double x, double y, double width, double height, Rgb colour) {
    canvas.setColour(colour);
    cairo_move_to(canvas.context(), x, y);
    cairo_line_to(canvas.context(), x + width, y + 0.5 * height);
    cairo_line_to(canvas.context(), x, y + height);
    cairo_close_path(canvas.context());
    cairo_fill(canvas.context());
}

void outlineBar(const Canvas& canvas, double x, double y, double width, double height,
                double point) {
    cairo_t* context = canvas.context();
    cairo_move_to(context, x, y);
    cairo_line_to(context, x + width, y);
    cairo_line_to(context, x + width + point, y + 0.5 * height);
    cairo_line_to(context, x + width, y + height);
    cairo_line_to(context, x, y + height);
    cairo_line_to(context, x - point, y + 0.5 * height);
    cairo_close_path(context);
    canvas.setColour(kEdge);
    cairo_set_line_width(context, 0.08 * height);
    cairo_stroke(context);
}

void drawBar(const Canvas& canvas, const Frame& frame, const Quantity& quantity) {
    const double em = frame.em, point = 0.9 * em, height = 1.1 * em;
    const double x = frame.x + point, width = frame.width - 2.0 * point;
    const ColourScale& scale = quantity.scale;
    cairo_pattern_t* gradient = cairo_pattern_create_linear(x, 0.0, x + width, 0.0);
    constexpr int kStops = 65;
    for (int i = 0; i < kStops; ++i) {
        const double at = i / (kStops - 1.0);
        const Rgb colour = colourAt(scale.palette, at);
        cairo_pattern_add_color_stop_rgb(gradient, at, colour.red / 255.0, colour.green / 255.0,
                                         colour.blue / 255.0);
    }
    cairo_set_source(canvas.context(), gradient);
    cairo_rectangle(canvas.context(), x, frame.y, width, height);
    cairo_fill(canvas.context());
    cairo_pattern_destroy(gradient);
    drawBarEnd(canvas, x, frame.y, -point, height, colourAt(scale.palette, 0.0));
    drawBarEnd(canvas, x + width, frame.y, point, height, colourAt(scale.palette, 1.0));
    outlineBar(canvas, x, frame.y, width, height, point);
    const auto ticks = ticksBetween(scale.low, scale.high, width / (4.0 * em));
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : scale.high - scale.low;
    const TextStyle style{.size = em, .anchorX = 0.5, .anchorY = 1.0};
    for (const double tick : ticks) {
        const double at = x + (tick - scale.low) / (scale.high - scale.low) * width;
        cairo_move_to(canvas.context(), at, frame.y + height);
        cairo_line_to(canvas.context(), at, frame.y + height + 0.35 * em);
        canvas.setColour(kEdge);
        cairo_stroke(canvas.context());
        canvas.text(at, frame.y + height + 0.65 * em, tickText(tick, step), style);
    }
    canvas.text(frame.x + 0.5 * frame.width, frame.y + height + 1.9 * em, quantity.units, style);
}

}  // namespace

void drawScale(const Canvas& canvas, const Frame& frame, const Quantity& quantity,
               const std::vector<float>& values) {
    if (quantity.scale.classes) {
        return drawLegend(canvas, frame, values);
    }
    drawBar(canvas, frame, quantity);
}

}  // namespace cli

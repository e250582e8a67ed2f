/* scale.cpp - the colour bar, and the legend of classes. */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "picture/axes.h"
#include "scan/classes/inputs.h"

namespace cli {

namespace {

constexpr Rgb kEdge{0x55, 0x55, 0x55};

constexpr struct {
    const char* text;
    float code;
} kLegend[] = {{"precipitation", 0.0f}, {"ground clutter", 5.0f}, {"noise", 3.0f},
               {"no data", -1.0f},      {"sea clutter", 6.0f},    {"turbine clutter", 7.0f}};

struct Entry {
    std::string text;
    Rgb colour;
    double share;
};

std::vector<Entry> classEntries(const std::vector<float>& classes) {
    const auto shares = classShares(classes);
    const std::size_t count = shares[4] + shares[5] > 0.0 ? 6 : 4;
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < count; ++i) {
        entries.push_back({kLegend[i].text, classColour(kLegend[i].code), shares[i]});
    }
    return entries;
}

std::string reasonName(std::size_t reason) {
    const auto& inputs = scan::inputs();
    return reason < inputs.size() ? inputs[reason].info->name : "neighbourhood";
}

/* What decided any gate, with its share of the gates that were decided. */
std::vector<Entry> reasonEntries(const std::vector<float>& reasons) {
    const auto decided = std::count_if(reasons.begin(), reasons.end(),
                                       [](float reason) { return !std::isnan(reason); });
    std::vector<Entry> entries;
    for (std::size_t i = 0; i <= scan::inputs().size(); ++i) {
        const auto reason = static_cast<float>(i);
        const auto count = std::count(reasons.begin(), reasons.end(), reason);
        if (count > 0) {
            entries.push_back({reasonName(i), reasonColour(reason),
                               static_cast<double>(count) / static_cast<double>(decided)});
        }
    }
    return entries;
}

std::string legendText(const Entry& entry) {
    char text[64];
    std::snprintf(text, sizeof text, "%s  %.1f %%", entry.text.c_str(), 100.0 * entry.share);
    return text;
}

/* Two lines of entries, column by column. */
void drawLegend(const Canvas& canvas, const Frame& frame, const std::vector<Entry>& entries) {
    const double em = frame.em;
    const double column = frame.width / static_cast<double>((entries.size() + 1) / 2);
    TextStyle style{.size = em, .anchorY = 0.5};
    for (const Entry& entry : entries) {  // one text size for all entries: the longest must fit
        const double width = canvas.textWidth(legendText(entry), style);
        style.size *= std::min(1.0, (column - 2.6 * em) / width);
    }
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const double x = frame.x + static_cast<double>(i / 2) * column;
        const double y = frame.y + static_cast<double>(i % 2) * 1.7 * em;
        canvas.setColour(entries[i].colour);
        cairo_rectangle(canvas.context(), x, y, 1.6 * em, 1.1 * em);
        cairo_fill_preserve(canvas.context());
        canvas.setColour(kEdge);
        cairo_set_line_width(canvas.context(), 0.07 * em);
        cairo_stroke(canvas.context());
        canvas.text(x + 2.1 * em, y + 0.55 * em, legendText(entries[i]), style);
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
        return drawLegend(canvas, frame, classEntries(values));
    }
    if (quantity.scale.reasons) {
        return drawLegend(canvas, frame, reasonEntries(values));
    }
    drawBar(canvas, frame, quantity);
}

}  // namespace cli

/* membership_sheet.cpp - panels of curves, four quantities side by side. */
#include "picture/membership_sheet.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "picture/axes.h"
#include "picture/canvas.h"
#include "picture/quantity.h"
#include "scan/class_codes.h"

namespace cli {
namespace {

constexpr std::size_t kColumns = 4;
constexpr int kUsualWidthPx = 1600;
constexpr int kSteps = 400;      // of a curve
constexpr double kMaxRatio = 5;  // of the logarithm's axis
constexpr Rgb kInk{0x33, 0x33, 0x33}, kGrid{0xcc, 0xcc, 0xcc}, kFrameInk{0x77, 0x77, 0x77};

struct Range {
    double low, high;
};

/* One set of axes with linear scales. */
class Panel {
  public:
    Panel(const Canvas& canvas, const Frame& frame, Range x, Range y)
        : canvas_(canvas), frame_(frame), x_(x), y_(y) {}

    void drawAxes(bool labelled) const {
        cairo_t* context = canvas_.context();
        cairo_set_line_width(context, 0.06 * frame_.em);
        const auto across = ticksBetween(x_.low, x_.high, frame_.width / (4.5 * frame_.em));
        const auto upwards = ticksBetween(y_.low, y_.high, frame_.height / (2.8 * frame_.em));
        for (const double tick : across) {
            line(xOf(tick), frame_.y, xOf(tick), frame_.y + frame_.height);
            if (labelled) {
                canvas_.text(xOf(tick), frame_.y + frame_.height + 0.5 * frame_.em,
                             tickText(tick, stepOf(across)),
                             {.size = 0.9 * frame_.em, .anchorX = 0.5, .anchorY = 1.0});
            }
        }
        for (const double tick : upwards) {
            line(frame_.x, yOf(tick), frame_.x + frame_.width, yOf(tick));
            canvas_.text(frame_.x - 0.4 * frame_.em, yOf(tick), tickText(tick, stepOf(upwards)),
                         {.size = 0.9 * frame_.em, .anchorX = 1.0, .anchorY = 0.5});
        }
        canvas_.setColour(kFrameInk);
        cairo_rectangle(context, frame_.x, frame_.y, frame_.width, frame_.height);
        cairo_stroke(context);
    }

    template <class Function>
    void drawCurve(Function function, Rgb colour, bool dashed) const {
        cairo_t* context = canvas_.context();
        const double dash[] = {0.7 * frame_.em, 0.5 * frame_.em};
        cairo_save(context);
        cairo_rectangle(context, frame_.x, frame_.y, frame_.width, frame_.height);
        cairo_clip(context);
        cairo_set_dash(context, dash, dashed ? 2 : 0, 0);
        cairo_set_line_width(context, 0.16 * frame_.em);
        canvas_.setColour(colour);
        for (int step = 0; step <= kSteps; ++step) {
            const double x = x_.low + (x_.high - x_.low) * step / kSteps;
            cairo_line_to(context, xOf(x), yOf(function(x)));
        }
        cairo_stroke(context);
        cairo_restore(context);
    }

  private:
    static double stepOf(const std::vector<double>& ticks) {
        return ticks.size() > 1 ? ticks[1] - ticks[0] : 1.0;
    }
    double xOf(double x) const {
        return frame_.x + (x - x_.low) / (x_.high - x_.low) * frame_.width;
    }
    double yOf(double y) const {
        return frame_.y + (y_.high - y) / (y_.high - y_.low) * frame_.height;
    }
    void line(double x0, double y0, double x1, double y1) const {
        canvas_.setColour(kGrid);
        cairo_move_to(canvas_.context(), x0, y0);
        cairo_line_to(canvas_.context(), x1, y1);
        cairo_stroke(canvas_.context());
    }

    const Canvas& canvas_;
    Frame frame_;
    Range x_, y_;
};

/* The pairs of one quantity, one per sheet; null where a sheet has none. */
struct Column {
    std::vector<const scan::TablePair*> pairs;

    const scan::TablePair& any() const {
        return **std::find_if(pairs.begin(), pairs.end(), [](const auto* pair) { return pair; });
    }
};

std::vector<Column> columnsOf(const std::vector<MembershipSheet>& sheets) {
    std::vector<Column> columns;
    for (std::size_t s = 0; s < sheets.size(); ++s) {
        for (const scan::TablePair& pair : sheets[s].pairs) {
            auto column = std::find_if(columns.begin(), columns.end(), [&](const Column& other) {
                return other.any().tag == pair.tag;
            });
            if (column == columns.end()) {
                columns.push_back({std::vector<const scan::TablePair*>(sheets.size())});
                column = columns.end() - 1;
            }
            column->pairs[s] = &pair;
        }
    }
    return columns;
}

Range rangeOf(const Column& column) {
    Range range{HUGE_VAL, -HUGE_VAL};
    for (const scan::TablePair* pair : column.pairs) {
        if (pair != nullptr) {
            const auto [low, high] = scan::decidingRange(*pair);
            range = {std::min(range.low, low), std::max(range.high, high)};
        }
    }
    return range;
}

void drawColumn(const Canvas& canvas, const Frame& upper, const Frame& lower,
                const Column& column) {
    const Range x = rangeOf(column);
    const Panel degrees(canvas, upper, x, {0, 1});
    const Panel ratios(canvas, lower, x, {-kMaxRatio, kMaxRatio});
    degrees.drawAxes(false);
    ratios.drawAxes(true);
    for (std::size_t s = 0; s < column.pairs.size(); ++s) {
        if (column.pairs[s] == nullptr) {
            continue;
        }
        const scan::TablePair& pair = *column.pairs[s];
        const auto rain = [&](double at) { return scan::degreeAt(pair.precipitation, at); };
        const auto clutter = [&](double at) { return scan::degreeAt(pair.clutter, at); };
        degrees.drawCurve(rain, classColour(scan::kPrecipitation), s > 0);
        degrees.drawCurve(clutter, classColour(scan::kGroundClutter), s > 0);
        const auto ratio = [&](double at) {  // a degree of 0 is far outside the panel
            const double least = 1e-30;
            return std::log(std::max(rain(at), least) / std::max(clutter(at), least));
        };
        ratios.drawCurve(ratio, kInk, s > 0);
    }
    const scan::TablePair& pair = column.any();
    canvas.textWithin(upper.width, upper.x, upper.y - 0.6 * upper.em, pair.tag,
                      {.size = 1.15 * upper.em, .bold = true});
    canvas.textWithin(lower.width, lower.x, lower.y + lower.height + 3.0 * lower.em, pair.heading,
                      {.size = 0.95 * lower.em});
}

void drawTitle(const Canvas& canvas, const std::vector<MembershipSheet>& sheets, double em,
               double width) {
    std::string title = sheets[0].name;
    if (sheets.size() > 1) {
        title += "   (dashed: " + sheets[1].name + ")";
    }
    canvas.textWithin(width - 2 * em, em, 2.4 * em, title, {.size = 1.4 * em, .bold = true});
    canvas.textWithin(width - 2 * em, em, 4.2 * em, "degree of precipitation",
                      {.size = em, .colour = classColour(scan::kPrecipitation)});
    const double next = 2 * em + canvas.textWidth("degree of precipitation", {.size = em});
    canvas.textWithin(width - next - em, next, 4.2 * em, "degree of ground clutter",
                      {.size = em, .colour = classColour(scan::kGroundClutter)});
    const double last = next + em + canvas.textWidth("degree of ground clutter", {.size = em});
    canvas.textWithin(width - last - em, last, 4.2 * em,
                      "below: ln (precipitation / ground clutter)", {.size = em, .colour = kInk});
}

}  // namespace

void drawMembership(const std::vector<MembershipSheet>& sheets, int widthPx,
                    const std::string& path) {
    const std::vector<Column> columns = columnsOf(sheets);
    const std::size_t across = std::min(columns.size(), kColumns);
    const std::size_t down = (columns.size() + across - 1) / across;
    const int usual = static_cast<int>(across) * kUsualWidthPx / static_cast<int>(kColumns);
    const int width = widthPx > 0 ? widthPx : usual;
    const double step = static_cast<double>(width) / static_cast<double>(across);
    const double em = step / 30;
    const double panelHeight = 9 * em, rowHeight = 2 * panelHeight + 8 * em, top = 5.5 * em;
    Canvas canvas(path, width, static_cast<int>(top + rowHeight * static_cast<double>(down)));
    drawTitle(canvas, sheets, em, width);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double x = step * static_cast<double>(i % across) + 3 * em;
        const double y = top + rowHeight * static_cast<double>(i / across) + 2 * em;
        const Frame upper{x, y, step - 4.5 * em, panelHeight, em};
        Frame lower = upper;
        lower.y += panelHeight + em;
        drawColumn(canvas, upper, lower, columns[i]);
    }
    canvas.save();
}

}  // namespace cli

/* quantity.h - how a field is shown: its name, its colours and the ends of its scale. */
#ifndef CLI_PICTURE_QUANTITY_H
#define CLI_PICTURE_QUANTITY_H

#include <array>
#include <limits>
#include <string>
#include <vector>

#include "picture/palette.h"
#include "scan/scan.h"

namespace cli {

/* Names of fields that have their own way of being drawn: the probability of precipitation, and
 * what decided the class of each gate (index of the input; 9 the neighbourhood). */
inline constexpr char kProbabilityField[] = "Probability of precipitation";
inline constexpr char kReasonField[] = "Deciding input";

struct PictureOptions {
    int widthPx = 0;        // of the whole picture; 0: 1000 for one panel, 900 for each of several
    double maxRangeKm = 0;  // outermost range drawn; 0: the end of the last gate
    /* Ends of the colour scale; NaN: the usual range of the quantity. Classes have no scale. */
    double displayMin = std::numeric_limits<double>::quiet_NaN();
    double displayMax = std::numeric_limits<double>::quiet_NaN();
    std::vector<std::string> headings;  // one per panel, instead of the quantity's name
};

/* From a value to its colour. NaN has none, nor has a number that is not a class code. */
class ColourScale {
  public:
    ColourScale() = default;  // of classes
    ColourScale(Palette palette, double low, double high);
    static ColourScale ofReasons();
    [[nodiscard]] bool colour(float value, Rgb& result) const;

    bool classes = true;   // of class codes
    bool reasons = false;  // of what decided a class
    Palette palette = Palette::kSequential;
    double low = 0.0, high = 1.0;

  private:
    std::array<Rgb, 256> table_{};
};

struct Quantity {
    std::string heading;  // "Horizontal reflectivity (DZ)"
    std::string units;
    ColourScale scale;
};

/* Throws std::invalid_argument when the ends of the scale that options ask for are out of order. */
Quantity quantityOf(const scan::Field& field, const scan::Sweep& sweep,
                    const PictureOptions& options);

/* Shares of precipitation, ground clutter, noise, no data, sea and turbine clutter among all gates,
 * 0..1. */
std::array<double, 6> classShares(const std::vector<float>& classes);

/* Evenly spaced round numbers within [low, high], about `count` or fewer. */
std::vector<double> ticksBetween(double low, double high, double count);

/* As few decimals as the step between ticks needs; no "-0". */
std::string tickText(double tick, double step);

}  // namespace cli

#endif

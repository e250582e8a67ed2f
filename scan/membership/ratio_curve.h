/*
 * ratio_curve.h - how far the values of one input favour precipitation over clutter:
 * ln(density in precipitation / density in clutter), from labelled values.
 */
#ifndef SCAN_MEMBERSHIP_RATIO_CURVE_H
#define SCAN_MEMBERSHIP_RATIO_CURVE_H

#include <optional>
#include <string>
#include <vector>

namespace scan {

/* Where the points of an input lie, and which of its ends is clutter. */
struct InputAxis {
    const char* tag;
    double low, high;                   // of the points
    bool logarithmic;                   // even steps of the logarithm
    bool mirrored;                      // values of both signs are alike
    bool clutterIsLow;                  // small values speak for clutter
    double neutralBelow, neutralAbove;  // the physical range: beyond it nothing is decided
};

/* Null where the input has no tables. */
const InputAxis* axisOf(const std::string& tag);

/* Labelled values of one scan. */
struct ClassValues {
    std::vector<float> precipitation, clutter;
};

class RatioCurve {
  public:
    static constexpr int kPoints = 65;

    /*
     * Histograms with a Gaussian kernel (1.5 steps for 1,000 values, narrower for more), every scan
     * counting the same; 50 pseudo values of the mean of both classes, so that few values say
     * little; monotone, within -4 .. 4. Nothing without values of both classes.
     */
    [[nodiscard]] static std::optional<RatioCurve> fit(const InputAxis& axis,
                                                       const std::vector<ClassValues>& scans);

    const InputAxis& axis() const { return *axis_; }
    double abscissa(int point) const;
    double ratio(int point) const { return ratios_[static_cast<std::size_t>(point)]; }

    /* Of any value; 0 where it is missing or beyond the physical range. */
    double at(float value) const;

  private:
    explicit RatioCurve(const InputAxis& axis) : axis_(&axis) {}

    const InputAxis* axis_;
    std::vector<double> ratios_;
};

}  // namespace scan

#endif

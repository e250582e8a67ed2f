/* axes.h - a field on its axes, and the scale or legend below it. */
#ifndef CLI_PICTURE_AXES_H
#define CLI_PICTURE_AXES_H

#include "picture/canvas.h"
#include "picture/raster.h"

namespace cli {

/* A rectangle of the picture. em is the text size; all distances are multiples of it. */
struct Frame {
    double x = 0, y = 0, width = 0, height = 0;
    double em = 12;
};

/* Space for the labels around the axes, in em. */
inline constexpr double kLeftEm = 4.6, kRightEm = 1.4, kBelowAxesEm = 4.0, kScaleEm = 3.6;

/* The image, range rings, azimuth marks, ticks and labels. */
void drawPlanPosition(const Canvas& canvas, const Frame& frame, const View& view,
                      const Image& image);
void drawRangeHeight(const Canvas& canvas, const Frame& frame, const View& view,
                     const Image& image);

/* The radius of the scan's circle divided by half the width of its square frame. The rest holds the
 * azimuth labels. */
double circleShare(const Canvas& canvas, const Frame& frame);

/* A colour bar with ticks and units, or the classes and their shares. */
void drawScale(const Canvas& canvas, const Frame& frame, const Quantity& quantity,
               const std::vector<float>& values);

}  // namespace cli

#endif

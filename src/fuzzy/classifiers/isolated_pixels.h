/*
 * isolated_pixels.h - counting neighbours of class 0 in a window of a polar field.
 */
#ifndef CLUTTER_FUZZY_ISOLATED_PIXELS_H
#define CLUTTER_FUZZY_ISOLATED_PIXELS_H

#include <cstdint>
#include <vector>

namespace clutter::fuzzy {

/*
 * Counts, for each gate of a ray, the members of value exactly 0.0 in a window of gates by rays
 * (each from -w/2 to w/2). Counts are whole numbers, so they may be summed in any order: along the
 * ray once, then across rays by adding the ray that enters the window and subtracting the one that
 * leaves it.
 */
class ZeroCounter {
  public:
    ZeroCounter(const float* cls, int ngates, int nrays, int wgates, int wrays);

    /* Counts of the next ray, from ray 0 on. Only the constructor reads cls, which may be
     * overwritten afterwards.
     */
    const std::int64_t* next();

  private:
    void add(std::int64_t logicalRay, std::int64_t times);

    int ngates_;
    int nrays_;
    int halfRays_;
    std::int64_t ray_ = -1;
    std::vector<std::uint32_t> alongRay_;  // nrays x ngates: window sums within the ray
    std::vector<std::int64_t> counts_;
};

}  // namespace clutter::fuzzy

#endif

/*
 * neighbourhood.h - the mean of the textures' evidence over a window of classified gates.
 */
#ifndef CLUTTER_CLASSIFIER_NEIGHBOURHOOD_H
#define CLUTTER_CLASSIFIER_NEIGHBOURHOOD_H

#include <cstdint>
#include <vector>

#include "classifier/evidence/evidence.h"
#include "dsp/windows/texture.h"

namespace clutter::classifier {

/* A member's evidence is limited to -kMaxEvidence .. kMaxEvidence: the range
 * of products of normal numbers, so that no single gate is infinitely sure. */
constexpr float kMaxEvidence = 700.0f;

inline double limitEvidence(double evidence) {
    constexpr auto kMost = static_cast<double>(kMaxEvidence);
    return evidence < -kMost ? -kMost : evidence > kMost ? kMost : evidence;
}

/*
 * Sums along the gates of each ray as it enters, then across the rays of a window. Rays are counted
 * on past the ends of the scan. Allocates in its constructor only.
 */
class Neighbourhood {
  public:
    Neighbourhood(int gates, dsp::Window window, int kinds);

    /* Adds a ray, whose members are its echoes without those of NaN evidence; null states: a ray
     * without members. */
    void enter(int logicalRay, const EvidenceRow* row, const std::uint8_t* states);

    /* The mean over the window around a ray that lies in the middle of those entered last; 0
     * without members. */
    void mean(int logicalRay, int kind, float* out);

    /* How many members the window of each gate has, for the last mean() of a kind. */
    const float* counts(int kind) const { return counts_[kind].data(); }

  private:
    struct RaySums {
        std::vector<float> sums[kMaxKinds];
        std::vector<float> counts[kMaxKinds];
    };

    RaySums& slot(int logicalRay);

    int gates_;
    dsp::Window window_;
    int kinds_;
    std::vector<RaySums> rays_;
    std::vector<float> padded_;  // a ray with half a window on either side
    std::vector<float> counts_[kMaxKinds];
};

}  // namespace clutter::classifier

#endif

/*
 * Window means in two steps: along the gates of a ray, then across rays. The order of the sums is
 * fixed, so that the bits do not depend on who computes them.
 */
#include "classifier/evidence/neighbourhood.h"

#include <algorithm>
#include <cstddef>

#include "base/kernel.h"
#include "classifier/scan/scan_rows.h"

namespace clutter::classifier {
namespace {

/* Members are echoes whose evidence is a number. */
CLUTTER_KERNEL void selectMembers(const float* __restrict evidence,
                                  const std::uint8_t* __restrict states, float* __restrict out,
                                  int n) {
    for (int g = 0; g < n; ++g) {
        float value = evidence[g];
        value = value < kMaxEvidence ? value : kMaxEvidence;
        value = value > -kMaxEvidence ? value : -kMaxEvidence;
        out[g] = states[g] == kEcho && evidence[g] == evidence[g] ? value : 0.0f;
    }
}

CLUTTER_KERNEL void selectOnes(const float* __restrict evidence,
                               const std::uint8_t* __restrict states, float* __restrict out,
                               int n) {
    for (int g = 0; g < n; ++g) {
        out[g] = states[g] == kEcho && evidence[g] == evidence[g] ? 1.0f : 0.0f;
    }
}

/* sums[g] = padded[g] + ... + padded[g + width - 1] */
CLUTTER_KERNEL void sumAlong(const float* __restrict padded, int width, float* __restrict sums,
                             int n) {
    for (int g = 0; g < n; ++g) {
        sums[g] = padded[g];
    }
    for (int d = 1; d < width; ++d) {
        for (int g = 0; g < n; ++g) {
            sums[g] += padded[g + d];
        }
    }
}

CLUTTER_KERNEL void addRow(const float* __restrict row, float* __restrict sums, int n) {
    for (int g = 0; g < n; ++g) {
        sums[g] += row[g];
    }
}

CLUTTER_KERNEL void divide(const float* __restrict counts, float* __restrict sums, int n) {
    for (int g = 0; g < n; ++g) {
        sums[g] = counts[g] > 0.0f ? sums[g] / counts[g] : 0.0f;
    }
}

}  // namespace

Neighbourhood::Neighbourhood(int gates, dsp::Window window, int kinds)
    : gates_(gates),
      window_(window),
      kinds_(kinds),
      rays_(static_cast<std::size_t>(window.rays)),
      padded_(static_cast<std::size_t>(gates) + static_cast<std::size_t>(window.gates)) {
    const auto n = static_cast<std::size_t>(gates);
    for (int kind = 0; kind < kinds; ++kind) {
        counts_[kind].resize(n);
        for (RaySums& ray : rays_) {
            ray.sums[kind].resize(n);
            ray.counts[kind].resize(n);
        }
    }
}

Neighbourhood::RaySums& Neighbourhood::slot(int logicalRay) {
    const int remainder = logicalRay % window_.rays;
    return rays_[static_cast<std::size_t>(remainder < 0 ? remainder + window_.rays : remainder)];
}

void Neighbourhood::enter(int logicalRay, const EvidenceRow* row, const std::uint8_t* states) {
    RaySums& ray = slot(logicalRay);
    float* const members = padded_.data() + window_.gates / 2;
    for (int kind = 0; kind < kinds_; ++kind) {
        float* const sums = ray.sums[kind].data();
        float* const counts = ray.counts[kind].data();
        if (states == nullptr) {
            std::fill_n(sums, gates_, 0.0f);
            std::fill_n(counts, gates_, 0.0f);
            continue;
        }
        const float* const evidence = row->textures[kind].data();
        selectOnes(evidence, states, members, gates_);
        sumAlong(padded_.data(), window_.gates, counts, gates_);
        selectMembers(evidence, states, members, gates_);
        sumAlong(padded_.data(), window_.gates, sums, gates_);
    }
}

void Neighbourhood::mean(int logicalRay, int kind, float* out) {
    const int half = window_.rays / 2;
    float* const counts = counts_[kind].data();
    std::fill_n(counts, gates_, 0.0f);
    std::fill_n(out, gates_, 0.0f);
    for (int r = logicalRay - half; r <= logicalRay + half; ++r) {
        addRow(slot(r).counts[kind].data(), counts, gates_);
        addRow(slot(r).sums[kind].data(), out, gates_);
    }
    divide(counts, out, gates_);
}

}  // namespace clutter::classifier

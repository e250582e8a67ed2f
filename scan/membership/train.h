/* train.h - membership functions from labelled scans. */
#ifndef SCAN_MEMBERSHIP_TRAIN_H
#define SCAN_MEMBERSHIP_TRAIN_H

#include <string>
#include <vector>

#include "scan/membership/labelled_scan.h"
#include "scan/membership/train_scores.h"
#include "scan/membership/trained_input.h"

namespace scan {

struct TrainOptions {
    Window neighbourhood = {5, 3};  // that the functions will be used with; none: gate by gate
    double prior = 0.2;             // share of clutter
};

struct Training {
    std::vector<TrainedInput> inputs;
    std::vector<ScanScores> unused;  // on sectors that took no part in a training
    std::vector<std::string> warnings;
};

/*
 * Trains on all scans, and five times on four fifths of their sectors of ten rays, to score the
 * others. Throws std::runtime_error where the labels are too few: less than 1,000 gates of a class,
 * or clutter in less than two sectors.
 */
Training trainMembership(const std::vector<LabelledScan>& scans, const TrainOptions& options);

}  // namespace scan

#endif

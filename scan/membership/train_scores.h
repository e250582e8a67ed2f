/* train_scores.h - how classes compare with labels. */
#ifndef SCAN_MEMBERSHIP_TRAIN_SCORES_H
#define SCAN_MEMBERSHIP_TRAIN_SCORES_H

#include <string>
#include <vector>

#include "scan/membership/labelled_scan.h"
#include "scan/membership/trained_input.h"

namespace scan {

/* How classes compare with labels. Strict: with the weather beside clutter. */
struct TrainScores {
    double kept = 0;  // share of weather that stays precipitation
    double keptStrict = 0;
    double found = 0;  // share of clutter that is found
    double hss = 0;    // Heidke skill score at the scan's own share of clutter
    double hssStrict = 0;
    double hssOneToNine = 0;  // as if clutter were a tenth
};

struct ScanScores {
    std::string name;
    long clutter = 0, weather = 0, beside = 0;  // labelled gates
    TrainScores scores;
};

/* Labelled gates by verdict. */
class LabelCounts {
  public:
    /* A negative margin is clutter. */
    void add(Label label, float margin);
    TrainScores scores() const;

  private:
    double hit_ = 0, miss_ = 0, kept_ = 0, lost_ = 0, besideKept_ = 0, besideLost_ = 0;
};

/* The scores of functions on a scan. */
TrainScores scoreInputs(const std::vector<TrainedInput>& inputs, const LabelledScan& scan,
                        Window neighbourhood);

}  // namespace scan

#endif

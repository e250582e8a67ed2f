/* train_scores.cpp - counts and skill. */
#include "scan/membership/train_scores.h"

namespace scan {
namespace {

double share(double part, double rest) {
    return part + rest > 0 ? part / (part + rest) : 0;
}
double heidke(double hit, double miss, double kept, double lost) {
    const double chance = (hit + miss) * (miss + kept) + (hit + lost) * (lost + kept);
    return chance > 0 ? 2 * (hit * kept - lost * miss) / chance : 0;
}

}  // namespace

void LabelCounts::add(Label label, float margin) {
    const bool clutter = margin < 0;
    switch (label) {
        case Label::kClutter:
            (clutter ? hit_ : miss_) += 1;
            break;
        case Label::kWeather:
            (clutter ? lost_ : kept_) += 1;
            break;
        case Label::kBeside:
            (clutter ? besideLost_ : besideKept_) += 1;
            break;
        case Label::kNotJudged:
            break;
    }
}

TrainScores LabelCounts::scores() const {
    const double strictKept = kept_ + besideKept_, strictLost = lost_ + besideLost_;
    const double pod = share(hit_, miss_), keptShare = share(kept_, lost_);
    return {keptShare,
            share(strictKept, strictLost),
            pod,
            heidke(hit_, miss_, kept_, lost_),
            heidke(hit_, miss_, strictKept, strictLost),
            heidke(pod, 1 - pod, 9 * keptShare, 9 * (1 - keptShare))};
}

TrainScores scoreInputs(const std::vector<TrainedInput>& inputs, const LabelledScan& scan,
                        Window neighbourhood) {
    const auto margins = marginsOf(inputs, scan, neighbourhood);
    LabelCounts counts;
    for (std::size_t i = 0; i < margins.size(); ++i) {
        counts.add(scan.labels[i], margins[i]);
    }
    return counts.scores();
}

}  // namespace scan

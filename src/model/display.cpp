/*
 * Display settings that all readers of scan files share.
 */
#include "model/display.h"

#include <algorithm>
#include <cstdio>

#include "base/text.h"
#include "model/coordinates.h"

namespace clutter::model {
namespace {

constexpr int kScanColormap = 7;
constexpr unsigned char kScanColorflag = 255;

}  // namespace

void showWholeScan(Cpluvek& record, float intervals, const char* xlabel, const char* ylabel) {
    const float reach = static_cast<float>(record.ngates) * record.gatesize;
    const float tick = (reach - -reach) / intervals;
    const float limits[6] = {-reach, reach, tick, -reach, reach, tick};
    std::copy_n(limits, 6, record.axislimits);
    std::copy_n(limits, 6, record.axislimits0);
    base::copyText(record.xlabel, xlabel);
    base::copyText(record.ylabel, ylabel);
    record.coordtype = kPolar;
    record.colormap = kScanColormap;
    record.colorflag = kScanColorflag;
}

void entitleByTime(Cpluvek& record) {
    record.GetDateTime();
    std::snprintf(record.title, sizeof record.title, "DATA FILE, %s", record.datetime);
}

}  // namespace clutter::model

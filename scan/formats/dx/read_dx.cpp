/* The library's reader, and gates without an echo as missing values. */
#include "scan/formats/dx/read_dx.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/formats/record/read_record.h"
#include "scan/opened_file.h"
#include "scan/scan.h"

namespace scan {
namespace {

constexpr float kNoEchoDbz = -32.5f;

/* The library reports success for a file whose first ray has another number of bins, and leaves all
 * values at 0. After a real read some value differs from 0. */
bool holdsRays(const CGermanRadar& radar) {
    return std::any_of(std::begin(radar.reflectivity), std::end(radar.reflectivity),
                       [](double value) { return value != 0; });
}

/* The library's own value marks them, not its mark of no rain. */
void markNoEcho(Field& field, bool keep) {
    field.noEcho = kNoEchoDbz;
    if (keep) {
        return;
    }
    field.leavesOutNoEcho = true;
    std::replace(field.values.begin(), field.values.end(), kNoEchoDbz, kNoValue);
}

}  // namespace

Scan readGermanDx(const std::string& path, bool keepNoEcho) {
    const auto radar = std::make_unique<CGermanRadar>();
    std::string name = path;
    if (radar->readbinaryfile(name.data()) != 1) {
        failReading(path, "is not a complete German DX file");
    }
    if (!holdsRays(*radar)) {
        throw std::runtime_error("has a first ray of neither 100 nor 128 bins");
    }
    Cpluvek records[2];
    radar->german2pluvek(records);
    Scan scan = scanFromRecords(records, 1);
    scan.format = "German DX";
    Sweep& sweep = scan.sweeps[0];
    sweep.elevationDeg.assign(std::begin(radar->elevation), std::end(radar->elevation));
    markNoEcho(sweep.fields[0], keepNoEcho);
    scan.oddities.push_back(
        "A German DX file contains neither the position of its radar nor a "
        "calibration constant.");
    return scan;
}

}  // namespace scan

/* fill_context.cpp - one record a role. */
#include "scan/process/fill_context.h"

#include <algorithm>
#include <cstddef>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/angles.h"
#include "scan/fields/missing.h"
#include "scan/fields/oddities.h"

namespace scan {
namespace {

constexpr struct {
    Role role;
    Cpluvek Crres::*record;
} kRecords[] = {
    {Role::kZhh, &Crres::zhh}, {Role::kZdr, &Crres::zdr}, {Role::kPdp, &Crres::pdp},
    {Role::kRhv, &Crres::rhv}, {Role::kVel, &Crres::vel}, {Role::kWid, &Crres::wid},
    {Role::kLdr, &Crres::ldr}, {Role::kPdf, &Crres::pdf},
};

}  // namespace

void fillRecord(const Sweep& sweep, const Field& field, Role role, int rays, Cpluvek& record) {
    const auto count = static_cast<std::size_t>(rays) * static_cast<std::size_t>(sweep.ngates);
    record.nrays = rays;
    record.ngates = sweep.ngates;
    record.gatesize = static_cast<float>(sweep.gateSpacingM);
    record.firstgate = 0;
    record.coordtype = 0;
    record.colorflag = 255;
    record.recindex = 0;
    record.nrecords = 1;
    record.nsets = 1;
    record.angles = new float[static_cast<std::size_t>(rays) + 1]();
    record.angles[0] = static_cast<float>(middleElevationDeg(sweep) * kRadiansPerDegree);
    for (int r = 0; r < sweep.nrays; ++r) {
        record.angles[1 + r] =
            static_cast<float>(sweep.azimuthDeg[static_cast<std::size_t>(r)] * kRadiansPerDegree);
    }
    record.data = new float[count];
    std::fill(record.data, record.data + count, fillValue(role));
    for (std::size_t i = 0; i < field.values.size(); ++i) {
        if (!isMissing(role, field.values[i])) {
            record.data[i] = field.values[i];
        }
    }
}

void fillContext(const Sweep& sweep, const FieldChoice& fields, int reach, Crres& context) {
    const int rays = sweep.nrays + (closesCircle(sweep) ? 0 : reach);
    for (const auto& row : kRecords) {
        if (const Field* field = fields[row.role]) {
            fillRecord(sweep, *field, row.role, rays, context.*row.record);
        }
    }
}

}  // namespace scan

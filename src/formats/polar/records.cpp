/*
 * The common header of the fields of a scan, and the order of its rays.
 */
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "base/array.h"
#include "base/constants.h"
#include "base/text.h"
#include "clutterclassifier/CDSP.h"
#include "clutterclassifier/CThuPolDaFor.h"
#include "formats/polar/layout.h"

using namespace clutter;
using namespace clutter::formats;

namespace {

constexpr float kDefaultThreshold = 26.0f;

void copyHeader(const Cpluvek& from, Cpluvek& to) {
    to.nrecords = from.nrecords;
    to.valid = from.valid;
    to.colormap = from.colormap;
    to.colorflag = from.colorflag;
    to.coordtype = from.coordtype;
    to.year = from.year;
    to.month = from.month;
    to.day = from.day;
    to.hour = from.hour;
    to.minute = from.minute;
    to.second = from.second;
    to.latitude = from.latitude;
    to.longitude = from.longitude;
    to.altitude = from.altitude;
    to.radarconst = from.radarconst;
    to.wavelength = from.wavelength;
    to.rpm = from.rpm;
    to.prf = from.prf;
    to.pulsedepth = from.pulsedepth;
    to.nsamples = from.nsamples;
    to.nrays = from.nrays;
    to.ngates = from.ngates;
    to.firstgate = from.firstgate;
    to.gatesize = from.gatesize;
    to.radarid = from.radarid;
    to.nyquist = from.nyquist;
    std::copy_n(from.axislimits, 6, to.axislimits);
    std::copy_n(from.axislimits0, 6, to.axislimits0);
    base::copyText(to.xlabel, from.xlabel);
    base::copyText(to.ylabel, from.ylabel);
}

void copyAngles(const Cpluvek& from, Cpluvek& to) {
    if (from.angles == nullptr) {
        return;
    }
    const std::size_t count = static_cast<std::size_t>(std::max(from.nrays, 0)) + 1;
    std::unique_ptr<float[]> angles(new float[count]);
    std::copy_n(from.angles, count, angles.get());
    base::adopt(to.angles, std::move(angles));
}

void describe(int field, Cpluvek& record) {
    const PolarField known = describeField(record.radarid, field);
    const float elevation = record.angles != nullptr ? record.angles[0] : 0.0f;
    record.beamwidth = base::kFloatOneDegreeRad;  // not the file's: displays rely on it
    record.GetDateTime();
    base::copyText(record.name, known.name);
    base::copyText(record.units, known.units);
    std::snprintf(record.title, sizeof record.title, "%s, %s, %2.2fdeg", record.name,
                  record.datetime, static_cast<double>(180.0f * elevation / base::kFloatPi));
    record.displaymin = known.lowest.at(record.nyquist);
    record.displaymax = known.highest.at(record.nyquist);
}

/* Orders the rays of one record; its arrays are replaced. */
void sortRays(CDSP& dsp, Cpluvek& record) {
    if (record.data == nullptr || record.angles == nullptr) {
        return;
    }
    if (record.nrays < 1 || record.ngates < 1) {
        return;
    }
    const auto nrays = static_cast<std::size_t>(record.nrays);
    const auto ngates = static_cast<std::size_t>(record.ngates);
    std::vector<float> sorted(nrays);
    std::vector<int> before(nrays);
    dsp.Sort(record.angles + 1, sorted.data(), before.data(), record.nrays);
    std::unique_ptr<float[]> data(new float[nrays * ngates]);
    for (std::size_t r = 0; r < nrays; ++r) {
        const auto old = static_cast<std::size_t>(before[r]);
        std::copy_n(record.data + old * ngates, ngates, data.get() + r * ngates);
    }
    base::adopt(record.data, std::move(data));
    std::copy(sorted.begin(), sorted.end(), record.angles + 1);
}

}  // namespace

CThuPolDaFor::CThuPolDaFor() : signalthreshold(kDefaultThreshold) {
    SetMagicNumber(0);
}

CThuPolDaFor::~CThuPolDaFor() {}

void CThuPolDaFor::SetMagicNumber(int flag) {
    swapflag = flag;
    std::memcpy(magic, flag != 0 ? kMagicPlain : kMagicExchanged, sizeof magic);
}

void CThuPolDaFor::FillingFields(Cpluvek* fields) {
    if (fields == nullptr) {
        return;
    }
    for (int f = 0; f < fields[0].nrecords; ++f) {
        if (f > 0) {
            copyHeader(fields[0], fields[f]);
            copyAngles(fields[0], fields[f]);
        }
        fields[f].recindex = f;
        describe(f, fields[f]);
    }
}

void CThuPolDaFor::SortPolarDataRays(Cpluvek* fields) {
    if (fields == nullptr || fields[0].coordtype != 0) {
        return;
    }
    CDSP dsp;
    for (int f = 0; f < fields[0].nrecords; ++f) {
        sortRays(dsp, fields[f]);
    }
}

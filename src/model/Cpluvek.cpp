/*
 * The field record: defaults, ownership, date text and copies.
 */
#include "clutterclassifier/Cpluvek.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>

#include "base/array.h"
#include "base/text.h"

using clutter::base::adopt;
using clutter::base::cellCount;
using clutter::base::copyText;
using clutter::base::release;

namespace {

std::size_t angleCount(int nrays) {
    return static_cast<std::size_t>(std::max(nrays, 0)) + 1;
}

/* A copy of an array; an absent one stays absent. */
std::unique_ptr<float[]> duplicate(const float* source, std::size_t count) {
    if (source == nullptr) {
        return nullptr;
    }
    std::unique_ptr<float[]> fresh(new float[count]);
    std::copy_n(source, count, fresh.get());
    return fresh;
}

/* Copies all members except arrays, sizes and index. Both sets of axis limits of the copy are the
 * source's current ones. */
void copyDescription(const Cpluvek& source, Cpluvek& destination) {
    destination.coordtype = source.coordtype;
    destination.valid = source.valid;
    destination.colorflag = source.colorflag;
    destination.colormap = source.colormap;
    destination.year = source.year;
    destination.month = source.month;
    destination.day = source.day;
    destination.hour = source.hour;
    destination.minute = source.minute;
    destination.second = source.second;
    destination.wavelength = source.wavelength;
    destination.beamwidth = source.beamwidth;
    destination.gatesize = source.gatesize;
    destination.pulsedepth = source.pulsedepth;
    destination.rpm = source.rpm;
    destination.nsamples = source.nsamples;
    destination.prf = source.prf;
    destination.firstgate = source.firstgate;
    destination.radarid = source.radarid;
    destination.latitude = source.latitude;
    destination.longitude = source.longitude;
    destination.altitude = source.altitude;
    std::copy_n(source.gridxy, 2, destination.gridxy);
    destination.radarconst = source.radarconst;
    destination.minsnr = source.minsnr;
    destination.nyquist = source.nyquist;
    copyText(destination.xlabel, source.xlabel);
    copyText(destination.ylabel, source.ylabel);
    copyText(destination.datetime, source.datetime);
    copyText(destination.units, source.units);
    copyText(destination.name, source.name);
    copyText(destination.title, source.title);
    destination.displaymin = source.displaymin;
    destination.displaymax = source.displaymax;
    std::copy_n(source.axislimits, 6, destination.axislimits0);
    std::copy_n(source.axislimits, 6, destination.axislimits);
}

}  // namespace

Cpluvek::Cpluvek()
    : valid(0),
      year(1900),
      month(1),
      day(1),
      hour(0),
      minute(0),
      second(0),
      ngates(0),
      nrays(0),
      beamwidth(0.0f),
      axislimits{0.0f, 1.0f, 1.0f, 0.0f, 1.0f, 1.0f},
      axislimits0{0.0f, 1.0f, 1.0f, 0.0f, 1.0f, 1.0f},
      colormap(0),
      displaymin(0.0f),
      displaymax(1.0f),
      datetime{" "},
      xlabel{" "},
      ylabel{" "},
      title{" "},
      name{"-"},
      units{"-"},
      radarconst(0.0f),
      minsnr(26.0f),
      radarid(0),
      angles(nullptr),
      data(nullptr),
      nrecords(0),
      nsets(0),
      rpm(0.0f),
      prf(0.0f),
      pulsedepth(0.0f),
      nsamples(0.0f),
      wavelength(0.0f),
      latitude(0.0f),
      longitude(0.0f),
      altitude(0.0f),
      gridxy{-1.0f, -1.0f},
      nyquist(0.0f),
      spare(0.0f),
      datatype(0),
      scale(0.0),
      offset(0.0) {}

Cpluvek::~Cpluvek() {
    release(angles);
    release(data);
}

void Cpluvek::GetDateTime() {
    if (this == nullptr) {
        return;
    }
    std::snprintf(datetime, sizeof datetime, "%.2d/%.2d/%.4d %.2d:%.2d:%.2d", day, month, year,
                  hour, minute, second);
}

int Cpluvek::CopyPointerToObject(int index, Cpluvek& dst) {
    if (this == nullptr || this[std::max(index, 0)].data == nullptr) {
        return -1;
    }
    const int position = index >= 0 && index < nrecords ? index : 0;
    const Cpluvek& source = this[position];
    // Copied before anything is freed: dst may be the source itself.
    auto freshAngles = duplicate(source.angles, angleCount(source.nrays));
    auto freshData = duplicate(source.data, cellCount(source.ngates, source.nrays));
    if (dst.nrecords < 1) {
        dst.nrecords = 1;
    }
    dst.nsets = source.nrecords;
    dst.recindex = position;
    copyDescription(source, dst);
    dst.nrays = source.nrays;
    dst.ngates = source.ngates;
    adopt(dst.angles, std::move(freshAngles));
    adopt(dst.data, std::move(freshData));
    return 1;
}

void Cpluvek::copy(Cpluvek** dst) {
    if (this == nullptr || dst == nullptr) {
        return;
    }
    const auto count = static_cast<std::size_t>(std::max(nrecords, 0));
    std::unique_ptr<Cpluvek[]> fresh(new Cpluvek[count]);
    for (std::size_t i = 0; i < count; ++i) {
        const Cpluvek& source = this[i];
        fresh[i].nrecords = static_cast<int>(count);
        fresh[i].nrays = nrays;
        fresh[i].ngates = ngates;
        fresh[i].recindex = source.recindex;
        copyDescription(source, fresh[i]);
        adopt(fresh[i].data, duplicate(source.data, cellCount(ngates, nrays)));
        adopt(fresh[i].angles, duplicate(source.angles, angleCount(nrays)));
    }
    // Replaced last: *dst may be this array.
    adopt(*dst, std::move(fresh));
}

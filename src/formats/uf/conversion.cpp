/*
 * Universal Format rays from field records and back (docs/formats/universal-format.md).
 *
 * Header arithmetic is single precision throughout, left to right as in these expressions.
 */
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include "base/array.h"
#include "base/constants.h"
#include "base/files/claims.h"
#include "base/number.h"
#include "base/text.h"
#include "clutterclassifier/Cpluvek.h"
#include "clutterclassifier/Cufrw.h"
#include "formats/uf/fields.h"
#include "formats/uf/layout.h"
#include "model/display.h"

using clutter::base::adopt;
using clutter::base::cellCount;
using clutter::base::copyText;
using clutter::base::kFloatPi;
using namespace clutter::formats;

namespace {

constexpr short kMissing = std::numeric_limits<short>::min();
constexpr short kValueScale = 100;
constexpr short kBitsPerGate = 16;

/* A value truncated toward zero and wrapped to a word; 0 for NaN and infinities. */
short wordOf(float value) {
    return clutter::base::truncateAndWrap<short>(static_cast<double>(value));
}

short wordOf(int value) {
    return static_cast<short>(static_cast<std::uint16_t>(value));
}

/* An angle in radians as degrees x 64. */
short angleWord(float radians) {
    return wordOf(64.0f * radians * 180.0f / clutter::base::kFloatPiFourDecimals);
}

float angleOf(short word) {
    return static_cast<float>(word) / 64.0f * kFloatPi / 180.0f;
}

/* --- field records to rays --- */

/* Number of words of a ray: headers, field headers, then data without gaps. */
std::size_t wordsOfRay(const Cpluvek* fields, std::size_t nfields, std::size_t ngates) {
    std::size_t words = firstFreePosition(nfields) - 1 + nfields * ngates;
    for (std::size_t f = 0; f < nfields; ++f) {
        words += fieldHeaderWords(ufNameOf(fields[f].name));
    }
    return words;
}

void fillSite(const Cpluvek& source, Cufray& ray) {
    copyText(ray.radarname, "TH      ");
    copyText(ray.sitename, "UK      ");
    deg2degminsec(source.latitude, ray.latitudedegrees, ray.latitudeminutes, ray.latitudeseconds);
    deg2degminsec(source.longitude, ray.longitudedegrees, ray.longitudeminutes,
                  ray.longitudeseconds);
    ray.altitude = wordOf(source.altitude);
}

void fillTimes(const Cpluvek& source, Cufray& ray) {
    ray.year = wordOf(source.year);
    ray.month = wordOf(source.month);
    ray.day = wordOf(source.day);
    ray.hour = ray.starthour = wordOf(source.hour);
    ray.minute = ray.startminute = wordOf(source.minute);
    ray.second = ray.startsecond = wordOf(source.second);
    copyText(ray.timezone, "UT");
}

void fillGeneration(const std::tm& today, Cufray& ray) {
    ray.generationyear = wordOf(today.tm_year + 1900);
    ray.generationmonth = wordOf(today.tm_mon + 1);
    ray.generationday = wordOf(today.tm_mday);
    copyText(ray.generationfacility, "PLUVEK  ");
}

void fillPointing(float azimuth, float elevation, float rpm, Cufray& ray) {
    ray.azimuth = ray.baselineazimuth = angleWord(azimuth);
    ray.elevation = ray.baselineelevation = angleWord(elevation);
    ray.sweepmode = 1;
    // In radians, although readers expect degrees: compatible with existing files.
    ray.fixedangle = wordOf(64.0f * azimuth);
    ray.sweeprate = wordOf(360.0f * rpm / 60.0f * 64.0f);
}

/* The header words of a ray that all its fields share. */
void fillHeaders(const Cpluvek& source, int r, const std::tm& today, Cufray& ray) {
    copyText(ray.format, "UF");
    ray.recordnumber = ray.raynumber = wordOf(r + 1);
    ray.volumenumber = ray.recordinray = ray.sweepnumber = 1;
    fillSite(source, ray);
    fillTimes(source, ray);
    const float* angles = source.angles;
    fillPointing(angles ? angles[1 + r] : 0.0f, angles ? angles[0] : 0.0f, source.rpm, ray);
    fillGeneration(today, ray);
    ray.missingvalue = kMissing;
    copyText(ray.projectname, "RADAR   ");
    copyText(ray.tapename, "RADAR   ");
    ray.flag = 1;
    ray.nyquist = wordOf(100.0f * source.nyquist);
    ray.radarconstant = wordOf(100.0f * source.radarconst);
}

void fillFieldHeader(const Cpluvek& source, CufFieldHeader& header) {
    header.scalefactor = kValueScale;
    header.firstgaterange =
        wordOf(static_cast<float>(source.firstgate) * source.gatesize / 1000.0f);
    header.firstgateadjustment = wordOf(header.firstgaterange * 1000);
    header.gatespacing = wordOf(source.gatesize);
    header.gatedepth = wordOf(source.pulsedepth);
    header.horizontalbeamwidth = header.verticalbeamwidth = angleWord(source.beamwidth);
    header.receiverbandwidth = kMissing;
    header.polarisation = 1;
    header.wavelength = wordOf(6400.0f * source.wavelength);
    header.samples = kMissing;
    copyText(header.thresholdfield, "  ");
    header.thresholdvalue = header.thresholdscale = kMissing;
    copyText(header.editcode, "--");
    header.repetitiontime = wordOf(1000000.0f / source.prf);
    header.bitspergate = kBitsPerGate;
}

/* Names the fields and sets the positions of all headers and fields for the writer. */
void placeFields(const Cpluvek* fields, std::size_t nfields, Cufray& ray) {
    ray.optionalposition = kOptionalPosition;
    ray.localposition = kLocalPositionWithOptional;
    ray.dataposition = kDataHeaderPosition;
    ray.nfields = ray.nrecordfields = static_cast<short>(nfields);
    ray.nrecords = 1;
    std::size_t position = firstFreePosition(nfields);
    for (std::size_t f = 0; f < nfields; ++f) {
        copyText(ray.table[f].name, ufNameOf(fields[f].name));
        ray.table[f].position = static_cast<unsigned short>(position);
        position += fieldHeaderWords(ray.table[f].name);
    }
    for (std::size_t f = 0; f < nfields; ++f) {
        ray.headers[f].ngates = ray.ngates;
        ray.headers[f].dataposition = static_cast<unsigned short>(position);
        position += ray.ngates;
    }
    ray.recordlength = static_cast<unsigned short>(position - 1);
}

/* The words of one ray of a field. Values past the end of the field are missing. */
void fillData(const Cpluvek& field, std::size_t ray, std::size_t ngates, short* out) {
    const std::size_t held = field.data ? cellCount(field.ngates, field.nrays) : 0;
    const std::size_t from = std::min(held, ray * ngates);
    const std::size_t count = std::min(held - from, ngates);
    const float* values = field.data + from;
    for (std::size_t g = 0; g < count; ++g) {
        out[g] = wordOf(100.0f * values[g]);
    }
    std::fill(out + count, out + ngates, kMissing);
}

std::tm localToday() {
    const std::time_t now = std::time(nullptr);
    std::tm today{};
    localtime_r(&now, &today);
    return today;
}

/* --- rays to field records --- */

/* One long ray among many short ones must not cost all of the memory: every ray gets the gates of
 * the first one. A file holds at least one word for every gate of a ray. */
bool isPlausibleGrid(const Cufray* rays, std::size_t nrays, std::size_t nfields) {
    std::size_t gates = 0;
    for (std::size_t r = 0; r < nrays; ++r) {
        gates += rays[r].ngates;
    }
    return clutter::base::mayDeclare(nfields * nrays * rays[0].ngates, kWordBytes * gates);
}

/* Degrees of an angle whose seconds are whole seconds. */
float degreesOf(short degrees, short minutes, short seconds) {
    return static_cast<float>(degrees) + static_cast<float>(minutes) / 60.0f +
           static_cast<float>(seconds) / 3600.0f;
}

void fillDescription(const Cufray& first, Cpluvek& record) {
    record.latitude =
        degreesOf(first.latitudedegrees, first.latitudeminutes, first.latitudeseconds);
    record.longitude =
        degreesOf(first.longitudedegrees, first.longitudeminutes, first.longitudeseconds);
    record.year = first.year;
    record.month = first.month;
    record.day = first.day;
    record.hour = first.hour;
    record.minute = first.minute;
    record.second = first.second;
    clutter::model::entitleByTime(record);
}

void fillGeometry(const CufFieldHeader& header, short missing, Cpluvek& record) {
    const float beamWord = header.horizontalbeamwidth;
    const bool known = header.horizontalbeamwidth != missing;
    record.beamwidth = known ? beamWord / 64.0f * kFloatPi / 180.0f : kFloatPi / 180.0f;
    record.gatesize = header.gatespacing;
    record.firstgate = 0;
    if (header.gatespacing != 0) {
        record.firstgate = header.firstgaterange * 1000 / header.gatespacing;
    }
    clutter::model::showWholeScan(record, 5.0f, "Easting [km]", "Northing [km]");
}

void fillDisplay(const char* ufName, Cpluvek& record) {
    copyText(record.name, ufName);
    copyText(record.units, ufName);
    const DisplayRange range = displayRangeOf(ufName);
    record.displaymin = range.lowest;
    record.displaymax = range.highest;
}

/* Decodes the values of one ray. Missing gates and gates past its end keep their value, and so do
 * all gates for a scale of 0. */
void decodeRay(const Cufray& ray, std::size_t field, short scale, float* out, std::size_t ngates) {
    if (ray.data == nullptr || scale == 0) {
        return;
    }
    const short* words = ray.data + field * ray.ngates;
    const std::size_t count = std::min<std::size_t>(ngates, ray.ngates);
    for (std::size_t g = 0; g < count; ++g) {
        if (words[g] == ray.missingvalue) {
            continue;
        }
        out[g] = static_cast<float>(words[g]) / static_cast<float>(scale);
    }
}

/* The arrays of a record: angles and values of one field of all rays. */
void fillArrays(const Cufray* rays, std::size_t nrays, std::size_t field, Cpluvek& record) {
    const std::size_t ngates = rays[0].ngates;
    std::unique_ptr<float[]> angles(new float[nrays + 1]);
    std::unique_ptr<float[]> values(new float[nrays * ngates]);
    std::fill_n(values.get(), nrays * ngates, absentValueOf(rays[0].table[field].name));
    angles[0] = angleOf(rays[0].elevation);
    for (std::size_t r = 0; r < nrays; ++r) {
        angles[1 + r] = angleOf(rays[r].azimuth);
        decodeRay(rays[r], field, rays[0].headers[field].scalefactor, values.get() + r * ngates,
                  ngates);
    }
    adopt(record.angles, std::move(angles));
    adopt(record.data, std::move(values));
}

}  // namespace

int Cufrw::pluvek2uf(Cpluvek* fields) {
    if (fields == nullptr) {
        return 0;
    }
    deletearrays();
    const Cpluvek& source = fields[0];
    const auto nfields = static_cast<std::size_t>(std::max(source.nrecords, 0));
    const auto ngates = static_cast<std::size_t>(std::max(source.ngates, 0));
    const auto count = static_cast<std::size_t>(std::max(source.nrays, 0));
    if (nfields > kMaxFields || ngates > UINT16_MAX) {
        return 0;
    }
    if (wordsOfRay(fields, nfields, ngates) > UINT16_MAX) {
        return 0;
    }
    const std::tm today = localToday();
    rays = new Cufray[count]();
    nrays = static_cast<int>(count);
    for (int r = 0; r < nrays; ++r) {
        Cufray& ray = rays[r];
        fillHeaders(source, r, today, ray);
        ray.ngates = static_cast<unsigned short>(ngates);
        for (std::size_t f = 0; f < nfields; ++f) {
            fillFieldHeader(source, ray.headers[f]);
        }
        placeFields(fields, nfields, ray);
        ray.data = new short[nfields * ngates];
        for (std::size_t f = 0; f < nfields; ++f) {
            fillData(fields[f], static_cast<std::size_t>(r), ngates, ray.data + f * ngates);
        }
    }
    return 1;
}

void Cufrw::uf2pluvek(Cpluvek* fields) {
    if (fields == nullptr || rays == nullptr || nrays < 1) {
        return;
    }
    const auto count = static_cast<std::size_t>(nrays);
    const std::size_t nfields = fieldCount(rays[0]);
    if (!isPlausibleGrid(rays, count, nfields)) {
        return;
    }
    for (std::size_t f = 0; f < nfields; ++f) {
        Cpluvek& record = fields[f];
        fillArrays(rays, count, f, record);
        record.ngates = rays[0].ngates;
        record.nrays = nrays;
        record.nrecords = static_cast<int>(nfields);
        record.recindex = static_cast<int>(f);
        fillDescription(rays[0], record);
        fillGeometry(rays[0].headers[f], rays[0].missingvalue, record);
        fillDisplay(rays[0].table[f].name, record);
    }
}

void deg2degminsec(float angle, short& deg, short& min, short& sec) {
    const float degrees = std::trunc(angle);
    const float minutes = (angle - degrees) * 60.0f;
    deg = wordOf(angle);
    min = wordOf(minutes);
    sec = wordOf((minutes - std::trunc(minutes)) * 60.0f);
}

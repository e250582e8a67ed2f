/* The library's rays as sweeps: geometry, names, calibration and damage. */
#include "scan/formats/uf/read_uf.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/fields/role.h"
#include "scan/formats/uf/framing.h"
#include "scan/opened_file.h"
#include "scan/quantile.h"
#include "scan/scan.h"

namespace scan {
namespace {

constexpr double kUnitsPerDegree = 64;
constexpr int kModeRhi = 3;

/* A few long rays among very many short ones would be padded to far more than the file holds. */
constexpr std::size_t kMaxPadding = 16;
constexpr std::size_t kAlwaysAllowedValues = 1 << 22;

std::string textOf(const char* chars) {
    std::string text(chars);
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}

/* Some writers fill a name that they do not know with the letter X. */
std::string nameOf(const char* chars) {
    const std::string text = textOf(chars);
    return text.find_first_not_of('X') == std::string::npos ? "" : text;
}

/* What the library's own conversion wrote: whole seconds, the range of the first gate twice, the
 * fixed angle of no use. */
bool fromLibrary(const Cufray& ray) {
    return textOf(ray.generationfacility) == "PLUVEK";
}

/* Degrees, minutes and seconds x 64, all of one sign. */
double angleDeg(const Cufray& ray, short degrees, short minutes, short seconds) {
    const double unit = fromLibrary(ray) ? 1 : kUnitsPerDegree;
    return degrees + minutes / 60.0 + seconds / unit / 3600.0;
}

double azimuthOf(const Cufray& ray) {
    const double azimuth = ray.azimuth / kUnitsPerDegree;
    return azimuth < 0 ? azimuth + 360 : azimuth;
}

double spread(const std::vector<double>& values) {
    const auto ends = std::minmax_element(values.begin(), values.end());
    return *ends.second - *ends.first;
}

/* Position of a field in a ray: rays of one sweep may hold their fields in another order. */
int findInRay(const Cufray& ray, int count, const std::string& name, int expected) {
    count = std::min<int>(count, ray.nfields);
    if (expected < count && name == ray.table[expected].name) {
        return expected;
    }
    for (int f = 0; f < count; ++f) {
        if (name == ray.table[f].name) {
            return f;
        }
    }
    return -1;
}

int gatesOf(const Cufray& ray, int field) {
    return std::min(ray.headers[field].ngates, ray.ngates);
}

void unpack(const Cufray& ray, int field, float* out) {
    const CufFieldHeader& header = ray.headers[field];
    if (header.scalefactor == 0) {
        return;
    }
    const short* words = ray.data + static_cast<std::size_t>(field) * ray.ngates;
    const auto scale = static_cast<float>(header.scalefactor);
    const short missing = ray.missingvalue;
    const int gates = gatesOf(ray, field);
    for (int g = 0; g < gates; ++g) {
        const float value = static_cast<float>(words[g]) / scale;
        out[g] = words[g] == missing ? kNoValue : value;
    }
}

Field fieldFrom(const Cufray* rays, const Sweep& sweep, int fieldCount, int field) {
    Field result;
    result.name = textOf(rays[0].table[field].name);
    const Role role = roleOfName(result.name);
    result.units = roleInfo(role).units;
    if (role == Role::kZhh && fromLibrary(rays[0])) {
        result.noEcho = kNoRainDbz;
    }
    result.values.assign(
        static_cast<std::size_t>(sweep.nrays) * static_cast<std::size_t>(sweep.ngates), kNoValue);
    for (int r = 0; r < sweep.nrays; ++r) {
        const int at = findInRay(rays[r], fieldCount, rays[0].table[field].name, field);
        if (at >= 0 && rays[r].data) {
            unpack(rays[r], at, result.values.data() + static_cast<std::size_t>(r) * sweep.ngates);
        }
    }
    return result;
}

/* As the file has it, where that agrees with the rays: some leave it out or mean something else. */
double fixedAngle(const Cufray& first, const Sweep& sweep) {
    constexpr double kAgreementDeg = 1.5;
    const double pointed = upperMedian(sweep.rhi ? sweep.azimuthDeg : sweep.elevationDeg);
    const double said = first.fixedangle / kUnitsPerDegree;
    const bool agrees = std::abs(std::remainder(said - pointed, 360.0)) <= kAgreementDeg;
    return agrees && !fromLibrary(first) ? said : pointed;
}

void fillGeometry(const Cufray* rays, Sweep& sweep) {
    const Cufray& first = rays[0];
    const CufFieldHeader& header = first.headers[0];
    sweep.number = first.sweepnumber;
    sweep.gateSpacingM = header.gatespacing;
    sweep.firstGateM = 1000.0 * header.firstgaterange;
    if (!fromLibrary(first)) {
        sweep.firstGateM += header.firstgateadjustment;
    }
    for (int r = 0; r < sweep.nrays; ++r) {
        sweep.azimuthDeg.push_back(azimuthOf(rays[r]));
        sweep.elevationDeg.push_back(rays[r].elevation / kUnitsPerDegree);
        sweep.rayGates.push_back(rays[r].ngates);
        sweep.ngates = std::max<int>(sweep.ngates, rays[r].ngates);
    }
    sweep.rhi = first.sweepmode == kModeRhi ||
                (spread(sweep.elevationDeg) > 3 && spread(sweep.azimuthDeg) < 5);
    sweep.fixedAngleDeg = fixedAngle(first, sweep);
}

double nyquistOf(const Cufray& ray, int fieldCount) {
    for (int f = 0; f < fieldCount; ++f) {
        if (std::string(ray.table[f].name) != "VR" || ray.headers[f].scalefactor == 0) {
            continue;
        }
        const double nyquist = static_cast<double>(ray.nyquist) / ray.headers[f].scalefactor;
        if (ray.nyquist != ray.missingvalue && nyquist > 0) {
            return nyquist;
        }
    }
    return 0;
}

void requireModestPadding(const Cufray* rays, const Sweep& sweep) {
    std::size_t held = 0;
    for (int r = 0; r < sweep.nrays; ++r) {
        held += rays[r].ngates;
    }
    const std::size_t padded =
        static_cast<std::size_t>(sweep.nrays) * static_cast<std::size_t>(sweep.ngates);
    if (padded > kAlwaysAllowedValues && padded > kMaxPadding * held) {
        throw std::runtime_error("the rays of sweep " + std::to_string(sweep.number) +
                                 " differ too much in length");
    }
}

Sweep sweepFrom(const Cufray* rays, int nrays, int fieldCount) {
    Sweep sweep;
    sweep.nrays = nrays;
    fillGeometry(rays, sweep);
    requireModestPadding(rays, sweep);
    sweep.nyquist = nyquistOf(rays[0], fieldCount);
    for (int f = 0; f < fieldCount; ++f) {
        sweep.fields.push_back(fieldFrom(rays, sweep, fieldCount, f));
    }
    return sweep;
}

/*
 * A "DM" field (received power) carries what a calibration needs: dBZ = power + constant + 20
 * log10(range), and the noise power: so SNR = dBZ - 20 log10(range) - (constant + noise).
 */
std::optional<double> radarConstantOf(const Cufray& ray, int fieldCount) {
    for (int f = 0; f < fieldCount; ++f) {
        const double scale = ray.headers[f].scalefactor;
        if (std::string(ray.table[f].name) != "DM" || scale == 0) {
            continue;
        }
        if (ray.radarconstant == ray.missingvalue || ray.noisepower == ray.missingvalue) {
            continue;
        }
        if (ray.radarconstant == 0 || ray.noisepower >= 0) {
            continue;
        }
        return -(ray.radarconstant + ray.noisepower) / scale;
    }
    return std::nullopt;
}

void fillSite(const Cufray& ray, Scan& scan) {
    scan.radarName = nameOf(ray.radarname);
    scan.siteName = nameOf(ray.sitename);
    scan.latitudeDeg = angleDeg(ray, ray.latitudedegrees, ray.latitudeminutes, ray.latitudeseconds);
    scan.longitudeDeg =
        angleDeg(ray, ray.longitudedegrees, ray.longitudeminutes, ray.longitudeseconds);
    scan.altitudeM = ray.altitude;
    scan.time = {ray.year, ray.month, ray.day, ray.hour, ray.minute, ray.second};
    const CufFieldHeader& header = ray.headers[0];
    if (header.horizontalbeamwidth != ray.missingvalue) {
        scan.beamWidthDeg = header.horizontalbeamwidth / kUnitsPerDegree;
    }
    if (header.wavelength != ray.missingvalue) {
        scan.wavelengthM = header.wavelength / kUnitsPerDegree / 100;
    }
}

/* Records between which something else was put, or was lost, are read as rays all the same. */
void addForeignRecords(const Cufrw& words, Scan& scan) {
    const auto foreign = std::count_if(words.rays, words.rays + words.nrays, [](const Cufray& ray) {
        return textOf(ray.format) != "UF";
    });
    if (foreign > 0) {
        scan.damage.push_back(
            std::to_string(foreign) + " of " + std::to_string(words.nrays) +
            " records do not start with a ray header: their values are meaningless.");
    }
}

void addRayOddities(const Cufrw& words, Scan& scan) {
    int withoutOptional = 0;
    bool otherSpacing = false;
    bool otherCount = false;
    for (int r = 0; r < words.nrays; ++r) {
        const Cufray& ray = words.rays[r];
        withoutOptional += ray.localposition != 60;
        for (int f = 0; f < words.rays[0].nfields; ++f) {
            otherSpacing |= ray.headers[f].gatespacing != words.rays[0].headers[0].gatespacing;
            otherCount |= ray.headers[f].ngates != ray.ngates;
        }
    }
    if (withoutOptional > 0) {
        scan.oddities.push_back(std::to_string(withoutOptional) + " of " +
                                std::to_string(words.nrays) + " rays have no optional header.");
    }
    if (otherSpacing) {
        scan.oddities.push_back("The gate spacing differs by field or ray; the first is used.");
    }
    if (otherCount) {
        scan.oddities.push_back(
            "Fields of a ray differ in their number of gates; each is held "
            "with that of the first.");
    }
}

void addScaleOddities(const Cufrw& words, Scan& scan) {
    constexpr int kUsualScale = 100;
    std::string others;
    for (int f = 0; f < words.rays[0].nfields; ++f) {
        const int scale = words.rays[0].headers[f].scalefactor;
        if (scale == kUsualScale) {
            continue;
        }
        others += std::string(others.empty() ? "" : ", ") + textOf(words.rays[0].table[f].name) +
                  " " + std::to_string(scale);
    }
    if (!others.empty()) {
        scan.oddities.push_back("Scale factors other than the usual 100: " + others + ".");
    }
}

void splitSweeps(const Cufrw& words, Scan& scan) {
    const int fieldCount = words.rays[0].nfields;
    for (int begin = 0, end = 0; begin < words.nrays; begin = end) {
        const Cufray* rays = words.rays + begin;
        for (end = begin + 1; end < words.nrays; ++end) {
            if (words.rays[end].sweepnumber != rays[0].sweepnumber) {
                break;
            }
        }
        scan.sweeps.push_back(sweepFrom(rays, end - begin, fieldCount));
        if (scan.sweeps.back().ngates == 0) {
            throw std::runtime_error("sweep " + std::to_string(rays[0].sweepnumber) +
                                     " holds no gates");
        }
    }
}

}  // namespace

Scan readUniversalFormat(const std::string& path, std::unique_ptr<Cufrw>& words) {
    words = std::make_unique<Cufrw>();
    std::string name = path;
    if (words->readfile(name.data()) != 1) {
        failReading(path,
                    "is a damaged Universal Format file: its first record is not "
                    "whole, a record declares more gates than it holds, or more than "
                    "20 fields");
    }
    if (words->nrays < 1) {
        throw std::runtime_error("holds no rays");
    }
    if (words->rays[0].nfields < 1) {
        throw std::runtime_error("holds no fields");
    }
    Scan scan;
    scan.format = "Universal Format";
    fillSite(words->rays[0], scan);
    splitSweeps(*words, scan);
    const auto constant = radarConstantOf(words->rays[0], words->rays[0].nfields);
    scan.hasRadarConstant = constant.has_value();
    scan.radarConstantDb = constant.value_or(0);
    addFramingNotes(path, scan);
    addForeignRecords(*words, scan);
    addRayOddities(*words, scan);
    addScaleOddities(*words, scan);
    return scan;
}

}  // namespace scan

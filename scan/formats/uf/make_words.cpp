/* make_words.cpp - rays, their headers and their data from sweeps. */
#include "scan/formats/uf/make_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "formats/uf/layout.h"
#include "scan/formats/uf/field_words.h"
#include "scan/formats/writing/checked_words.h"

namespace scan {
namespace {

namespace layout = clutter::formats;

constexpr int kMaxWords = 65535;
constexpr double kUnitsPerDegree = 64;

template <std::size_t N>
void setText(char (&text)[N], const std::string& value) {
    std::snprintf(text, N, "%-*.*s", static_cast<int>(N - 1), static_cast<int>(N - 1),
                  value.c_str());
}

/* A number that a ray cannot do without. */
short requiredWord(const char* what, double value, double perUnit) {
    CheckedWords checked("a Universal Format file");
    const short word = checked.word(what, value, perUnit);
    if (!checked.notes().empty()) {
        char number[40];
        std::snprintf(number, sizeof number, "%g", value);
        throw std::runtime_error(checked.kind() + " cannot hold a " + what + " of " + number);
    }
    return word;
}

/* Degrees, minutes and seconds x 64, all of one sign. */
struct SiteAngle {
    short degrees = 0, minutes = 0, seconds = 0;
};

SiteAngle siteAngle(const char* what, double value, double highest, CheckedWords& checked) {
    if (!checked.allows(what, value, -highest, highest)) {
        return {};
    }
    const double units = std::round(value * 3600 * kUnitsPerDegree);
    return {static_cast<short>(units / (3600 * kUnitsPerDegree)),
            static_cast<short>(std::fmod(units, 3600 * kUnitsPerDegree) / (60 * kUnitsPerDegree)),
            static_cast<short>(std::fmod(units, 60 * kUnitsPerDegree))};
}

/* What all rays of a scan share. */
class HeaderWords {
  public:
    HeaderWords(const Scan& scan, CheckedWords& checked) : scan_(scan) {
        latitude_ = siteAngle("latitude", scan.latitudeDeg, 90, checked);
        longitude_ = siteAngle("longitude", scan.longitudeDeg, 360, checked);
        altitude_ = checked.word("height", scan.altitudeM);
        beamWidth_ = checked.word("beam width", scan.beamWidthDeg, kUnitsPerDegree);
        wavelength_ = checked.word("wavelength", scan.wavelengthM, 100 * kUnitsPerDegree);
        pulseLength_ = checked.word("pulse length", scan.operation.pulseLengthM);
        const double rate = scan.operation.turnsPerMinute * 360.0 / 60.0;
        sweepRate_ = checked.word("rate of turn", rate, kUnitsPerDegree);
        const double repetition = scan.operation.pulsesPerSecond;
        if (repetition > 0) {
            repetitionUs_ = checked.word("pulse repetition time", 1e6 / repetition);
        }
        const DateTime& t = scan.time;
        for (const int number : {t.year, t.month, t.day, t.hour, t.minute, t.second}) {
            (void)checked.word("number in its time", number);
        }
    }

    void fill(Cufray& ray) const {
        setText(ray.format, "UF");
        ray.volumenumber = ray.recordinray = 1;
        setText(ray.radarname, scan_.radarName);
        setText(ray.sitename, scan_.siteName);
        fillSite(ray);
        fillTimes(ray);
        setText(ray.generationfacility, "CLUTCLAS");
        setText(ray.projectname, "RADAR");
        setText(ray.tapename, "RADAR");
        ray.sweeprate = sweepRate_;
        ray.missingvalue = kMissingWord;
        ray.flag = 1;
        ray.optionalposition = layout::kOptionalPosition;
        ray.localposition = layout::kLocalPositionWithOptional;
        ray.dataposition = layout::kDataHeaderPosition;
    }

    void fill(CufFieldHeader& header) const {
        header.gatedepth = pulseLength_;
        header.horizontalbeamwidth = header.verticalbeamwidth = beamWidth_;
        header.wavelength = wavelength_;
        header.receiverbandwidth = header.samples = kMissingWord;
        header.thresholdvalue = header.thresholdscale = kMissingWord;
        header.polarisation = 1;
        setText(header.thresholdfield, "  ");
        setText(header.editcode, "--");
        header.repetitiontime = repetitionUs_;
        header.bitspergate = 16;
    }

  private:
    void fillSite(Cufray& ray) const {
        ray.latitudedegrees = latitude_.degrees;
        ray.latitudeminutes = latitude_.minutes;
        ray.latitudeseconds = latitude_.seconds;
        ray.longitudedegrees = longitude_.degrees;
        ray.longitudeminutes = longitude_.minutes;
        ray.longitudeseconds = longitude_.seconds;
        ray.altitude = altitude_;
    }

    void fillTimes(Cufray& ray) const {
        const DateTime& t = scan_.time;
        ray.year = static_cast<short>(t.year);
        ray.month = static_cast<short>(t.month);
        ray.day = static_cast<short>(t.day);
        ray.hour = ray.starthour = static_cast<short>(t.hour);
        ray.minute = ray.startminute = static_cast<short>(t.minute);
        ray.second = ray.startsecond = static_cast<short>(t.second);
        setText(ray.timezone, "UT");
        ray.generationyear = static_cast<short>(today_.tm_year + 1900);
        ray.generationmonth = static_cast<short>(today_.tm_mon + 1);
        ray.generationday = static_cast<short>(today_.tm_mday);
    }

    static std::tm localToday() {
        const std::time_t now = std::time(nullptr);
        std::tm today{};
        localtime_r(&now, &today);
        return today;
    }

    const Scan& scan_;
    const std::tm today_ = localToday();
    SiteAngle latitude_, longitude_;
    short altitude_ = 0, beamWidth_ = 0, wavelength_ = 0, pulseLength_ = 0, sweepRate_ = 0;
    short repetitionUs_ = 0;
};

/* Where a ray of a sweep looks, and where its gates are. */
void fillGeometry(const Sweep& sweep, std::size_t r, Cufray& ray) {
    constexpr short kPpi = 1;
    constexpr short kRhi = 3;
    ray.azimuth = ray.baselineazimuth =
        requiredWord("azimuth", sweep.azimuthDeg[r], kUnitsPerDegree);
    ray.elevation = ray.baselineelevation =
        requiredWord("elevation", sweep.elevationDeg[r], kUnitsPerDegree);
    ray.fixedangle = requiredWord("fixed angle", sweep.fixedAngleDeg, kUnitsPerDegree);
    ray.sweepmode = sweep.rhi ? kRhi : kPpi;
    ray.ngates = static_cast<unsigned short>(sweep.ngates);
}

void fillField(const Sweep& sweep, const FieldWords& field, int index, std::size_t r,
               CheckedWords& checked, Cufray& ray) {
    std::memcpy(ray.table[index].name, field.letters.c_str(), 3);
    CufFieldHeader& header = ray.headers[index];
    header.scalefactor = static_cast<short>(field.wordsPerUnit);
    header.ngates = ray.ngates;
    header.gatespacing = requiredWord("gate spacing", sweep.gateSpacingM, 1);
    const double km = std::floor(sweep.firstGateM / 1000);
    header.firstgaterange = requiredWord("first gate's range in km", km, 1);
    header.firstgateadjustment = static_cast<short>(std::lround(sweep.firstGateM - 1000 * km));
    if (field.letters == "VR") {
        ray.nyquist = checked.word("Nyquist velocity", sweep.nyquist, field.wordsPerUnit);
    }
    const auto found = std::find_if(sweep.fields.begin(), sweep.fields.end(),
                                    [&](const Field& other) { return other.name == field.name; });
    const std::size_t ngates = ray.ngates;
    const float* values = found == sweep.fields.end() ? nullptr : found->values.data() + r * ngates;
    fillFieldWords(values, ngates, field.wordsPerUnit,
                   ray.data + static_cast<std::size_t>(index) * ngates);
}

std::size_t countRays(const Scan& scan) {
    std::size_t count = 0;
    for (const Sweep& sweep : scan.sweeps) {
        if (sweep.ngates < 1 || sweep.ngates > kMaxWords) {
            throw std::runtime_error("a Universal Format file cannot hold rays of " +
                                     std::to_string(sweep.ngates) + " gates");
        }
        count += static_cast<std::size_t>(sweep.nrays);
    }
    return count;
}

}  // namespace

int findField(const Cufray& ray, int count, const std::string& name) {
    for (int f = 0; f < count; ++f) {
        if (name == ray.table[f].name) {
            return f;
        }
    }
    return -1;
}

void layOut(Cufray& ray, int count) {
    auto position = static_cast<int>(layout::firstFreePosition(static_cast<std::size_t>(count)));
    for (int f = 0; f < count; ++f) {
        const int data = position + static_cast<int>(layout::fieldHeaderWords(ray.table[f].name));
        if (data + ray.ngates > kMaxWords) {
            throw std::runtime_error("the rays are too long for a record of " +
                                     std::to_string(count) + " fields");
        }
        ray.table[f].position = static_cast<unsigned short>(position);
        ray.headers[f].dataposition = static_cast<unsigned short>(data);
        ray.headers[f].ngates = std::min(ray.headers[f].ngates, ray.ngates);
        position = data + ray.ngates;
    }
}

std::vector<std::string> makeWords(const Scan& scan, Cufrw& words) {
    CheckedWords checked("a Universal Format file");
    const std::vector<FieldWords> fields = planFields(scan, checked);
    const HeaderWords headers(scan, checked);
    const std::size_t count = countRays(scan);
    if (fields.empty() || count == 0) {
        throw std::runtime_error("there are no fields or no rays to write");
    }
    words.deletearrays();
    words.rays = new Cufray[count]();
    words.nrays = static_cast<int>(count);
    std::size_t next = 0;
    for (std::size_t s = 0; s < scan.sweeps.size(); ++s) {
        for (std::size_t r = 0; r < scan.sweeps[s].azimuthDeg.size(); ++r) {
            Cufray& ray = words.rays[next++];
            headers.fill(ray);
            fillGeometry(scan.sweeps[s], r, ray);
            ray.sweepnumber = static_cast<short>(s + 1);
            ray.recordnumber = ray.raynumber =
                static_cast<short>(std::min<std::size_t>(next, 32767));
            ray.nfields = ray.nrecordfields = static_cast<short>(fields.size());
            ray.nrecords = 1;
            ray.data = new short[fields.size() * ray.ngates];
            for (std::size_t f = 0; f < fields.size(); ++f) {
                headers.fill(ray.headers[f]);
                fillField(scan.sweeps[s], fields[f], static_cast<int>(f), r, checked, ray);
            }
            layOut(ray, static_cast<int>(fields.size()));
        }
    }
    return checked.notes();
}

}  // namespace scan

/* make_words.cpp - rays, headers and data words from sweeps. */
#include "scan/formats/uf/make_words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/fields/roles.h"
#include "scan/formats/record/write_record.h"

namespace scan {
namespace {

constexpr int kFirstTableWord = 63; /* past the mandatory, optional and data headers */
constexpr int kHeaderWords = 19;
constexpr int kVelocityHeaderWords = 21;
constexpr int kPowerHeaderWords = 25;
constexpr int kMostWords = 65535;
constexpr short kMissing = -32768;
constexpr int kLibraryScale = 100;    /* of the library's conversion */
constexpr char kUnknownName[] = "UN"; /* of the library's conversion */

int headerWords(const char* name) {
    if (std::strcmp(name, "VR") == 0) return kVelocityHeaderWords;
    if (std::strcmp(name, "DM") == 0) return kPowerHeaderWords;
    return kHeaderWords;
}

void setText8(char (&text)[9], const std::string& value) {
    std::snprintf(text, sizeof text, "%-8.8s", value.c_str());
}

/* Degrees, minutes and seconds x 64, all of one sign. */
void setAngle(double degrees, short& whole, short& minutes, short& seconds) {
    const double units = std::round(degrees * 3600 * 64);
    whole = static_cast<short>(units / (3600 * 64));
    minutes = static_cast<short>(std::fmod(units, 3600 * 64) / (60 * 64));
    seconds = static_cast<short>(std::fmod(units, 60 * 64));
}

short angleWord(double degrees) {
    return static_cast<short>(std::lround(degrees * 64));
}

/* The words of one ray of a field at a scale of its own; what has no word is missing. */
void rescale(const float* values, int wordsPerUnit, int ngates, CufFieldHeader& header,
             short* words) {
    constexpr double kLargestWord = 32767;
    header.scalefactor = static_cast<short>(wordsPerUnit);
    for (int g = 0; g < ngates; ++g) {
        const double word = std::round(static_cast<double>(values[g]) * wordsPerUnit);
        words[g] = std::abs(word) <= kLargestWord ? static_cast<short>(word) : kMissing;
    }
}

/* The library's conversion keeps conventions of its own; other readers expect the format's. */
void completeHeaders(const Scan& scan, const Sweep& sweep, Cufray& ray, size_t r) {
    setText8(ray.radarname, scan.radarName);
    setText8(ray.sitename, scan.siteName);
    setText8(ray.generationfacility, "CLUTCLAS");
    setAngle(scan.latitudeDeg, ray.latitudedegrees, ray.latitudeminutes, ray.latitudeseconds);
    setAngle(scan.longitudeDeg, ray.longitudedegrees, ray.longitudeminutes, ray.longitudeseconds);
    ray.azimuth = angleWord(sweep.azimuthDeg[r]);
    ray.elevation = angleWord(sweep.elevationDeg[r]);
    ray.fixedangle = angleWord(sweep.fixedAngleDeg);
    ray.missingvalue = kMissing;
    for (size_t f = 0; f < sweep.fields.size(); ++f) {
        CufFieldHeader& header = ray.headers[f];
        const double km = std::floor(sweep.firstGateM / 1000);
        header.firstgaterange = static_cast<short>(km);
        header.firstgateadjustment = static_cast<short>(std::lround(sweep.firstGateM - 1000 * km));
    }
}

/* Two letters for a field that the library gave none: its own name, or that of its quantity unless
 * another field has it. */
std::string twoLetterName(const Field& field, const Cufray& ray, int count) {
    constexpr const char* kNames[kRoleCount] = {"DZ", "DR", "PH", "RH", "VR",
                                                "SW", "LD", "CM", "KD"};
    if (field.name.size() == 2) return field.name;
    const Role role = roleOfName(field.name);
    if (role == Role::kNone) return kUnknownName;
    const std::string name = kNames[static_cast<int>(role)];
    return findField(ray, count, name) < 0 ? name : kUnknownName;
}

/* Names that the library does not know, and the gates without a value. */
void completeFields(const Sweep& sweep, Cufray& ray, size_t r) {
    const auto count = static_cast<int>(sweep.fields.size());
    for (size_t f = 0; f < sweep.fields.size(); ++f) {
        const Field& field = sweep.fields[f];
        if (std::strcmp(ray.table[f].name, kUnknownName) == 0)
            std::memcpy(ray.table[f].name, twoLetterName(field, ray, count).c_str(), 3);
        short* data = ray.data + f * ray.ngates;
        const float* values = field.values.data() + r * ray.ngates;
        for (int g = 0; g < ray.ngates; ++g)
            if (!std::isfinite(values[g])) data[g] = kMissing;
        if (field.wordsPerUnit != kLibraryScale)
            rescale(values, field.wordsPerUnit, ray.ngates, ray.headers[f], data);
    }
}

/* The fields of all sweeps, each name once, without their values. */
std::vector<Field> fieldsOf(const Scan& scan) {
    std::vector<Field> all;
    for (const Sweep& sweep : scan.sweeps) {
        for (const Field& field : sweep.fields) {
            const bool known = std::any_of(all.begin(), all.end(), [&](const Field& other) {
                return other.name == field.name;
            });
            if (!known) {
                all.push_back({field.name, field.units, {}, field.wordsPerUnit, field.noEcho});
            }
        }
    }
    if (all.size() > kMaxFields) {
        throw std::runtime_error("a Universal Format ray holds 20 fields, the scan has " +
                                 std::to_string(all.size()));
    }
    return all;
}

/* A sweep with exactly these fields: those that it lacks hold no value. */
Sweep withFields(const Sweep& sweep, const std::vector<Field>& fields) {
    Sweep result = sweep;
    const std::size_t gates =
        static_cast<std::size_t>(sweep.nrays) * static_cast<std::size_t>(sweep.ngates);
    result.fields.clear();
    for (const Field& field : fields) {
        const auto found =
            std::find_if(sweep.fields.begin(), sweep.fields.end(),
                         [&](const Field& other) { return other.name == field.name; });
        result.fields.push_back(found == sweep.fields.end() ? field : *found);
        result.fields.back().values.resize(gates, NAN);
    }
    return result;
}

/* The rays of one sweep. */
void fillWords(const Scan& scan, const Sweep& sweep, Cufrw& words) {
    const std::size_t count = sweep.fields.size();
    const std::unique_ptr<Cpluvek[]> records(new Cpluvek[std::max<std::size_t>(count, 1)]);
    for (std::size_t f = 0; f < count; ++f) {
        fillFieldRecord(scan, sweep, sweep.fields[f].name, sweep.fields[f].units,
                        sweep.fields[f].values, records[f]);
    }
    records[0].nrecords = static_cast<int>(count);
    if (words.pluvek2uf(records.get()) != 1 || words.nrays < 1) {
        throw std::runtime_error("the fields do not fit a Universal Format record");
    }
    for (int r = 0; r < words.nrays; ++r) {
        completeHeaders(scan, sweep, words.rays[r], static_cast<std::size_t>(r));
        completeFields(sweep, words.rays[r], static_cast<std::size_t>(r));
    }
}

/* Rays of other words at the end of these. */
void append(Cufrw& more, Cufrw& words) {
    const int count = words.nrays + more.nrays;
    std::unique_ptr<Cufray[]> rays(new Cufray[static_cast<std::size_t>(count)]());
    std::copy(words.rays, words.rays + words.nrays, rays.get());
    std::copy(more.rays, more.rays + more.nrays, rays.get() + words.nrays);
    for (Cufrw* old : {&words, &more}) {
        delete[] old->rays; /* not what the rays own: that has moved */
        old->rays = nullptr;
        old->nrays = 0;
    }
    words.rays = rays.release();
    words.nrays = count;
}

void numberRays(const Scan& scan, Cufrw& words) {
    int next = 0;
    for (std::size_t s = 0; s < scan.sweeps.size(); ++s) {
        for (int r = 0; r < scan.sweeps[s].nrays; ++r, ++next) {
            words.rays[next].sweepnumber = static_cast<short>(s + 1);
            words.rays[next].recordnumber = words.rays[next].raynumber =
                static_cast<short>(std::min(next + 1, 32767));
        }
    }
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
    int position = kFirstTableWord + 2 * count;
    for (int f = 0; f < count; ++f) {
        const int data = position + headerWords(ray.table[f].name);
        if (data + ray.ngates > kMostWords)
            throw std::runtime_error("the rays are too long for a record with one more field");
        ray.table[f].position = static_cast<unsigned short>(position);
        ray.headers[f].dataposition = static_cast<unsigned short>(data);
        ray.headers[f].ngates = std::min(ray.headers[f].ngates, ray.ngates);
        position = data + ray.ngates;
    }
}

void makeWords(const Scan& scan, Cufrw& words) {
    const std::vector<Field> fields = fieldsOf(scan);
    words.deletearrays();
    for (const Sweep& sweep : scan.sweeps) {
        Cufrw more;
        fillWords(scan, withFields(sweep, fields), more);
        append(more, words);
    }
    if (scan.sweeps.size() > 1) {
        numberRays(scan, words);
    }
}

}  // namespace scan

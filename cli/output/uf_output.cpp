#include "output/uf_output.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "output/output_file.h"
#include "output/record_output.h"
#include "scan/fields/roles.h"

namespace cli {

using namespace scan;

namespace {

constexpr int kMostFields = 20;
constexpr int kFirstTableWord = 63; /* behind the mandatory, optional and data headers */
constexpr int kHeaderWords = 19;
constexpr int kVelocityHeaderWords = 21;
constexpr int kPowerHeaderWords = 25;
constexpr int kMostWords = 65535;
constexpr short kClassScale = 100;
constexpr short kMissing = -32768;
constexpr int kLibraryScale = 100;    /* of the library's conversion */
constexpr char kUnknownName[] = "UN"; /* of the library's conversion */

int headerWords(const char* name) {
    if (std::strcmp(name, "VR") == 0) return kVelocityHeaderWords;
    if (std::strcmp(name, "DM") == 0) return kPowerHeaderWords;
    return kHeaderWords;
}

/* Puts every field one behind the other: header, then data. */
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

int findField(const Cufray& ray, int count, const std::string& name) {
    for (int f = 0; f < count; ++f)
        if (name == ray.table[f].name) return f;
    return -1;
}

/* The field that receives the classes: an earlier class field, or a new name. */
std::string classFieldName(const Scan& scan, const Cufray& ray, int count) {
    const int earlier = findField(ray, count, kClassFieldName);
    if (earlier < 0) return kClassFieldName;
    const bool ours = std::all_of(scan.sweeps.begin(), scan.sweeps.end(), [&](const Sweep& sweep) {
        return isClassField(sweep.fields[static_cast<size_t>(earlier)]);
    });
    if (ours) return kClassFieldName;
    for (char digit = '1'; digit <= '9'; ++digit) {
        std::string name{'C', digit};
        if (findField(ray, count, name) < 0) return name;
    }
    throw std::runtime_error("no name is left for the class field");
}

/* Room for one more field, which starts as a copy of the first one's header and is all missing. */
void appendField(Cufray& ray, int count, const std::string& name) {
    std::unique_ptr<short[]> data(new short[static_cast<size_t>(count + 1) * ray.ngates]);
    std::copy(ray.data, ray.data + static_cast<size_t>(count) * ray.ngates, data.get());
    delete[] ray.data;
    ray.data = data.release();
    std::memcpy(ray.table[count].name, name.c_str(), 3);
    ray.headers[count] = ray.headers[0];
    ray.headers[count].ngates = ray.ngates;
    ray.headers[count].scalefactor = kClassScale;
    ray.nfields = static_cast<short>(count + 1);
    ray.nrecordfields = static_cast<short>(count + 1);
}

short classWord(float value, short missing) {
    return std::isnan(value) ? missing : static_cast<short>(value * kClassScale);
}

/* classes of one ray; null where the sweep was not classified. */
void fillField(Cufray& ray, int field, const float* classes) {
    short* words = ray.data + static_cast<size_t>(field) * ray.ngates;
    for (int g = 0; g < ray.ngates; ++g)
        words[g] = classes ? classWord(classes[g], ray.missingvalue) : ray.missingvalue;
}

const std::vector<float>* classesOf(const Sweep& sweep, const std::vector<SweepClasses>& classes) {
    for (const SweepClasses& entry : classes)
        if (entry.sweep == &sweep) return entry.classes;
    return nullptr;
}

/* Everything that can be refused is refused before a ray is touched. */
void requireRoom(const Cufrw& words, int count, bool appends) {
    if (appends && count >= kMostFields)
        throw std::runtime_error("holds 20 fields already: no room for the classes");
    for (int r = 0; r < words.nrays; ++r)
        if (std::strcmp(words.rays[r].format, "UF") != 0)
            throw std::runtime_error("ray " + std::to_string(r + 1) + " is damaged");
}

void save(Cufrw& words, const std::string& path) {
    std::string name = path;
    requireWritten(path, [&] {
        const bool closed = words.write2file(name.data()) == 0;
        const int reason = errno;
        std::error_code error; /* what cannot be opened has the same answer as what was written */
        const auto size = std::filesystem::file_size(path, error);
        errno = reason;
        return closed && !error && size > 0;
    });
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

/* The rays of a scan of one sweep. */
void fillWords(const Scan& scan, Cufrw& words) {
    const Sweep& sweep = scan.sweeps[0];
    const size_t count = sweep.fields.size();
    const std::unique_ptr<Cpluvek[]> records(new Cpluvek[std::max<size_t>(count, 1)]);
    for (size_t f = 0; f < count; ++f)
        fillFieldRecord(scan, sweep, sweep.fields[f].name, sweep.fields[f].units,
                        sweep.fields[f].values, records[f]);
    records[0].nrecords = static_cast<int>(count);
    if (words.pluvek2uf(records.get()) != 1 || words.nrays < 1)
        throw std::runtime_error("the fields do not fit a Universal Format record");
    for (int r = 0; r < words.nrays; ++r) {
        completeHeaders(scan, sweep, words.rays[r], static_cast<size_t>(r));
        completeFields(sweep, words.rays[r], static_cast<size_t>(r));
    }
}

}  // namespace

void writeUniversalFormat(const std::string& path, const Scan& scan, Cufrw& words,
                          const std::vector<SweepClasses>& classes) {
    const int count = words.rays[0].nfields;
    const std::string name = classFieldName(scan, words.rays[0], count);
    const int earlier = findField(words.rays[0], count, name);
    requireRoom(words, count, earlier < 0);
    const int field = earlier < 0 ? count : earlier;
    int next = 0;
    for (const Sweep& sweep : scan.sweeps) {
        const std::vector<float>* sweepClasses = classesOf(sweep, classes);
        for (int r = 0; r < sweep.nrays; ++r) {
            Cufray& ray = words.rays[next++];
            if (earlier < 0) appendField(ray, count, name);
            fillField(ray, field,
                      sweepClasses ? sweepClasses->data() + static_cast<size_t>(r) * sweep.ngates
                                   : nullptr);
            layOut(ray, std::max(count, field + 1));
        }
    }
    save(words, path);
}

void writeUniversalFormat(const std::string& path, const Scan& scan, const SweepClasses& classes) {
    Scan single = scan;
    single.sweeps.assign(1, *classes.sweep);
    Cufrw words;
    fillWords(single, words);
    writeUniversalFormat(path, single, words, {{&single.sweeps[0], classes.classes}});
}

void writeUniversalFormat(const std::string& path, const Scan& scan, Cufrw* words) {
    if (words != nullptr) return save(*words, path);
    Cufrw converted;
    fillWords(scan, converted);
    const int count = converted.rays[0].nfields;
    for (int r = 0; r < converted.nrays; ++r) layOut(converted.rays[r], count);
    save(converted, path);
}

}  // namespace cli

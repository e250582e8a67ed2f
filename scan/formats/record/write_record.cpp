/* write_record.cpp - field records filled from sweeps. */
#include "scan/formats/record/write_record.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <memory>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/angles.h"
#include "scan/class_codes.h"
#include "scan/fields/role.h"
#include "scan/formats/writing/plain_values.h"
#include "scan/quiet_library.h"

namespace scan {

namespace {

constexpr int kStoredAsByte = 2;

template <std::size_t N>
void setText(char (&buffer)[N], const std::string& text) {
    std::snprintf(buffer, N, "%s", text.c_str());
}

void setExtent(const Sweep& sweep, Cpluvek& record) {
    const auto reach = static_cast<float>(sweep.ngates * sweep.gateSpacingM);
    const float limits[6] = {-reach, reach, reach / 2.5f, -reach, reach, reach / 2.5f};
    std::copy(std::begin(limits), std::end(limits), record.axislimits);
    std::copy(std::begin(limits), std::end(limits), record.axislimits0);
}

/* A byte has no NaN: gates that a ray does not have are noise there. */
std::vector<float> withoutNan(std::vector<float> classes) {
    std::replace_if(
        classes.begin(), classes.end(), [](float value) { return std::isnan(value); }, kNoise);
    return classes;
}

/* Records have a mark of no rain for reflectivities; other fields have no value there. */
std::vector<float> recordValues(const Field& field) {
    if (field.noEchoGates.empty() || roleOfName(field.name) != Role::kZhh) {
        return field.values;
    }
    return plainValues(field, kNoValue, kNoRainDbz);
}

constexpr std::size_t kNameBytes = 10;  // that the file keeps

/* For roles in the order of their enumeration. */
constexpr const char* kShortNames[] = {"DBZH",  "ZDR", "PHIDP", "RHOHV", "VRADH",
                                       "WRADH", "LDR", "CMAP",  "KDP",   "SNRH"};
static_assert(std::size(kShortNames) == kRoleCount);

/* Names as the file keeps them, each once: a long one gives way to the usual name of its role. */
std::vector<std::string> namesInFile(const std::vector<Field>& fields) {
    std::vector<std::string> names;
    const auto taken = [&](const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    for (const Field& field : fields) {
        std::string name = field.name;
        const Role role = roleOfName(name);
        if (name.size() > kNameBytes && role != Role::kNone) {
            name = kShortNames[static_cast<int>(role)];
        }
        name = name.substr(0, kNameBytes);
        for (char digit = '2'; taken(name) && digit <= '9'; ++digit) {
            name = name.substr(0, kNameBytes - 2).append("_") + digit;
        }
        names.push_back(name);
    }
    return names;
}

}  // namespace

std::string shortNamesNote(const std::vector<Field>& fields) {
    const std::vector<std::string> names = namesInFile(fields);
    std::string list;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (names[i] != fields[i].name) {
            list.append(list.empty() ? "" : ", ").append(fields[i].name).append(" is ");
            list.append(names[i]);
        }
    }
    return list.empty() ? "" : "a field record file keeps names of ten characters: " + list;
}

void fillFieldRecord(const Scan& scan, const Sweep& sweep, const std::string& name,
                     const std::string& units, const std::vector<float>& values, Cpluvek& record) {
    record.valid = 1;
    record.year = scan.time.year;
    record.month = scan.time.month;
    record.day = scan.time.day;
    record.hour = scan.time.hour;
    record.minute = scan.time.minute;
    record.second = scan.time.second;
    record.GetDateTime();
    record.ngates = sweep.ngates;
    record.nrays = sweep.nrays;
    record.coordtype = 0;
    record.gatesize = static_cast<float>(sweep.gateSpacingM);
    record.firstgate = static_cast<int>(std::lround(sweep.firstGateM / sweep.gateSpacingM));
    record.beamwidth = static_cast<float>(scan.beamWidthDeg * kRadiansPerDegree);
    record.wavelength = static_cast<float>(scan.wavelengthM);
    record.latitude = static_cast<float>(scan.latitudeDeg);
    record.longitude = static_cast<float>(scan.longitudeDeg);
    record.altitude = static_cast<float>(scan.altitudeM);
    record.nyquist = static_cast<float>(sweep.nyquist);
    record.pulsedepth = scan.operation.pulseLengthM;
    record.rpm = scan.operation.turnsPerMinute;
    record.prf = scan.operation.pulsesPerSecond;
    record.nsamples = scan.operation.pulsesPerRay;
    record.colorflag = 255;
    record.recindex = 0;
    record.nrecords = 1;
    record.nsets = 1;
    setExtent(sweep, record);
    setText(record.name, name);
    setText(record.units, units.empty() ? "-" : units);
    setText(record.title, "DATA FILE, " + std::string(record.datetime));
    record.angles = new float[static_cast<std::size_t>(sweep.nrays) + 1];
    record.angles[0] = static_cast<float>(middleElevationDeg(sweep) * kRadiansPerDegree);
    for (std::size_t r = 0; r < sweep.azimuthDeg.size(); ++r) {
        record.angles[1 + r] = static_cast<float>(sweep.azimuthDeg[r] * kRadiansPerDegree);
    }
    record.data = new float[values.size()];
    std::copy(values.begin(), values.end(), record.data);
}

std::string lostElevationsNote(const char* kind) {
    return std::string(kind) +
           " cannot hold the elevations of a range-height scan; .uf and .csv can";
}

void writeRecords(const OutputFile& file, const Scan& scan, const Sweep& sweep,
                  const std::vector<Field>& fields) {
    const auto count = static_cast<int>(fields.size());
    const std::unique_ptr<Cpluvek[]> records(new Cpluvek[std::max<std::size_t>(fields.size(), 1)]);
    const std::vector<std::string> names = namesInFile(fields);
    for (int f = 0; f < count; ++f) {
        const Field& field = fields[static_cast<std::size_t>(f)];
        fillFieldRecord(scan, sweep, names[static_cast<std::size_t>(f)], field.units,
                        recordValues(field), records[f]);
        records[f].recindex = f;
        records[f].nrecords = count;
    }
    requireWritten(file, [&] { return records[0].WriteDataToFile(file.temporary().c_str()) == 1; });
}

void writeClassRecord(const OutputFile& file, const Scan& scan, const SweepClasses& classes) {
    if (!classes.certainty.empty()) {
        std::vector<Field> fields = {{"CCl", "-", *classes.classes}};
        fields.insert(fields.end(), classes.certainty.begin(), classes.certainty.end());
        return writeRecords(file, scan, *classes.sweep, fields);
    }
    Cpluvek record;
    fillFieldRecord(scan, *classes.sweep, "CCl", "-", withoutNan(*classes.classes), record);
    record.datatype = kStoredAsByte;
    record.scale = 1;
    record.displaymin = kPrecipitation;
    record.displaymax = kGroundClutter;
    requireWritten(file, [&] { return record.WriteDataToFile(file.temporary().c_str()) == 1; });
}

void headByElevation(const Sweep& sweep, Cpluvek& record) {
    for (std::size_t r = 0; r < sweep.elevationDeg.size(); ++r) {
        record.angles[1 + r] = static_cast<float>(sweep.elevationDeg[r] * kRadiansPerDegree);
    }
}

void writeTable(const OutputFile& file, Cpluvek& record) {
    const QuietLibrary quiet;
    requireWritten(file, [&] { return record.SavePolarData2Ascii(file.temporary().c_str()) == 1; });
}

void writeClassTable(const OutputFile& file, const Scan& scan, const SweepClasses& classes) {
    Cpluvek record;
    fillFieldRecord(scan, *classes.sweep, "CCl", "-", *classes.classes, record);
    if (classes.sweep->rhi) {
        headByElevation(*classes.sweep, record);
    }
    writeTable(file, record);
}

}  // namespace scan

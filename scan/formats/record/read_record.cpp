/* The library's reader, and its records as fields of one sweep. */
#include "scan/formats/record/read_record.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "scan/angles.h"
#include "scan/fields/role.h"
#include "scan/opened_file.h"

namespace scan {
namespace {

constexpr std::uintmax_t kSmallestBlockBytes = 1060;
constexpr int kCountOffset = 64;

/* The library fills an array that must be large enough: the file's own count, once it is possible.
 */
int countRecords(const std::string& path) {
    std::ifstream file = openToRead(path);
    std::int32_t count = 0;
    file.seekg(kCountOffset);
    file.read(reinterpret_cast<char*>(&count), sizeof count);
    if (!file) {
        throw std::runtime_error("is cut short");
    }
    const std::uintmax_t size = std::filesystem::file_size(path);
    if (count < 1 || static_cast<std::uintmax_t>(count) > size / kSmallestBlockBytes) {
        throw std::runtime_error("declares " + std::to_string(count) + " records in " +
                                 std::to_string(size) + " bytes");
    }
    return count;
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) {
        text.pop_back();
    }
    return text;
}

/* All records of a file are held with the sizes of the first, whatever their own header says. */
Field fieldFrom(const Cpluvek& record, std::size_t count) {
    Field field;
    field.name = trimmed(record.name);
    field.units = trimmed(record.units);
    if (field.units == "-" || field.units == field.name) {
        field.units = "";
    }
    if (field.units.empty()) {
        field.units = roleInfo(roleOfName(field.name)).units;
    }
    field.values.assign(record.data, record.data + count);
    if (roleOfName(field.name) == Role::kZhh) {
        field.noEcho = kNoRainDbz;
    }
    return field;
}

double degrees(float radians) {
    return std::isfinite(radians) ? radians * kDegreesPerRadian : 0.0;
}

Sweep sweepFrom(const Cpluvek* records, int count) {
    const Cpluvek& first = records[0];
    Sweep sweep;
    sweep.number = 1;
    sweep.nrays = first.nrays;
    sweep.ngates = first.ngates;
    sweep.gateSpacingM = first.gatesize;
    sweep.firstGateM = static_cast<double>(first.firstgate) * first.gatesize;
    sweep.nyquist = first.nyquist;
    sweep.fixedAngleDeg = degrees(first.angles[0]);
    sweep.elevationDeg.assign(static_cast<std::size_t>(first.nrays), sweep.fixedAngleDeg);
    for (int r = 0; r < first.nrays; ++r) {
        sweep.azimuthDeg.push_back(degrees(first.angles[1 + r]));
    }
    const std::size_t size =
        static_cast<std::size_t>(first.nrays) * static_cast<std::size_t>(first.ngates);
    for (int i = 0; i < count; ++i) {
        sweep.fields.push_back(fieldFrom(records[i], size));
    }
    return sweep;
}

float finiteOrUnknown(float value) {
    return std::isfinite(value) ? value : 0.0f;
}

}  // namespace

Scan scanFromRecords(const Cpluvek* records, int count) {
    const Cpluvek& first = records[0];
    Scan scan;
    scan.latitudeDeg = first.latitude;
    scan.longitudeDeg = first.longitude;
    scan.altitudeM = first.altitude;
    scan.beamWidthDeg = degrees(first.beamwidth);
    scan.wavelengthM = first.wavelength;
    scan.operation = {finiteOrUnknown(first.pulsedepth), finiteOrUnknown(first.rpm),
                      finiteOrUnknown(first.prf), finiteOrUnknown(first.nsamples)};
    scan.time = {first.year, first.month, first.day, first.hour, first.minute, first.second};
    scan.sweeps.push_back(sweepFrom(records, count));
    return scan;
}

std::vector<std::string> RecordArray::names() const {
    std::vector<std::string> all(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i] = trimmed(records[i].name);
    }
    return all;
}

RecordArray loadRecords(const std::string& path) {
    RecordArray array;
    array.count = countRecords(path);
    array.records.reset(new Cpluvek[static_cast<std::size_t>(array.count)]);
    const Cpluvek& first = array.records[0];
    if (array.records[0].ReadDataFromFile(path.c_str()) != 1) {
        failReading(path, "is cut short or damaged");
    }
    if (first.nrays < 1 || first.ngates < 1) {
        throw std::runtime_error("holds no rays or no gates");
    }
    return array;
}

Scan readFieldRecord(const std::string& path) {
    const RecordArray array = loadRecords(path);
    if (array.isGrid()) {
        throw std::runtime_error("is a grid, not a scan in polar coordinates");
    }
    Scan scan = scanFromRecords(array.records.get(), array.count);
    scan.format = "field record";
    scan.oddities.push_back("A field record file keeps neither the site nor the Nyquist velocity.");
    return scan;
}

}  // namespace scan

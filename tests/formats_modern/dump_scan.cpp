/*
 * Reads a file for the tests that compare it with other readers, and writes it in another format,
 * or prints the scan: one line of JSON, then the values of all fields of all sweeps as floats.
 */
#include <cmath>
#include <cstdio>
#include <exception>
#include <string>

#include "scan/calendar.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/write_classes.h"
#include "scan/text.h"

namespace {

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : scan::printable(text)) {
        result += (c == '"' || c == '\\') ? std::string("\\") + c : std::string(1, c);
    }
    return result + "\"";
}

std::string number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    return std::isfinite(value) ? text : "null";
}

template <class Values, class Function>
std::string list(const Values& values, Function print) {
    std::string result;
    for (const auto& value : values) {
        result += (result.empty() ? "" : ",") + print(value);
    }
    return "[" + result + "]";
}

std::string field(const scan::Field& field) {
    return "{\"name\":" + quoted(field.name) + ",\"units\":" + quoted(field.units) +
           ",\"no_echo\":" + (field.noEcho ? number(*field.noEcho) : "null") + "}";
}

std::string sweep(const scan::Sweep& sweep) {
    const std::pair<const char*, double> numbers[] = {
        {"number", sweep.number},    {"rhi", sweep.rhi},         {"fixed", sweep.fixedAngleDeg},
        {"rays", sweep.nrays},       {"gates", sweep.ngates},    {"spacing", sweep.gateSpacingM},
        {"first", sweep.firstGateM}, {"nyquist", sweep.nyquist},
    };
    std::string text = "{\"mode\":" + quoted(sweep.mode);
    for (const auto& [name, value] : numbers) {
        text += ",\"" + std::string(name) + "\":" + number(value);
    }
    return text + ",\"azimuth\":" + list(sweep.azimuthDeg, number) +
           ",\"elevation\":" + list(sweep.elevationDeg, number) +
           ",\"time\":" + list(sweep.rayTimeS, number) +
           ",\"ray_gates\":" + list(sweep.rayGates, number) +
           ",\"fields\":" + list(sweep.fields, field) + "}";
}

void print(const scan::Scan& scan) {
    std::printf(
        "{\"format\":%s,\"radar\":%s,\"site\":%s,\"source\":%s,\"lat\":%s,\"lon\":%s,"
        "\"alt\":%s,\"beam\":%s,\"wavelength\":%s,\"time\":%s,\"constant\":%s,"
        "\"damage\":%s,\"oddities\":%s,\"sweeps\":%s}\n",
        quoted(scan.format).c_str(), quoted(scan.radarName).c_str(), quoted(scan.siteName).c_str(),
        quoted(scan.source).c_str(), number(scan.latitudeDeg).c_str(),
        number(scan.longitudeDeg).c_str(), number(scan.altitudeM).c_str(),
        number(scan.beamWidthDeg).c_str(), number(scan.wavelengthM).c_str(),
        number(scan::secondsOf(scan.time)).c_str(),
        scan.hasRadarConstant ? number(scan.radarConstantDb).c_str() : "null",
        list(scan.damage, quoted).c_str(), list(scan.oddities, quoted).c_str(),
        list(scan.sweeps, sweep).c_str());
    for (const scan::Sweep& sweep : scan.sweeps) {
        for (const scan::Field& field : sweep.fields) {
            std::fwrite(field.values.data(), sizeof(float), field.values.size(), stdout);
        }
    }
}

/* Classes that a test can foresee: 0, 3, 5 in turn, and none in the first gate of a sweep. */
std::vector<float> someClasses(const scan::Sweep& sweep) {
    std::vector<float> classes(sweep.fields.front().values.size());
    for (std::size_t i = 0; i < classes.size(); ++i) {
        const float codes[] = {0, 3, 5};
        classes[i] = i == 0 ? NAN : codes[i % 3];
    }
    return classes;
}

/* Notes of the writer go to standard output. */
void write(const scan::Scan& scan, const std::string& path, bool withClasses) {
    std::vector<std::vector<float>> values;
    for (const scan::Sweep& sweep : scan.sweeps) {
        values.push_back(someClasses(sweep));
    }
    std::vector<scan::SweepClasses> classes;
    for (std::size_t i = 0; i < scan.sweeps.size(); ++i) {
        classes.push_back({&scan.sweeps[i], &values[i], {{"PR", "", values[i]}}});
    }
    const scan::WrittenFiles written = withClasses
                                           ? scan::writeClasses(path, scan, nullptr, classes)
                                           : scan::writeScan(path, scan);
    for (const std::string& note : written.notes) {
        std::puts(note.c_str());
    }
}

}  // namespace

/* FILE [--hide-no-echo], or FILE --convert OUT, or FILE --classify OUT. */
int main(int count, char** arguments) {
    if (count < 2) {
        return 2;
    }
    const std::string mode = count > 2 ? arguments[2] : "";
    try {
        const scan::Scan scan =
            scan::readScan(arguments[1], {.keepNoEcho = mode.empty(), .oddities = false});
        if (count > 3) {
            write(scan, arguments[3], mode == "--classify");
        } else {
            print(scan);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

/*
 * Reads a file and prints the scan for the tests that compare it with other readers: one line of
 * JSON, then the values of all fields of all sweeps as floats.
 */
#include <cmath>
#include <cstdio>
#include <exception>
#include <string>

#include "scan/fields/roles.h"
#include "scan/formats/calendar.h"
#include "scan/formats/read_scan.h"

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

}  // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        return 2;
    }
    try {
        const bool hide = count > 2 && std::string(arguments[2]) == "--hide-no-echo";
        print(scan::readScan(arguments[1], {.keepNoEcho = !hide, .oddities = false}));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

/* Reads, classifies, processes and writes one small scan. */
#include "results.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <stdexcept>

#include "clutterclassifier/clutterclassifier.h"
#include "scan/classes/classify_sweep.h"
#include "scan/formats/polar/write_polar.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/uf/write_uf.h"
#include "scan/formats/write_classes.h"
#include "scan/formats/writing/output_file.h"
#include "scan/process/process_sweep.h"
#include "scan/quiet_library.h"
#include "scan/synthetic/synthetic.h"

namespace platforms {
namespace {

constexpr int kRays = 120, kGates = 400;

scan::Field fieldOf(const char* name, const std::vector<double>& values) {
    scan::Field field;
    field.name = name;
    field.values.assign(values.begin(), values.end());
    field.wordsPerUnit = 100;
    return field;
}

std::vector<float> bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    if (bytes.empty()) {
        throw std::runtime_error(path + ": not written");
    }
    std::vector<float> values;
    for (const char byte : bytes) {
        values.push_back(static_cast<float>(static_cast<unsigned char>(byte)));
    }
    return values;
}

void addFields(Results& results, const std::string& name, const scan::Sweep& sweep, bool rounded) {
    for (const scan::Field& field : sweep.fields) {
        results[name + " " + field.name] = {field.values, rounded};
    }
}

std::vector<double> doublesOf(const scan::Sweep& sweep, const char* name) {
    for (const scan::Field& field : sweep.fields) {
        if (field.name == name) {
            return {field.values.begin(), field.values.end()};
        }
    }
    throw std::runtime_error(std::string("no field ") + name);
}

/* The entry point with all inputs that the scan has, and with the textures. */
void addEntryPoint(Results& results, const scan::Scan& scan, const std::string& membership) {
    const scan::Sweep& sweep = scan.sweeps.at(0);
    std::vector<double> z = doublesOf(sweep, "DZ"), zdr = doublesOf(sweep, "DR"),
                        phi = doublesOf(sweep, "PH"), rho = doublesOf(sweep, "RH"),
                        v = doublesOf(sweep, "VE"), classes(z.size()), ranges, azimuths;
    for (int g = 0; g < sweep.ngates; ++g) {
        ranges.push_back(sweep.firstGateM + g * sweep.gateSpacingM);
    }
    azimuths = sweep.azimuthDeg;
    double elevation = sweep.fixedAngleDeg;
    for (const int mask : {1, 15, 15 + 16 + 128}) {
        double params[3] = {45.0, 8.0, static_cast<double>(mask)};
        clutterclassifier(membership.c_str(), sweep.nrays, sweep.ngates, z.data(), zdr.data(),
                          phi.data(), rho.data(), v.data(), nullptr, nullptr, ranges.data(),
                          azimuths.data(), &elevation, params, classes.data());
        results["entry point, inputs " + std::to_string(mask)] = {{classes.begin(), classes.end()}};
    }
}

void addClasses(Results& results, const scan::Scan& scan, const std::string& membership,
                const std::string& folder) {
    scan::ClassifyOptions options;
    options.membership = membership;
    options.certainty = true;
    const scan::ClassifiedSweep found = scan::classifySweep(scan, scan.sweeps.at(0), options);
    results["classes"] = {found.classes};
    results["deciding input"] = {found.deciding};
    results["probability"] = {found.probability, true};
    results["margin"] = {found.margin, true};
    for (const char* ending : {"uf", "plv", "csv"}) {
        const std::string path = folder + "/classes." + ending;
        scan::writeClasses(path, scan, nullptr, {{&scan.sweeps.at(0), &found.classes}});
        results[std::string("written classes, ") + ending] = {bytesOf(path)};
    }
    addFields(results, "read again, plv", scan::readScan(folder + "/classes.plv").sweeps.at(0),
              false);
}

void addFiles(Results& results, const scan::Scan& scan, const std::string& folder) {
    for (const char* ending : {"uf", "plv"}) {
        const std::string path = folder + "/fields." + ending;
        scan::writeScan(path, scan);
        results[std::string("written fields, ") + ending] = {bytesOf(path)};
        addFields(results, std::string("fields read again, ") + ending,
                  scan::readScan(path).sweeps.at(0), false);
    }
    const scan::Sweep& sweep = scan.sweeps.at(0);
    const std::string path = folder + "/field.dat";
    scan::OutputFile file(path);
    scan::writePolarData(file, scan, sweep, sweep.fields.at(0),
                         scan::singleParameterProducts().at(0));
    file.commit();
    results["written field, polar data"] = {bytesOf(path)};
    addFields(results, "field read again, polar data", scan::readScan(path).sweeps.at(0), false);
}

/* The whole chain, with coefficients that are not searched. */
void addProcessed(Results& results, const scan::Scan& scan, const std::string& membership,
                  const std::string& folder) {
    scan::ProcessOptions options;
    options.classify.membership = membership;
    options.configuration = folder + "/settings.txt";
    std::ofstream(options.configuration)
        << "ATTENUATION_ALG 4\nRAINFALL_ALG -1\nFREEZING_LEVEL 3000\n";
    addFields(results, "processed", scan::processSweep(scan, scan.sweeps.at(0), options).sweep,
              true);
}

}  // namespace

void makeInput(const std::string& path) {
    const scan::SyntheticScan synthetic = scan::makeSyntheticScan(7, kRays, kGates);
    scan::Sweep sweep;
    sweep.number = 1;
    sweep.fixedAngleDeg = synthetic.elevationDeg;
    sweep.azimuthDeg = synthetic.azimuthDeg;
    sweep.elevationDeg.assign(kRays, synthetic.elevationDeg);
    sweep.nrays = kRays;
    sweep.ngates = kGates;
    sweep.gateSpacingM = synthetic.gateSpacingM;
    sweep.firstGateM = synthetic.rangeM[0];
    sweep.nyquist = synthetic.nyquist;
    sweep.fields = {fieldOf("DZ", synthetic.zhh), fieldOf("DR", synthetic.zdr),
                    fieldOf("PH", synthetic.phidp), fieldOf("RH", synthetic.rhohv),
                    fieldOf("VE", synthetic.velocity)};
    sweep.fields[3].wordsPerUnit = 10000;
    scan::Scan scan;
    scan.radarName = "PLATFORM";
    scan.time = {2001, 2, 3, 4, 5, 6};
    scan.sweeps.push_back(sweep);
    scan::OutputFile file(path);
    scan::writeUniversalFormat(file, scan, nullptr);
    file.commit();
}

Results resultsOf(const std::string& input, const std::string& membership,
                  const std::string& folder) {
    const scan::QuietLibrary quiet;
    const scan::Scan scan = scan::readScan(input);
    Results results;
    addFields(results, "read", scan.sweeps.at(0), false);
    addEntryPoint(results, scan, membership);
    addClasses(results, scan, membership, folder);
    addFiles(results, scan, folder);
    addProcessed(results, scan, membership, folder);
    return results;
}

}  // namespace platforms

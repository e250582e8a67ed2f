// process.cpp - one scan through the processing chain, and the settings of that chain.
#include "scan/process/process_sweep.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "arrays.h"
#include "clutterclassifier/clutterclassifier.h"
#include "scan/classes/membership_files.h"
#include "scan/process/configuration.h"
#include "scan/quiet_library.h"

namespace python {
namespace {

using FloatArray = Array<float>;
using Fields = std::map<std::string, FloatArray>;  // by the keys of their roles: "zhh"

constexpr std::uint8_t kNoClass = 255;
constexpr const char* kClassField = "CCl";  // how the chain knows a field of classes

std::vector<float> copied(const FloatArray& array) {
    return {array.data(), array.data() + array.size()};
}

std::vector<double> copied(const Array<double>& array) {
    return {array.data(), array.data() + array.size()};
}

FloatArray asArray(const std::vector<float>& values, py::ssize_t rays, py::ssize_t gates) {
    FloatArray array({rays, gates});
    std::copy(values.begin(), values.end(), array.mutable_data());
    return array;
}

Array<std::uint8_t> asClasses(const std::vector<float>& values, py::ssize_t rays,
                              py::ssize_t gates) {
    Array<std::uint8_t> array({rays, gates});
    std::transform(values.begin(), values.end(), array.mutable_data(), [](float code) {
        return code >= 0 && code < kNoClass ? static_cast<std::uint8_t>(code) : kNoClass;
    });
    return array;
}

const char* sourceName(scan::NoiseSource source) {
    return source == scan::NoiseSource::kEstimate ? "estimate" : "argument";
}

// Every field has the role of its key, whatever it holds.
scan::FieldMap rolesOf(const Fields& fields) {
    scan::FieldMap roles;
    for (const auto& [key, values] : fields) {
        if (key != kClassField) {
            roles.merge(scan::parseFieldMap(key + "=" + key));
        }
    }
    return roles;
}

scan::Sweep sweepOf(const Fields& fields, double spacing, bool rhi, double fixedAngle,
                    const Array<double>& azimuth, const Array<double>& elevation) {
    scan::Sweep sweep;
    const FloatArray& reflectivity = fields.at("zhh");
    sweep.nrays = static_cast<int>(reflectivity.shape(0));
    sweep.ngates = static_cast<int>(reflectivity.shape(1));
    sweep.rhi = rhi;
    sweep.fixedAngleDeg = fixedAngle;
    sweep.azimuthDeg = copied(azimuth);
    sweep.elevationDeg = copied(elevation);
    sweep.gateSpacingM = static_cast<double>(static_cast<int>(spacing));
    sweep.firstGateM = sweep.gateSpacingM;
    for (const auto& [key, values] : fields) {
        sweep.fields.push_back({key, "", copied(values)});
    }
    return sweep;
}

py::dict resultOf(const scan::ProcessedSweep& processed) {
    const scan::ClassifiedSweep& classified = processed.classified;
    const py::ssize_t rays = processed.sweep.nrays;
    const py::ssize_t gates = processed.sweep.ngates;
    py::dict fields;
    for (const scan::Field& field : processed.sweep.fields) {
        fields[field.name.c_str()] = asArray(field.values, rays, gates);
    }
    py::dict result;
    result["fields"] = fields;
    result["classes"] = py::none();
    if (processed.hasClasses) {
        result["classes"] = asClasses(classified.classes, rays, gates);
    }
    result["notes"] = classified.notes;
    result["stages"] = processed.what;
    result["inputs"] = classified.mask;
    result["radar_constant"] = classified.noiseFloor.radarConstantDb;
    result["min_snr"] = classified.noiseFloor.minSnrDb;
    result["source"] = sourceName(classified.noiseFloor.source);
    result["freezing_level"] = processed.freezingLevelM;
    result["seed"] = processed.seed;
    return result;
}

py::dict process(const std::string& membership, const Fields& fields, double spacing, bool rhi,
                 double fixedAngle, const Array<double>& azimuth, const Array<double>& elevation,
                 std::optional<double> radarConstant, std::optional<double> minSnr,
                 std::optional<int> inputs, const std::string& configuration, int what,
                 std::optional<double> freezingLevel, std::pair<int, int> neighbourhood,
                 std::uint32_t seed) {
    scan::ProcessOptions options;
    options.configuration = configuration;
    options.what = what;
    options.freezingLevelM = freezingLevel;
    options.seed = seed;
    options.classify.membership = membership;
    options.classify.mask = inputs;
    options.classify.noise.minSnrDb = minSnr;
    options.classify.noise.radarConstantDb = radarConstant;
    options.classify.removeIsolated = true;
    options.classify.neighbourhood = {neighbourhood.first, neighbourhood.second};
    options.classify.map = rolesOf(fields);
    scan::ProcessedSweep processed;
    {
        const py::gil_scoped_release release;
        const scan::Sweep sweep = sweepOf(fields, spacing, rhi, fixedAngle, azimuth, elevation);
        const scan::QuietLibrary quiet;  // the stages are reported on standard output
        processed = scan::processSweep(scan::Scan(), sweep, options);
        processed.context.reset();
    }
    return resultOf(processed);
}

// The settings of a file that concern the call itself, not the stages.
py::dict readSettings(const std::string& path, const std::string& text) {
    const scan::Configuration pairs = scan::examineConfiguration(text);
    const auto context = std::make_unique<Crres>();
    {
        const py::gil_scoped_release release;
        const scan::QuietLibrary quiet;
        std::string name = path;
        context->readinitialconfiguration(name.data());
    }
    py::dict settings;
    if (pairs.names("WHAT2DO")) {
        settings["what"] = static_cast<int>(context->what2do);
    }
    if (pairs.names("CLUTTER_ALG")) {
        settings["inputs"] = static_cast<int>(context->clutteralg);
    }
    if (pairs.names("CLUTTER_MFS")) {
        settings["membership"] = std::string(context->mfdir);
    }
    return settings;
}

std::vector<std::pair<int, std::string>> problemsOf(const std::string& text) {
    std::vector<std::pair<int, std::string>> problems;
    for (const scan::ConfigurationProblem& problem : scan::examineConfiguration(text).problems) {
        problems.emplace_back(problem.line, problem.text);
    }
    return problems;
}

}  // namespace

void bindProcess(py::module_& module) {
    module.def("process", &process, py::arg("membership"), py::arg("fields").noconvert(),
               py::arg("spacing"), py::arg("rhi"), py::arg("fixed_angle"),
               py::arg("azimuth").noconvert(), py::arg("elevation").noconvert(),
               py::arg("radar_constant"), py::arg("min_snr"), py::arg("inputs"),
               py::arg("configuration"), py::arg("what"), py::arg("freezing_level"),
               py::arg("neighbourhood"), py::arg("seed"));
    module.def("read_settings", &readSettings, py::arg("path"), py::arg("text"));
    module.def("configuration_problems", &problemsOf, py::arg("text"));
    module.def("example_configuration", &scan::exampleConfiguration, py::arg("membership"));
    module.def("configuration_table", &scan::configurationTable);
}

}  // namespace python

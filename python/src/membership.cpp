// membership.cpp - membership functions: checked, and trained from labelled scans.
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "arrays.h"
#include "scan/membership/check.h"
#include "scan/membership/train.h"

namespace python {
namespace {

// (file, line, whether it is an error, text) of each finding.
std::vector<std::tuple<std::string, int, bool, std::string>> check(const std::string& directory) {
    std::vector<std::tuple<std::string, int, bool, std::string>> found;
    for (const scan::Finding& finding : scan::checkMembership(directory).findings) {
        found.emplace_back(finding.file, finding.line, finding.isError, finding.text);
    }
    return found;
}

// (abscissa, degree) of every point of a file.
std::vector<std::pair<double, double>> readTable(const std::string& directory,
                                                 const std::string& file) {
    const scan::TableFile table = scan::readTableFile(directory, file);
    if (!table.findings.empty()) {
        throw py::value_error(file + ": " + table.findings.front().text);
    }
    std::vector<std::pair<double, double>> points;
    for (const scan::TablePoint& point : table.points) {
        points.emplace_back(point.x, point.degree);
    }
    return points;
}

scan::Role roleOfArgument(const std::string& name) {
    return scan::roleOfName(name == "vrad" ? "VRADH" : name == "wrad" ? "WRADH" : name);
}

// A sweep of the arrays of one scan, by the names of arguments.
scan::LabelledScan labelled(const py::dict& given, const scan::ClassifyOptions& common) {
    const auto labels = py::cast<Array<std::uint8_t>>(given["labels"]);
    scan::Sweep sweep;
    sweep.nrays = static_cast<int>(labels.shape(0));
    sweep.ngates = static_cast<int>(labels.shape(1));
    sweep.gateSpacingM = py::cast<double>(given["spacing"]);
    const double circle = py::cast<bool>(given["closed"]) ? 360.0 : 180.0;
    for (int ray = 0; ray < sweep.nrays; ++ray) {
        sweep.azimuthDeg.push_back(circle * ray / sweep.nrays);
        sweep.elevationDeg.push_back(0);
    }
    scan::ClassifyOptions options = common;
    options.mask = py::cast<int>(given["inputs"]);
    options.noise.radarConstantDb = py::cast<double>(given["radar_constant"]);
    options.noise.minSnrDb = py::cast<double>(given["min_snr"]);
    for (const auto& [key, value] : py::cast<py::dict>(given["fields"])) {
        const auto name = py::cast<std::string>(key);
        const auto array = py::cast<Array<float>>(value);
        sweep.fields.push_back({name, "", {array.data(), array.data() + array.size()}});
        options.map[name] = roleOfArgument(name);
    }
    std::vector<scan::Label> codes;
    for (py::ssize_t i = 0; i < labels.size(); ++i) {
        codes.push_back(static_cast<scan::Label>(labels.data()[i]));
    }
    scan::Scan whole;
    whole.path = py::cast<std::string>(given["name"]);
    const py::gil_scoped_release release;
    return labelledScan(whole, sweep, options, std::move(codes));
}

py::dict describeScores(const scan::ScanScores& scan) {
    const scan::TrainScores& scores = scan.scores;
    py::dict result;
    result["kept"] = scores.kept;
    result["kept_strict"] = scores.keptStrict;
    result["found"] = scores.found;
    result["hss"] = scores.hss;
    result["hss_strict"] = scores.hssStrict;
    result["hss_one_to_nine"] = scores.hssOneToNine;
    result["clutter"] = scan.clutter;
    result["weather"] = scan.weather;
    result["beside"] = scan.beside;
    return result;
}

// Trains, and writes the files into a directory that exists.
py::dict train(const py::list& scans, const py::dict& settings, const std::string& directory) {
    scan::ClassifyOptions options;
    options.textureGates = py::cast<int>(settings["texture_gates"]);
    options.textureRays = py::cast<int>(settings["texture_rays"]);
    scan::TrainOptions how;
    how.neighbourhood = {py::cast<int>(settings["neighbourhood_gates"]),
                         py::cast<int>(settings["neighbourhood_rays"])};
    how.prior = py::cast<double>(settings["prior"]);
    std::vector<scan::LabelledScan> labelledScans;
    for (const py::handle& scan : scans) {
        labelledScans.push_back(labelled(py::cast<py::dict>(scan), options));
    }
    scan::Training training;
    std::vector<std::string> files;
    {
        const py::gil_scoped_release release;
        training = trainMembership(labelledScans, how);
        files = writeTables(training.inputs, directory);
    }
    py::list weights, scores;
    for (const scan::TrainedInput& one : training.inputs) {
        weights.append(py::make_tuple(one.input, one.weight.weight, one.weight.lean));
    }
    for (const scan::ScanScores& scan : training.unused) {
        scores.append(describeScores(scan));
    }
    py::dict result;
    result["weights"] = weights;
    result["scores"] = scores;
    result["warnings"] = training.warnings;
    result["files"] = files;
    return result;
}

}  // namespace

void bindMembership(py::module_& module) {
    module.def("find_membership_faults", &check, py::arg("directory"));
    module.def("read_membership_table", &readTable, py::arg("directory"), py::arg("file"));
    module.def("train_membership", &train, py::arg("scans"), py::arg("settings"),
               py::arg("directory"));
}

}  // namespace python

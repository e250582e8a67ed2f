/*
 * studio.cpp - what the page calls: scans, classes, explanations and pictures.
 *
 * The page puts files into the module's file system and names them here. Whatever fails comes back
 * as an object with the member `error`; nothing is thrown into the page.
 */
#include <emscripten/bind.h>
#include <emscripten/val.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "clutterclassifier/clutterclassifier.h"
#include "labels.h"
#include "picture.h"
#include "scan/angles.h"
#include "scan/classes/classify_sweep.h"
#include "scan/fields/role.h"
#include "scan/formats/read_scan.h"
#include "scan/formats/write_classes.h"
#include "scan/membership/labelled_scan.h"
#include "scan/membership/table_file.h"
#include "scan/membership/train.h"
#include "scan/synthetic/synthetic.h"

namespace {

using emscripten::val;

constexpr float kNoValue = std::numeric_limits<float>::quiet_NaN();

struct OpenScan {
    scan::Scan scan;
    std::unique_ptr<Cufrw> words;  // of a Universal Format file, to be written back
    std::unique_ptr<scan::NoiseEstimates> estimates;  // of all sweeps together
};

std::vector<std::unique_ptr<OpenScan>> openScans;
scan::ClassifiedSweep result;
const scan::Sweep* classifiedSweep = nullptr;
studio::PlaceFinder places;
std::vector<scan::Label> labels;
std::vector<float> labelCodes;  // the same, to be shown

OpenScan& scanOf(int id) {
    if (id < 0 || id >= static_cast<int>(openScans.size()) || !openScans[id]) {
        throw std::runtime_error("no such scan");
    }
    return *openScans[id];
}

const scan::Sweep& sweepOf(int id, int sweep) {
    return scanOf(id).scan.sweeps.at(static_cast<std::size_t>(sweep));
}

/* The reason of a failure, as the page shows it. */
template <class Function>
val answer(const Function& function) {
    try {
        return function();
    } catch (const std::exception& error) {
        val failed = val::object();
        failed.set("error", std::string(error.what()));
        return failed;
    }
}

template <class T>
val copyOf(const char* kind, const std::vector<T>& values) {
    return val::global(kind).new_(val(emscripten::typed_memory_view(values.size(), values.data())));
}

val textsOf(const std::vector<std::string>& texts) {
    val list = val::array();
    for (const std::string& text : texts) {
        list.call<void>("push", text);
    }
    return list;
}

val describeSweep(const scan::Sweep& sweep) {
    val described = val::object();
    described.set("number", sweep.number);
    described.set("rhi", sweep.rhi);
    described.set("angle", sweep.fixedAngleDeg);
    described.set("rays", sweep.nrays);
    described.set("gates", sweep.ngates);
    described.set("spacing", sweep.gateSpacingM);
    described.set("first", sweep.firstGateM);
    described.set("rangeKm", cli::sweepRangeKm(sweep));
    val fields = val::array();
    for (const scan::Field& field : sweep.fields) {
        val entry = val::object();
        const scan::Role role = scan::roleOfName(field.name);
        entry.set("name", field.name);
        entry.set("units", field.units);
        entry.set("role", std::string(role == scan::Role::kNone ? "" : roleInfo(role).key));
        fields.call<void>("push", entry);
    }
    described.set("fields", fields);
    return described;
}

val describe(int id) {
    const scan::Scan& scan = scanOf(id).scan;
    val described = val::object();
    described.set("id", id);
    described.set("format", scan.format);
    described.set("radar", scan.radarName);
    described.set("site", scan.siteName);
    described.set("latitude", scan.latitudeDeg);
    described.set("longitude", scan.longitudeDeg);
    char time[32];
    std::snprintf(time, sizeof time, "%04d-%02d-%02d %02d:%02d:%02d", scan.time.year,
                  scan.time.month, scan.time.day, scan.time.hour, scan.time.minute,
                  scan.time.second);
    described.set("time", std::string(time));
    described.set("damage", textsOf(scan.damage));
    described.set("oddities", textsOf(scan.oddities));
    val sweeps = val::array();
    for (const scan::Sweep& sweep : scan.sweeps) {
        sweeps.call<void>("push", describeSweep(sweep));
    }
    described.set("sweeps", sweeps);
    return described;
}

val keep(OpenScan opened) {
    openScans.push_back(std::make_unique<OpenScan>(std::move(opened)));
    return describe(static_cast<int>(openScans.size()) - 1);
}

val openFile(const std::string& path) {
    return answer([&] {
        OpenScan opened;
        opened.scan = scan::readScan(path, opened.words);
        return keep(std::move(opened));
    });
}

scan::Field fieldOf(const char* name, const char* units, const std::vector<double>& values) {
    return {name, units, std::vector<float>(values.begin(), values.end())};
}

/* A scan of known truth, for a first look without a file. */
val openSynthetic(int seed) {
    return answer([&] {
        const scan::SyntheticScan made = scan::makeSyntheticScan(static_cast<std::uint64_t>(seed));
        OpenScan opened;
        scan::Scan& scan = opened.scan;
        scan.format = "synthetic";
        scan.radarName = "Synthetic";
        scan.radarConstantDb = made.radarConstantDb;
        scan.hasRadarConstant = true;
        scan.time = {2024, 6, 1, 12, 0, 0};
        scan::Sweep sweep;
        sweep.fixedAngleDeg = made.elevationDeg;
        sweep.azimuthDeg = made.azimuthDeg;
        sweep.elevationDeg.assign(made.azimuthDeg.size(), made.elevationDeg);
        sweep.nrays = made.nrays;
        sweep.ngates = made.ngates;
        sweep.gateSpacingM = made.gateSpacingM;
        sweep.firstGateM = made.rangeM.front();
        sweep.nyquist = made.nyquist;
        sweep.fields = {fieldOf("ZH", "dBZ", made.zhh),      fieldOf("ZD", "dB", made.zdr),
                        fieldOf("PH", "deg", made.phidp),    fieldOf("RH", "", made.rhohv),
                        fieldOf("VR", "m/s", made.velocity), fieldOf("SW", "m/s", made.width),
                        fieldOf("LD", "dB", made.ldr)};
        sweep.fields.push_back({"TRUTH", "", made.truth});
        scan.sweeps.push_back(std::move(sweep));
        return keep(std::move(opened));
    });
}

void closeScan(int id) {
    if (id >= 0 && id < static_cast<int>(openScans.size())) {
        openScans[id].reset();
        classifiedSweep = nullptr;
    }
}

/* A member of the settings that may be null. */
template <class T>
std::optional<T> optional(const val& settings, const char* name) {
    const val value = settings[name];
    if (value.isNull() || value.isUndefined()) {
        return std::nullopt;
    }
    return value.as<T>();
}

scan::ClassifyOptions optionsFrom(int id, const val& settings) {
    OpenScan& opened = scanOf(id);
    if (!opened.estimates) {
        opened.estimates = std::make_unique<scan::NoiseEstimates>(opened.scan, scan::FieldMap());
    }
    scan::ClassifyOptions options;
    options.estimates = opened.estimates.get();
    options.membership = settings["membership"].as<std::string>();
    options.mask = optional<int>(settings, "inputs");
    options.noise.minSnrDb = optional<double>(settings, "minSnr");
    options.noise.radarConstantDb = optional<double>(settings, "radarConstant");
    options.textureGates = settings["textureGates"].as<int>();
    options.textureRays = settings["textureRays"].as<int>();
    options.neighbourhood = {settings["neighbourhoodGates"].as<int>(),
                             settings["neighbourhoodRays"].as<int>()};
    options.allClasses = settings["allClasses"].as<bool>();
    options.removeIsolated = settings["removeIsolated"].as<bool>();
    options.certainty = true;
    return options;
}

val classify(int id, int sweep, const val& settings) {
    return answer([&] {
        const scan::Sweep& chosen = sweepOf(id, sweep);
        classifiedSweep = nullptr;
        result = scan::classifySweep(scanOf(id).scan, chosen, optionsFrom(id, settings));
        classifiedSweep = &chosen;
        val made = val::object();
        made.set("precipitation", static_cast<double>(result.precipitation));
        made.set("ground", static_cast<double>(result.groundClutter));
        made.set("sea", static_cast<double>(result.seaClutter));
        made.set("turbine", static_cast<double>(result.turbineClutter));
        made.set("noise", static_cast<double>(result.noise));
        made.set("inputs", result.mask);
        made.set("radarConstant", result.noiseFloor.radarConstantDb);
        made.set("minSnr", result.noiseFloor.minSnrDb);
        made.set("milliseconds", 1000 * result.seconds);
        std::vector<std::string> notes = result.warnings;
        notes.insert(notes.end(), result.notes.begin(), result.notes.end());
        made.set("notes", textsOf(notes));
        return made;
    });
}

const std::vector<float>& layerOf(const scan::Sweep& sweep, const std::string& name) {
    if (name == "field:") {
        throw std::runtime_error("no such field");
    }
    if (name.rfind("field:", 0) == 0) {
        for (const scan::Field& field : sweep.fields) {
            if (name.compare(6, std::string::npos, field.name) == 0) {
                return field.values;
            }
        }
        throw std::runtime_error("no such field");
    }
    if (name == "labels") {
        return labelCodes;
    }
    if (classifiedSweep != &sweep) {
        throw std::runtime_error("the sweep has no classes");
    }
    if (name == "probability") {
        return result.probability;
    }
    if (name == "margin") {
        return result.margin;
    }
    return name == "deciding" ? result.deciding : result.classes;
}

/* The values of a layer: "field:NAME", "classes", "probability", "margin" or "deciding". */
val layer(int id, int sweep, const std::string& name) {
    return answer([&] { return copyOf("Float32Array", layerOf(sweepOf(id, sweep), name)); });
}

/* The gate at a point of the picture, km; `at` is its index in every layer, -1 outside. */
val gateAt(int id, int sweep, double xKm, double yKm) {
    return answer([&] {
        const scan::Sweep& chosen = sweepOf(id, sweep);
        const auto at = studio::findGate(chosen, scanOf(id).scan.beamWidthDeg, xKm, yKm);
        val gate = val::object();
        gate.set("at", static_cast<double>(at));
        if (at < 0) {
            return gate;
        }
        const auto ray = static_cast<std::size_t>(at / chosen.ngates);
        const auto number = static_cast<int>(at % chosen.ngates);
        gate.set("ray", static_cast<int>(ray));
        gate.set("gate", number);
        gate.set("azimuth", chosen.azimuthDeg.at(ray));
        gate.set("elevation", chosen.elevationDeg.at(ray));
        const double rangeKm = (chosen.firstGateM + number * chosen.gateSpacingM) / 1000;
        gate.set("rangeKm", rangeKm);
        gate.set("heightKm",
                 cli::beamHeightKm(rangeKm, chosen.elevationDeg.at(ray) * scan::kRadiansPerDegree));
        val values = val::array();
        for (const scan::Field& field : chosen.fields) {
            values.call<void>("push", field.values[static_cast<std::size_t>(at)]);
        }
        gate.set("values", values);
        const bool classified = classifiedSweep == &chosen;
        const auto of = [&](const std::vector<float>& values) {
            return classified ? values[static_cast<std::size_t>(at)] : kNoValue;
        };
        gate.set("class", of(result.classes));
        gate.set("probability", of(result.probability));
        gate.set("margin", of(result.margin));
        gate.set("deciding", of(result.deciding));
        return gate;
    });
}

val explain(int id, int sweep, int ray, int gate, const val& settings) {
    return answer([&] {
        const scan::ExplainedGate explained = scan::explainGate(
            scanOf(id).scan, sweepOf(id, sweep), optionsFrom(id, settings), ray, gate);
        const clutter_explanation& why = explained.explanation;
        val made = val::object();
        made.set("class", why.gate_class);
        made.set("margin", why.margin);
        made.set("probability", why.probability);
        made.set("neighbourhood", why.neighbourhood);
        made.set("deciding", why.deciding);
        made.set("turning", why.turning);
        val rows = val::array();
        for (int i = 0; i < CLUTTER_INPUT_COUNT; ++i) {
            const clutter_input_info* info = nullptr;
            clutter_get_input(i, &info);
            if ((why.inputs & info->bit) == 0) {
                continue;
            }
            const clutter_input_share& share = why.input[i];
            val row = val::object();
            row.set("input", i);
            row.set("name", std::string(info->name));
            row.set("unit", std::string(info->unit));
            row.set("value", share.value);
            row.set("precipitation", share.precipitation);
            row.set("clutter", share.clutter);
            row.set("contribution", share.contribution);
            row.set("turns", share.turning_value);
            rows.call<void>("push", row);
        }
        made.set("inputs", rows);
        return made;
    });
}

/* All inputs of the classifier, in the order of their bits. */
val inputs() {
    val list = val::array();
    for (int i = 0; i < CLUTTER_INPUT_COUNT; ++i) {
        const clutter_input_info* info = nullptr;
        clutter_get_input(i, &info);
        val entry = val::object();
        entry.set("name", std::string(info->name));
        entry.set("tag", std::string(info->tag == nullptr ? "" : info->tag));
        entry.set("unit", std::string(info->unit));
        entry.set("bit", static_cast<int>(info->bit));
        entry.set("texture", info->texture != 0);
        entry.set("low", info->low);
        entry.set("high", info->high);
        list.call<void>("push", entry);
    }
    return list;
}

/* One image of each wanted layer, all of the same view. */
val render(int id, int sweep, const val& layers, const val& view, int width, int height) {
    return answer([&] {
        const scan::Sweep& chosen = sweepOf(id, sweep);
        places.look(chosen, scanOf(id).scan.beamWidthDeg,
                    {view["left"].as<double>(), view["right"].as<double>(),
                     view["bottom"].as<double>(), view["top"].as<double>()},
                    width, height);
        val images = val::array();
        const auto count = layers["length"].as<int>();
        for (int i = 0; i < count; ++i) {
            const auto name = layers[i].as<std::string>();
            const std::vector<float>& values = layerOf(chosen, name);
            const cli::Quantity quantity = studio::quantityOfLayer(chosen, name);
            val image = val::object();
            image.set("pixels", copyOf("Uint8ClampedArray", places.image(values, quantity.scale)));
            image.set("heading", quantity.heading);
            image.set("units", quantity.units);
            image.set("scale", copyOf("Uint8Array", studio::scaleColours(quantity.scale)));
            image.set("low", quantity.scale.low);
            image.set("high", quantity.scale.high);
            images.call<void>("push", image);
        }
        return images;
    });
}

/* One step of labelling: a stroke of a brush, a rule, or a label for all gates. */
void applyStep(const scan::Sweep& sweep, const val& step) {
    const auto kind = step["kind"].as<std::string>();
    if (kind == "rule") {
        const std::vector<scan::Label> ruled =
            scan::LabelRule(step["rule"].as<std::string>()).labels(sweep);
        labels.assign(ruled.begin(), ruled.end());
        return;
    }
    const auto label = static_cast<scan::Label>(step["label"].as<int>());
    if (kind == "all") {
        std::fill(labels.begin(), labels.end(), label);
        return;
    }
    const auto points = emscripten::convertJSArrayToNumberVector<double>(step["points"]);
    for (std::size_t i = 0; i + 1 < points.size(); i += 2) {
        studio::paintDisc(sweep, points[i], points[i + 1], step["radius"].as<double>(), label,
                          labels);
    }
}

/* The labels that all steps together give; how many gates of each class have one. */
val setLabels(int id, int sweep, const val& steps) {
    return answer([&] {
        const scan::Sweep& chosen = sweepOf(id, sweep);
        labels.assign(
            static_cast<std::size_t>(chosen.nrays) * static_cast<std::size_t>(chosen.ngates),
            scan::Label::kNotJudged);
        const auto count = steps["length"].as<int>();
        for (int i = 0; i < count; ++i) {
            applyStep(chosen, steps[i]);
        }
        labelCodes = studio::codesOf(labels);
        val made = val::object();
        const auto of = [&](scan::Label label) {
            return static_cast<double>(std::count(labels.begin(), labels.end(), label));
        };
        made.set("weather", of(scan::Label::kWeather) + of(scan::Label::kBeside));
        made.set("clutter", of(scan::Label::kClutter));
        return made;
    });
}

val scoresOf(const scan::TrainScores& scores) {
    val made = val::object();
    made.set("kept", scores.kept);
    made.set("keptStrict", scores.keptStrict);
    made.set("found", scores.found);
    made.set("hss", scores.hss);
    made.set("hssStrict", scores.hssStrict);
    made.set("hssOneToNine", scores.hssOneToNine);
    return made;
}

/* How the classes that are shown compare with the labels. */
val score(int id, int sweep, const val& settings) {
    return answer([&] {
        const scan::Sweep& chosen = sweepOf(id, sweep);
        if (classifiedSweep != &chosen || labels.size() != result.margin.size()) {
            throw std::runtime_error("the sweep has no labels");
        }
        const scan::LabelledScan labelled =
            scan::labelledScan(scanOf(id).scan, chosen, optionsFrom(id, settings), labels);
        scan::LabelCounts counts;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            if (labelled.echo[i] != 0) {
                counts.add(labelled.labels[i], result.margin[i]);
            }
        }
        return scoresOf(counts.scores());
    });
}

/* Membership functions from the labels, and their scores on rays that took no part. */
val train(int id, int sweep, const val& settings) {
    return answer([&] {
        const scan::ClassifyOptions options = optionsFrom(id, settings);
        scan::TrainOptions how;
        how.neighbourhood = options.neighbourhood;
        const scan::Training training = scan::trainMembership(
            {scan::labelledScan(scanOf(id).scan, sweepOf(id, sweep), options, labels)}, how);
        val tables = val::object();
        for (const scan::TrainedInput& input : training.inputs) {
            const auto set = [&](scan::TableClass of) {
                val points = val::array();
                for (const scan::TablePoint& point : input.table(of)) {
                    val pair = val::array();
                    pair.call<void>("push", point.x);
                    pair.call<void>("push", point.degree);
                    points.call<void>("push", pair);
                }
                tables.set(scan::tableFileName(scan::inputInfo(input.input).tag, of), points);
            };
            set(scan::TableClass::kPrecipitation);
            set(scan::TableClass::kClutter);
        }
        val made = val::object();
        made.set("tables", tables);
        made.set("warnings", textsOf(training.warnings));
        made.set("scores", scoresOf(training.unused.at(0).scores));
        return made;
    });
}

/* Counts of the values of each input, for both classes: those of the labels where there are any,
 * else those that are shown. `bins` equal steps of its usual range. */
val histograms(int id, int sweep, const val& settings, int bins) {
    return answer([&] {
        const scan::Sweep& chosen = sweepOf(id, sweep);
        if (classifiedSweep != &chosen) {
            throw std::runtime_error("the sweep has no classes");
        }
        const bool labelled = std::any_of(labelCodes.begin(), labelCodes.end(),
                                          [](float code) { return !std::isnan(code); }) &&
                              labelCodes.size() == result.classes.size();
        const std::vector<float>& codes = labelled ? labelCodes : result.classes;
        scan::ClassifyOptions options = optionsFrom(id, settings);
        options.mask = result.mask;
        const scan::LabelledScan values =
            scan::labelledScan(scanOf(id).scan, chosen, options,
                               std::vector<scan::Label>(codes.size(), scan::Label::kNotJudged));
        val list = val::array();
        for (int i = 0; i < CLUTTER_INPUT_COUNT; ++i) {
            const clutter_input_info* info = nullptr;
            clutter_get_input(i, &info);
            std::vector<double> rain(static_cast<std::size_t>(bins)), clutter(rain);
            const std::vector<float>& of = values.inputs[static_cast<std::size_t>(i)];
            for (std::size_t k = 0; k < of.size(); ++k) {
                const double place = (of[k] - info->low) / (info->high - info->low) * bins;
                if (values.echo[k] == 0 || !(place >= 0 && place < bins)) {
                    continue;
                }
                if (codes[k] == CLUTTER_PRECIPITATION) {
                    rain[static_cast<std::size_t>(place)] += 1;
                } else if (codes[k] >= CLUTTER_GROUND) {
                    clutter[static_cast<std::size_t>(place)] += 1;
                }
            }
            val entry = val::object();
            entry.set("rain", copyOf("Float64Array", rain));
            entry.set("clutter", copyOf("Float64Array", clutter));
            list.call<void>("push", entry);
        }
        return list;
    });
}

/* The scan with its classes as a file; its name in the module's file system decides the format. */
val writeClassified(int id, int sweep, const std::string& path) {
    return answer([&] {
        OpenScan& opened = scanOf(id);
        const scan::Sweep& chosen = sweepOf(id, sweep);
        if (classifiedSweep != &chosen) {
            throw std::runtime_error("the sweep has no classes");
        }
        const scan::WrittenFiles written =
            scan::writeClasses(path, opened.scan, opened.words.get(),
                               {{&chosen, &result.classes, scan::certaintyFields(result)}});
        val made = val::object();
        made.set("paths", textsOf(written.paths));
        made.set("notes", textsOf(written.notes));
        return made;
    });
}

}  // namespace

EMSCRIPTEN_BINDINGS(studio) {
    emscripten::function("openFile", &openFile);
    emscripten::function("openSynthetic", &openSynthetic);
    emscripten::function("closeScan", &closeScan);
    emscripten::function("classify", &classify);
    emscripten::function("layer", &layer);
    emscripten::function("gateAt", &gateAt);
    emscripten::function("explain", &explain);
    emscripten::function("inputs", &inputs);
    emscripten::function("render", &render);
    emscripten::function("setLabels", &setLabels);
    emscripten::function("score", &score);
    emscripten::function("train", &train);
    emscripten::function("histograms", &histograms);
    emscripten::function("writeClassified", &writeClassified);
}

/* info.cpp - the command `info`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "options/input_file.h"
#include "options/input_list.h"
#include "options/layout_option.h"
#include "report/documents.h"
#include "report/failure.h"
#include "report/in_order.h"
#include "report/progress.h"
#include "report/terminal.h"
#include "scan/fields/oddities.h"
#include "scan/fields/role.h"
#include "scan/fields/value_summary.h"
#include "scan/formats/read_scan.h"

namespace cli {

namespace {

void printLine(const char* label, const std::string& text) {
    std::printf("  %-12s %s\n", label, forTerminal(text).c_str());
}

template <class... Values>
std::string format(const char* pattern, Values... values) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, values...);
    return text;
}

std::string describeSite(const scan::Scan& scan) {
    if (scan.latitudeDeg == 0 && scan.longitudeDeg == 0 && scan.altitudeM == 0) {
        return "not given";
    }
    return format("%.4f %c, %.4f %c, %.0f m", std::abs(scan.latitudeDeg),
                  scan.latitudeDeg < 0 ? 'S' : 'N', std::abs(scan.longitudeDeg),
                  scan.longitudeDeg < 0 ? 'W' : 'E', scan.altitudeM);
}

std::string describeTime(const scan::DateTime& t) {
    return format("%04d-%02d-%02d %02d:%02d:%02d", t.year, t.month, t.day, t.hour, t.minute,
                  t.second);
}

std::string describeRadar(const scan::Scan& scan) {
    std::string text = scan.radarName;
    if (!scan.siteName.empty() && scan.siteName != scan.radarName) {
        text += (text.empty() ? "" : ", ") + scan.siteName;
    }
    if (text.empty()) {
        text = "not named";
    }
    if (scan.wavelengthM > 0) {
        text += format(", wavelength %.1f cm", 100 * scan.wavelengthM);
    }
    if (scan.beamWidthDeg > 0) {
        text += format(", beam %.2f deg", scan.beamWidthDeg);
    }
    return text;
}

void printHead(const scan::Scan& scan) {
    std::printf("%s\n", forTerminal(scan.path).c_str());
    printLine("format", scan.format);
    printLine("radar", describeRadar(scan));
    printLine("site", describeSite(scan));
    printLine("time", describeTime(scan.time));
    printLine("calibration", scan.hasRadarConstant
                                 ? format("%.1f dB", scan.radarConstantDb)
                                 : std::string("no constant in the file (estimated by classify)"));
}

std::string describeCoverage(const scan::Sweep& sweep) {
    const std::vector<double>& moving = sweep.rhi ? sweep.elevationDeg : sweep.azimuthDeg;
    if (!sweep.rhi && scan::closesCircle(sweep)) {
        return "full circle";
    }
    const auto ends = std::minmax_element(moving.begin(), moving.end());
    return format(sweep.rhi ? "el %.1f..%.1f" : "az %.1f..%.1f", *ends.first, *ends.second);
}

void printSweeps(const scan::Scan& scan) {
    std::printf("\n  %-5s %-4s %8s %6s %6s %9s %10s %9s  %s\n", "sweep", "mode", "fixed", "rays",
                "gates", "spacing", "first gate", "Nyquist", "covers");
    for (const scan::Sweep& sweep : scan.sweeps) {
        const std::string nyquist =
            sweep.nyquist > 0 ? format("%.1f m/s", sweep.nyquist) : std::string("-");
        std::printf("  %-5d %-4s %4.1f deg %6d %6d %7.0f m %8.0f m %9s  %s\n", sweep.number,
                    sweep.rhi ? "RHI" : "PPI", sweep.fixedAngleDeg, sweep.nrays, sweep.ngates,
                    sweep.gateSpacingM, sweep.firstGateM, nyquist.c_str(),
                    describeCoverage(sweep).c_str());
    }
}

/* The values of a field in all sweeps. */
std::vector<float> gather(const scan::Scan& scan, const std::string& name, std::size_t& gates) {
    std::vector<float> values;
    gates = 0;
    for (const scan::Sweep& sweep : scan.sweeps) {
        for (int r = 0; r < sweep.nrays; ++r) {
            gates += static_cast<std::size_t>(sweep.rayGates.empty()
                                                  ? sweep.ngates
                                                  : sweep.rayGates[static_cast<std::size_t>(r)]);
        }
        for (const scan::Field& field : sweep.fields) {
            if (field.name == name) {
                values.insert(values.end(), field.values.begin(), field.values.end());
            }
        }
    }
    return values;
}

/* What the values of a field in all sweeps look like. */
struct FieldLine {
    scan::Role role;
    scan::ValueSummary summary;
    float median;
    double share;  // of the gates that have a value, per cent
};

FieldLine lineOf(const scan::Scan& scan, const scan::Field& field) {
    std::size_t gates = 0;
    const scan::Role role = scan::roleOfName(field.name);
    const std::vector<float> values = gather(scan, field.name, gates);
    const scan::ValueSummary summary = scan::summarise(values, role);
    const double share =
        gates > 0 ? 100.0 * static_cast<double>(summary.count) / static_cast<double>(gates) : 0.0;
    return {role, summary, scan::medianOf(values), share};
}

void printField(const scan::Scan& scan, const scan::Field& field) {
    const auto [role, summary, median, share] = lineOf(scan, field);
    std::printf("  %-6s %-4s %-7s", forTerminal(field.name).c_str(), scan::roleInfo(role).key,
                forTerminal(field.units).c_str());
    if (summary.count > 0) {
        std::printf(" %9.2f %9.2f %9.2f", summary.lowest, median, summary.highest);
    } else {
        std::printf(" %9s %9s %9s", "-", "-", "-");
    }
    std::printf(" %7.1f %%  %s\n", share, scan::roleInfo(role).text);
}

/* Each field once, in the order in which the sweeps have them. */
std::vector<const scan::Field*> fieldsOf(const scan::Scan& scan) {
    std::vector<const scan::Field*> fields;
    for (const scan::Sweep& sweep : scan.sweeps) {
        for (const scan::Field& field : sweep.fields) {
            if (std::none_of(fields.begin(), fields.end(),
                             [&](const scan::Field* known) { return known->name == field.name; })) {
                fields.push_back(&field);
            }
        }
    }
    return fields;
}

void printFields(const scan::Scan& scan) {
    std::printf("\n  %-6s %-4s %-7s %9s %9s %9s %9s\n", "field", "role", "units", "lowest",
                "median", "highest", "present");
    for (const scan::Field* field : fieldsOf(scan)) {
        printField(scan, *field);
    }
}

JsonObject fieldObject(const scan::Scan& scan, const scan::Field& field) {
    const auto [role, summary, median, share] = lineOf(scan, field);
    const bool any = summary.count > 0;
    JsonObject object;
    object.add("name", field.name);
    object.add("role", scan::roleInfo(role).key);
    object.add("units", field.units);
    object.add("lowest", any ? static_cast<double>(summary.lowest) : NAN);
    object.add("median", any ? static_cast<double>(median) : NAN);
    object.add("highest", any ? static_cast<double>(summary.highest) : NAN);
    object.add("present_percent", share);
    return object;
}

void printDocument(const scan::Scan& scan) {
    JsonObject object = scanObject(scan);
    object.add("radar_constant_db", scan.hasRadarConstant ? scan.radarConstantDb : NAN);
    std::vector<JsonObject> sweeps;
    for (const scan::Sweep& sweep : scan.sweeps) {
        sweeps.push_back(sweepObject(sweep));
    }
    object.add("sweeps", sweeps);
    std::vector<JsonObject> fields;
    for (const scan::Field* field : fieldsOf(scan)) {
        fields.push_back(fieldObject(scan, *field));
    }
    object.add("fields", fields);
    object.addList("notes", scan.oddities);
    object.print();
}

void printSentences(const char* heading, const std::vector<std::string>& sentences) {
    if (sentences.empty()) {
        return;
    }
    std::printf("\n  %s:\n", heading);
    for (const std::string& sentence : sentences) {
        std::printf("  - %s\n", forTerminal(sentence).c_str());
    }
}

struct InfoCall {
    std::vector<std::string> inputs;
    scan::ReadOptions read;
    int jobs = 1;
    bool json = false;
};

void printInfo(const InputFile& input, const InfoCall& call) {
    const scan::Scan scan = readInput(input, call.read);
    if (call.json) {
        printDocument(scan);
        return;
    }
    printHead(scan);
    printSweeps(scan);
    printFields(scan);
    printSentences("Damaged", scan.damage);
    printSentences("Worth knowing", scan.oddities);
}

/* In workers, whose results say whether the file was read. */
bool runTogether(const InfoCall& call, const std::vector<InputFile>& inputs,
                 const std::function<bool(std::size_t)>& show) {
    bool good = true;
    Progress progress(true);
    const auto count = static_cast<int>(inputs.size());
    progress.show(0, count, inputs.front().name());
    runInOrder(
        inputs.size(), call.jobs, [&](std::size_t i) { return show(i) ? "read" : ""; },
        [&](std::size_t i, const Finished& finished) {
            progress.clear();
            printAll(finished);
            if (!finished.failure.empty()) {
                reportError(inputs[i].name(), finished.failure);
            }
            good &= !finished.result.empty();
            progress.show(static_cast<int>(i) + 1, count, inputs[i].name());
        });
    return good;
}

void runInfo(const InfoCall& call) {
    const std::vector<InputFile> inputs = inputFiles(call.inputs);
    requireLayoutUsed(call.read, inputs);
    const auto show = [&](std::size_t i) {
        if (i > 0 && !call.json) {
            std::printf("\n");
        }
        return attempt(inputs[i].name(), [&] {
            documented(call.json, inputs[i].name(), [&] { printInfo(inputs[i], call); });
        });
    };
    bool good = true;
    if (call.jobs > 1 && inputs.size() > 1) {
        good = runTogether(call, inputs, show);
    } else {
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            good &= show(i);
        }
    }
    if (!good) {
        throw CommandFailed{};
    }
}

}  // namespace

void addInfoCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("info", "Show what a file holds, and what is unusual in it");
    const auto call = std::make_shared<InfoCall>();
    command->add_option("INPUT", call->inputs, kInputsHelp)->required();
    addJobsOption(*command, call->jobs);
    command->add_flag("--json", call->json, "Print one JSON object a file");
    addLayoutOption(*command, call->read);
    command->footer(
        "Examples:\n"
        "  clutterclassifier info scan.uf\n"
        "  clutterclassifier info *.uf\n"
        "  clutterclassifier info scan.dat --layout 280");
    command->callback([call] { runInfo(*call); });
}

}  // namespace cli

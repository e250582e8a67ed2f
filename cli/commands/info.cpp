/* info.cpp - the command `info`. */
#include "commands/commands.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "options/input_file.h"
#include "options/layout_option.h"
#include "report/failure.h"
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

void printField(const scan::Scan& scan, const scan::Field& field) {
    std::size_t gates = 0;
    const scan::Role role = scan::roleOfName(field.name);
    const std::vector<float> values = gather(scan, field.name, gates);
    const scan::ValueSummary summary = scan::summarise(values, role);
    const double share =
        gates > 0 ? 100.0 * static_cast<double>(summary.count) / static_cast<double>(gates) : 0.0;
    std::printf("  %-6s %-4s %-7s", forTerminal(field.name).c_str(), scan::roleInfo(role).key,
                forTerminal(field.units).c_str());
    if (summary.count > 0) {
        std::printf(" %9.2f %9.2f %9.2f", summary.lowest, scan::medianOf(values), summary.highest);
    } else {
        std::printf(" %9s %9s %9s", "-", "-", "-");
    }
    std::printf(" %7.1f %%  %s\n", share, scan::roleInfo(role).text);
}

void printFields(const scan::Scan& scan) {
    std::printf("\n  %-6s %-4s %-7s %9s %9s %9s %9s\n", "field", "role", "units", "lowest",
                "median", "highest", "present");
    std::vector<std::string> seen;
    for (const scan::Sweep& sweep : scan.sweeps) {
        for (const scan::Field& field : sweep.fields) {
            if (std::find(seen.begin(), seen.end(), field.name) != seen.end()) {
                continue;
            }
            seen.push_back(field.name);
            printField(scan, field);
        }
    }
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

void printInfo(const InputFile& input, const scan::ReadOptions& options) {
    const scan::Scan scan = readInput(input, options);
    printHead(scan);
    printSweeps(scan);
    printFields(scan);
    printSentences("Damaged", scan.damage);
    printSentences("Worth knowing", scan.oddities);
}

void runInfo(const std::vector<std::string>& names, const scan::ReadOptions& options) {
    const std::vector<InputFile> inputs(names.begin(), names.end());
    requireLayoutUsed(options, inputs);
    bool good = true;
    for (const InputFile& input : inputs) {
        if (&input != &inputs.front()) {
            std::printf("\n");
        }
        good &= attempt(input.name(), [&] { printInfo(input, options); });
    }
    if (!good) {
        throw CommandFailed{};
    }
}

}  // namespace

void addInfoCommand(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("info", "Show what a file holds, and what is unusual in it");
    const auto paths = std::make_shared<std::vector<std::string>>();
    const auto options = std::make_shared<scan::ReadOptions>();
    command->add_option("INPUT", *paths, kInputHelp)->required();
    addLayoutOption(*command, *options);
    command->footer(
        "Examples:\n"
        "  clutterclassifier info scan.uf\n"
        "  clutterclassifier info *.uf\n"
        "  clutterclassifier info scan.dat --layout 280");
    command->callback([paths, options] { runInfo(*paths, *options); });
}

}  // namespace cli

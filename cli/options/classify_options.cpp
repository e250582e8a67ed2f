/* classify_options.cpp - from the command line to the options of a classification. */
#include "options/classify_options.h"

#include <stdexcept>

#include "options/finite_option.h"
#include "options/window_size.h"

namespace cli {

namespace {

constexpr int kMaxTextureWindow = 999;

scan::Window neighbourhoodOf(const std::string& text) {
    if (text == "off") {
        return {};
    }
    const WindowSize size = parseWindow("--neighbourhood", text, CLUTTER_MAX_NEIGHBOURHOOD);
    return {size.gates, size.rays};
}

/* A value that scan parses; what it refuses is a wrong call. */
template <class Parse>
auto parsed(const std::string& option, Parse parse) {
    try {
        return parse();
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(option, error.what());
    }
}

}  // namespace

void addFieldOptions(CLI::App& command, ClassifyArguments& arguments) {
    command.add_option("--map", arguments.map,
                       "Roles of fields, whatever their names: ZD=zdr,ZT=zhh,CM=pdf,XX=none");
    command
        .add_option(
            "--min-snr", arguments.minSnrDb,
            "Lowest signal-to-noise ratio of an echo, dB (default: 10; every value where the "
            "noise was removed before)")
        ->check(isFinite);
    command
        .add_option("--radar-constant", arguments.radarConstantDb,
                    "Calibration constant C of SNR = Z - 20 log10(range in km) + C, dB "
                    "(default: from the file, else estimated)")
        ->check(isFinite);
    command.add_option("--membership", arguments.membership,
                       "Directory of membership functions (default: CLUTTERCLASSIFIER_MEMBERSHIP, "
                       "else the set that came with the program)");
}

void addNeighbourhoodOption(CLI::App& command, ClassifyArguments& arguments) {
    command
        .add_option("--neighbourhood", arguments.neighbourhood,
                    "Window over which the verdict of the textures is averaged, GATESxRAYS, odd "
                    "sizes; off: each gate on its own")
        ->capture_default_str();
}

void addInputOptions(CLI::App& command, ClassifyArguments& arguments) {
    command.add_option("--inputs", arguments.inputs,
                       "Inputs of the classifier: zhh-texture, zdr-texture, pdp-texture, "
                       "rhv-texture, vel, ldr, pdf, rhv, wid; or textures, all (default: all that "
                       "the file has, except wid)");
    command.add_option("--window", arguments.window, "Texture window, GATESxRAYS, odd sizes")
        ->capture_default_str();
    addNeighbourhoodOption(command, arguments);
}

scan::ClassifyOptions classifyOptionsFrom(const ClassifyArguments& arguments) {
    scan::ClassifyOptions options;
    const WindowSize window = parseWindow("--window", arguments.window, kMaxTextureWindow);
    options.textureGates = window.gates;
    options.textureRays = window.rays;
    options.neighbourhood = neighbourhoodOf(arguments.neighbourhood);
    if (!arguments.inputs.empty()) {
        options.mask = parsed("--inputs", [&] { return scan::parseInputs(arguments.inputs); });
    }
    options.map = parsed("--map", [&] { return scan::parseFieldMap(arguments.map); });
    options.noise.minSnrDb = arguments.minSnrDb;
    options.noise.radarConstantDb = arguments.radarConstantDb;
    return options;
}

}  // namespace cli

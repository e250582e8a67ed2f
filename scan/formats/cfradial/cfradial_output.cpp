/* What both releases of CfRadial have in common when they are written. */
#include "scan/formats/cfradial/cfradial_output.h"

#include <cmath>
#include <cstdio>
#include <string_view>

#include "scan/calendar.h"
#include "scan/formats/writing/class_flags.h"
#include "scan/formats/writing/history.h"

namespace scan::cfradial {
namespace {

constexpr double kLightSpeedMPerS = 299792458;

struct StandardName {
    std::string_view prefix;  // of the field's name
    const char* name;
};

constexpr StandardName kStandardNames[] = {
    {"DBZ", "equivalent_reflectivity_factor"},
    {"TH", "equivalent_reflectivity_factor"},
    {"ZDR", "log_differential_reflectivity_hv"},
    {"PHIDP", "differential_phase_hv"},
    {"RHOHV", "cross_correlation_ratio_hv"},
    {"VRAD", "radial_velocity_of_scatterers_away_from_instrument"},
    {"VEL", "radial_velocity_of_scatterers_away_from_instrument"},
    {"WRAD", "doppler_spectrum_width"},
    {"WIDTH", "doppler_spectrum_width"},
    {"LDR", "log_linear_depolarization_ratio_hv"},
    {"KDP", "specific_differential_phase_hv"},
    {"SNR", "signal_to_noise_ratio"},
};

}  // namespace

std::string momentText(const DateTime& time) {
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", time.year % 10000,
                  time.month % 100, time.day % 100, time.hour % 100, time.minute % 100,
                  time.second % 100);
    return text;
}

std::vector<double> secondsSince(const Scan& scan, const Sweep& sweep) {
    std::vector<double> seconds(static_cast<std::size_t>(sweep.nrays), 0.0);
    const double zero = secondsOf(scan.time);
    for (std::size_t r = 0; r < sweep.rayTimeS.size(); ++r) {
        seconds[r] = sweep.rayTimeS[r] - zero;
    }
    return seconds;
}

void writeTop(const netcdf::Writer& file, const Scan& scan, const char* conventions,
              const char* version) {
    file.text("Conventions", conventions);
    file.text("version", version);
    file.text("title", "radar volume");
    file.text("institution", "");
    file.text("references", "");
    file.text("source", scan.format);
    file.text("history", historyOf(scan));
    file.text("comment", "");
    file.text("instrument_name", scan.radarName);
    file.text("site_name", scan.siteName);
    file.doubles("latitude", {}, {&scan.latitudeDeg, 1})
        .text("standard_name", "latitude")
        .text("units", "degrees_north");
    file.doubles("longitude", {}, {&scan.longitudeDeg, 1})
        .text("standard_name", "longitude")
        .text("units", "degrees_east");
    file.doubles("altitude", {}, {&scan.altitudeM, 1})
        .text("standard_name", "altitude")
        .text("units", "meters")
        .text("positive", "up");
    if (!scan.source.empty()) {
        file.text("odim_source", scan.source);
    }
    const int volume = 0;
    file.wholes("volume_number", {}, {&volume, 1});
    if (scan.wavelengthM > 0) {
        const double frequency = kLightSpeedMPerS / scan.wavelengthM;
        file.doubles("frequency", {file.dimension("frequency", 1)}, {&frequency, 1})
            .text("standard_name", "radiation_frequency")
            .text("units", "s-1");
    }
}

void describeTime(const netcdf::VariableWriter& variable, const Scan& scan) {
    variable.text("standard_name", "time")
        .text("units", "seconds since " + momentText(scan.time))
        .text("calendar", "gregorian");
}

void describeRange(const netcdf::VariableWriter& variable, const Sweep& sweep) {
    variable.text("standard_name", "projection_range_coordinate")
        .text("long_name", "range_to_measurement_volume")
        .text("units", "meters")
        .text("axis", "radial_range_coordinate");
    // The range of a single gate does not say it.
    variable.number("meters_between_gates", static_cast<float>(sweep.gateSpacingM));
}

void describeAzimuth(const netcdf::VariableWriter& variable) {
    variable.text("standard_name", "ray_azimuth_angle")
        .text("units", "degrees")
        .text("axis", "radial_azimuth_coordinate");
}

void describeElevation(const netcdf::VariableWriter& variable) {
    variable.text("standard_name", "ray_elevation_angle")
        .text("units", "degrees")
        .text("axis", "radial_elevation_coordinate");
}

void describeField(const netcdf::VariableWriter& variable, const Field& field, float noEcho) {
    variable.text("units", field.units)
        .text("coordinates", kCoordinates)
        .number("_Undetect", noEcho);
    for (const StandardName& known : kStandardNames) {
        if (field.name.rfind(known.prefix, 0) == 0) {
            variable.text("standard_name", known.name);
        }
    }
}

void describeClasses(const netcdf::VariableWriter& variable, const ClassForm& form) {
    std::vector<std::uint8_t> codes;
    std::string meanings;
    for (const ClassFlag& flag : kClassFlags) {
        codes.push_back(classByte(flag.code, form.serviceCodes));
        meanings += meanings.empty() ? "" : " ";
        meanings += flag.name;
    }
    variable.text("long_name", "class of the echo")
        .text("units", "1")
        .text("coordinates", kCoordinates)
        .text("is_quality_field", "true")
        .bytes("flag_values", codes)
        .text("flag_meanings", meanings);
}

void describeCertainty(const netcdf::VariableWriter& variable, const Field& field) {
    variable.text("long_name", certaintyName(field).text)
        .text("units", "1")
        .text("coordinates", kCoordinates)
        .text("is_quality_field", "true")
        .text("qualified_variables", kClassName);
}

void writePulses(const netcdf::Writer& group, int time, std::size_t rays,
                 const Operation& operation) {
    const auto write = [&](const char* name, double seconds, const char* units) {
        if (seconds > 0) {
            group.doubles(name, {time}, std::vector<double>(rays, seconds)).text("units", units);
        }
    };
    write("pulse_width", operation.pulseLengthM / kLightSpeedMPerS, "seconds");
    write("prt", operation.pulsesPerSecond > 0 ? 1.0 / operation.pulsesPerSecond : 0, "seconds");
    write("n_samples", operation.pulsesPerRay, "1");
    write("scan_rate", operation.turnsPerMinute * 6.0, "degrees per second");
}

std::string modeOf(const Sweep& sweep) {
    if (!sweep.mode.empty()) {
        return sweep.mode;
    }
    return sweep.rhi ? "rhi" : "azimuth_surveillance";
}

const SweepClasses* entryOf(const Sweep& sweep, const std::vector<SweepClasses>& classes) {
    for (const SweepClasses& entry : classes) {
        if (entry.sweep == &sweep) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace scan::cfradial

/*
 * odim_names.h - names of ODIM_H5: quantities and their units, used to read and to write.
 */
#ifndef SCAN_FORMATS_ODIM_ODIM_NAMES_H
#define SCAN_FORMATS_ODIM_ODIM_NAMES_H

#include <string_view>

namespace scan::odim {

struct Quantity {
    std::string_view prefix;  // of the name: "VRAD" is also VRADH, VRADV, VRADDH
    const char* units;
};

/* The first whose prefix begins the name. */
inline constexpr Quantity kQuantities[] = {
    {"DBZ", "dBZ"},    {"TH", "dBZ"},    {"TV", "dBZ"},     {"TX", "dBZ"},   {"ZDR", "dB"},
    {"UZDR", "dB"},    {"LDR", "dB"},    {"ULDR", "dB"},    {"VRAD", "m/s"}, {"UVRAD", "m/s"},
    {"WRAD", "m/s"},   {"UWRAD", "m/s"}, {"UWND", "m/s"},   {"VWND", "m/s"}, {"PHIDP", "deg"},
    {"UPHIDP", "deg"}, {"PSIDP", "deg"}, {"KDP", "deg/km"}, {"SNR", "dB"},   {"CCOR", "dB"},
    {"RATE", "mm/h"},  {"ACRR", "mm"},   {"PIA", "dB"},     {"POR", "dB"},   {"LOG", "dB"},
    {"CSP", "dB"},     {"DBM", "dBm"},
};

inline const char* unitsOf(std::string_view quantity) {
    for (const Quantity& known : kQuantities) {
        if (quantity.substr(0, known.prefix.size()) == known.prefix) {
            return known.units;
        }
    }
    return "";
}

}  // namespace scan::odim

#endif

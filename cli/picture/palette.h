/*
 * palette.h - colours of quantities and classes.
 *
 * The maps are paths through a perceptual colour space (lightness, chroma, hue) whose lightness
 * only falls - from the middle outwards for the diverging one - so that order survives grey print
 * and colour-blind eyes.
 */
#ifndef CLI_PICTURE_PALETTE_H
#define CLI_PICTURE_PALETTE_H

#include <cstdint>

namespace cli {

struct Rgb {
    std::uint8_t red, green, blue;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

enum class Palette {
    kReflectivity,  // pale, blue, green, yellow, red, purple: the order a radar's user expects
    kDiverging,  // blue, pale, brown: towards and away
    kSequential,  // pale, green, blue
};

/* The colour at position 0..1; positions beyond the ends take the colour of that end. */
Rgb colourAt(Palette palette, double position);

/* Colours that stay apart for colour-blind eyes; anything but 0, 3, 5, 6 and 7 is no data. */
Rgb classColour(float code);

inline constexpr Rgb kNoDataColour{0xd5, 0xd8, 0xdc};

}  // namespace cli

#endif

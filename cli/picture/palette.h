/*
 * palette.h - colours of fields and classes.
 *
 * The maps are paths through a perceptual colour space (lightness, chroma, hue) whose lightness
 * only decreases (from the middle outwards in the diverging one), so that the order remains visible
 * in grey print and to colour-blind readers.
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
    kReflectivity,  // pale, blue, green, yellow, red, purple: the usual order of radar displays
    kDiverging,     // blue, pale, brown: towards and away
    kSequential,    // pale, green, blue
};

/* The colour at position 0..1; a position past an end has the colour of that end. */
Rgb colourAt(Palette palette, double position);

/* Colours that colour-blind readers can distinguish. Any code except 0, 3, 5, 6 and 7 is "no data".
 */
Rgb classColour(float code);

/* Colours of what decided a class: input 0 to 8 of the library, 9 the neighbourhood. */
Rgb reasonColour(float reason);

inline constexpr Rgb kNoDataColour{0xd5, 0xd8, 0xdc};

}  // namespace cli

#endif

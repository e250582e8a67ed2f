/* canvas.h - a Cairo surface that becomes a PNG, SVG or PDF file, and text on it. */
#ifndef CLI_PICTURE_CANVAS_H
#define CLI_PICTURE_CANVAS_H

#include <cairo.h>

#include <memory>
#include <string>
#include <vector>

#include "picture/palette.h"

namespace cli {

struct TextStyle {
    double size = 12.0;
    bool bold = false;
    double anchorX = 0.0;  // share of the text left of the point: 0 begins there, 1 ends there
    double anchorY =
        0.0;  // share of the capitals' height below the point: 0 puts the baseline on it
    bool upwards = false;  // rotated by 90 degrees, reads upwards
    bool halo = false;     // a light outline, for text over a field
    Rgb colour{0x22, 0x22, 0x22};
};

class Canvas {
  public:
    /* The ending of path chooses the format; nothing is written before save(). Sizes are pixels in
     * a PNG, points elsewhere. */
    Canvas(const std::string& path, int width, int height);

    [[nodiscard]] cairo_t* context() const { return context_.get(); }
    [[nodiscard]] bool isBitmap() const;

    void setColour(Rgb colour, double opacity = 1.0) const;
    void text(double x, double y, const std::string& text, const TextStyle& style) const;
    [[nodiscard]] double textWidth(const std::string& text, const TextStyle& style) const;
    /* As text(), but smaller where the text would be wider than width. */
    void textWithin(double width, double x, double y, const std::string& text,
                    TextStyle style) const;

    /* Writes the file under a temporary name and renames it. Throws std::runtime_error. */
    void save();

  private:
    struct Destroy {
        void operator()(cairo_t* context) const { cairo_destroy(context); }
        void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    };

    std::string path_;
    std::vector<unsigned char>
        bytes_;  // declared before the surface, which writes into it until it is destroyed
    std::unique_ptr<cairo_surface_t, Destroy> surface_;
    std::unique_ptr<cairo_t, Destroy> context_;
};

/* Throws std::invalid_argument when the ending of path names no picture format. */
void checkPictureEnding(const std::string& path);

}  // namespace cli

#endif

/* canvas.cpp - draws on a surface in memory, and writes the file at the end. */
#include "picture/canvas.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "scan/angles.h"
#include "scan/formats/writing/output_file.h"
#include "scan/text.h"

namespace cli {

namespace {

/* Height of the capitals of common sans-serif fonts, relative to the font size. */
constexpr double kCapitalHeight = 0.72;

cairo_status_t append(void* closure, const unsigned char* data, unsigned int length) {
    try {
        auto& bytes = *static_cast<std::vector<unsigned char>*>(closure);
        bytes.insert(bytes.end(), data, data + length);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc&) {  // no exception may pass through C
        return CAIRO_STATUS_NO_MEMORY;
    }
}

cairo_surface_t* createSurface(const std::string& ending, int width, int height,
                               std::vector<unsigned char>& bytes) {
    if (ending == ".svg") {
        return cairo_svg_surface_create_for_stream(append, &bytes, width, height);
    }
    if (ending == ".pdf") {
        return cairo_pdf_surface_create_for_stream(append, &bytes, width, height);
    }
    return cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
}

void requireSuccess(cairo_status_t status) {
    if (status == CAIRO_STATUS_SUCCESS) {
        return;
    }
    throw std::runtime_error(std::string("cannot draw: ") + cairo_status_to_string(status));
}

void writeFile(const std::string& path, const std::vector<unsigned char>& bytes) {
    scan::OutputFile output(path);
    scan::requireWritten(output, [&] {
        std::FILE* file = std::fopen(output.temporary().c_str(), "wb");
        if (file == nullptr) {
            return false;
        }
        const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
        return std::fclose(file) == 0 && written;
    });
    output.commit();
}

void selectFont(cairo_t* context, const TextStyle& style) {
    /* Cairo falls back to any installed font, and to a built-in one where none is installed. */
    cairo_select_font_face(context, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL,
                           style.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context, style.size);
}

/* Cairo's built-in font has ASCII characters only. */
std::string withinFont(cairo_t* context, std::string text) {
    const auto type = cairo_scaled_font_get_type(cairo_get_scaled_font(context));
    if (type != CAIRO_FONT_TYPE_USER) {
        return text;
    }
    const std::string degree = "\u00b0";
    const auto at = text.find(degree);
    return at == std::string::npos ? text : text.replace(at, degree.size(), " deg");
}

}  // namespace

void checkPictureEnding(const std::string& path) {
    const std::string ending = scan::endingOf(path);
    if (ending == ".png" || ending == ".svg" || ending == ".pdf") {
        return;
    }
    throw std::invalid_argument("the name of a picture must end in .png, .svg or .pdf");
}

Canvas::Canvas(const std::string& path, int width, int height) : path_(path) {
    checkPictureEnding(path);
    surface_.reset(createSurface(scan::endingOf(path), width, height, bytes_));
    context_.reset(cairo_create(surface_.get()));
    requireSuccess(cairo_status(context()));
    setColour({0xff, 0xff, 0xff});
    cairo_paint(context());
}

bool Canvas::isBitmap() const {
    return cairo_surface_get_type(surface_.get()) == CAIRO_SURFACE_TYPE_IMAGE;
}

void Canvas::setColour(Rgb colour, double opacity) const {
    cairo_set_source_rgba(context(), colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0,
                          opacity);
}

double Canvas::textWidth(const std::string& text, const TextStyle& style) const {
    selectFont(context(), style);
    cairo_text_extents_t extents;
    cairo_text_extents(context(), withinFont(context(), text).c_str(), &extents);
    return extents.x_advance;
}

void Canvas::text(double x, double y, const std::string& text, const TextStyle& style) const {
    const double width = textWidth(text, style);
    const std::string shown = withinFont(context(), text);
    cairo_save(context());
    cairo_translate(context(), x, y);
    if (style.upwards) {
        cairo_rotate(context(), -scan::kPi / 2.0);
    }
    cairo_move_to(context(), -style.anchorX * width, style.anchorY * kCapitalHeight * style.size);
    if (style.halo) {
        cairo_text_path(context(), shown.c_str());
        cairo_set_line_join(context(), CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_width(context(), 0.28 * style.size);
        setColour({0xff, 0xff, 0xff}, 0.85);
        cairo_stroke(context());
        cairo_move_to(context(), -style.anchorX * width,
                      style.anchorY * kCapitalHeight * style.size);
    }
    setColour(style.colour);
    cairo_show_text(context(), shown.c_str());
    cairo_restore(context());
    cairo_new_path(context());
}

void Canvas::textWithin(double width, double x, double y, const std::string& text,
                        TextStyle style) const {
    const double needed = textWidth(text, style);
    if (needed > width) {
        style.size *= width / needed;
    }
    this->text(x, y, text, style);
}

void Canvas::save() {
    requireSuccess(cairo_status(context()));
    if (isBitmap()) {
        requireSuccess(cairo_surface_write_to_png_stream(surface_.get(), append, &bytes_));
    }
    cairo_surface_finish(surface_.get());
    requireSuccess(cairo_surface_status(surface_.get()));
    writeFile(path_, bytes_);
}

}  // namespace cli

/*
 * text_writer.h - text into a stream in large pieces, numbers as the C print routines write them in
 * the "C" locale: what is written is read back whatever the host's locale.
 */
#ifndef CLUTTER_BASE_TEXT_WRITER_H
#define CLUTTER_BASE_TEXT_WRITER_H

#include <cstdio>
#include <string>
#include <string_view>

namespace clutter::base {

/* The stream must outlive the writer, and be checked by its owner when it is closed. */
class TextWriter {
  public:
    explicit TextWriter(std::FILE* stream) : stream_(stream) {}
    ~TextWriter() { flush(); }
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    TextWriter& text(std::string_view piece);
    TextWriter& integer(long long value);
    /* "%.<decimals>f" */
    TextWriter& fixed(double value, int decimals);
    /* "%g" */
    TextWriter& general(double value);

  private:
    void flush();

    std::FILE* stream_;
    std::string pending_;
};

/* "%.<decimals>f" by itself. */
std::string fixedText(double value, int decimals);

}  // namespace clutter::base

#endif

/*
 * text_writer.h - writes text to a stream in large pieces. Numbers are written as by printf in the
 * "C" locale, so that files do not depend on the host's locale.
 */
#ifndef CLUTTER_BASE_TEXT_WRITER_H
#define CLUTTER_BASE_TEXT_WRITER_H

#include <cstdio>
#include <string>
#include <string_view>

namespace clutter::base {

/* The stream must outlive the writer. Its owner checks for errors when closing it. */
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

/* "%.<decimals>f" as a string. */
std::string fixedText(double value, int decimals);

}  // namespace clutter::base

#endif

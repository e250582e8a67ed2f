/*
 * file.h - C streams that close themselves, and reading a whole file into memory.
 */
#ifndef CLUTTER_BASE_FILE_H
#define CLUTTER_BASE_FILE_H

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

namespace clutter::base {

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/* Owns a C stream: closed on every path. */
using File = std::unique_ptr<std::FILE, CloseStream>;

/* Null when path is null or the file cannot be opened in that mode. */
File openFile(const char* path, const char* mode);

/* Closes now. False when a write failed earlier or the last buffer cannot be flushed; a null file
 * is a failed one. */
bool closeChecked(File file);

/* Larger files are not read: the first bound holds where the stream tells its size, the second
 * where it does not (pipes, devices), so that an endless one ends. */
constexpr std::size_t kMaxFileBytes = std::size_t{4} << 30;
constexpr std::size_t kMaxStreamBytes = std::size_t{1} << 30;

/*
 * All bytes of a file; an empty vector for an empty file. Nothing when it cannot be opened or read
 * (a directory, for one) or is larger than the bounds above.
 */
std::optional<std::vector<unsigned char>> readWholeFile(const char* path);

/* No text that people or programs write has lines longer than this; an endless stream may. */
constexpr std::size_t kMaxLineBytes = std::size_t{1} << 24;

/* The same for a file of lines, which line feeds and carriage returns end. Nothing when a line is
 * longer than kMaxLineBytes: reading stops there. */
std::optional<std::vector<unsigned char>> readTextFile(const char* path);

}  // namespace clutter::base

#endif

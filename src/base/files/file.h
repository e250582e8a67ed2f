/*
 * file.h - C streams that close themselves, and reading a whole file into memory.
 */
#ifndef CLUTTER_BASE_FILES_FILE_H
#define CLUTTER_BASE_FILES_FILE_H

#include <cstddef>
#include <cstdint>
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
[[nodiscard]] File openFile(const char* path, const char* mode);

/* Closes the stream. False when a write failed earlier, when the last buffer cannot be flushed, and
 * for a null file. */
[[nodiscard]] bool closeChecked(File file);

/* Larger files are not read. The first bound is for files of known size, the second for pipes and
 * devices, which may be endless. */
constexpr std::uint64_t kMaxFileBytes = std::uint64_t{4} << 30;  // also where sizes have 32 bits
constexpr std::size_t kMaxStreamBytes = std::size_t{1} << 28;

/*
 * All bytes of a file; an empty vector for an empty file. No result when it cannot be opened or
 * read (a directory, for example) or is larger than the bounds above.
 */
[[nodiscard]] std::optional<std::vector<unsigned char>> readWholeFile(const char* path);

/* No text that people or programs write has longer lines; an endless stream may. */
constexpr std::size_t kMaxLineBytes = std::size_t{1} << 24;

/* The same for a file of lines, which end with a line feed or carriage return. No result when a
 * line is longer than kMaxLineBytes: reading stops there. */
[[nodiscard]] std::optional<std::vector<unsigned char>> readTextFile(const char* path);

}  // namespace clutter::base

#endif

/*
 * regular_file.h - reading a file that must be one: no pipe, no device, no directory.
 */
#ifndef CLUTTER_BASE_FILES_REGULAR_FILE_H
#define CLUTTER_BASE_FILES_REGULAR_FILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace clutter::base {

/* Larger files are not read. */
constexpr std::size_t kMaxRegularFileBytes = std::size_t{64} << 20;

/*
 * All bytes of a regular file. Anything else gives nothing, and never waits: a pipe without a
 * writer would block for ever, a device might not end. problem then says why, if it is not null.
 */
[[nodiscard]] std::optional<std::vector<unsigned char>> readRegularFile(
    const char* path, std::string* problem = nullptr);

}  // namespace clutter::base

#endif

/*
 * claims.h - how many values a file may declare without holding them.
 *
 * Formats tolerate files that end early: values that are missing then have a substitute. A few
 * damaged bytes must not cost all of the memory for that.
 */
#ifndef CLUTTER_BASE_FILES_CLAIMS_H
#define CLUTTER_BASE_FILES_CLAIMS_H

#include <cstddef>

namespace clutter::base {

/* A file of any size may declare this many values (1 MB of floats). */
inline constexpr std::size_t kMaxFreeValues = std::size_t{1} << 18;
/* A value costs at least an eighth of a bit in the file: no format packs this tightly, but the rest
 * of a file may be missing. */
inline constexpr std::size_t kMaxValuesPerByte = 64;

/* Whether a file of this size may declare this many values, summed over its fields. */
constexpr bool mayDeclare(std::size_t values, std::size_t fileBytes) {
    return values <= kMaxFreeValues || values / kMaxValuesPerByte <= fileBytes;
}

}  // namespace clutter::base

#endif

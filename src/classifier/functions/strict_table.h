/*
 * strict_table.h - reading a membership file that must be well formed.
 */
#ifndef CLUTTER_CLASSIFIER_STRICT_TABLE_H
#define CLUTTER_CLASSIFIER_STRICT_TABLE_H

#include <string>

#include "fuzzy/functions/membership.h"

namespace clutter::classifier {

/*
 * The points of a file of finite numbers: pairs of an abscissa, not below the one before, and a
 * degree of at least 0. Throws Refusal with the path, the line and the reason.
 */
fuzzy::Points readStrictTable(const std::string& path);

}  // namespace clutter::classifier

#endif

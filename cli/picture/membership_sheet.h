/* membership_sheet.h - pairs of membership functions as a sheet of panels. */
#ifndef CLI_PICTURE_MEMBERSHIP_SHEET_H
#define CLI_PICTURE_MEMBERSHIP_SHEET_H

#include <string>
#include <vector>

#include "scan/membership/pairs.h"

namespace cli {

/* A directory's pairs. */
struct MembershipSheet {
    std::string name;
    std::vector<scan::TablePair> pairs;
};

/* For each quantity the degrees of both classes, and below them the logarithm of their ratio; the
 * second sheet, if there is one, over the first with dashed lines. Throws as drawPanels() does. */
void drawMembership(const std::vector<MembershipSheet>& sheets, int widthPx,
                    const std::string& path);

}  // namespace cli

#endif

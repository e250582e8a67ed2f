/* processed_fields.h - the records of a processing context as fields of a sweep. */
#ifndef SCAN_PROCESS_PROCESSED_FIELDS_H
#define SCAN_PROCESS_PROCESSED_FIELDS_H

#include <string>
#include <vector>

#include "scan/fields/field_choice.h"
#include "scan/scan.h"

class Crres;

namespace scan {

/* The records that the stages of what have filled. Gates that were blanked, that the file does not
 * have, or that are past the end of a ray have no value; they hold NaN in the records too. */
std::vector<Field> takeFields(const Sweep& sweep, const FieldChoice& source, int what,
                              Crres& context);

/* What a field of a processed sweep is called in Universal Format; null where that format cannot
 * hold it. */
const char* ufNameOf(const std::string& recordName);

}  // namespace scan

#endif

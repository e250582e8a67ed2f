/* fill_context.h - the fields of a sweep in the records of the library's processing context. */
#ifndef SCAN_PROCESS_FILL_CONTEXT_H
#define SCAN_PROCESS_FILL_CONTEXT_H

#include "scan/fields/field_choice.h"
#include "scan/fields/role.h"
#include "scan/scan.h"

class Cpluvek;
class Crres;

namespace scan {

/*
 * Fills the records of a new context with the chosen fields. Gates without a value hold no echo
 * (zhh), a likelihood that favours neither class (pdf) or NaN. Where the rays do not close a
 * circle, empty ones follow the last: windows that reach this many rays to either side then do not
 * wrap to the first.
 */
void fillContext(const Sweep& sweep, const FieldChoice& fields, int reach, Crres& context);

/* One field into one record, with rays of which the last may be empty. */
void fillRecord(const Sweep& sweep, const Field& field, Role role, int rays, Cpluvek& record);

}  // namespace scan

#endif

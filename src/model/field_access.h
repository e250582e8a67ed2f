/*
 * field_access.h - what a stage asks of a field record: its size, enough values for a scan, its
 * elevation, a copy under another name.
 */
#ifndef CLUTTER_MODEL_FIELD_ACCESS_H
#define CLUTTER_MODEL_FIELD_ACCESS_H

#include <algorithm>
#include <cstddef>
#include <initializer_list>

#include "base/array.h"
#include "base/text.h"
#include "clutterclassifier/Cpluvek.h"

namespace clutter::model {

inline std::size_t cells(const Cpluvek& record) {
    return base::cellCount(record.ngates, record.nrays);
}

/* The values of a record, or null when it holds fewer than a scan needs. */
inline float* valuesOf(const Cpluvek& record, std::size_t needed) {
    return record.data != nullptr && cells(record) >= needed ? record.data : nullptr;
}

/* Whether a scan of n values has any, and all records hold as many. */
inline bool holdAll(std::initializer_list<const Cpluvek*> records, std::size_t n) {
    return n > 0 && std::all_of(records.begin(), records.end(), [n](const Cpluvek* record) {
               return valuesOf(*record, n) != nullptr;
           });
}

/* Radians; 0 for a record without angles. */
inline float elevationOf(const Cpluvek& record) {
    return record.angles != nullptr ? record.angles[0] : 0.0f;
}

/* Makes record a copy of a scan's field, of another quantity. */
inline void copyField(Cpluvek& field, Cpluvek& record, const char* name, const char* units) {
    field.CopyPointerToObject(0, record);
    record.nrecords = 1;
    base::copyText(record.name, name);
    base::copyText(record.units, units);
}

/* Calls visit(offset, count) for each ray's worth of a scan. */
template <class Visit>
void forEachRay(const Cpluvek& scan, Visit visit) {
    for (int r = 0; r < scan.nrays; ++r) {
        visit(static_cast<std::ptrdiff_t>(r) * scan.ngates, scan.ngates);
    }
}

}  // namespace clutter::model

#endif

/*
 * field_access.h - a stage's access to field records: size, values if there are enough for a scan,
 * elevation, copies under another name.
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

/* The values of a record; null when it holds fewer than needed. */
inline float* valuesOf(const Cpluvek& record, std::size_t needed) {
    return record.data != nullptr && cells(record) >= needed ? record.data : nullptr;
}

/* Whether n is not 0 and all records hold at least n values. */
inline bool holdAll(std::initializer_list<const Cpluvek*> records, std::size_t n) {
    return n > 0 && std::all_of(records.begin(), records.end(), [n](const Cpluvek* record) {
               return valuesOf(*record, n) != nullptr;
           });
}

/* Radians; 0 for a record without angles. */
inline float elevationOf(const Cpluvek& record) {
    return record.angles != nullptr ? record.angles[0] : 0.0f;
}

/* Makes record a copy of a scan's field, under another name and in other units. */
inline void copyField(Cpluvek& field, Cpluvek& record, const char* name, const char* units) {
    field.CopyPointerToObject(0, record);
    record.nrecords = 1;
    base::copyText(record.name, name);
    base::copyText(record.units, units);
}

/* Calls visit(offset, count) for the values of each ray of a scan. */
template <class Visit>
void forEachRay(const Cpluvek& scan, Visit visit) {
    for (int r = 0; r < scan.nrays; ++r) {
        visit(static_cast<std::ptrdiff_t>(r) * scan.ngates, scan.ngates);
    }
}

}  // namespace clutter::model

#endif

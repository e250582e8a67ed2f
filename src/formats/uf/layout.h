/*
 * layout.h - the words of a Universal Format record, shared by reader and writer.
 *
 * A record is framed by its length in bytes:
 *
 *     length (4) | mandatory header (45 words) | optional header (14 words)
 *                | data header (3 words) | field table (2 words for each field)
 *                | field headers (19 words and more) and data, where their positions say
 *     length (4)
 *
 * Words have 16 bits. Lengths and words are big-endian. Positions are words of the record, counted
 * from 1.
 */
#ifndef CLUTTER_FORMATS_UF_LAYOUT_H
#define CLUTTER_FORMATS_UF_LAYOUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "clutterclassifier/Cufrw.h"

namespace clutter::formats {

constexpr std::size_t kFramingBytes = 4;
constexpr std::size_t kWordBytes = 2;
constexpr std::size_t kMaxFields = std::extent_v<decltype(Cufray::table)>;
static_assert(std::extent_v<decltype(Cufray::headers)> == kMaxFields);

constexpr std::size_t kMandatoryWords = 45;
constexpr std::size_t kOptionalWords = 14;
constexpr std::size_t kDataHeaderWords = 3;
constexpr std::size_t kTableEntryWords = 2;
constexpr std::size_t kFieldHeaderWords = 19;

/* Mandatory header and 12 words more. Shorter records are not accepted. */
constexpr std::size_t kMinRecordBytes = kWordBytes * (kMandatoryWords + 12);

/* Positions of the headers in written records. */
constexpr std::size_t kOptionalPosition = 1 + kMandatoryWords;
constexpr std::size_t kDataHeaderPosition = kOptionalPosition + kOptionalWords;
constexpr std::size_t kTablePosition = kDataHeaderPosition + kDataHeaderWords;
/* A record with this position of its local-use header has an optional header. */
constexpr std::size_t kLocalPositionWithOptional = kDataHeaderPosition;

constexpr std::size_t kLengthWord = 2;

/* First position after the headers and the table of a written record. */
constexpr std::size_t firstFreePosition(std::size_t fields) {
    return kTablePosition + kTableEntryWords * fields;
}

/* Number of fields of every ray: the count of the first one. */
inline std::size_t fieldCount(const Cufray& firstRay) {
    return std::min<std::size_t>(static_cast<std::uint16_t>(firstRay.nfields), kMaxFields);
}

/*
 * The visits below pass every word of a header, in the order of the file, to a visitor:
 * word(member) for a number and text(member) for a string, which fills the member except for its
 * terminator. They take a Cufray for reading and a const one for writing.
 */
template <class Ray, class Visitor>
void visitMandatoryHeader(Ray& ray, Visitor& visitor) {
    visitor.text(ray.format);
    visitor.word(ray.recordlength);
    visitor.word(ray.optionalposition);
    visitor.word(ray.localposition);
    visitor.word(ray.dataposition);
    visitor.word(ray.recordnumber);
    visitor.word(ray.volumenumber);
    visitor.word(ray.raynumber);
    visitor.word(ray.recordinray);
    visitor.word(ray.sweepnumber);
    visitor.text(ray.radarname);
    visitor.text(ray.sitename);
    visitor.word(ray.latitudedegrees);
    visitor.word(ray.latitudeminutes);
    visitor.word(ray.latitudeseconds);
    visitor.word(ray.longitudedegrees);
    visitor.word(ray.longitudeminutes);
    visitor.word(ray.longitudeseconds);
    visitor.word(ray.altitude);
    visitor.word(ray.year);
    visitor.word(ray.month);
    visitor.word(ray.day);
    visitor.word(ray.hour);
    visitor.word(ray.minute);
    visitor.word(ray.second);
    visitor.text(ray.timezone);
    visitor.word(ray.azimuth);
    visitor.word(ray.elevation);
    visitor.word(ray.sweepmode);
    visitor.word(ray.fixedangle);
    visitor.word(ray.sweeprate);
    visitor.word(ray.generationyear);
    visitor.word(ray.generationmonth);
    visitor.word(ray.generationday);
    visitor.text(ray.generationfacility);
    visitor.word(ray.missingvalue);
}

template <class Ray, class Visitor>
void visitOptionalHeader(Ray& ray, Visitor& visitor) {
    visitor.text(ray.projectname);
    visitor.word(ray.baselineazimuth);
    visitor.word(ray.baselineelevation);
    visitor.word(ray.starthour);
    visitor.word(ray.startminute);
    visitor.word(ray.startsecond);
    visitor.text(ray.tapename);
    visitor.word(ray.flag);
}

template <class Ray, class Visitor>
void visitDataHeader(Ray& ray, Visitor& visitor) {
    visitor.word(ray.nfields);
    visitor.word(ray.nrecords);
    visitor.word(ray.nrecordfields);
}

template <class Ray, class Visitor>
void visitFieldTable(Ray& ray, std::size_t fields, Visitor& visitor) {
    for (std::size_t f = 0; f < fields; ++f) {
        visitor.text(ray.table[f].name);
        visitor.word(ray.table[f].position);
    }
}

template <class Header, class Visitor>
void visitFieldHeader(Header& header, Visitor& visitor) {
    visitor.word(header.dataposition);
    visitor.word(header.scalefactor);
    visitor.word(header.firstgaterange);
    visitor.word(header.firstgateadjustment);
    visitor.word(header.gatespacing);
    visitor.word(header.ngates);
    visitor.word(header.gatedepth);
    visitor.word(header.horizontalbeamwidth);
    visitor.word(header.verticalbeamwidth);
    visitor.word(header.receiverbandwidth);
    visitor.word(header.polarisation);
    visitor.word(header.wavelength);
    visitor.word(header.samples);
    visitor.text(header.thresholdfield);
    visitor.word(header.thresholdvalue);
    visitor.word(header.thresholdscale);
    visitor.text(header.editcode);
    visitor.word(header.repetitiontime);
    visitor.word(header.bitspergate);
}

/* Fields with words of their own after the common field header. */
inline bool isVelocity(std::string_view name) {
    return name == "VR";
}
inline bool isPower(std::string_view name) {
    return name == "DM";
}

/* Words 20 and 21 of a velocity field (the second one is ignored), 20 to 25 of a power field. */
template <class Ray, class Visitor>
void visitFieldWords(Ray& ray, std::string_view name, Visitor& visitor) {
    if (isVelocity(name)) {
        short unused = 0;
        visitor.word(ray.nyquist);
        visitor.word(unused);
    } else if (isPower(name)) {
        visitor.word(ray.radarconstant);
        visitor.word(ray.noisepower);
        visitor.word(ray.receivergain);
        visitor.word(ray.peakpower);
        visitor.word(ray.antennagain);
        visitor.word(ray.pulseduration);
    }
}

constexpr std::size_t kVelocityWords = 2;
constexpr std::size_t kPowerWords = 6;

inline std::size_t fieldHeaderWords(std::string_view name) {
    if (isVelocity(name)) {
        return kFieldHeaderWords + kVelocityWords;
    }
    return kFieldHeaderWords + (isPower(name) ? kPowerWords : 0);
}

}  // namespace clutter::formats

#endif

/*
 * field_record_layout.h - layout of a block of a field record file, for reader and writer.
 *
 * All numbers are in the byte order of the machine. A block is
 *
 *     header (1044 bytes) | count A, count B | A x B angles | count C, count D | C x D values
 */
#ifndef CLUTTER_MODEL_FIELD_RECORD_LAYOUT_H
#define CLUTTER_MODEL_FIELD_RECORD_LAYOUT_H

#include <cstddef>
#include <cstdint>

namespace clutter::model {

/* Start of every block, compared with its terminator. */
constexpr char kIdentification[20] = "PLUVEK V1.3  \x05\xAC\x1A\xE1\x40\x6F";

constexpr std::size_t kHeaderBytes = 1044;
constexpr std::size_t kCountPairBytes = 8;
/* A block without rays and gates: header and two pairs of counts. */
constexpr std::size_t kMinBlockBytes = kHeaderBytes + 2 * kCountPairBytes;

/* How values are stored. Other codes are stored as float32. */
constexpr int kUint8 = 2;
constexpr int kUint16 = 3;

constexpr std::size_t storedValueBytes(int datatype) {
    if (datatype == kUint8) {
        return sizeof(std::uint8_t);
    }
    if (datatype == kUint16) {
        return sizeof(std::uint16_t);
    }
    return sizeof(float);
}

/* Members that the reader needs to check a block. */
constexpr std::size_t kGatesOffset = 20;
constexpr std::size_t kRaysOffset = 24;
constexpr std::size_t kRecordsOffset = 64;
constexpr std::size_t kDatatypeOffset = 1024;
constexpr std::size_t kLastOffset = 1036;

/*
 * Passes every member of the header to a visitor: number(offset, value) for numbers and arrays of
 * numbers, text(offset, buffer, width) for texts of at most width bytes in the file. All other
 * bytes are gaps, written as zeros.
 */
template <class Record, class Visitor>
void visitHeader(Record& record, Visitor&& visitor) {
    visitor.number(kGatesOffset, record.ngates);
    visitor.number(kRaysOffset, record.nrays);
    visitor.number(28, record.coordtype);
    visitor.number(32, record.firstgate);
    visitor.number(36, record.gatesize);
    visitor.number(40, record.beamwidth);
    visitor.number(44, record.wavelength);
    visitor.number(48, record.prf);
    visitor.number(52, record.pulsedepth);
    visitor.number(56, record.rpm);
    visitor.number(60, record.nsamples);
    visitor.number(kRecordsOffset, record.nrecords);
    visitor.number(200, record.axislimits);
    visitor.number(224, record.colormap);
    visitor.number(228, record.displaymin);
    visitor.number(232, record.displaymax);
    visitor.number(236, record.colorflag);
    visitor.number(250, record.year);
    visitor.number(254, record.month);
    visitor.number(258, record.day);
    visitor.number(262, record.hour);
    visitor.number(266, record.minute);
    visitor.number(270, record.second);
    visitor.text(300, record.datetime, 20);
    visitor.text(320, record.title, 100);
    visitor.text(420, record.xlabel, 100);
    visitor.text(520, record.ylabel, 100);
    visitor.text(620, record.name, 10);
    visitor.text(630, record.units, 10);
    visitor.number(kDatatypeOffset, record.datatype);
    visitor.number(1028, record.scale);
    visitor.number(kLastOffset, record.offset);
    static_assert(kLastOffset + sizeof record.offset == kHeaderBytes);
}

}  // namespace clutter::model

#endif

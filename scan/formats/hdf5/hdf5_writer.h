/* hdf5_writer.h - groups, attributes and data written to an HDF5 file. */
#ifndef SCAN_FORMATS_HDF5_HDF5_WRITER_H
#define SCAN_FORMATS_HDF5_HDF5_WRITER_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "scan/formats/hdf5/hdf5_handle.h"

namespace scan::hdf5 {

/* Two-dimensional data as they are in a file, without gain and offset. */
struct RawPlane {
    int rows = 0, columns = 0;
    std::vector<double> values;
    double least = 0, most = 0;  // of their type; equal: floating-point numbers

    /* One that they can hold and none of them is. Throws std::runtime_error if all are in use. */
    double unusedValue() const;
};

/* A group that is written to. All functions throw std::runtime_error if the file cannot be written,
 * with the name that failed. */
class Writer {
  public:
    static Writer create(const std::string& path);
    static Writer open(const std::string& path);  // an existing file

    /* A group in it, made where there is none. */
    Writer group(const std::string& name) const;

    void text(const std::string& name, const std::string& value) const;
    void number(const std::string& name, double value) const;
    void whole(const std::string& name, long value) const;
    void numbers(const std::string& name, const std::vector<double>& values) const;

    /* Two-dimensional data, compressed. */
    void plane(const std::string& name, int rows, int columns, std::span<const float> values) const;
    void plane(const std::string& name, int rows, int columns,
               std::span<const std::uint8_t> values) const;

    /* Existing data, and other values in their place; they keep their type and compression. */
    RawPlane rawPlane(const std::string& name) const;
    void replace(const std::string& name, const RawPlane& plane) const;

    /* A table of two columns of text, as the legend of a quantity is. */
    struct Row {
        std::string key, value;
    };
    void table(const std::string& name, const std::vector<Row>& rows) const;

  private:
    Writer(Handle handle, std::string path) : handle_(std::move(handle)), path_(std::move(path)) {}
    [[noreturn]] void fail(const std::string& name) const;
    void attribute(const std::string& name, hid_t fileType, hid_t memoryType, hid_t space,
                   const void* value) const;
    void data(const std::string& name, int rows, int columns, hid_t type, const void* values) const;

    Handle handle_;
    std::string path_;
};

}  // namespace scan::hdf5

#endif

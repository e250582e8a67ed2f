/* nc_writer.h - dimensions, variables and attributes written to a NetCDF-4 file. */
#ifndef SCAN_FORMATS_NETCDF_NC_WRITER_H
#define SCAN_FORMATS_NETCDF_NC_WRITER_H

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace scan::netcdf {

using Dimensions = std::vector<int>;

/* A variable that attributes can be given to. */
class VariableWriter {
  public:
    VariableWriter(int group, int id, std::string name)
        : group_(group), id_(id), name_(std::move(name)) {}
    const VariableWriter& text(const char* name, const std::string& value) const;
    const VariableWriter& number(const char* name, float value) const;
    const VariableWriter& bytes(const char* name, const std::vector<std::uint8_t>& values) const;

  private:
    int group_, id_;
    std::string name_;
};

/* A file or a group in it. All functions throw std::runtime_error with the name that failed. */
class Writer {
  public:
    static Writer create(const std::string& path);
    static Writer open(const std::string& path);  // an existing file

    /* Reports what could not be written at the end; otherwise errors of closing are lost. */
    void close() const;

    Writer group(const std::string& name) const;
    int dimension(const std::string& name, std::size_t length) const;

    /* Of an existing file. */
    Writer existingGroup(const std::string& name) const;
    int dimension(const std::string& name) const;
    Dimensions dimensionsOf(const std::string& variable) const;

    /* All values of an existing variable, without scale and offset, and others in their place. */
    std::vector<double> raw(const std::string& variable) const;
    void replace(const std::string& variable, std::span<const double> values) const;

    void text(const char* attribute, const std::string& value) const;
    VariableWriter doubles(const std::string& name, const Dimensions& dimensions,
                           std::span<const double> values) const;
    VariableWriter wholes(const std::string& name, const Dimensions& dimensions,
                          std::span<const int> values) const;

    /* Compressed, with _FillValue. */
    VariableWriter floats(const std::string& name, const Dimensions& dimensions,
                          std::span<const float> values, float fill) const;
    VariableWriter bytes(const std::string& name, const Dimensions& dimensions,
                         std::span<const std::uint8_t> values, std::uint8_t fill) const;

    /* Texts of at most width characters, one a row: dimensions end with one of that length. */
    VariableWriter texts(const std::string& name, const Dimensions& dimensions, std::size_t width,
                         const std::vector<std::string>& values) const;

  private:
    struct File;
    Writer(std::shared_ptr<const File> file, int id) : file_(std::move(file)), id_(id) {}
    int format() const;
    int define(const std::string& name, int type, const Dimensions& dimensions) const;
    void compress(int variable, const std::string& name, const Dimensions& dimensions) const;

    std::shared_ptr<const File> file_;
    int id_;
};

}  // namespace scan::netcdf

#endif

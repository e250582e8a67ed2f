/* Writing NetCDF-4. */
#include "scan/formats/netcdf/nc_writer.h"

#include <netcdf.h>

#include <stdexcept>

namespace scan::netcdf {
namespace {

constexpr int kDeflateLevel = 4;

void check(int status, const std::string& name) {
    if (status != NC_NOERR) {
        throw std::runtime_error(name + " cannot be written: " + nc_strerror(status));
    }
}

}  // namespace

struct Writer::File {
    explicit File(int opened) : id(opened) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (open) {
            nc_close(id);
        }
    }
    int id;
    mutable bool open = true;
};

const VariableWriter& VariableWriter::text(const char* name, const std::string& value) const {
    check(nc_put_att_text(group_, id_, name, value.size(), value.c_str()), name_);
    return *this;
}

const VariableWriter& VariableWriter::number(const char* name, float value) const {
    check(nc_put_att_float(group_, id_, name, NC_FLOAT, 1, &value), name_);
    return *this;
}

const VariableWriter& VariableWriter::bytes(const char* name,
                                            const std::vector<std::uint8_t>& values) const {
    int type = NC_UBYTE;  // of the variable, as CF asks
    check(nc_inq_vartype(group_, id_, &type), name_);
    check(nc_put_att_ubyte(group_, id_, name, type, values.size(), values.data()), name_);
    return *this;
}

Writer Writer::create(const std::string& path) {
    int id = 0;
    check(nc_create(path.c_str(), NC_CLOBBER | NC_NETCDF4, &id), "the file");
    return Writer(std::make_shared<File>(id), id);
}

Writer Writer::open(const std::string& path) {
    int id = 0;
    check(nc_open(path.c_str(), NC_WRITE, &id), "the file");
    nc_redef(id);  // files of the classic model need it, others refuse it
    return Writer(std::make_shared<File>(id), id);
}

void Writer::close() const {
    file_->open = false;
    check(nc_close(file_->id), "the file");
}

Writer Writer::group(const std::string& name) const {
    int id = 0;
    check(nc_def_grp(id_, name.c_str(), &id), name);
    return Writer(file_, id);
}

Writer Writer::existingGroup(const std::string& name) const {
    int id = 0;
    check(nc_inq_ncid(id_, name.c_str(), &id), name);
    return Writer(file_, id);
}

Dimensions Writer::dimensionsOf(const std::string& variable) const {
    int id = 0, count = 0;
    check(nc_inq_varid(id_, variable.c_str(), &id), variable);
    check(nc_inq_varndims(id_, id, &count), variable);
    Dimensions dimensions(static_cast<std::size_t>(count));
    check(nc_inq_vardimid(id_, id, dimensions.data()), variable);
    return dimensions;
}

int Writer::dimension(const std::string& name) const {
    int id = 0;
    check(nc_inq_dimid(id_, name.c_str(), &id), name);
    return id;
}

int Writer::dimension(const std::string& name, std::size_t length) const {
    int id = 0;
    check(nc_def_dim(id_, name.c_str(), length, &id), name);
    return id;
}

std::vector<double> Writer::raw(const std::string& variable) const {
    int id = 0;
    check(nc_inq_varid(id_, variable.c_str(), &id), variable);
    std::size_t count = 1;
    for (const int dimension : dimensionsOf(variable)) {
        std::size_t length = 0;
        check(nc_inq_dimlen(id_, dimension, &length), variable);
        count *= length;
    }
    std::vector<double> values(count);
    nc_enddef(id_);  // as in floats()
    check(nc_get_var_double(id_, id, values.data()), variable);
    nc_redef(id_);
    return values;
}

void Writer::replace(const std::string& variable, std::span<const double> values) const {
    int id = 0;
    check(nc_inq_varid(id_, variable.c_str(), &id), variable);
    nc_enddef(id_);
    check(nc_put_var_double(id_, id, values.data()), variable);
    nc_redef(id_);
}

void Writer::text(const char* attribute, const std::string& value) const {
    check(nc_put_att_text(id_, NC_GLOBAL, attribute, value.size(), value.c_str()), attribute);
}

int Writer::define(const std::string& name, int type, const Dimensions& dimensions) const {
    int id = 0;
    check(nc_def_var(id_, name.c_str(), type, static_cast<int>(dimensions.size()),
                     dimensions.data(), &id),
          name);
    return id;
}

int Writer::format() const {
    int format = 0;
    check(nc_inq_format(id_, &format), "the file");
    return format;
}

/* Files of the classic model are not compressed. */
void Writer::compress(int variable, const std::string& name, const Dimensions& dimensions) const {
    if (format() == NC_FORMAT_NETCDF4 && !dimensions.empty()) {
        check(nc_def_var_deflate(id_, variable, 1, 1, kDeflateLevel), name);
    }
}

VariableWriter Writer::doubles(const std::string& name, const Dimensions& dimensions,
                               std::span<const double> values) const {
    const int id = define(name, NC_DOUBLE, dimensions);
    check(nc_put_var_double(id_, id, values.data()), name);
    return {id_, id, name};
}

VariableWriter Writer::wholes(const std::string& name, const Dimensions& dimensions,
                              std::span<const int> values) const {
    const int id = define(name, NC_INT, dimensions);
    check(nc_put_var_int(id_, id, values.data()), name);
    return {id_, id, name};
}

VariableWriter Writer::floats(const std::string& name, const Dimensions& dimensions,
                              std::span<const float> values, float fill) const {
    const int id = define(name, NC_FLOAT, dimensions);
    compress(id, name, dimensions);
    check(nc_put_att_float(id_, id, "_FillValue", NC_FLOAT, 1, &fill), name);
    // Files of the classic model take values in another mode than definitions.
    nc_enddef(id_);
    check(nc_put_var_float(id_, id, values.data()), name);
    nc_redef(id_);
    return {id_, id, name};
}

VariableWriter Writer::bytes(const std::string& name, const Dimensions& dimensions,
                             std::span<const std::uint8_t> values, std::uint8_t fill) const {
    const bool classic = format() != NC_FORMAT_NETCDF4 && format() != NC_FORMAT_64BIT_DATA;
    const int type = classic ? NC_SHORT : NC_UBYTE;  // the smallest that holds 0 to 255
    const int id = define(name, type, dimensions);
    compress(id, name, dimensions);
    check(nc_put_att_ubyte(id_, id, "_FillValue", type, 1, &fill), name);
    nc_enddef(id_);  // as above
    check(nc_put_var_ubyte(id_, id, values.data()), name);
    nc_redef(id_);
    return {id_, id, name};
}

VariableWriter Writer::texts(const std::string& name, const Dimensions& dimensions,
                             std::size_t width, const std::vector<std::string>& values) const {
    const int id = define(name, NC_CHAR, dimensions);
    std::string chars;
    for (const std::string& value : values) {
        std::string padded = value.substr(0, width);
        padded.resize(width, '\0');
        chars += padded;
    }
    check(nc_put_var_text(id_, id, chars.c_str()), name);
    return {id_, id, name};
}

}  // namespace scan::netcdf

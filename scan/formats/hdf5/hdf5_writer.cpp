/* Writing HDF5: texts of fixed length, ended by NUL, and little-endian numbers, as readers expect.
 */
#include "scan/formats/hdf5/hdf5_writer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <stdexcept>

#include "scan/formats/writing/plain_values.h"

namespace scan::hdf5 {
namespace {

constexpr unsigned kDeflateLevel = 6;

Handle textType(std::size_t length) {
    Handle type(H5Tcopy(H5T_C_S1));
    H5Tset_size(type.get(), length + 1);
    H5Tset_strpad(type.get(), H5T_STR_NULLTERM);
    return type;
}

Handle rootOf(const Handle& file) {
    return Handle(file ? H5Gopen2(file.get(), "/", H5P_DEFAULT) : -1);
}

}  // namespace

Writer Writer::create(const std::string& path) {
    const Handle file(H5Fcreate(path.c_str(), H5F_ACC_TRUNC, H5P_DEFAULT, H5P_DEFAULT));
    Writer root(rootOf(file), "");
    if (!root.handle_) {
        root.fail("the file");
    }
    return root;
}

Writer Writer::open(const std::string& path) {
    const Handle file(H5Fopen(path.c_str(), H5F_ACC_RDWR, H5P_DEFAULT));
    Writer root(rootOf(file), "");
    if (!root.handle_) {
        root.fail("the file");
    }
    return root;
}

void Writer::fail(const std::string& name) const {
    throw std::runtime_error(path_ + name + " cannot be written");
}

Writer Writer::group(const std::string& name) const {
    const bool there = H5Lexists(handle_.get(), name.c_str(), H5P_DEFAULT) > 0;
    Handle handle(
        there ? H5Gopen2(handle_.get(), name.c_str(), H5P_DEFAULT)
              : H5Gcreate2(handle_.get(), name.c_str(), H5P_DEFAULT, H5P_DEFAULT, H5P_DEFAULT));
    if (!handle) {
        fail(name);
    }
    return Writer(std::move(handle), path_ + name + "/");
}

void Writer::attribute(const std::string& name, hid_t fileType, hid_t memoryType, hid_t space,
                       const void* value) const {
    if (H5Aexists(handle_.get(), name.c_str()) > 0) {
        H5Adelete(handle_.get(), name.c_str());
    }
    const Handle made(
        H5Acreate2(handle_.get(), name.c_str(), fileType, space, H5P_DEFAULT, H5P_DEFAULT));
    if (!made || H5Awrite(made.get(), memoryType, value) < 0) {
        fail(name);
    }
}

void Writer::text(const std::string& name, const std::string& value) const {
    const Handle type = textType(value.size());
    const Handle space(H5Screate(H5S_SCALAR));
    attribute(name, type.get(), type.get(), space.get(), value.c_str());
}

void Writer::number(const std::string& name, double value) const {
    const Handle space(H5Screate(H5S_SCALAR));
    attribute(name, H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, space.get(), &value);
}

void Writer::whole(const std::string& name, long value) const {
    const Handle space(H5Screate(H5S_SCALAR));
    attribute(name, H5T_STD_I64LE, H5T_NATIVE_LONG, space.get(), &value);
}

void Writer::numbers(const std::string& name, const std::vector<double>& values) const {
    const hsize_t count = values.size();
    const Handle space(H5Screate_simple(1, &count, nullptr));
    attribute(name, H5T_IEEE_F64LE, H5T_NATIVE_DOUBLE, space.get(), values.data());
}

void Writer::data(const std::string& name, int rows, int columns, hid_t type,
                  const void* values) const {
    const hsize_t shape[2] = {static_cast<hsize_t>(rows), static_cast<hsize_t>(columns)};
    const Handle space(H5Screate_simple(2, shape, nullptr));
    const Handle creation(H5Pcreate(H5P_DATASET_CREATE));
    H5Pset_chunk(creation.get(), 2, shape);
    H5Pset_deflate(creation.get(), kDeflateLevel);
    const Handle made(H5Dcreate2(handle_.get(), name.c_str(), type, space.get(), H5P_DEFAULT,
                                 creation.get(), H5P_DEFAULT));
    if (!made || H5Dwrite(made.get(), type, H5S_ALL, H5S_ALL, H5P_DEFAULT, values) < 0) {
        fail(name);
    }
}

void Writer::plane(const std::string& name, int rows, int columns,
                   std::span<const float> values) const {
    data(name, rows, columns, H5T_NATIVE_FLOAT, values.data());
}

void Writer::plane(const std::string& name, int rows, int columns,
                   std::span<const std::uint8_t> values) const {
    data(name, rows, columns, H5T_NATIVE_UINT8, values.data());
}

RawPlane Writer::rawPlane(const std::string& name) const {
    const Handle data(H5Dopen2(handle_.get(), name.c_str(), H5P_DEFAULT));
    const Handle space(H5Dget_space(data.get()));
    const Handle type(H5Dget_type(data.get()));
    hsize_t shape[2] = {0, 0};
    if (H5Sget_simple_extent_dims(space.get(), shape, nullptr) != 2) {
        fail(name);
    }
    RawPlane plane;
    plane.rows = static_cast<int>(shape[0]);
    plane.columns = static_cast<int>(shape[1]);
    if (H5Tget_class(type.get()) == H5T_INTEGER) {
        const int bits = static_cast<int>(8 * std::min<std::size_t>(H5Tget_size(type.get()), 4));
        const bool isSigned = H5Tget_sign(type.get()) == H5T_SGN_2;
        plane.least = isSigned ? -std::ldexp(1, bits - 1) : 0;
        plane.most = std::ldexp(1, isSigned ? bits - 1 : bits) - 1;
    }
    plane.values.resize(shape[0] * shape[1]);
    if (H5Dread(data.get(), H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT, plane.values.data()) <
        0) {
        fail(name);
    }
    return plane;
}

void Writer::replace(const std::string& name, const RawPlane& plane) const {
    const Handle data(H5Dopen2(handle_.get(), name.c_str(), H5P_DEFAULT));
    if (!data || H5Dwrite(data.get(), H5T_NATIVE_DOUBLE, H5S_ALL, H5S_ALL, H5P_DEFAULT,
                          plane.values.data()) < 0) {
        fail(name);
    }
}

double RawPlane::unusedValue() const {
    if (least == most) {
        return kNoEchoMark;
    }
    const std::set<double> used(values.begin(), values.end());
    double value = least;
    while (value < most && used.count(value) > 0) {
        ++value;
    }
    if (used.count(value) > 0) {
        throw std::runtime_error("all values of its type are in use: none is left for no echo");
    }
    return value;
}

void Writer::table(const std::string& name, const std::vector<Row>& rows) const {
    std::size_t width = 0;
    for (const Row& row : rows) {
        width = std::max({width, row.key.size(), row.value.size()});
    }
    const Handle text = textType(width);
    const Handle type(H5Tcreate(H5T_COMPOUND, 2 * (width + 1)));
    H5Tinsert(type.get(), "key", 0, text.get());
    H5Tinsert(type.get(), "value", width + 1, text.get());
    std::string packed(rows.size() * 2 * (width + 1), '\0');
    for (std::size_t r = 0; r < rows.size(); ++r) {
        char* at = packed.data() + 2 * r * (width + 1);
        std::memcpy(at, rows[r].key.data(), rows[r].key.size());
        std::memcpy(at + width + 1, rows[r].value.data(), rows[r].value.size());
    }
    const hsize_t count = rows.size();
    const Handle space(H5Screate_simple(1, &count, nullptr));
    const Handle made(H5Dcreate2(handle_.get(), name.c_str(), type.get(), space.get(), H5P_DEFAULT,
                                 H5P_DEFAULT, H5P_DEFAULT));
    if (!made ||
        H5Dwrite(made.get(), type.get(), H5S_ALL, H5S_ALL, H5P_DEFAULT, packed.data()) < 0) {
        fail(name);
    }
}

}  // namespace scan::hdf5

/*
 * Two-dimensional data: the shape is checked against the size of the file before memory is asked
 * for, then raw values are read in their own type and decoded. One byte has 256 values: a table.
 */
#include "scan/formats/hdf5/hdf5_plane.h"

#include <array>
#include <climits>
#include <cstdint>
#include <stdexcept>

namespace scan::hdf5 {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(path + " " + reason);
}

/* Neither in other files (external, virtual) nor in chunks that are larger than allowed. */
void checkLayout(hid_t data, const std::string& path, ValueBudget budget) {
    const Handle creation(H5Dget_create_plist(data));
    const H5D_layout_t layout = H5Pget_layout(creation.get());
    if (layout == H5D_VIRTUAL || H5Pget_external_count(creation.get()) > 0) {
        fail(path, "is kept in another file");
    }
    hsize_t chunk[2] = {0, 0};
    if (layout == H5D_CHUNKED && H5Pget_chunk(creation.get(), 2, chunk) == 2) {
        budget.take(chunk[0], chunk[1], path);
    }
}

void readShape(hid_t data, const std::string& path, ValueBudget& budget, Plane& plane) {
    const Handle space(H5Dget_space(data));
    hsize_t shape[2] = {0, 0};
    if (H5Sget_simple_extent_ndims(space.get()) != 2 ||
        H5Sget_simple_extent_dims(space.get(), shape, nullptr) != 2) {
        fail(path, "does not have two dimensions");
    }
    if (shape[0] == 0 || shape[1] == 0) {
        fail(path, "is empty");
    }
    if (shape[0] > INT_MAX || shape[1] > INT_MAX) {
        fail(path, "is too large");
    }
    budget.take(shape[0], shape[1], path);
    plane.rows = static_cast<int>(shape[0]);
    plane.columns = static_cast<int>(shape[1]);
}

template <class Raw>
void decodeAll(const std::vector<Raw>& raw, const Packing& packing, std::vector<float>& values) {
    const Decoder decode(packing);
    for (std::size_t i = 0; i < raw.size(); ++i) {
        values[i] = decode(static_cast<double>(raw[i]));
    }
}

template <>
void decodeAll(const std::vector<std::uint8_t>& raw, const Packing& packing,
               std::vector<float>& values) {
    const Decoder decode(packing);
    std::array<float, 256> table;
    for (unsigned code = 0; code < table.size(); ++code) {
        table[code] = decode(code);
    }
    for (std::size_t i = 0; i < raw.size(); ++i) {
        values[i] = table[raw[i]];
    }
}

template <class Raw>
void readRaw(hid_t data, hid_t memoryType, const Packing& packing, const std::string& path,
             std::vector<float>& values) {
    std::vector<Raw> raw(values.size());
    if (H5Dread(data, memoryType, H5S_ALL, H5S_ALL, H5P_DEFAULT, raw.data()) < 0) {
        fail(path, "cannot be read: the file is damaged or compressed in an unknown way");
    }
    decodeAll(raw, packing, values);
}

void readValues(hid_t data, const Packing& packing, const std::string& path,
                std::vector<float>& values) {
    const Handle type(H5Dget_type(data));
    const H5T_class_t kind = H5Tget_class(type.get());
    if (kind != H5T_INTEGER && kind != H5T_FLOAT) {
        fail(path, "does not hold numbers");
    }
    const std::size_t bytes = H5Tget_size(type.get());
    const bool isSigned = kind == H5T_INTEGER && H5Tget_sign(type.get()) == H5T_SGN_2;
    if (kind == H5T_INTEGER && bytes == 1 && !isSigned) {
        readRaw<std::uint8_t>(data, H5T_NATIVE_UINT8, packing, path, values);
    } else if (kind == H5T_INTEGER && bytes <= 2 && isSigned) {
        readRaw<std::int16_t>(data, H5T_NATIVE_INT16, packing, path, values);
    } else if (kind == H5T_INTEGER && bytes <= 2) {
        readRaw<std::uint16_t>(data, H5T_NATIVE_UINT16, packing, path, values);
    } else if (kind == H5T_FLOAT && bytes <= 4) {
        readRaw<float>(data, H5T_NATIVE_FLOAT, packing, path, values);
    } else {
        readRaw<double>(data, H5T_NATIVE_DOUBLE, packing, path, values);
    }
}

}  // namespace

Plane readPlane(const Group& group, const std::string& name, const Packing& packing,
                ValueBudget& budget) {
    const std::string path = group.pathOf(name);
    const Handle data(group.holds(name) ? H5Dopen2(group.id(), name.c_str(), H5P_DEFAULT) : -1);
    if (!data) {
        fail(path, "is missing");
    }
    Plane plane;
    readShape(data.get(), path, budget, plane);
    checkLayout(data.get(), path, budget);
    plane.values.resize(static_cast<std::size_t>(plane.rows) *
                        static_cast<std::size_t>(plane.columns));
    readValues(data.get(), packing, path, plane.values);
    return plane;
}

}  // namespace scan::hdf5

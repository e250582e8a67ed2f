// * arrays.h - numpy arrays as the library takes them.
//
// The Python side hands over C-contiguous arrays of the exact type, already checked for shape (see
// clutterclassifier/_arrays/arguments.py); nothing here converts. The library never writes to its
// inputs, though its signatures do not say so: read-only arrays are safe.
#ifndef PYTHON_ARRAYS_H
#define PYTHON_ARRAYS_H

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace python {

namespace py = pybind11;

// A contiguous array; arguments of it are bound with noconvert().
template <typename T>
using Array = py::array_t<T, py::array::c_style>;

template <typename T>
using OptionalArray = std::optional<Array<T>>;

// The values, for a library that takes T* and does not write.
template <typename T>
T* values(const Array<T>& array) {
    return const_cast<T*>(array.data());
}

template <typename T>
T* values(const OptionalArray<T>& array) {
    return array ? values(*array) : nullptr;
}

// An array for results, in the shape of another one.
template <typename T>
Array<T> like(const py::array& other) {
    return Array<T>(std::vector<py::ssize_t>(other.shape(), other.shape() + other.ndim()));
}

// Calls visit(first, n) for pieces of an array, each as long as the library can count.
template <class Visit>
void forChunks(py::ssize_t size, Visit visit) {
    constexpr py::ssize_t kMost = 1 << 30;
    for (py::ssize_t at = 0; at < size; at += kMost) {
        visit(static_cast<std::size_t>(at), static_cast<int>(std::min(kMost, size - at)));
    }
}

// Registers the functions of one source file.
void bindClassify(py::module_& module);
void bindScans(py::module_& module);
void bindWrite(py::module_& module);
void bindProcess(py::module_& module);
void bindToolkit(py::module_& module);
void bindPhase(py::module_& module);
void bindAttenuation(py::module_& module);
void bindRain(py::module_& module);
void bindBeam(py::module_& module);
void bindMembership(py::module_& module);

}  // namespace python

#endif

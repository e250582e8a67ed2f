// classify.cpp - scans through the library's classifier.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

#include "arrays.h"
#include "clutterclassifier/classifier.hpp"

namespace python {
namespace {

using Field = std::optional<py::array>;
using Bytes = Array<std::uint8_t>;
using OptionalFloats = OptionalArray<float>;

// The Python exception for a status; OSError or one of its kind where a file cannot be read.
[[noreturn]] void raise(const clutter::Error& error) {
    const std::string missing = std::generic_category().message(ENOENT);
    const bool isMissing = std::string(error.what()).find(missing) != std::string::npos;
    switch (error.status()) {
        case CLUTTER_NOT_READ:
            PyErr_SetString(isMissing ? PyExc_FileNotFoundError : PyExc_OSError, error.what());
            break;
        case CLUTTER_NO_MEMORY:
            PyErr_NoMemory();
            break;
        default:
            PyErr_SetString(PyExc_ValueError, error.what());
    }
    throw py::error_already_set();
}

// The scans of an array of two dimensions or more.
struct Shape {
    explicit Shape(const py::array& field)
        : rays(field.shape(field.ndim() - 2)),
          gates(field.shape(field.ndim() - 1)),
          scans(field.size() / (rays * gates)) {}
    py::ssize_t rays, gates, scans;
};

// One field of all scans, floats or doubles.
class Source {
  public:
    explicit Source(const Field& field) {
        if (!field) {
            return;
        }
        const bool isFloat = py::isinstance<Array<float>>(*field);
        if (!isFloat && !py::isinstance<Array<double>>(*field)) {
            throw py::type_error("a field must be a contiguous array of floats or doubles");
        }
        bytes_ = static_cast<const char*>(field->data());
        itemSize_ = static_cast<std::size_t>(field->itemsize());
        type_ = isFloat ? CLUTTER_FLOAT : CLUTTER_DOUBLE;
    }

    clutter_field at(std::size_t offset) const {
        return {bytes_ == nullptr ? nullptr : bytes_ + offset * itemSize_, 0, type_};
    }

  private:
    const char* bytes_ = nullptr;
    std::size_t itemSize_ = 0;
    clutter_type type_ = CLUTTER_FLOAT;
};

// Everything about a call except where its results go. Made while the interpreter is held.
class Request {
  public:
    Request(const py::dict& fields, const py::dict& settings)
        : shape_(py::cast<py::array>(fields["dbzh"])),
          zhh_(field(fields, "dbzh")),
          zdr_(field(fields, "zdr")),
          phidp_(field(fields, "phidp")),
          rhohv_(field(fields, "rhohv")),
          velocity_(field(fields, "vrad")),
          ldr_(field(fields, "ldr")),
          likelihood_(field(fields, "clutter_likelihood")),
          width_(field(fields, "wrad")),
          options_() {
        scan_.c.gate_spacing_m = py::cast<double>(settings["spacing"]);
        scan_.c.radar_constant_db = py::cast<double>(settings["radar_constant"]);
        scan_.c.min_snr_db = py::cast<double>(settings["min_snr"]);
        options_.size = sizeof options_;
        options_.inputs = py::cast<std::uint32_t>(settings["inputs"]);
        options_.texture_gates = py::cast<std::int32_t>(settings["texture_gates"]);
        options_.texture_rays = py::cast<std::int32_t>(settings["texture_rays"]);
        options_.neighbourhood_gates = py::cast<std::int32_t>(settings["neighbourhood_gates"]);
        options_.neighbourhood_rays = py::cast<std::int32_t>(settings["neighbourhood_rays"]);
        options_.sector = py::cast<bool>(settings["sector"]) ? 1 : 0;
        options_.all_clutter = py::cast<bool>(settings["all_classes"]) ? 1 : 0;
    }

    std::size_t scans() const { return static_cast<std::size_t>(shape_.scans); }
    std::size_t cells() const { return scan_.cells(); }
    const clutter_options& options() const { return options_; }

    clutter::Classifier open(const std::string& membership) const {
        return clutter::Classifier(membership, options_.inputs,
                                   options_.all_clutter != 0 ? CLUTTER_WITH_ALL_CLUTTER : 0);
    }

    const clutter_scan& scan(std::size_t number) {
        const std::size_t offset = number * cells();
        scan_.c.zhh = zhh_.at(offset);
        scan_.c.zdr = zdr_.at(offset);
        scan_.c.phidp = phidp_.at(offset);
        scan_.c.rhohv = rhohv_.at(offset);
        scan_.c.velocity = velocity_.at(offset);
        scan_.c.ldr = ldr_.at(offset);
        scan_.c.likelihood = likelihood_.at(offset);
        scan_.c.width = width_.at(offset);
        return scan_.c;
    }

  private:
    static Source field(const py::dict& fields, const char* name) {
        return Source(fields.contains(name) ? Field(py::cast<py::array>(fields[name])) : Field());
    }

    Shape shape_;
    clutter::Scan scan_{static_cast<std::size_t>(shape_.rays),
                        static_cast<std::size_t>(shape_.gates)};
    Source zhh_, zdr_, phidp_, rhohv_, velocity_, ldr_, likelihood_, width_;
    clutter_options options_;
};

template <typename T>
T* from(T* values, std::size_t offset) {
    return values == nullptr ? nullptr : values + offset;
}

float* mutableValues(OptionalFloats& array) {
    return array ? array->mutable_data() : nullptr;
}

// All scans of the fields. The results have the shape of the fields; null ones are left out.
void classify(const std::string& membership, const py::dict& fields, const py::dict& settings,
              Bytes& classes, OptionalFloats& probability, OptionalFloats& margin) {
    Request request(fields, settings);
    clutter_result whole = clutter_result();
    whole.classes = classes.mutable_data();
    whole.probability = mutableValues(probability);
    whole.margin = mutableValues(margin);
    try {
        const py::gil_scoped_release release;
        const clutter::Classifier classifier = request.open(membership);
        for (std::size_t number = 0; number < request.scans(); ++number) {
            const std::size_t offset = number * request.cells();
            clutter_result result = clutter_result();
            result.size = sizeof result;
            result.classes = from(whole.classes, offset);
            result.probability = from(whole.probability, offset);
            result.margin = from(whole.margin, offset);
            classifier.classify(request.scan(number), request.options(), result);
        }
    } catch (const clutter::Error& error) {
        raise(error);
    }
}

// Why a gate of one scan has its class: the members of clutter_explanation, inputs as lists.
py::dict explain(const std::string& membership, const py::dict& fields, const py::dict& settings,
                 std::int64_t ray, std::int64_t gate) {
    Request request(fields, settings);
    clutter_explanation found = clutter_explanation();
    try {
        const py::gil_scoped_release release;
        found = request.open(membership).explain(request.scan(0), request.options(), ray, gate);
    } catch (const clutter::Error& error) {
        raise(error);
    }
    py::list inputs;
    for (const clutter_input_share& share : found.input) {
        inputs.append(py::make_tuple(share.value, share.precipitation, share.clutter,
                                     share.contribution, share.turning_value));
    }
    py::dict result;
    result["class"] = found.gate_class;
    result["inputs"] = found.inputs;
    result["deciding"] = found.deciding;
    result["turning"] = found.turning;
    result["margin"] = found.margin;
    result["probability"] = found.probability;
    result["neighbourhood"] = found.neighbourhood;
    result["shares"] = inputs;
    return result;
}

// Raises where the membership functions of the inputs cannot be used.
void checkMembership(const std::string& membership, std::uint32_t inputs) {
    try {
        const py::gil_scoped_release release;
        const clutter::Classifier classifier(membership, inputs);
    } catch (const clutter::Error& error) {
        raise(error);
    }
}

// The inputs in the order of their bits: name, field, unit, whether it is a texture.
py::list inputTable() {
    py::list table;
    for (std::int32_t index = 0; index < CLUTTER_INPUT_COUNT; ++index) {
        const clutter_input_info* info = nullptr;
        if (clutter_get_input(index, &info) != CLUTTER_OK) {
            break;
        }
        table.append(
            py::make_tuple(info->name, info->field, info->unit, info->bit, info->texture != 0));
    }
    return table;
}

}  // namespace

void bindClassify(py::module_& module) {
    const auto result = [](const char* name) { return py::arg(name).noconvert(); };
    module.def("classify", &classify, py::arg("membership"), py::arg("fields"), py::arg("settings"),
               result("classes"), result("probability"), result("margin"));
    module.def("explain", &explain, py::arg("membership"), py::arg("fields"), py::arg("settings"),
               py::arg("ray"), py::arg("gate"));
    module.def("check_membership", &checkMembership, py::arg("membership"), py::arg("inputs"));
    module.def("input_table", &inputTable);
}

}  // namespace python

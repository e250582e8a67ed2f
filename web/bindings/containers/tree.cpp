/* tree.cpp - asks the page's object `hdf5Tree`. */
#include "containers/tree.h"

#include <emscripten/val.h>

namespace studio::tree {
namespace {

using emscripten::val;

val page() {
    return val::global("hdf5Tree");
}

std::vector<std::string> textsOf(const val& list) {
    return emscripten::vecFromJSArray<std::string>(list);
}

std::vector<double> numbersOf(const val& list) {
    return emscripten::convertJSArrayToNumberVector<double>(list);
}

}  // namespace

Kind kindOf(const std::string& path) {
    return static_cast<Kind>(page().call<int>("kindOf", path));
}

std::vector<std::string> children(const std::string& path) {
    return textsOf(page().call<val>("children", path));
}

std::optional<Attribute> attribute(const std::string& path, const std::string& name) {
    const val found = page().call<val>("attribute", path, name);
    if (found.isNull()) {
        return std::nullopt;
    }
    Attribute attribute;
    attribute.isText = found["isText"].as<bool>();
    attribute.text = found["text"].as<std::string>();
    attribute.numbers = numbersOf(found["numbers"]);
    return attribute;
}

Data describe(const std::string& path) {
    const val found = page().call<val>("describe", path);
    Data data;
    data.type = static_cast<Data::Type>(found["type"].as<int>());
    data.bytes = found["bytes"].as<int>();
    for (const double length : numbersOf(found["shape"])) {
        data.shape.push_back(static_cast<std::size_t>(length));
    }
    data.dimensions = textsOf(found["dimensions"]);
    data.scale = found["scale"].as<std::string>();
    return data;
}

std::vector<double> numbers(const std::string& path) {
    return numbersOf(page().call<val>("numbers", path));
}

std::vector<std::string> texts(const std::string& path) {
    return textsOf(page().call<val>("texts", path));
}

}  // namespace studio::tree

/* tree.h - an HDF5 file that the page has opened: groups, attributes and data by their path. */
#ifndef WEB_BINDINGS_CONTAINERS_TREE_H
#define WEB_BINDINGS_CONTAINERS_TREE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace studio::tree {

enum class Kind { kNone, kGroup, kData };

struct Attribute {
    bool isText = false;
    std::string text;             // of a text, or the first of several
    std::vector<double> numbers;  // of anything else
};

struct Data {
    enum class Type { kOther, kText, kSigned, kUnsigned, kFloat } type = Type::kOther;
    int bytes = 0;  // of one value
    std::vector<std::size_t> shape;
    std::vector<std::string> dimensions;  // names of the scales along it; "" without one
    std::string scale;                    // its own name as a scale; "" when it is none
};

/* Of paths from the root without a slash at their beginning; "" is the file itself. */
Kind kindOf(const std::string& path);
std::vector<std::string> children(const std::string& path);
std::optional<Attribute> attribute(const std::string& path, const std::string& name);
Data describe(const std::string& path);

/* All values, as doubles: raw values of up to 32 bits are exact in them. */
std::vector<double> numbers(const std::string& path);
std::vector<std::string> texts(const std::string& path);

}  // namespace studio::tree

#endif

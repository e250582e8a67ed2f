/* Attributes of ODIM_H5 by level. The groups are opened once a level, not once an attribute. */
#include "scan/formats/odim/odim_levels.h"

namespace scan::odim {

Level::Level(const hdf5::Group& group, const Level* outer)
    : group_(&group),
      outer_(outer),
      folders_{group.find("what"), group.find("where"), group.find("how")} {}

std::optional<double> Level::number(Folder folder, const char* name) const {
    const std::vector<double> values = numbers(folder, name);
    if (values.empty()) {
        return std::nullopt;
    }
    return values.front();
}

std::optional<std::string> Level::text(Folder folder, const char* name) const {
    for (const Level* level = this; level; level = level->outer_) {
        const std::optional<hdf5::Group>& group = level->at(folder);
        std::optional<std::string> text = group ? group->text(name) : std::nullopt;
        if (text) {
            return text;
        }
    }
    return std::nullopt;
}

std::vector<double> Level::numbers(Folder folder, const char* name) const {
    for (const Level* level = this; level; level = level->outer_) {
        const std::optional<hdf5::Group>& group = level->at(folder);
        std::vector<double> values = group ? group->numbers(name) : std::vector<double>();
        if (!values.empty()) {
            return values;
        }
    }
    return {};
}

std::optional<double> Level::firstNumber(Folder folder,
                                         std::initializer_list<const char*> names) const {
    for (const char* name : names) {
        const std::optional<double> value = number(folder, name);
        if (value) {
            return value;
        }
    }
    return std::nullopt;
}

Packing packingOf(const Level& data) {
    Packing packing;
    packing.gain = data.number(Folder::kWhat, "gain").value_or(1);
    packing.offset = data.number(Folder::kWhat, "offset").value_or(0);
    packing.nodata = data.number(Folder::kWhat, "nodata");
    packing.undetect = data.number(Folder::kWhat, "undetect");
    return packing;
}

}  // namespace scan::odim

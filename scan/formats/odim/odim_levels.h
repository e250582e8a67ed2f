/*
 * odim_levels.h - attributes of ODIM_H5 where they may be: nearest to the data first, then in the
 * dataset, then for the whole file.
 */
#ifndef SCAN_FORMATS_ODIM_ODIM_LEVELS_H
#define SCAN_FORMATS_ODIM_ODIM_LEVELS_H

#include <optional>
#include <string>
#include <vector>

#include "scan/formats/hdf5/hdf5_group.h"
#include "scan/formats/reading/packing.h"

namespace scan::odim {

/* The three groups of attributes that every level may have. */
enum class Folder { kWhat, kWhere, kHow };

class Level {
  public:
    /* outer: the level around it; null for the file. */
    Level(const hdf5::Group& group, const Level* outer);

    [[nodiscard]] const hdf5::Group& group() const { return *group_; }

    /* Nearest level that has a usable one; nothing if there is none. */
    [[nodiscard]] std::optional<double> number(Folder folder, const char* name) const;
    [[nodiscard]] std::optional<std::string> text(Folder folder, const char* name) const;
    [[nodiscard]] std::vector<double> numbers(Folder folder, const char* name) const;

    /* The same, of the names that releases of the format gave it. */
    [[nodiscard]] std::optional<double> firstNumber(Folder folder,
                                                    std::initializer_list<const char*> names) const;

  private:
    [[nodiscard]] const std::optional<hdf5::Group>& at(Folder folder) const {
        return folders_[static_cast<int>(folder)];
    }

    const hdf5::Group* group_;
    const Level* outer_;
    std::optional<hdf5::Group> folders_[3];
};

/* gain, offset, nodata and undetect of data. */
Packing packingOf(const Level& data);

}  // namespace scan::odim

#endif

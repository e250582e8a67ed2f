/*
 * hdf5_group.h - groups of an HDF5 file: what they contain and their attributes, whatever the type
 * that a writer chose for them.
 */
#ifndef SCAN_FORMATS_HDF5_HDF5_GROUP_H
#define SCAN_FORMATS_HDF5_HDF5_GROUP_H

#include <optional>
#include <string>
#include <vector>

#include "scan/formats/hdf5/hdf5_handle.h"

namespace scan::hdf5 {

/* An open group. path is what messages call it: "" for the file itself, "dataset1/where". */
class Group {
  public:
    Group(Handle handle, std::string path) : handle_(std::move(handle)), path_(std::move(path)) {}

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] hid_t id() const { return handle_.get(); }

    /* "dataset1/where/nbins"; name alone in the file itself. */
    [[nodiscard]] std::string pathOf(const std::string& name) const {
        return path_.empty() ? name : path_ + "/" + name;
    }

    /* Names of what is in the file itself: links to other files are left out. */
    [[nodiscard]] std::vector<std::string> children() const;

    /* Whether there is something of that name in the file itself. */
    [[nodiscard]] bool holds(const std::string& name) const;

    /* Nothing if there is no such group in this file. */
    [[nodiscard]] std::optional<Group> find(const std::string& name) const;

    [[nodiscard]] bool has(const std::string& attribute) const;

    /* Attributes. Numbers may be integers or floats of any size and order, scalars or arrays, or
     * text that holds numbers ("0.5" or "0:1,1:2"). Nothing where there is none that can be used.
     */
    [[nodiscard]] std::optional<double> number(const std::string& attribute) const;
    [[nodiscard]] std::vector<double> numbers(const std::string& attribute) const;

    /* Fixed or variable length, ended or filled by NUL or blanks. */
    [[nodiscard]] std::optional<std::string> text(const std::string& attribute) const;

  private:
    Handle handle_;
    std::string path_;
};

/* The NetCDF library walks through all groups and would not come back from a circle. Throws
 * std::runtime_error for a group with more than one link. */
void requireTree(const Group& root);

/* Opens a file to be read; throws std::runtime_error if it is not an HDF5 file or damaged. */
Group openFile(const std::string& path);

/* All numbers in a text, whatever is between them. */
std::vector<double> numbersIn(const std::string& text);

}  // namespace scan::hdf5

#endif

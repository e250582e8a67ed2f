/*
 * nc_group.h - variables and attributes of a NetCDF file or group, whatever types a writer chose.
 */
#ifndef SCAN_FORMATS_NETCDF_NC_GROUP_H
#define SCAN_FORMATS_NETCDF_NC_GROUP_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "scan/formats/reading/packing.h"
#include "scan/formats/reading/value_budget.h"

namespace scan::netcdf {

/* Types as NetCDF numbers them. */
enum Type {
    kByte = 1,
    kChar = 2,
    kShort = 3,
    kInt = 4,
    kFloat = 5,
    kDouble = 6,
    kUnsignedByte = 7,
    kUnsignedShort = 8,
    kString = 12
};

/* Neither text nor a type of the file's own. */
bool isNumber(int type);

/* A variable's name, type and shape. */
struct Variable {
    int id = -1;
    std::string name;
    int type = 0;
    std::vector<std::string> dimensions;
    std::vector<std::size_t> shape;

    [[nodiscard]] std::size_t count() const;
};

bool isNumeric(const Variable& variable);

/* Open until its last group is destroyed. */
struct OpenFile {
    OpenFile() = default;
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile();

    int id = 0;
    bool open = false;
    std::vector<std::uint8_t> bytes;  // of a file in memory
};

class Group {
  public:
    /* The groups directly in it, by name. */
    [[nodiscard]] std::vector<Group> groups() const;
    [[nodiscard]] std::optional<Group> find(const std::string& name) const;
    [[nodiscard]] const std::string& name() const { return name_; }

    /* In the order of the file. */
    [[nodiscard]] std::vector<Variable> variables() const;
    [[nodiscard]] std::optional<Variable> variable(const std::string& name) const;

    /* An attribute of a variable, or of the group where there is none. */
    [[nodiscard]] std::optional<double> number(const std::string& attribute,
                                               const Variable* variable = nullptr) const;
    [[nodiscard]] std::string text(const std::string& attribute,
                                   const Variable* variable = nullptr) const;

    /* All values of a variable, unpacked, NaN where missing; empty if there is no such variable of
     * numbers. Throws std::runtime_error when it cannot be read, or is larger than the budget. */
    [[nodiscard]] std::vector<double> numbers(const std::string& variable,
                                              ValueBudget& budget) const;

    /* The first of them that there is. */
    [[nodiscard]] std::optional<double> firstNumber(std::initializer_list<const char*> variables,
                                                    ValueBudget& budget) const;

    /* The texts of a variable of characters or strings, one for each of its first dimension. */
    [[nodiscard]] std::vector<std::string> texts(const std::string& variable,
                                                 ValueBudget& budget) const;

    /* Values of a variable, decoded as packing says. */
    [[nodiscard]] std::vector<float> values(const Variable& variable, const Packing& packing,
                                            ValueBudget& budget) const;

    /* scale_factor, add_offset, _FillValue (or the default of the type), missing_value, _Undetect.
     */
    [[nodiscard]] Packing packingOf(const Variable& variable) const;

  private:
    friend Group openFile(const std::string& path);
    Group(std::shared_ptr<const OpenFile> file, int id, std::string name)
        : file_(std::move(file)), id_(id), name_(std::move(name)) {}
    void check(int status, const std::string& what) const;
    std::vector<double> rawNumbers(const Variable& variable) const;

    std::shared_ptr<const OpenFile> file_;  // closes the file when the last group of it goes
    int id_;
    std::string name_;
};

/* Throws std::runtime_error if it is not a NetCDF file, or damaged. */
Group openFile(const std::string& path);

}  // namespace scan::netcdf

#endif

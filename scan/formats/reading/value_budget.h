/*
 * value_budget.h - how many values a file may declare: its size decides, before memory is asked
 * for.
 */
#ifndef SCAN_FORMATS_READING_VALUE_BUDGET_H
#define SCAN_FORMATS_READING_VALUE_BUDGET_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace scan {

/* Compressed sweeps without an echo reach about 100 values a byte; radar files do not hold more
 * than this. */
constexpr std::uint64_t kMaxValuesPerByte = 256;
constexpr std::uint64_t kAlwaysAllowedValues = 1 << 22;

class ValueBudget {
  public:
    explicit ValueBudget(std::uint64_t fileBytes)
        : left_(kAlwaysAllowedValues > fileBytes * kMaxValuesPerByte
                    ? kAlwaysAllowedValues
                    : fileBytes * kMaxValuesPerByte) {}

    /* rows x columns more; throws std::runtime_error, which names what declares them. */
    void take(std::uint64_t rows, std::uint64_t columns, const std::string& what) {
        const bool affordable = columns == 0 || rows <= left_ / columns;
        if (!affordable) {
            throw std::runtime_error(what + " declares " + std::to_string(rows) + " x " +
                                     std::to_string(columns) +
                                     " values, more than a file of this size can hold");
        }
        left_ -= rows * columns;
    }

  private:
    std::uint64_t left_;
};

}  // namespace scan

#endif

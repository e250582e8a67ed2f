/*
 * scan_rows.h - a caller's fields as rows of floats, and the state of every gate.
 */
#ifndef CLUTTER_CLASSIFIER_SCAN_ROWS_H
#define CLUTTER_CLASSIFIER_SCAN_ROWS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "classifier/scan/request.h"
#include "driver/scan_inputs.h"
#include "dsp/windows/row_source.h"

namespace clutter::classifier {

/* A field of floats or doubles. Rays past the last one repeat it. */
class FieldRows : public dsp::RowSource {
  public:
    FieldRows(const FieldView& field, const Request& request);

    const float* row(int ray) override;
    bool present() const { return field_.values != nullptr; }

  private:
    FieldView field_;
    int rays_;
    int held_ = -1;
    std::vector<float> narrowed_;  // of doubles
};

/* All fields of a request. */
class ScanRows {
  public:
    explicit ScanRows(const Request& request);

    driver::ScanFields fields();
    FieldRows& field(int f) { return rows_[static_cast<std::size_t>(f)]; }
    FieldRows& snr() { return snr_; }

  private:
    std::vector<FieldRows> rows_;
    FieldRows snr_;
};

/* States of a gate. */
constexpr std::uint8_t kEcho = 0;
constexpr std::uint8_t kNoise = 1;
constexpr std::uint8_t kNotMeasured = 2;

/* The state of every gate; as rows, the noise class for gates that are not classified. Rays past
 * the last one hold nothing to classify. */
class GateStates : public dsp::RowSource {
  public:
    GateStates(const Request& request, ScanRows& rows);

    const float* row(int ray) override;
    const std::uint8_t* states(int ray) const;

  private:
    void findNoise(const Request& request, ScanRows& rows);
    void findNotMeasured(const Request& request, ScanRows& rows);
    std::uint8_t* statesOf(int ray);

    dsp::PolarShape shape_;
    std::vector<std::uint8_t> states_;
    std::vector<float> row_;
};

}  // namespace clutter::classifier

#endif

/*
 * row_source.h - a polar field ray by ray, however it is stored.
 */
#ifndef CLUTTER_DSP_WINDOWS_ROW_SOURCE_H
#define CLUTTER_DSP_WINDOWS_ROW_SOURCE_H

#include <cstddef>

namespace clutter::dsp {

struct PolarShape {
    int ngates;
    int nrays;

    std::ptrdiff_t offset(int ray) const { return static_cast<std::ptrdiff_t>(ray) * ngates; }
};

class RowSource {
  public:
    virtual ~RowSource() = default;

    /* The ngates values of a ray, valid until the next call. */
    virtual const float* row(int ray) = 0;
};

/* A field in one flat block. */
class FieldRows : public RowSource {
  public:
    FieldRows(const float* field, PolarShape shape) : field_(field), shape_(shape) {}

    const float* row(int ray) override { return field_ + shape_.offset(ray); }

  private:
    const float* field_;
    PolarShape shape_;
};

}  // namespace clutter::dsp

#endif

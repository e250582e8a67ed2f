/*
 * membership.h - piecewise-linear membership functions: the file, the points, and fast evaluation.
 */
#ifndef CLUTTER_FUZZY_MEMBERSHIP_H
#define CLUTTER_FUZZY_MEMBERSHIP_H

#include <vector>

namespace clutter::fuzzy {

/* The points of a membership file, in file order. */
struct Points {
    std::vector<double> x;
    std::vector<double> y;

    int size() const { return static_cast<int>(x.size()); }
};

enum class ReadResult { kRead, kNotOpened, kNoPoints };

/* Reads white-space separated pairs of abscissa and degree; a trailing single token is ignored. */
ReadResult readMembershipFile(const char* path, Points& points);

/* Interpolation by the definition: the first point strictly above x, found by walking. */
double interpolate(const double* px, const double* py, int np, double x);

/*
 * Evaluates many values at once, with the same bits as interpolate(). For a single-precision x, "x
 * is below point k" is a single-precision comparison with the smallest float not below the point,
 * so the segment is found by counting comparisons, lanes side by side.
 */
class Table {
  public:
    explicit Table(Points points);

    static constexpr int kMaxElements = 256;

    void evaluate(const float* x, double* degrees, int n) const;

    /* The two halves of evaluate() for ascending tables and n <= kMaxElements: tables with the same
     * abscissas share the first. */
    void findSegments(const float* x, int* segments, int n) const;
    void follow(const int* segments, const float* x, double* degrees, int n) const;

    const Points& points() const { return points_; }
    /* Abscissas ascend, so that the first point above x is also the only one to look for. */
    bool ascending() const { return ascending_; }
    /* For each point, the smallest float that is not below it. */
    const std::vector<float>& thresholds() const { return thresholds_; }

  private:
    Points points_;
    bool ascending_;
    std::vector<float> thresholds_;
    std::vector<double> rise_;  // y[i] - y[i-1]
    std::vector<double> run_;   // x[i] - x[i-1]
};

}  // namespace clutter::fuzzy

#endif

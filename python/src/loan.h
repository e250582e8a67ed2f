// loan.h - scans in numpy arrays as the library's field records.
#ifndef PYTHON_LOAN_H
#define PYTHON_LOAN_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "arrays.h"
#include "clutterclassifier/Cpluvek.h"

namespace python {

// rays x gates of the scans in an array of two dimensions or more, none of them empty.
struct Size {
    explicit Size(const py::array& field)
        : nrays(static_cast<int>(field.shape(field.ndim() - 2))),
          ngates(static_cast<int>(field.shape(field.ndim() - 1))),
          scans(static_cast<std::size_t>(field.size()) / gates()) {}
    std::size_t gates() const {
        return static_cast<std::size_t>(nrays) * static_cast<std::size_t>(ngates);
    }
    int nrays, ngates;
    std::size_t scans;
};

// Lends the values of arrays to the records of a context, which would own them: takes them back.
class Loan {
  public:
    explicit Loan(const Size& size, float spacing, float elevationRad = 0)
        : size_(size), spacing_(spacing), elevation_(elevationRad) {}
    ~Loan() {
        for (Cpluvek* record : records_) {
            record->data = nullptr;
        }
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;

    void lend(const OptionalArray<float>& field, Cpluvek& record) { lend(values(field), record); }

    // For records that are only read. Without values the record stays absent.
    void lend(float* data, Cpluvek& record) {
        if (!data) {
            return;
        }
        records_.push_back(&record);
        describe(record);
        record.data = data;
    }

    // For records that a stage writes to: the record owns a copy.
    void copy(const float* data, Cpluvek& record) const {
        describe(record);
        record.data = new float[size_.gates()];
        std::copy_n(data, size_.gates(), record.data);
    }

  private:
    void describe(Cpluvek& record) const {
        record.nrays = size_.nrays;
        record.ngates = size_.ngates;
        record.gatesize = spacing_;
        record.coordtype = 0;
        record.firstgate = 0;
        record.colorflag = 255;
        record.recindex = 0;
        record.nrecords = 1;
        record.nsets = 1;
        record.angles = new float[static_cast<std::size_t>(size_.nrays) + 1]();
        record.angles[0] = elevation_;
    }

    Size size_;
    float spacing_;
    float elevation_;
    std::vector<Cpluvek*> records_;
};

}  // namespace python

#endif

/*
 * hdf5_handle.h - ownership of the HDF5 library's identifiers, and its error messages kept off the
 * terminal.
 */
#ifndef SCAN_FORMATS_HDF5_HDF5_HANDLE_H
#define SCAN_FORMATS_HDF5_HDF5_HANDLE_H

#include <hdf5.h>

#include <utility>

namespace scan::hdf5 {

/* Owns one reference to an identifier of any kind; negative: none. */
class Handle {
  public:
    Handle() = default;
    explicit Handle(hid_t id) : id_(id) {}
    Handle(Handle&& other) noexcept : id_(std::exchange(other.id_, -1)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(id_, other.id_);
        return *this;
    }
    ~Handle() {
        if (id_ >= 0) {
            H5Idec_ref(id_);
        }
    }

    [[nodiscard]] hid_t get() const { return id_; }
    explicit operator bool() const { return id_ >= 0; }

  private:
    hid_t id_ = -1;
};

/* While it lives, the library prints none of its own errors on this thread. */
class QuietErrors {
  public:
    QuietErrors() {
        H5Eget_auto2(H5E_DEFAULT, &function_, &data_);
        H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;
    ~QuietErrors() { H5Eset_auto2(H5E_DEFAULT, function_, data_); }

  private:
    H5E_auto2_t function_ = nullptr;
    void* data_ = nullptr;
};

}  // namespace scan::hdf5

#endif

/**
 * @file classifier.hpp
 * @brief Owners for the C interface of classifier.h, header-only, C++11 and later.
 */
#ifndef CLUTTERCLASSIFIER_CLASSIFIER_HPP
#define CLUTTERCLASSIFIER_CLASSIFIER_HPP

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include "clutterclassifier/classifier.h"

namespace clutter {

/** A failed call of the handle: its status, and the reason as text. */
class Error : public std::runtime_error {
  public:
    Error(clutter_status status, const std::string& text)
        : std::runtime_error(text), status_(status) {}

    clutter_status status() const { return status_; }

  private:
    clutter_status status_;
};

/** A view of contiguous values that somebody else owns: of any container with data() and size(). */
template <class T>
class Span {
  public:
    Span() : data_(nullptr), size_(0) {}
    Span(T* data, std::size_t size) : data_(data), size_(size) {}

    template <class Container, class = typename std::enable_if<std::is_convertible<
                                   decltype(std::declval<Container&>().data()), T*>::value>::type>
    Span(Container& values) : data_(values.data()), size_(values.size()) {}

    T* data() const { return data_; }
    std::size_t size() const { return size_; }

  private:
    T* data_;
    std::size_t size_;
};

/**
 * @brief One scan of contiguous fields: fill in what there is, then give it to a Classifier.
 *
 * The spans must outlive the classification. All other members of clutter_scan are a
 * public member of `c`.
 */
class Scan {
  public:
    Scan(std::size_t rays, std::size_t gates) : c(), cells_(rays * gates) {
        c.size = sizeof c;
        c.rays = static_cast<std::int64_t>(rays);
        c.gates = static_cast<std::int64_t>(gates);
    }

    Scan& zhh(Span<const float> values) { return take(c.zhh, values); }
    Scan& zdr(Span<const float> values) { return take(c.zdr, values); }
    Scan& phidp(Span<const float> values) { return take(c.phidp, values); }
    Scan& rhohv(Span<const float> values) { return take(c.rhohv, values); }
    Scan& velocity(Span<const float> values) { return take(c.velocity, values); }
    Scan& ldr(Span<const float> values) { return take(c.ldr, values); }
    Scan& likelihood(Span<const float> values) { return take(c.likelihood, values); }
    Scan& width(Span<const float> values) { return take(c.width, values); }
    Scan& snr(Span<const float> values) { return take(c.snr, values); }

    /** How noise and echo are separated without an SNR field: see clutter_scan. */
    Scan& noise(double gateSpacingM, double radarConstantDb, double minSnrDb) {
        c.gate_spacing_m = gateSpacingM;
        c.radar_constant_db = radarConstantDb;
        c.min_snr_db = minSnrDb;
        return *this;
    }

    std::size_t cells() const { return cells_; }

    clutter_scan c;

  private:
    Scan& take(clutter_field& field, Span<const float> values) {
        if (values.size() != cells_) {
            throw Error(CLUTTER_INVALID_ARGUMENT, "a field does not have rays x gates values");
        }
        field.values = values.data();
        field.stride = 0;
        field.type = CLUTTER_FLOAT;
        return *this;
    }

    std::size_t cells_;
};

/** Owns a handle. Throws Error where the C functions return another status than CLUTTER_OK. */
class Classifier {
  public:
    /** As clutter_create(). */
    explicit Classifier(const std::string& directory, std::uint32_t inputs = CLUTTER_ALL_INPUTS,
                        std::uint32_t flags = 0)
        : handle_(nullptr) {
        clutter_message message;
        check(clutter_create(directory.c_str(), inputs, flags, &handle_, &message), message);
    }

    ~Classifier() { clutter_destroy(handle_); }
    Classifier(Classifier&& other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    Classifier& operator=(Classifier&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    Classifier(const Classifier&) = delete;
    Classifier& operator=(const Classifier&) = delete;

    /** As clutter_reset(). */
    void reset(const std::string& directory, std::uint32_t inputs = CLUTTER_ALL_INPUTS,
               std::uint32_t flags = 0) {
        clutter_message message;
        check(clutter_reset(handle_, directory.c_str(), inputs, flags, &message), message);
    }

    /** As clutter_classify(). */
    void classify(const clutter_scan& scan, const clutter_options& options,
                  const clutter_result& result) const {
        clutter_message message;
        check(clutter_classify(handle_, &scan, &options, &result, &message), message);
    }

    /** Classes of a scan, and where asked for the probability of precipitation. */
    void classify(const Scan& scan, Span<std::uint8_t> classes,
                  Span<float> probability = Span<float>()) const {
        clutter_options options = clutter_options();
        options.size = sizeof options;
        classify(scan, options, classes, probability);
    }

    /** The same with options. */
    void classify(const Scan& scan, const clutter_options& options, Span<std::uint8_t> classes,
                  Span<float> probability = Span<float>()) const {
        if (classes.size() != scan.cells() ||
            (probability.size() != 0 && probability.size() != scan.cells())) {
            throw Error(CLUTTER_INVALID_ARGUMENT, "a result does not have rays x gates values");
        }
        clutter_result result = clutter_result();
        result.size = sizeof result;
        result.classes = classes.data();
        result.probability = probability.data();
        classify(scan.c, options, result);
    }

    /** As clutter_explain(). */
    clutter_explanation explain(const clutter_scan& scan, const clutter_options& options,
                                std::int64_t ray, std::int64_t gate) const {
        clutter_explanation explanation = clutter_explanation();
        explanation.size = sizeof explanation;
        clutter_message message;
        check(clutter_explain(handle_, &scan, &options, ray, gate, &explanation, &message),
              message);
        return explanation;
    }

    /** The handle, for the C functions. Stays the owner's. */
    const clutter_classifier* handle() const { return handle_; }

  private:
    static void check(clutter_status status, const clutter_message& message) {
        if (status != CLUTTER_OK) throw Error(status, message.text);
    }

    clutter_classifier* handle_;
};

/**
 * @brief Sends the calling thread's messages of the library to a sink while it lives.
 *
 * Restores the sink that was there before. Owners of one thread end in the reverse order of their
 * beginning, in that thread.
 */
class MessageSink {
  public:
    /** Drops the messages. */
    MessageSink() : MessageSink(&MessageSink::drop, nullptr) {}

    /** Sends them to a function, as clutter_set_message_sink() does. */
    MessageSink(clutter_message_sink sink, void* context) : sink_(nullptr), context_(nullptr) {
        clutter_get_message_sink(&sink_, &context_);
        clutter_set_message_sink(sink, context);
    }

    ~MessageSink() { clutter_set_message_sink(sink_, context_); }
    MessageSink(const MessageSink&) = delete;
    MessageSink& operator=(const MessageSink&) = delete;

  private:
    static void drop(void*, const char*) {}

    clutter_message_sink sink_;
    void* context_;
};

/**
 * @brief Makes the calling thread's random draws repeatable while it lives, see clutter_set_seed().
 *
 * At its end the thread has no seed, also where it had one before.
 */
class Seed {
  public:
    explicit Seed(std::uint32_t seed) { clutter_set_seed(&seed); }
    ~Seed() { clutter_set_seed(nullptr); }
    Seed(const Seed&) = delete;
    Seed& operator=(const Seed&) = delete;
};

}  // namespace clutter

#endif

/**
 * @file classifier.h
 * @brief Classification by a handle: how sure each class is, and why.
 *
 * Plain C (C99 and later) and C++ (C++11 and later); classifier.hpp has owners for C++.
 *
 * Every function returns a status, results go through pointers, no exception leaves, and nothing is
 * printed. On any status but CLUTTER_OK the outputs are as they were, except the message.
 *
 * A classifier holds the membership functions of a directory, read and checked once. It does not
 * change afterwards: any number of threads may classify with it at once, with the same results as
 * one. Classifiers from different directories are independent of each other.
 *
 *     clutter_classifier* classifier = NULL;
 *     clutter_message message;
 *     if (clutter_create(directory, CLUTTER_TEXTURES, 0, &classifier, &message) != CLUTTER_OK)
 *         fprintf(stderr, "%s\n", message.text);
 *
 *     clutter_scan scan = {0};
 *     scan.size = sizeof scan;
 *     scan.rays = 360; scan.gates = 1000;
 *     scan.zhh.values = zhh; scan.phidp.values = phidp;
 *     scan.gate_spacing_m = 250; scan.radar_constant_db = 40; scan.min_snr_db = 10;
 *
 *     clutter_result result = {0};
 *     result.size = sizeof result;
 *     result.classes = classes; result.probability = probability;
 *     clutter_classify(classifier, &scan, NULL, &result, &message);
 *     clutter_destroy(classifier);
 *
 * Structs begin with their size and may grow at their end. Set them to zero and then the size: zero
 * is the default of every other member.
 */
#ifndef CLUTTERCLASSIFIER_CLASSIFIER_H
#define CLUTTERCLASSIFIER_CLASSIFIER_H

#include <stddef.h>
#include <stdint.h>

#include "clutterclassifier/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Result of a function. */
typedef enum clutter_status {
    CLUTTER_OK = 0,               /**< done */
    CLUTTER_INVALID_ARGUMENT = 1, /**< a null pointer, or a value that makes no sense */
    CLUTTER_TOO_LARGE = 2,        /**< sizes beyond what can be counted or held */
    CLUTTER_NO_MEMORY = 3,        /**< an allocation failed */
    CLUTTER_NOT_READ = 4,         /**< a directory or membership file that cannot be read */
    CLUTTER_MALFORMED = 5         /**< a membership file whose contents make no sense */
} clutter_status;

/** A phrase that describes a status, or says that the status is unknown. Never null. */
CLUTTERCLASSIFIER_EXPORT const char* clutter_status_text(int status);

/** Why the last call failed: which file, line or argument, and the reason. Empty after CLUTTER_OK,
 * always terminated, cut where it does not fit. */
typedef struct clutter_message {
    char text[1024];
} clutter_message;

/** Class codes of gates. */
enum {
    CLUTTER_PRECIPITATION = 0, /**< or undecided */
    CLUTTER_NOISE = 3,
    CLUTTER_GROUND = 5,
    CLUTTER_SEA = 6,           /**< only with clutter_options.all_clutter */
    CLUTTER_TURBINE = 7,       /**< wind turbines; only with clutter_options.all_clutter */
    CLUTTER_NOT_MEASURED = 255 /**< only with clutter_options.nan_is_not_measured */
};

/** Inputs of the fuzzy system, as bits of a sum. Input i has the bit 1 << i. */
enum {
    CLUTTER_ZHH_TEXTURE = 1,   /**< texture of horizontal reflectivity */
    CLUTTER_ZDR_TEXTURE = 2,   /**< texture of differential reflectivity */
    CLUTTER_PHIDP_TEXTURE = 4, /**< texture of differential phase */
    CLUTTER_RHOHV_TEXTURE = 8, /**< texture of the co-polar correlation coefficient */
    CLUTTER_VELOCITY = 16,     /**< Doppler velocity */
    CLUTTER_LDR = 32,          /**< linear depolarisation ratio */
    CLUTTER_LIKELIHOOD = 64,   /**< clutter likelihood, 0..1 */
    CLUTTER_RHOHV = 128,       /**< co-polar correlation coefficient */
    CLUTTER_WIDTH = 256,       /**< spectrum width */
    CLUTTER_TEXTURES = 15,     /**< the four textures */
    CLUTTER_ALL_INPUTS = 511
};

/** Number of inputs, and the other values of clutter_result.deciding. */
enum {
    CLUTTER_INPUT_COUNT = 9,
    CLUTTER_BY_NEIGHBOURHOOD = 9, /**< the neighbouring gates */
    CLUTTER_BY_NONE = 255         /**< noise, not measured, or evenly balanced */
};

/** One input of the fuzzy system. */
typedef struct clutter_input_info {
    const char* name;  /**< "zhh-texture", ..., "vel", ... */
    const char* field; /**< "zhh", "zdr", "pdp", "rhv", "vel", "ldr", "pdf", "wid" */
    const char* tag;   /**< of the membership files cal_mf_TAG_*.dat; null: needs no file */
    const char* unit;
    uint32_t bit;    /**< CLUTTER_ZHH_TEXTURE, ... */
    int32_t texture; /**< 1: the texture of the field; 0: its values */
    double low;      /**< usual range of the values */
    double high;
} clutter_input_info;

/**
 * @brief Describes an input.
 * @param index 0 to CLUTTER_INPUT_COUNT - 1
 * @param info  receives a pointer to constant data
 * @return CLUTTER_OK, or CLUTTER_INVALID_ARGUMENT for any other index or a null pointer
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_get_input(int32_t index,
                                                          const clutter_input_info** info);

/** Membership functions, read and checked. Opaque. */
typedef struct clutter_classifier clutter_classifier;

/** Flag of clutter_create(): also read the functions of sea clutter and wind turbines. */
enum { CLUTTER_WITH_ALL_CLUTTER = 1 };

/**
 * @brief Reads the membership functions of a directory.
 *
 * Each file must be a regular file of pairs of abscissa and degree, separated by white space:
 * finite numbers, abscissas that do not descend, degrees of at least 0, at least one pair.
 *
 * @param directory  with or without its trailing separator
 * @param inputs     sum of the inputs that classifications may use; 0: CLUTTER_ALL_INPUTS
 * @param flags      0 or CLUTTER_WITH_ALL_CLUTTER
 * @param classifier receives the classifier, to be given to clutter_destroy()
 * @param message    may be null
 * @return CLUTTER_OK, CLUTTER_INVALID_ARGUMENT, CLUTTER_NO_MEMORY, CLUTTER_NOT_READ or
 *         CLUTTER_MALFORMED
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_create(const char* directory, uint32_t inputs,
                                                       uint32_t flags,
                                                       clutter_classifier** classifier,
                                                       clutter_message* message);

/**
 * @brief Reads other membership functions into a classifier, or the same files again.
 *
 * On failure the classifier keeps what it had. No other thread may use it meanwhile. Arguments and
 * results as those of clutter_create().
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_reset(clutter_classifier* classifier,
                                                      const char* directory, uint32_t inputs,
                                                      uint32_t flags, clutter_message* message);

/** Frees a classifier; null is allowed. Returns CLUTTER_OK. */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_destroy(clutter_classifier* classifier);

/** Type of a field's values: CLUTTER_FLOAT or CLUTTER_DOUBLE. */
enum { CLUTTER_FLOAT = 0, CLUTTER_DOUBLE = 1 };
typedef int32_t clutter_type;

/** One field of a scan: gate g of ray r at values[r * stride + g]. Doubles are rounded to floats.
 */
typedef struct clutter_field {
    const void* values; /**< null: the field is absent */
    ptrdiff_t stride;   /**< elements from one ray to the next, at least gates; 0: gates */
    clutter_type type;  /**< CLUTTER_FLOAT or CLUTTER_DOUBLE */
} clutter_field;

/**
 * @brief One scan, or a sector of one. The caller owns all arrays.
 *
 * Which gates are noise is decided by the first of these that is given: `noise`; `snr` with
 * min_snr_db; `zhh` with min_snr_db, gate_spacing_m and radar_constant_db (SNR = Z - 20 log10(range
 * in km) + constant; gate g is g spacings away, gate 0 one). A gate whose ratio is below the
 * minimum is noise; one whose ratio is NaN is not.
 */
typedef struct clutter_scan {
    size_t size;              /**< sizeof(clutter_scan) */
    int64_t rays;             /**< at least 1 */
    int64_t gates;            /**< at least 1 */
    clutter_field zhh;        /**< horizontal reflectivity, dBZ */
    clutter_field zdr;        /**< differential reflectivity, dB */
    clutter_field phidp;      /**< differential phase, degrees */
    clutter_field rhohv;      /**< co-polar correlation coefficient */
    clutter_field velocity;   /**< Doppler velocity, m/s */
    clutter_field ldr;        /**< linear depolarisation ratio, dB */
    clutter_field likelihood; /**< clutter likelihood, 0..1 */
    clutter_field width;      /**< spectrum width, m/s */
    clutter_field snr;        /**< signal-to-noise ratio, dB */
    const uint8_t* noise;     /**< not 0: the gate is noise */
    ptrdiff_t noise_stride;   /**< as clutter_field.stride */
    double gate_spacing_m;
    double radar_constant_db;
    double min_snr_db;
} clutter_scan;

/** How to classify. Zero is the default of every member but the size. */
typedef struct clutter_options {
    size_t size;     /**< sizeof(clutter_options) */
    uint32_t inputs; /**< sum of inputs to use: each must have been read and its field be given;
                          0: every input of which both is true */
    int32_t
        texture_gates; /**< size of the texture's window, both odd; both 0: 5 gates and 3 rays */
    int32_t texture_rays;
    int32_t neighbourhood_gates; /**< size of the neighbourhood, both odd, at most
                                      CLUTTER_MAX_NEIGHBOURHOOD; both 0: none, gate by gate */
    int32_t neighbourhood_rays;
    int32_t sector;              /**< 0: the last ray is next to the first; 1: it is not */
    int32_t nan_is_not_measured; /**< see clutter_classify() */
    int32_t all_clutter; /**< 1: separate sea clutter and wind turbines from ground clutter */
} clutter_options;

enum { CLUTTER_MAX_NEIGHBOURHOOD = 101 };

/**
 * @brief Results to write: arrays of rays x gates that the caller owns, null where not asked for.
 *
 * They must not overlap each other or the scan.
 */
typedef struct clutter_result {
    size_t size;      /**< sizeof(clutter_result) */
    ptrdiff_t stride; /**< elements from one ray to the next in every array; 0: gates */
    uint8_t* classes; /**< CLUTTER_PRECIPITATION, ... */
    float* margin;    /**< natural logarithm of the strength of precipitation over that of clutter;
                           positive is precipitation */
    float* probability; /**< of precipitation: 1 / (1 + exp(-margin)) */
    uint8_t*
        deciding; /**< index of the input that contributes most to the class, or CLUTTER_BY_* */
    float* contributions[CLUTTER_INPUT_COUNT]; /**< of each input: logarithm of its degree in
                                                    precipitation over that in clutter */
} clutter_result;

/**
 * @brief Classifies a scan.
 *
 * Gate by gate, a class's strength is the product of the degrees of all inputs in use, and the
 * strongest class wins; where all are equally strong the class is precipitation. Without options
 * the classes are those of the entry point clutterclassifier(), bit for bit.
 *
 * **Margin.** ln(strength of precipitation / strength of clutter), correct to a relative 1e-5
 * wherever both strengths are normal numbers; with all_clutter the strongest kind of clutter
 * counts. Where a strength is 0 the margin is infinite, where both are 0 it is 0. It is NaN for
 * gates that are noise or not measured, and where a degree is NaN (a likelihood that is NaN; such a
 * gate is clutter, as the entry point has it). Probability and contributions follow the same rules.
 *
 * **Neighbourhood.** With a window of gates x rays the margin is the mean of the textures' share of
 * the margin over the window, plus the share of the other inputs at the gate itself; the margin's
 * sign decides. The window holds gates that are classified (no noise, nothing not measured); it is
 * cut at the first and the last gate of a ray; rays wrap around a closed circle and are cut in a
 * sector; rays of a window that is wider than the scan count again. A member's share is limited to
 * -700..700, and left out where it is NaN; without any member the textures contribute 0. A
 * neighbour is never the reason for a class of a gate that is noise. `contributions` are those of
 * the gate itself, so that the margin minus their sum is the neighbourhood's share (as long as they
 * are finite: else the gate's textures count as far as they do for a member).
 *
 * **NaN.** By default a NaN of any field has the entry point's meaning: an echo (in the
 * reflectivity), a NaN texture in every window that holds it, and for every table its last degree.
 * With nan_is_not_measured a gate is not measured where the reflectivity is NaN, or without
 * reflectivity the SNR, or without both every field in use: it has the class CLUTTER_NOT_MEASURED
 * and is left out of all windows. A NaN input of a measured gate is left out of the products there.
 *
 * @param classifier from clutter_create()
 * @param scan    the fields
 * @param options null: defaults
 * @param result  arrays to write
 * @param message may be null
 * @return CLUTTER_OK, CLUTTER_INVALID_ARGUMENT, CLUTTER_TOO_LARGE or CLUTTER_NO_MEMORY
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_classify(const clutter_classifier* classifier,
                                                         const clutter_scan* scan,
                                                         const clutter_options* options,
                                                         const clutter_result* result,
                                                         clutter_message* message);

/** One input in the explanation of a gate. */
typedef struct clutter_input_share {
    double value;         /**< the field's value, or its texture */
    double precipitation; /**< degree in precipitation */
    double clutter;       /**< degree in clutter (the strongest kind) */
    double contribution;  /**< ln(precipitation / clutter) */
    double turning_value; /**< nearest value that would turn the verdict between precipitation and
                               clutter if nothing else changed; NaN: no value would */
} clutter_input_share;

/** Why a gate has its class. */
typedef struct clutter_explanation {
    size_t size;        /**< sizeof(clutter_explanation), set by the caller */
    int32_t gate_class; /**< CLUTTER_PRECIPITATION, ... */
    uint32_t inputs;    /**< sum of the inputs in use; 0 where the gate is not classified */
    int32_t deciding;   /**< as in clutter_result */
    int32_t turning;    /**< the input whose change to its turning value is the smallest, as a
                             share of its usual range; -1: none */
    double margin;      /**< NaN where the gate is not classified */
    double probability;
    double neighbourhood; /**< the neighbourhood's share of the margin; 0 without one */
    clutter_input_share input[CLUTTER_INPUT_COUNT]; /**< all NaN for inputs not in use */
} clutter_explanation;

/**
 * @brief Explains the class of one gate.
 *
 * Arguments and results as those of clutter_classify(); ray and gate count from 0.
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_explain(
    const clutter_classifier* classifier, const clutter_scan* scan, const clutter_options* options,
    int64_t ray, int64_t gate, clutter_explanation* explanation, clutter_message* message);

/**
 * @brief Receives one message of the library, with its line break.
 *
 * @param context the context given with the sink
 * @param text    the message, cut after 8,191 characters; valid during the call only
 *
 * Called in the thread that runs the operation. It must return normally (no exception, no longjmp).
 */
typedef void (*clutter_message_sink)(void* context, const char* text);

/**
 * @brief Sends the messages that operations print in the calling thread to a sink.
 *
 * The entry point and some operations of the classes print a line on standard output. With a sink,
 * the calling thread's lines go there instead; other threads, and the host's own output, are
 * not affected. A new thread starts without a sink.
 *
 * @param sink    null: standard output again
 * @param context passed on to the sink; may be null
 * @return CLUTTER_OK
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_set_message_sink(clutter_message_sink sink,
                                                                 void* context);

/**
 * @brief The calling thread's sink and its context, to be restored later.
 *
 * @param sink    receives the sink, null where the thread has none
 * @param context receives its context
 * @return CLUTTER_OK, or CLUTTER_INVALID_ARGUMENT when a pointer is null
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_get_message_sink(clutter_message_sink* sink,
                                                                 void** context);

/**
 * @brief Makes the random draws of operations in the calling thread repeatable.
 *
 * The search for attenuation coefficients and the toolkit's noise draw random numbers from the C
 * library's rand(), seeded from the clock. With a seed, the calling thread draws from a generator
 * of its own: the same operations give the same results after the same seed, whatever other threads
 * do. A new thread starts without one.
 *
 * @param seed null: rand() and the clock again
 * @return CLUTTER_OK
 */
CLUTTERCLASSIFIER_EXPORT clutter_status clutter_set_seed(const uint32_t* seed);

#ifdef __cplusplus
}
#endif

#endif

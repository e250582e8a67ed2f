/**
 * @file export.h
 * The export macro: what carries it is public, everything else is hidden.
 */
#ifndef CLUTTERCLASSIFIER_EXPORT_H
#define CLUTTERCLASSIFIER_EXPORT_H

#if defined(__GNUC__) || defined(__clang__)
#define CLUTTERCLASSIFIER_EXPORT __attribute__((visibility("default")))
#else
#define CLUTTERCLASSIFIER_EXPORT
#endif

#endif

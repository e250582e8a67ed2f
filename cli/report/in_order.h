/*
 * in_order.h - work on several files at once, and its output in the order of the files.
 *
 * Each worker is a process of its own: no library has to be safe for threads, a file that ends a
 * worker ends no other's work, and the memory in use is that of as many files as there are workers.
 */
#ifndef CLI_REPORT_IN_ORDER_H
#define CLI_REPORT_IN_ORDER_H

#include <cstddef>
#include <functional>
#include <string>

namespace cli {

/* What the work on one file left. */
struct Finished {
    std::string result;          // what the work returned
    std::string output, errors;  // what it printed
    std::string failure;         // why there is no result; empty: there is one
};

using Work = std::function<std::string(std::size_t)>;
using Finish = std::function<void(std::size_t, const Finished&)>;

/* As many workers as the machine has processors for this program. */
int processorCount();

/* Calls work(i) for each i < count in up to so many workers, and here finish(i, ...) in the order
 * of i, as soon as all before it have finished. A wrong call in a worker is thrown here as
 * CLI::ValidationError. */
void runInOrder(std::size_t count, int workers, const Work& work, const Finish& finish);

/* Prints what a worker printed. */
void printAll(const Finished& finished);

}  // namespace cli

#endif

/*
 * Membership functions of a directory: one table a file, shared by every classification.
 */
#include "classifier/functions/membership_set.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>
#include <vector>

#include "base/kernel.h"
#include "classifier/functions/refusal.h"
#include "classifier/functions/strict_table.h"
#include "fuzzy/classifiers/precipitation_clutter.h"
#include "fuzzy/engine/quick_verdict.h"

namespace clutter::classifier {
namespace {

/* The directory with its separator. */
std::string checkedDirectory(const std::string& directory) {
    struct stat state = {};
    if (stat(directory.c_str(), &state) != 0) {
        throw Refusal(CLUTTER_NOT_READ, directory + ": " + std::generic_category().message(errno));
    }
    if (!S_ISDIR(state.st_mode)) {
        throw Refusal(CLUTTER_NOT_READ, directory + ": is not a directory");
    }
    return directory.back() == '/' ? directory : directory + '/';
}

/* The likelihood is its own degree of clutter of every kind. */
fuzzy::Shape likelihoodShape(int c) {
    return c == kPrecipitationClass ? fuzzy::Shape::kComplement : fuzzy::Shape::kSame;
}

InputFunctions readFunctions(const std::string& directory, int input, int classes) {
    InputFunctions functions;
    functions.sameAbscissas = fuzzy::kInputs[input].tag != nullptr;
    for (int c = 0; c < classes; ++c) {
        const auto at = static_cast<std::size_t>(c);
        fuzzy::Term& term = functions.terms[at];
        if (fuzzy::kInputs[input].tag == nullptr) {
            term.shape = likelihoodShape(c);
            continue;
        }
        auto& table = functions.tables[at];
        table = std::make_unique<fuzzy::Table>(
            readStrictTable(fuzzy::membershipFile(directory, input, c)));
        term.shape = fuzzy::Shape::kTable;
        term.table = table.get();
        functions.sameAbscissas =
            functions.sameAbscissas && table->points().x == functions.tables[0]->points().x;
    }
    functions.cells = fuzzy::RatioCells::make(functions.terms[0],
                                              functions.terms[std::size_t{kPrecipitationClass}]);
    if (functions.tables[0]) {
        functions.rows =
            StrengthRows::make(*functions.tables[0], *functions.tables[kPrecipitationClass]);
    }
    return functions;
}

/* The likelihood is its own degree of clutter. */
void multiplyLikelihood(const float* x, bool leaveOutNan, ClassPair* products, int n) {
    for (int j = 0; j < n; ++j) {
        const ClassPair degrees = {static_cast<double>(x[j]), static_cast<double>(1.0f - x[j])};
        const bool leftOut = leaveOutNan && !(x[j] == x[j]);
        products[j] *= leftOut ? ClassPair{1.0, 1.0} : degrees;
    }
}

}  // namespace

void InputFunctions::multiplyTwo(const float* x, bool leaveOutNan, ClassPair* products,
                                 int n) const {
    if (rows) {
        rows->multiply(x, leaveOutNan, products, n);
    } else {
        multiplyLikelihood(x, leaveOutNan, products, n);
    }
}

double InputFunctions::degree(int c, float x) const {
    double degree = 0.0;
    fuzzy::evaluateTerm(terms[static_cast<std::size_t>(c)], &x, &degree, 1);
    return degree;
}

void InputFunctions::evaluate(const float* x, int n, int classes, double* const* degrees) const {
    if (!sameAbscissas) {
        for (int c = 0; c < classes; ++c) {
            fuzzy::evaluateTerm(terms[static_cast<std::size_t>(c)], x, degrees[c], n);
        }
        return;
    }
    int segments[fuzzy::Table::kMaxElements];
    tables[0]->findSegments(x, segments, n);
    for (int c = 0; c < classes; ++c) {
        tables[static_cast<std::size_t>(c)]->follow(segments, x, degrees[c], n);
    }
}

MembershipSet::MembershipSet(const std::string& directory, unsigned inputs, int classes)
    : inputs_(inputs), classes_(classes) {
    const std::string path = checkedDirectory(directory);
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((inputs & (1u << i)) == 0) {
            continue;
        }
        functions_[static_cast<std::size_t>(i)] = readFunctions(path, i, classes);
    }
}

fuzzy::RuleBase MembershipSet::rules(unsigned inputs, int classes) const {
    fuzzy::Rules rules;
    rules.ninputs = fuzzy::kInputCount;
    rules.weights.assign(fuzzy::kInputCount, 1.0);
    for (int c = 0; c < classes; ++c) {
        rules.classes.push_back(static_cast<float>(c));
        for (int i = 0; i < fuzzy::kInputCount; ++i) {
            const bool used = (inputs & (1u << i)) != 0;
            rules.terms.push_back(used ? input(i).terms[static_cast<std::size_t>(c)]
                                       : fuzzy::Term{});
        }
    }
    std::vector<fuzzy::InputCells> cells;
    for (int i = 0; i < fuzzy::kInputCount; ++i) {
        if ((inputs & (1u << i)) != 0) {
            cells.push_back({i, input(i).cells});
        }
    }
    auto quick = classes == 2 ? fuzzy::QuickVerdict::make(std::move(cells)) : nullptr;
    return fuzzy::RuleBase(std::move(rules), std::move(quick));
}

}  // namespace clutter::classifier

/*
 * Terms of a rule base: from an engine's functions to shapes and tables.
 */
#include "fuzzy/engine/term.h"

#include <algorithm>

namespace clutter::fuzzy {

void evaluateTerm(const Term& term, const float* x, double* degrees, int n) {
    switch (term.shape) {
        case Shape::kSame:
            return evaluateSame(x, degrees, n);
        case Shape::kComplement:
            return evaluateComplement(x, degrees, n);
        case Shape::kGaussian:
            return evaluateGaussian(term.params.data(), x, degrees, n);
        case Shape::kGaussian2s:
            return evaluateGaussian2s(term.params.data(), x, degrees, n);
        case Shape::kOnes:
            return evaluateOnes(degrees, n);
        case Shape::kTrapezoidal:
            return evaluateTrapezoid(term.params.data(), x, degrees, n);
        case Shape::kTable:
            return term.table->evaluate(x, degrees, n);
    }
}

bool resolveTerm(const Cfuzzy& engine, int input, int mf, TableSet& tables, Term& term,
                 std::string& missing) {
    term = Term{};
    if (mf < 0 || engine.data[input] == nullptr) {
        return true;
    }
    const Cvars& variable = engine.inputs[input];
    if (mf >= variable.nmfs) {
        missing = std::string(variable.name) + "[" + std::to_string(mf) + "]";
        return false;
    }
    const Cmfs& function = variable.mfs[mf];
    term.shape = shapeOf(function.type);
    std::copy_n(function.params, 5, term.params.begin());
    if (term.shape != Shape::kTable) {
        return true;
    }
    std::unique_ptr<Table>& table = tables[{input, mf}];
    if (table == nullptr) {
        Points points;
        if (readMembershipFile(function.type, points) != ReadResult::kRead) {
            missing = function.type;
            return false;
        }
        table = std::make_unique<Table>(std::move(points));
    }
    term.table = table.get();
    return true;
}

}  // namespace clutter::fuzzy

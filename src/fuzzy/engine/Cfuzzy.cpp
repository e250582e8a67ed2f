/*
 * The public engine: filling its tables, evaluation through a rule base, membership files.
 */
#include "clutterclassifier/Cfuzzy.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>

#include "base/array.h"
#include "base/text.h"
#include "fuzzy/engine/engine.h"
#include "fuzzy/engine/term.h"
#include "fuzzy/functions/membership.h"

using namespace clutter;

namespace {

constexpr const char* kPathTooLong = "/dev/null/path-too-long";

std::unique_ptr<Cvars[]> makeVariables(int wanted, int functions) {
    const auto count = static_cast<std::size_t>(std::max(wanted, 0));
    std::unique_ptr<Cvars[]> variables(new Cvars[count]);
    std::for_each_n(variables.get(), count,
                    [functions](Cvars& variable) { variable.CreateMFSspace(functions); });
    return variables;
}

struct VariableList {
    Cvars* first = nullptr;
    int count = 0;

    Cvars* at(int index) const { return index >= 0 && index < count ? first + index : nullptr; }
};

/* The variables of a kind; first stays null for an unknown one. */
VariableList variablesOf(const Cfuzzy& engine, const char* kind) {
    if (kind == nullptr) {
        return {};
    }
    if (std::strcmp(kind, "input") == 0) {
        return {engine.inputs, engine.ninputs};
    }
    if (std::strcmp(kind, "output") == 0) {
        return {engine.outputs, engine.noutputs};
    }
    return {};
}

}  // namespace

Cfuzzy::Cfuzzy(int ninputs_, int nmfs_in, int noutputs_, int nmfs_out)
    : weights(nullptr),
      combination(1),
      inputs(nullptr),
      outputs(nullptr),
      ninputs(std::max(ninputs_, 0)),
      noutputs(std::max(noutputs_, 0)),
      nrules(0),
      rules(nullptr),
      data(nullptr) {
    // Owned until all of them are there: the destructor does not run after a failed allocation.
    const auto count = static_cast<std::size_t>(ninputs);
    auto freshInputs = makeVariables(ninputs_, nmfs_in);
    auto freshOutputs = makeVariables(noutputs_, nmfs_out);
    std::unique_ptr<double[]> freshWeights(new double[count]);
    std::fill_n(freshWeights.get(), ninputs, 1.0);
    data = new float*[count]();
    inputs = freshInputs.release();
    outputs = freshOutputs.release();
    weights = freshWeights.release();
}

Cfuzzy::~Cfuzzy() {
    base::release(inputs);
    base::release(outputs);
    base::release(rules);
    base::release(data);
    base::release(weights);
}

int Cfuzzy::FillVars(int index, const char* kind, const char* name, float minval, float maxval) {
    const VariableList variables = variablesOf(*this, kind);
    if (variables.first == nullptr) {
        return -2;
    }
    Cvars* variable = variables.at(index);
    if (variable == nullptr) {
        return -1;
    }
    base::copyText(variable->name, name);
    variable->minval = minval;
    variable->maxval = maxval;
    return 1;
}

int Cfuzzy::Fillmfs(int var, int mf, const char* kind, const char* name, const char* type,
                    float* params) {
    const VariableList variables = variablesOf(*this, kind);
    if (variables.first == nullptr) {
        return -2;
    }
    Cvars* variable = variables.at(var);
    if (variable == nullptr) {
        return -1;
    }
    if (mf < 0 || mf >= variable->nmfs) {
        return -3;
    }
    Cmfs& function = variable->mfs[mf];
    base::copyText(function.name, name);
    // A path that does not fit must not be found under its shortened name: it becomes a path below
    // a device, which never exists.
    const bool fits = type != nullptr && std::strlen(type) < sizeof function.type;
    base::copyText(function.type, fits ? type : kPathTooLong);
    if (params != nullptr) {
        std::copy_n(params, 5, function.params);
    }
    return 1;
}

int Cfuzzy::Fillrules(short* table, int count) {
    const std::size_t rows = static_cast<std::size_t>(table != nullptr ? std::max(count, 0) : 0);
    const std::size_t total = rows * static_cast<std::size_t>(ninputs + noutputs);
    std::unique_ptr<short[]> fresh(new short[total]);
    std::copy_n(table, total, fresh.get());
    base::adopt(rules, std::move(fresh));
    nrules = static_cast<int>(rows);
    return 1;
}

int Cfuzzy::AddressDataPointers(int index, float* values) {
    if (index < 0 || index >= ninputs) {
        return -1;
    }
    data[index] = values;
    return 1;
}

int Cfuzzy::Evaluate(float* out, int n) {
    if (out == nullptr) {
        return 0;
    }
    fuzzy::RuleBase ruleBase(*this);
    if (!ruleBase.announceComplete()) {
        return 0;
    }
    if (n >= fuzzy::RuleBase::kMinMany) {
        ruleBase.prepareForMany();
    }
    fuzzy::UndecidedElements undecided(ninputs);
    ruleBase.classify(data, n, out, undecided);
    return 1;
}

int Cfuzzy::Evalmfs(int var, short mf, double* degrees, int n) {
    if (var < 0 || var >= ninputs || degrees == nullptr) {
        return 0;
    }
    fuzzy::TableSet tables;
    fuzzy::Term term;
    std::string missing;
    if (!fuzzy::resolveTerm(*this, var, mf, tables, term, missing)) {
        return 0;
    }
    fuzzy::evaluateTerm(term, data[var], degrees, n);
    return 1;
}

int Cfuzzy::readmf(char* path, double** x, double** y, int& npoints) {
    if (path == nullptr || x == nullptr || y == nullptr) {
        return -1;
    }
    fuzzy::Points points;
    switch (fuzzy::readMembershipFile(path, points)) {
        case fuzzy::ReadResult::kNotOpened:
            return -1;
        case fuzzy::ReadResult::kNoPoints:
            return -2;
        case fuzzy::ReadResult::kRead:
            break;
    }
    auto freshX = base::duplicate(points.x);
    auto freshY = base::duplicate(points.y);
    npoints = points.size();
    *x = freshX.release();
    *y = freshY.release();
    return 1;
}

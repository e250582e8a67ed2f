/* Classification by its definition, gate by gate. */
#include "support/literal/classification.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <fstream>

namespace literal {
namespace {

int wrap(int ray, int nrays) {
    while (ray < 0) {
        ray += nrays;
    }
    while (ray >= nrays) {
        ray -= nrays;
    }
    return ray;
}

int clampGate(int gate, int ngates) {
    return gate < 0 ? 0 : gate >= ngates ? ngates - 1 : gate;
}

std::size_t at(int gate, int ray, int ngates) {
    return static_cast<std::size_t>(ray) * static_cast<std::size_t>(ngates) +
           static_cast<std::size_t>(gate);
}

float bell(float x, float sigma, float centre) {
    return -(x - centre) * (x - centre) / ((sigma + sigma) * sigma);
}

double trapezoid(const float* p, float x, double before) {
    const float eps = 1e-10f;
    if (p[2] > p[3] || p[1] > p[2] || p[0] > p[1]) {
        return -1.0;
    }
    if (x <= p[0] || x >= p[3]) {
        return eps;
    }
    if (p[0] < x && x < p[1]) {
        return (x - p[0]) * ((1 - eps) / (p[1] - p[0])) + eps;
    }
    if (p[2] < x && x < p[3]) {
        return (x - p[3]) * ((1 - eps) / (p[2] - p[3])) + eps;
    }
    return before;
}

}  // namespace

void meanStd(const float* x, int n, float& mean, float& std) {
    float sum = 0.0f;
    for (int i = 0; i < n; ++i) {
        sum = sum + x[i];
    }
    mean = sum / static_cast<float>(n);
    float squares = 0.0f;
    for (int i = 0; i < n; ++i) {
        squares = squares + (x[i] - mean) * (x[i] - mean);
    }
    const float variance = squares / static_cast<float>(n);
    std = static_cast<float>(std::sqrt(static_cast<double>(variance)));
}

void plainTexture(const float* in, int ngates, int nrays, float* out, int size) {
    const int h = size / 2;
    for (int i = 0; i < ngates * nrays; ++i) {
        out[i] = 0.0f;
    }
    if (ngates < size || nrays < size) {
        return;
    }
    std::vector<float> scratch(static_cast<std::size_t>(size * size));
    for (int r = h; r < nrays - h; ++r) {
        for (int g = h; g < ngates - h; ++g) {
            for (int dr = -h; dr <= h; ++dr) {
                for (int dg = -h; dg <= h; ++dg) {
                    scratch[static_cast<std::size_t>((dr + h) * size + dg + h)] =
                        in[at(g + dg, r + dr, ngates)];
                }
            }
            float mean = 0.0f;
            meanStd(scratch.data(), size * size, mean, out[at(g, r, ngates)]);
        }
    }
    for (int g = 0; g < ngates; ++g) {
        for (int k = 0; k < h; ++k) {
            out[at(g, k, ngates)] = out[at(g, h, ngates)];
            out[at(g, nrays - 1 - k, ngates)] = out[at(g, nrays - 1 - h, ngates)];
        }
    }
    for (int r = 0; r < nrays; ++r) {
        for (int k = 0; k < h; ++k) {
            out[at(k, r, ngates)] = out[at(h, r, ngates)];
            out[at(ngates - 1 - k, r, ngates)] = out[at(ngates - 1 - h, r, ngates)];
        }
    }
}

void maskedTexture(const float* in, const float* mask, int ngates, int nrays, float* out,
                   int wgates, int wrays) {
    const int hg = wgates / 2, hr = wrays / 2;
    std::vector<float> scratch(static_cast<std::size_t>(wgates * wrays));
    for (int i = 0; i < ngates * nrays; ++i) {
        out[i] = 0.0f;
    }
    if (ngates < wgates) {
        return;
    }
    for (int r = 0; r < nrays; ++r) {
        for (int g = hg; g < ngates - hg; ++g) {
            int count = 0;
            if (!(mask[at(g, r, ngates)] == 0.0f)) {
                continue;
            }
            for (int dr = -hr; dr <= hr; ++dr) {
                for (int dg = -hg; dg <= hg; ++dg) {
                    const std::size_t member = at(g + dg, wrap(r + dr, nrays), ngates);
                    if (mask[member] == 0.0f) {
                        scratch[static_cast<std::size_t>(count++)] = in[member];
                    }
                }
            }
            float mean = 0.0f;
            meanStd(scratch.data(), count, mean, out[at(g, r, ngates)]);
        }
        for (int k = 0; k < hg; ++k) {
            out[at(k, r, ngates)] = out[at(hg, r, ngates)];
            out[at(ngates - 1 - k, r, ngates)] = out[at(ngates - 1 - hg, r, ngates)];
        }
    }
}

double interpolate(const std::vector<double>& px, const std::vector<double>& py, float x) {
    std::size_t i = 0;
    while (i < px.size() && !(px[i] > static_cast<double>(x))) {
        ++i;
    }
    if (i == 0) {
        return py[0];
    }
    if (i == px.size()) {
        return py.back();
    }
    return (static_cast<double>(x) - px[i]) * (py[i] - py[i - 1]) / (px[i] - px[i - 1]) + py[i];
}

void degreesOf(const Function& function, const float* x, double* degrees, int n) {
    const float* p = function.params;
    for (int i = 0; i < n; ++i) {
        if (function.shape == "same") {
            degrees[i] = x[i];
        } else if (function.shape == "complement") {
            degrees[i] = 1 - x[i];
        } else if (function.shape == "gaussian") {
            degrees[i] = std::exp(static_cast<double>(bell(x[i], p[0], p[1])));
        } else if (function.shape == "gaussian2s") {
            const bool left = x[i] < p[1];
            degrees[i] = !left && !(x[i] > p[3])
                             ? 1.0
                             : std::exp(static_cast<double>(bell(x[i], p[0], p[1])));
        } else if (function.shape == "ones") {
            degrees[i] = 1.0;
        } else if (function.shape == "trapezoidal") {
            degrees[i] = trapezoid(p, x[i], degrees[i]);
        } else {
            degrees[i] = interpolate(function.px, function.py, x[i]);
        }
    }
}

void classify(const RuleBase& base, const std::vector<const float*>& inputs, float* out, int n) {
    const std::size_t count = static_cast<std::size_t>(n);
    std::vector<double> degrees(count, 1.0);
    std::vector<std::vector<double>> strengths;
    for (const std::vector<int>& rule : base.rules) {
        std::vector<double> strength(count, 1.0);
        for (std::size_t i = 0; i < rule.size(); ++i) {
            if (rule[i] < 0 || inputs[i] == nullptr) {
                degrees.assign(count, 1.0);
            } else {
                degreesOf(base.functions[i][static_cast<std::size_t>(rule[i])], inputs[i],
                          degrees.data(), n);
            }
            for (std::size_t j = 0; j < count; ++j) {
                strength[j] = base.product ? strength[j] * degrees[j]
                                           : strength[j] + base.weights[i] * degrees[j];
            }
        }
        strengths.push_back(strength);
    }
    for (std::size_t j = 0; j < count; ++j) {
        if (base.rules.empty()) {
            out[j] = -1.0f;
            continue;
        }
        double best = strengths[0][j];
        float winner = base.classes[0];
        bool allEqual = true;
        for (std::size_t k = 0; k < strengths.size(); ++k) {
            if (!(strengths[k][j] == best)) {
                allEqual = false;
            }
            if (strengths[k][j] > best) {
                best = strengths[k][j];
                winner = base.classes[k];
            }
        }
        out[j] = allEqual ? -1.0f : winner;
    }
}

void isolatedPixels(const float* cls, float* flags, int ngates, int nrays, int wgates, int wrays,
                    int maxcount) {
    std::vector<float> scratch(static_cast<std::size_t>(ngates * nrays), 0.0f);
    for (int r = 0; r < nrays; ++r) {
        for (int g = 0; g < ngates; ++g) {
            int count = 0;
            for (int dr = -(wrays / 2); dr <= wrays / 2; ++dr) {
                for (int dg = -(wgates / 2); dg <= wgates / 2; ++dg) {
                    const std::size_t member =
                        at(clampGate(g + dg, ngates), wrap(r + dr, nrays), ngates);
                    if (cls[member] == 0.0f) {
                        ++count;
                    }
                }
            }
            const std::size_t own = at(g, r, ngates);
            if (count <= maxcount && cls[own] == 0.0f) {
                scratch[own] = 1.0f;
            }
        }
    }
    for (std::size_t i = 0; i < scratch.size(); ++i) {
        flags[i] = scratch[i];
    }
}

Function readFunction(const std::string& path) {
    Function function;
    function.shape = path;
    std::ifstream file(path);
    std::string x, y;
    while (file >> x >> y) {
        function.px.push_back(std::atof(x.c_str()));
        function.py.push_back(std::atof(y.c_str()));
    }
    return function;
}

std::vector<double> classifyScan(const Scan& scan, const std::string& membershipDirectory) {
    const int ngates = scan.ngates, nrays = scan.nrays, n = ngates * nrays;
    const std::size_t count = static_cast<std::size_t>(n);
    std::vector<float> fields[7];
    for (int f = 0; f < 7; ++f) {
        if (scan.fields[f] != nullptr) {
            fields[f].assign(scan.fields[f], scan.fields[f] + n);
        }
    }
    const float gateSize = static_cast<float>(static_cast<int>(scan.gateSize));
    std::vector<float> cls(count, 0.0f);
    for (int r = 0; r < nrays; ++r) {
        for (int g = 0; g < ngates; ++g) {
            const float km =
                g > 0 ? static_cast<float>(g) * gateSize / 1000.0f : gateSize / 1000.0f;
            const float loss = static_cast<float>(20.0 * std::log10(static_cast<double>(km)));
            const float snr =
                fields[0][at(g, r, ngates)] - loss + static_cast<float>(scan.params[0]);
            if (static_cast<float>(scan.params[1]) > snr) {
                cls[at(g, r, ngates)] = 3.0f;
            }
        }
    }
    const int mask = static_cast<short>(static_cast<int>(scan.params[2]));
    const char* tags[9] = {"sZhh", "sZdr", "sPdp", "sRhv", "Vel", "LDR", "", "Rhv", "Wid"};
    const int sources[9] = {0, 1, 2, 3, 4, 5, 6, 3, -1};
    RuleBase base;
    base.functions.resize(9);
    base.rules = {std::vector<int>(9, -1), std::vector<int>(9, -1)};
    base.classes = {0.0f, 1.0f};
    std::vector<float> compact[9];
    std::vector<const float*> inputs(9, nullptr);
    bool any = false;
    for (int i = 0; i < 9; ++i) {
        const std::size_t input = static_cast<std::size_t>(i);
        if ((mask & (1 << i)) == 0 || sources[i] < 0 || fields[sources[i]].empty()) {
            continue;
        }
        std::vector<float> values = fields[sources[i]];
        if (i < 4) {
            maskedTexture(fields[i].data(), cls.data(), ngates, nrays, values.data(), 5, 3);
        }
        for (std::size_t j = 0; j < count; ++j) {
            if (cls[j] != 3.0f) {
                compact[i].push_back(values[j]);
            }
        }
        inputs[input] = compact[i].data();
        base.rules[0][input] = 0;
        base.rules[1][input] = 1;
        const std::string stem = membershipDirectory + "cal_mf_" + tags[i];
        base.functions[input] = {readFunction(stem + "_clutter.dat"),
                                 readFunction(stem + "_precipi.dat")};
        if (i == 6) {
            base.functions[input] = {Function{"same", {}, {}, {}},
                                     Function{"complement", {}, {}, {}}};
        }
        any = true;
    }
    std::size_t echoes = 0;
    for (const float c : cls) {
        echoes += c != 3.0f ? 1 : 0;
    }
    std::vector<float> verdicts(echoes, 1.0f);
    if (any && echoes > 0) {
        classify(base, inputs, verdicts.data(), static_cast<int>(echoes));
    }
    std::size_t k = 0;
    std::vector<double> out;
    for (const float c : cls) {
        out.push_back(c == 3.0f ? 3.0 : any && verdicts[k] == 0.0f ? 5.0 : 0.0);
        if (c != 3.0f) {
            ++k;
        }
    }
    return out;
}

}  // namespace literal

/* Corrections along rays by their definitions. */
#include "support/literal/corrections.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace literal {
namespace {

std::size_t index(int i) {
    return static_cast<std::size_t>(i);
}

}  // namespace

float initialPhase(const float* phidp, const std::vector<int>& qualifies, int ngates, int nrays,
                   int nwin) {
    float sum = 0.0f;
    int count = 0;
    for (int r = 0; r < nrays; ++r) {
        for (int g = 0; g < ngates - nwin; ++g) {
            bool all = true;
            for (int k = g; k < g + nwin; ++k) {
                all = all && qualifies[index(r * ngates + k)] == 1;
            }
            if (!all) {
                continue;
            }
            for (int k = g; k < g + nwin; ++k) {
                sum = sum + phidp[r * ngates + k];
            }
            count += nwin;
            break;
        }
    }
    if (static_cast<double>(static_cast<float>(count)) < 0.1 * nwin * nrays) {
        return 0.0f;
    }
    return sum / static_cast<float>(count);
}

void unfold(float* phidp, const float* cls, int ngates, int nrays) {
    for (int r = 0; r < nrays; ++r) {
        float* ray = phidp + r * ngates;
        const float* classes = cls + r * ngates;
        for (int g = 20; g < ngates - 20; ++g) {
            float before = 0.0f, after = 0.0f;
            int countBefore = 0, countAfter = 0;
            for (int k = g - 20; k <= g; ++k) {
                if (classes[g] == 0.0f) {
                    before = before + ray[k], ++countBefore;
                }
            }
            for (int k = g; k < g + 20; ++k) {
                if (classes[g] == 0.0f) {
                    after = after + ray[k], ++countAfter;
                }
            }
            if (countBefore < 5 || countAfter < 5) {
                continue;
            }
            const float jump =
                after / static_cast<float>(countAfter) - before / static_cast<float>(countBefore);
            if (!(std::fabs(jump) > 250.0f)) {
                continue;
            }
            for (int k = g; k < ngates; ++k) {
                if (classes[k] == 0.0f) {
                    ray[k] = ray[k] + 360.0f;
                }
            }
            break;
        }
    }
}

void attenuation(const AttenuationRay& ray, const Values& alpha, const Values& a, const Values& b,
                 int method, Values& ah, double& constraint) {
    const int n = ray.n();
    const double dr = ray.dr, dphi = ray.dphi;
    const Values& z = ray.z;
    ah.assign(z.size(), 0.0);
    double total = 0.0, sum = 0.0, last = 0.0;
    if (method == 0) {
        for (std::size_t g = 0; g < z.size(); ++g) {
            if (ray.mask[g] == 0.0) {
                total = total + 0.46 * b[g] * std::pow(z[g], b[g]) * dr;
            }
        }
    }
    for (int i = n - 1; (method == 0 || method == 1) && i >= 0; --i) {
        const std::size_t g = index(i);
        if (!(ray.mask[g] == 0.0)) {
            continue;
        }
        const double power = std::pow(z[g], b[g]);
        sum = sum + 0.46 * b[g] * power * dr;
        if (method == 0) {
            const double f = std::pow(10.0, 0.1 * b[g] * alpha[g] * dphi);
            ah[g] = power * (f - 1) / (total + (f - 1) * sum);
        } else {
            const double u = std::pow(10.0, -0.1 * alpha[g] * dphi);
            ah[g] = a[g] * power / (std::pow(u, b[g]) + a[g] * sum);
        }
    }
    sum = 0.0;
    for (std::size_t g = 0; (method == 1 || method == 2) && g < z.size(); ++g) {
        if (!(ray.mask[g] == 0.0)) {
            continue;
        }
        const double power = std::pow(z[g], b[g]);
        if (method == 1) {
            sum = sum + 0.46 * a[g] * b[g] * power * dr;
            last = std::pow(std::pow(10.0, -0.1 * alpha[g] * dphi), b[g]);
        } else {
            sum = sum + 0.46 * b[g] * a[g] * power * dr;
            ah[g] = a[g] * power / (1 - sum);
        }
    }
    if (method == 1) {
        constraint = sum + last;
    }
    for (int g = 3; method == 3 && g < n - 3; ++g) {
        bool all = true;
        for (int k = g - 3; k <= g + 3; ++k) {
            all = all && ray.mask[index(k)] == 0.0;
        }
        if (!all) {
            continue;
        }
        double& value = ah[index(g)];
        value =
            alpha[index(g)] * (ray.phidp[index(g + 3)] - ray.phidp[index(g - 3)]) / (2 * dr * 6);
        if (value < 0.0) {
            value = 0.0;
        }
    }
}

TrialResult evaluateTrial(const AttenuationRay& ray, double alpha, double a, double b, int method) {
    TrialResult result;
    for (std::size_t g = 0; g < ray.z.size(); ++g) {
        const bool tried = ray.select.empty() || ray.select[g] == 1.0;
        result.alpha.push_back(tried ? alpha : 0.073);
        result.a.push_back(tried ? a : 3e-05);
        result.b.push_back(tried ? b : 0.78);
    }
    double unused = 0.0;
    attenuation(ray, result.alpha, result.a, result.b, method, result.ah, unused);
    double phase = 0.0, distance = 0.0;
    int count = 0;
    for (std::size_t g = 0; g < ray.z.size(); ++g) {
        phase = phase + 2 * result.ah[g] * ray.dr / result.alpha[g];
        result.rebuilt.push_back(phase + ray.phi0);
        if (!(ray.mask[g] == 0.0)) {
            continue;
        }
        distance = distance + std::fabs(result.rebuilt[g] - ray.phidp[g]);
        ++count;
    }
    result.cost = distance / count;
    return result;
}

int bestTrial(const AttenuationRay& ray, const Values& alpha, const Values& a, const Values& b,
              int method) {
    int best = 0;
    double least = 0.0;
    for (std::size_t i = 0; i < alpha.size(); ++i) {
        const double cost = evaluateTrial(ray, alpha[i], a[i], b[i], method).cost;
        if (i == 0 || cost < least) {
            least = cost;
            best = static_cast<int>(i);
        }
    }
    return best;
}

bool measurePhase(AttenuationRay& ray) {
    const int n = ray.n();
    bool found = false;
    double end = 0.0;
    for (int g = 0; g < n - 20 && !found; ++g) {
        double sum = 0.0;
        found = true;
        for (std::size_t k = static_cast<std::size_t>(g); k < static_cast<std::size_t>(g) + 20;
             ++k) {
            found = found && ray.mask[k] == 0.0;
            sum = sum + ray.phidp[k];
        }
        ray.phi0 = sum / 20;
    }
    if (!found) {
        return false;
    }
    found = false;
    for (int g = n - 21; g >= 1 && !found; --g) {
        double sum = 0.0;
        found = true;
        for (std::size_t k = static_cast<std::size_t>(g) + 1; k <= static_cast<std::size_t>(g) + 20;
             ++k) {
            found = found && ray.mask[k] == 0.0;
            sum = sum + ray.phidp[k];
        }
        end = sum / 20;
    }
    ray.dphi = end - ray.phi0;
    return found;
}

float rainRate(const double* c, int alg, float dbz, float zdr, float kdp) {
    const double z = std::pow(10.0, 0.1 * static_cast<double>(dbz));
    const double ratio = std::pow(10.0, c[2] * static_cast<double>(zdr));
    const double k = static_cast<double>(kdp);
    const float zdr2 = zdr * zdr, zdr3 = zdr2 * zdr;
    double rain = 0.0;
    if (alg == 0) {
        rain = std::pow(z / c[0], 1 / c[1]);
    }
    if (alg == 1) {
        rain = c[0] * std::pow(z, c[1]) * ratio;
    }
    if (alg == 2) {
        rain = c[0] * std::pow(k, c[1]) * ratio;
    }
    if (alg == 3) {
        rain = c[0] * std::pow(k, c[1]);
    }
    if (alg == 4) {
        rain = std::pow(
            10.0, 0.1 * (static_cast<double>(dbz) -
                         (c[0] + c[1] * static_cast<double>(zdr) +
                          c[2] * static_cast<double>(zdr2) + c[3] * static_cast<double>(zdr3))));
    }
    return static_cast<float>(rain);
}

Values matchProfiles(const Values& zin, const Values& range, const Values& freezing,
                     double elevation, double beamwidth, const Values& profiles) {
    const double earth = 6.378e6, pi = 3.14159265358979323846;
    const volatile double half = 0.5;  // a power, not a root
    const auto heightOf = [&](double r, double e) {
        return std::pow(r * r + earth * earth + 2 * r * earth * std::sin(e), half) - earth;
    };
    Values angles, pattern;
    double sum = 0.0;
    const double k = 159.46 / (beamwidth * 180 / pi);
    for (int i = 0; i < 1000; ++i) {
        const double angle = (i * 0.01 - 5) * pi / 180;
        angles.push_back(angle);
        pattern.push_back(angle == 0 ? 1 : std::pow(std::sin(k * angle) / (k * angle), 4));
        sum = sum + pattern.back();
    }
    for (double& p : pattern) {
        p = p / sum;
    }
    Values out = zin;
    for (std::size_t i = 0; i < zin.size(); ++i) {
        const double h = heightOf(range[i], elevation);
        if (!(zin[i] > 1.0) || !(freezing[i] - 1000 < h) || !(h < freezing[i] + 1000)) {
            continue;
        }
        const int level = 600 - static_cast<int>((freezing[i] - h) / 7.5);
        const double rise = heightOf(range[i], elevation + beamwidth / 2) - h;
        const double thickness = std::ceil(rise / 7.5) * 7.5;
        const int nheights = static_cast<int>(2 * thickness / 7.5);
        Values power;
        sum = 0.0;
        for (int m = 0; m < nheights; ++m) {
            const double height = m * 7.5 - thickness;
            const double angle = std::asin(
                ((earth + height) * (earth + height) - earth * earth - range[i] * range[i]) /
                (2 * range[i] * earth));
            std::size_t at = 0;
            while (at < angles.size() && !(angles[at] > angle)) {
                ++at;
            }
            double p = pattern[999];
            if (at == 0) {
                p = pattern[0];
            } else if (at < 999) {
                p = pattern[at] + (angle - angles[at]) * (pattern[at] - pattern[at - 1]) /
                                      (angles[at] - angles[at - 1]);
            }
            power.push_back(p);
            sum = sum + p;
        }
        for (double& p : power) {
            p = p / sum;
        }
        const int first = level - nheights / 2;
        if (first < 0 || first + nheights > 1800) {
            continue;
        }
        double least = 0.0;
        int best = 0;
        for (int j = 0; j < 60; ++j) {
            double seen = 0.0;
            for (int m = 0; m < nheights; ++m) {
                seen = seen + profiles[index(1800 * j + first + m)] * power[index(m)];
            }
            const double difference = std::fabs(10 * std::log10(zin[i]) - 10 * std::log10(seen));
            if (j == 0 || difference < least) {
                least = difference;
                best = j;
            }
        }
        if (least < 1.0) {
            out[i] = profiles[index(1800 * best)];
        }
    }
    return out;
}

}  // namespace literal

/* labelled_scan.cpp - textures and labels, gate by gate. */
#include "scan/membership/labelled_scan.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include "clutterclassifier/CDSP.h"
#include "scan/fields/missing.h"
#include "scan/fields/oddities.h"

namespace scan {
namespace {

constexpr int kBesideGates = 2;
constexpr int kBesideRays = 1;

std::size_t at(const LabelledScan& scan, int ray, int gate) {
    return static_cast<std::size_t>(ray) * static_cast<std::size_t>(scan.gates) +
           static_cast<std::size_t>(gate);
}

/* The rays of a window, wrapped in a closed circle and cut in a sector. */
template <class Visit>
void forRays(const LabelledScan& scan, int ray, int half, Visit visit) {
    for (int r = ray - half; r <= ray + half; ++r) {
        if (r >= 0 && r < scan.rays) {
            visit(r);
        } else if (!scan.sector) {
            visit(((r % scan.rays) + scan.rays) % scan.rays);
        }
    }
}

std::vector<std::uint8_t> findEchoes(const Sweep& sweep, const ClassificationPlan& plan) {
    const Field& zhh = *plan.fields[Role::kZhh];
    std::vector<std::uint8_t> echo =
        gatesBelow(plan.noiseFloor.minSnrDb, plan.noiseFloor, sweep, zhh);
    for (std::size_t i = 0; i < echo.size(); ++i) {
        echo[i] = !isMissing(Role::kZhh, zhh.values[i]) && echo[i] == 0 ? 1 : 0;
    }
    return echo;
}

/* The field of an input as the classification takes it. */
std::vector<float> valuesOf(Role role, const Sweep& sweep, const ClassificationPlan& plan) {
    std::vector<float> values = plan.fields[role]->values;
    replaceMissing(role, values);
    const NoiseFloor& noise = plan.noiseFloor;
    const bool polarimetric = role == Role::kZdr || role == Role::kPdp || role == Role::kRhv;
    if (polarimetric && noise.polarimetricSnrDb > noise.minSnrDb) {
        const std::vector<std::uint8_t> weak =
            gatesBelow(noise.polarimetricSnrDb, noise, sweep, *plan.fields[Role::kZhh]);
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = weak[i] ? fillValue(role) : values[i];
        }
    }
    return values;
}

/* The texture of a field; masked rays keep the ends of a sector apart. */
std::vector<float> textureOf(const LabelledScan& scan, std::vector<float> values, Window window) {
    const int apart = scan.sector ? window.rays / 2 : 0;
    const int rays = scan.rays + apart;
    const std::size_t cells = static_cast<std::size_t>(rays) * static_cast<std::size_t>(scan.gates);
    std::vector<float> mask(cells, 1), out(cells);
    values.resize(cells);
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        mask[i] = scan.echo[i] != 0 ? 0.0f : 1.0f;
    }
    CDSP dsp;
    if (dsp.GetNxNPointStdWithMask(values.data(), mask.data(), scan.gates, rays, out.data(),
                                   window.gates, window.rays) != 1) {
        throw std::runtime_error("the texture's window holds one gate only, or is not odd");
    }
    out.resize(scan.cells());
    return out;
}

/* Weather close to clutter is set apart, gates that are not echoes are not judged. */
void setApart(LabelledScan& scan) {
    std::vector<std::uint8_t> clutter(scan.cells());
    for (std::size_t i = 0; i < scan.cells(); ++i) {
        if (scan.echo[i] == 0) {
            scan.labels[i] = Label::kNotJudged;
        }
        clutter[i] = scan.labels[i] == Label::kClutter ? 1 : 0;
    }
    for (int r = 0; r < scan.rays; ++r) {
        for (int g = 0; g < scan.gates; ++g) {
            if (clutter[at(scan, r, g)] == 0) {
                continue;
            }
            forRays(scan, r, kBesideRays, [&](int ray) {
                const int last = std::min(g + kBesideGates, scan.gates - 1);
                for (int gate = std::max(g - kBesideGates, 0); gate <= last; ++gate) {
                    Label& label = scan.labels[at(scan, ray, gate)];
                    label = label == Label::kWeather ? Label::kBeside : label;
                }
            });
        }
    }
}

}  // namespace

LabelledScan labelledScan(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                          const LabelRule& rule) {
    return labelledScan(scan, sweep, options, rule.labels(sweep));
}

LabelledScan labelledScan(const Scan& scan, const Sweep& sweep, const ClassifyOptions& options,
                          std::vector<Label> labels) {
    const ClassificationPlan plan = planClassification(scan, sweep, options);
    LabelledScan result;
    result.name = scan.path;
    result.rays = sweep.nrays;
    result.gates = sweep.ngates;
    result.sector = !closesCircle(sweep);
    result.notes = plan.notes;
    result.echo = findEchoes(sweep, plan);
    result.labels = std::move(labels);
    if (result.labels.size() != result.cells()) {
        throw std::runtime_error("there must be one label for each gate");
    }
    result.inputs.resize(inputs().size());
    for (std::size_t i = 0; i < inputs().size(); ++i) {
        const Input& input = inputs()[i];
        if ((plan.mask & input.bit()) == 0 || input.info->tag == nullptr) {
            continue;
        }
        std::vector<float> values = valuesOf(input.role, sweep, plan);
        const Window window = {options.textureGates, options.textureRays};
        result.inputs[i] =
            input.info->texture != 0 ? textureOf(result, std::move(values), window) : values;
    }
    setApart(result);
    return result;
}

std::vector<float> windowMeans(const LabelledScan& scan, const std::vector<float>& values,
                               Window window) {
    const std::size_t cells = scan.cells();
    std::vector<float> along(cells), counts(cells), means(cells);
    const int half = window.gates / 2;
    for (int r = 0; r < scan.rays; ++r) {
        for (int g = 0; g < scan.gates; ++g) {
            float& sum = along[at(scan, r, g)];
            float& count = counts[at(scan, r, g)];
            const int last = std::min(g + half, scan.gates - 1);
            for (int member = std::max(g - half, 0); member <= last; ++member) {
                const std::size_t i = at(scan, r, member);
                sum += scan.echo[i] != 0 ? values[i] : 0.0f;
                count += scan.echo[i] != 0 ? 1.0f : 0.0f;
            }
        }
    }
    for (int r = 0; r < scan.rays; ++r) {
        for (int g = 0; g < scan.gates; ++g) {
            float sum = 0, count = 0;
            forRays(scan, r, window.rays / 2, [&](int ray) {
                sum += along[at(scan, ray, g)];
                count += counts[at(scan, ray, g)];
            });
            means[at(scan, r, g)] = count > 0 ? sum / count : 0.0f;
        }
    }
    return means;
}

}  // namespace scan

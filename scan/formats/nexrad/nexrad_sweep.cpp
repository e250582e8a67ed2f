/* Radials into a sweep: common gates for all moments, then one field a moment. */
#include "scan/formats/nexrad/nexrad_sweep.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "scan/quantile.h"
#include "scan/scan.h"

namespace scan::nexrad {
namespace {

constexpr double kMaxRangeM = 1e6;

struct KnownMoment {
    const char* name;
    const char* field;
    const char* units;
    bool belowThreshold;  // code 0: below the threshold
    int firstCode;        // of values
};

constexpr KnownMoment kMoments[] = {
    {"REF", "DBZH", "dBZ", true, 2},  {"VEL", "VRADH", "m/s", true, 2},
    {"SW", "WRADH", "m/s", true, 2},  {"ZDR", "ZDR", "dB", true, 2},
    {"PHI", "PHIDP", "deg", true, 2}, {"RHO", "RHOHV", "", true, 2},
    {"CFP", "CCORH", "dB", false, 8},  // power removed by the filter; small codes are its states
};
constexpr KnownMoment kOther = {"", "", "", true, 2};

const KnownMoment& known(const std::string& name) {
    const auto* found =
        std::find_if(std::begin(kMoments), std::end(kMoments),
                     [&](const KnownMoment& moment) { return name == moment.name; });
    return found == std::end(kMoments) ? kOther : *found;
}

struct Gates {
    double firstM = 0;
    double spacingM = 0;
    int count = 0;

    [[nodiscard]] double beginM() const { return firstM - spacingM / 2; }
    [[nodiscard]] double endM() const { return beginM() + count * spacingM; }
    bool operator==(const Gates&) const = default;
};

Gates gatesOf(const Moment& moment) {
    return {moment.firstM, moment.spacingM, moment.gates};
}

/* The finest gates, from the first with its centre in front of the radar to the farthest end. */
Gates commonGates(std::span<const Radial> radials) {
    Gates common;
    double endM = 0;
    for (const Radial& radial : radials) {
        for (const Moment& moment : radial.moments) {
            const Gates gates = gatesOf(moment);
            if (common.spacingM == 0 || gates.spacingM < common.spacingM) {
                common = gates;
            }
            endM = std::max(endM, gates.endM());
        }
    }
    if (common.spacingM == 0) {
        throw std::runtime_error("holds no moments");
    }
    if (common.firstM < 0) {
        common.firstM += std::ceil(-common.firstM / common.spacingM) * common.spacingM;
    }
    endM = std::min(endM, kMaxRangeM);
    common.count =
        std::max(1, static_cast<int>(std::ceil((endM - common.beginM()) / common.spacingM - 1e-6)));
    return common;
}

/* Which gate of a moment covers each common gate; -1: none. */
std::vector<int> sourcesOf(const Gates& from, const Gates& common) {
    std::vector<int> sources(static_cast<std::size_t>(common.count), -1);
    for (int g = 0; g < common.count; ++g) {
        const double centreM = common.firstM + g * common.spacingM;
        const double source = std::floor((centreM - from.beginM()) / from.spacingM);
        if (source >= 0 && source < from.count) {
            sources[static_cast<std::size_t>(g)] = static_cast<int>(source);
        }
    }
    return sources;
}

float valueOf(const Moment& moment, int code) {
    return static_cast<float>((code - moment.offset) / moment.scale);
}

/* Decodes moments of one name, ray by ray. */
class FieldBuilder {
  public:
    FieldBuilder(const Moment& first, const Gates& common, std::size_t rays)
        : known_(known(first.name)), common_(common) {
        field_.name = *known_.field ? known_.field : first.name;
        field_.units = known_.units;
        if (known_.belowThreshold) {
            field_.noEcho = valueOf(first, 0);
        }
        field_.values.assign(rays * static_cast<std::size_t>(common.count), kNoValue);
    }

    void add(const Moment& moment, std::size_t ray) {
        const Gates gates = gatesOf(moment);
        if (!(gates == last_)) {
            last_ = gates;
            sources_ = sourcesOf(gates, common_);
        }
        useScale(moment);
        float* out = field_.values.data() + ray * sources_.size();
        const std::uint8_t* codes = moment.codes.bytes();
        for (std::size_t g = 0; g < sources_.size(); ++g) {
            const int source = sources_[g];
            if (source < 0) {
                continue;
            }
            const int code = moment.wordBytes == 1 ? codes[source]
                                                   : codes[2 * source] << 8 | codes[2 * source + 1];
            out[g] = static_cast<std::size_t>(code) < table_.size()
                         ? table_[static_cast<std::size_t>(code)]
                         : valueOf(moment, code);
        }
    }

    Field take() { return std::move(field_); }

  private:
    /* Values of the codes that one byte has. */
    void useScale(const Moment& moment) {
        if (!table_.empty() && moment.scale == scale_ && moment.offset == offset_) {
            return;
        }
        scale_ = moment.scale;
        offset_ = moment.offset;
        table_.assign(256, kNoValue);
        for (int code = known_.firstCode; code < 256; ++code) {
            table_[static_cast<std::size_t>(code)] = valueOf(moment, code);
        }
        if (field_.noEcho) {
            table_[0] = *field_.noEcho;
        }
    }

    const KnownMoment& known_;
    Gates common_, last_;
    std::vector<int> sources_;
    std::vector<float> table_;
    double scale_ = 0, offset_ = 0;
    Field field_;
};

std::vector<std::string> namesIn(std::span<const Radial> radials) {
    std::vector<std::string> names;
    for (const Radial& radial : radials) {
        for (const Moment& moment : radial.moments) {
            if (std::find(names.begin(), names.end(), moment.name) == names.end()) {
                names.push_back(moment.name);
            }
        }
    }
    return names;
}

const Moment* find(const Radial& radial, const std::string& name) {
    for (const Moment& moment : radial.moments) {
        if (moment.name == name) {
            return &moment;
        }
    }
    return nullptr;
}

Field fieldOf(std::span<const Radial> radials, const std::string& name, const Gates& common) {
    std::optional<FieldBuilder> builder;
    for (std::size_t r = 0; r < radials.size(); ++r) {
        const Moment* moment = find(radials[r], name);
        if (!moment) {
            continue;
        }
        if (!builder) {
            builder.emplace(*moment, common, radials.size());
        }
        builder->add(*moment, r);
    }
    return builder->take();
}

void fillRays(std::span<const Radial> radials, std::optional<double> fixed, Sweep& sweep) {
    for (const Radial& radial : radials) {
        const double azimuth = std::fmod(radial.azimuthDeg, 360.0);
        sweep.azimuthDeg.push_back(azimuth < 0 ? azimuth + 360 : azimuth);
        sweep.elevationDeg.push_back(radial.elevationDeg);
        sweep.rayTimeS.push_back(radial.timeS);
    }
    sweep.fixedAngleDeg = fixed.value_or(upperMedian(sweep.elevationDeg));
}

std::string coarseMoments(std::span<const Radial> radials, const Gates& common) {
    std::string text;
    for (const std::string& name : namesIn(radials)) {
        for (const Radial& radial : radials) {
            const Moment* moment = find(radial, name);
            if (moment && moment->spacingM != common.spacingM) {
                text += (text.empty() ? "" : ", ") + name;
                break;
            }
        }
    }
    return text.empty() ? "" : "Values of " + text + " cover several gates of the finest moment.";
}

}  // namespace

Sweep sweepOf(std::span<const Radial> radials, std::optional<double> fixedAngleDeg,
              ValueBudget& budget, std::string& oddity) {
    const Gates common = commonGates(radials);
    const std::vector<std::string> names = namesIn(radials);
    budget.take(radials.size() * names.size(), static_cast<std::uint64_t>(common.count), "a sweep");
    Sweep sweep;
    sweep.number = radials.front().elevationNumber;
    sweep.mode = "azimuth_surveillance";
    sweep.nrays = static_cast<int>(radials.size());
    sweep.ngates = common.count;
    sweep.firstGateM = common.firstM;
    sweep.gateSpacingM = common.spacingM;
    sweep.nyquist = std::max(0.0, radials.front().nyquist);
    fillRays(radials, fixedAngleDeg, sweep);
    for (const std::string& name : names) {
        sweep.fields.push_back(fieldOf(radials, name, common));
    }
    oddity = coarseMoments(radials, common);
    return sweep;
}

}  // namespace scan::nexrad

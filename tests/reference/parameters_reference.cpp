// The electrical parameters of a recording, computed a second time and in extended precision.
//
// Shares no code with the library. Every quantity is its plain definition: transforms are direct sums, the windows are
// their formulas, the analytic signal is formed and summed. Writes the golden file that the plug-in is held against:
//
//   build/debug/tests/reference/parameters_reference > tests/reference/golden_parameters.json
//
// Where a result hangs on a comparison that double arithmetic could decide otherwise, the program refuses.

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <limits>
#include <map>
#include <numbers>
#include <stdexcept>
#include <string>
#include <vector>

#include "recording.h"
#include "rt305_4/rt305_4.h"

namespace {

using Real = long double;
using Complex = std::complex<Real>;
using Signal = std::vector<Real>;
using Transform = std::vector<Complex>;

constexpr Real pi = std::numbers::pi_v<Real>;
constexpr Real sampleRate = 10000;  // Hz
constexpr Real decided = 1e-9L;     // the relative distance from which double arithmetic decides as we do
constexpr std::size_t highestOrder = 40;

enum Channel { Ua, Ub, Uc, Ia, Ib, Ic, channelCount };
using Channels = std::array<Signal, channelCount>;
using PerPhase = std::array<Real, 3>;

constexpr std::array<const char*, 35> parameterNames{
    "S",   "Sa",     "Sb",     "Sc",     "P",      "Pa",     "Pb",     "Pc",  "Q",   "Qa",  "Qb", "Qc",
    "Uda", "Udb",    "Udc",    "Udab",   "Udbc",   "Udca",   "Ud0",    "Ida", "Idb", "Idc", "Fa", "Fb",
    "Fc",  "THD_Va", "THD_Vb", "THD_Vc", "THD_Ia", "THD_Ib", "THD_Ic", "Pf",  "Pfa", "Pfb", "Pfc"};
using Parameters = std::map<std::string, Real>;  // a parameter that is not in it has no value

/// The samples as a host would hand them over: doubles, then widened.
Channels readRecording() {
    Channels channels;
    const auto samples = recording::samples();
    for (std::size_t c = 0; c < channels.size(); ++c) {
        channels[c].assign(samples[c].begin(), samples[c].end());
    }
    return channels;
}

Real mean(const Signal& x) {
    Real sum = 0;
    for (const Real value : x) {
        sum += value;
    }
    return sum / static_cast<Real>(x.size());
}

void removeMean(Signal& x) {
    const Real offset = mean(x);
    for (Real& value : x) {
        value -= offset;
    }
}

/// Samples of a simulated source, coefficient 1: dropped samples (exact zeros) take the mean of all others, then the
/// offset goes.
Signal conditioned(Signal x) {
    const auto n = static_cast<Real>(x.size());
    const auto dropped = static_cast<Real>(std::count(x.begin(), x.end(), Real{0}));
    std::replace(x.begin(), x.end(), Real{0}, n == dropped ? Real{0} : mean(x) * n / (n - dropped));
    removeMean(x);
    return x;
}

template <class Operation>
Signal combined(const Signal& x, const Signal& y, Operation operation) {
    Signal result(x.size());
    std::transform(x.begin(), x.end(), y.begin(), result.begin(), operation);
    return result;
}

Real meanProduct(const Signal& x, const Signal& y) {
    return mean(combined(x, y, std::multiplies{}));
}
Real rootMeanSquare(const Signal& x) {
    return std::sqrt(meanProduct(x, x));
}

// ---- Transforms and windows

/// sum over i of x[i] exp(sign * 2 pi j i k / n) for k = 0 ... n - 1. The angle i k is reduced in whole numbers.
template <class Value>
Transform transform(const std::vector<Value>& x, int sign) {
    const std::size_t n = x.size();
    Transform roots(n), result(n);
    for (std::size_t k = 0; k < n; ++k) {
        roots[k] = std::polar(Real{1}, static_cast<Real>(sign) * 2 * pi * static_cast<Real>(k) / static_cast<Real>(n));
    }
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t i = 0; i < n; ++i) {
            result[k] += x[i] * roots[i * k % n];
        }
    }
    return result;
}

/// x + j H(x): the positive frequencies doubled, the negative ones removed, DC and fs/2 as they are.
Transform analyticSignal(const Signal& x) {
    const std::size_t n = x.size();
    Transform z = transform(x, -1);
    for (std::size_t k = 1; k < n; ++k) {
        z[k] *= 2 * k < n ? Real{2} : 2 * k == n ? Real{1} : Real{0};
    }
    z = transform(z, +1);
    for (Complex& value : z) {
        value /= static_cast<Real>(n);
    }
    return z;
}

/// I0(z) = sum over k of ((z / 2)^k / k!)^2. M. Abramowitz and I. A. Stegun, eq. 9.6.12.
Real besselI0(Real z) {
    Real term = 1, sum = 0;
    for (int k = 1; term > sum * std::numeric_limits<Real>::epsilon() / 16; ++k) {
        sum += term;
        term *= z / 2 / static_cast<Real>(k) * (z / 2 / static_cast<Real>(k));
    }
    return sum;
}

Signal kaiserWindow(std::size_t n, Real beta) {
    Signal w(n);
    const auto span = static_cast<Real>(n - 1);
    for (std::size_t i = 0; i < n; ++i) {
        const Real r = (2 * static_cast<Real>(i) - span) / span;
        w[i] = besselI0(beta * std::sqrt((1 - r) * (1 + r))) / besselI0(beta);
    }
    return w;
}

Signal periodicHannWindow(std::size_t n) {
    Signal w(n);
    for (std::size_t i = 0; i < n; ++i) {
        w[i] = (1 - std::cos(2 * pi * static_cast<Real>(i) / static_cast<Real>(n))) / 2;
    }
    return w;
}

/// The position of the largest element, which must be the largest beyond doubt.
std::size_t largest(const Signal& x) {
    const auto at = std::max_element(x.begin(), x.end());
    const Real close = *at * (1 - decided);
    if (std::count_if(x.begin(), x.end(), [close](Real value) { return value > close; }) != 1) {
        throw std::runtime_error("the largest element is not decided");
    }
    return static_cast<std::size_t>(at - x.begin());
}

// ---- Measurements of one channel

struct Distortion {
    Real fundamental;  // Hz
    Real percent;      // THD
};

/// One-sided power spectral density in bins of fs/n.
struct Density {
    Signal bins;
    Real spacing;    // Hz
    Real bandwidth;  // Hz, equivalent noise bandwidth of the window
};

Density periodogram(Signal x) {
    const std::size_t n = x.size();
    const Signal w = kaiserWindow(n, 38);
    removeMean(x);
    const Transform X = transform(combined(x, w, std::multiplies{}), -1);
    const Real energy = meanProduct(w, w) * static_cast<Real>(n);
    const Real spacing = sampleRate / static_cast<Real>(n);
    Density density{{}, spacing, meanProduct(w, w) / (mean(w) * mean(w)) * spacing};
    for (std::size_t k = 0; 2 * k <= n; ++k) {
        density.bins.push_back(std::norm(X[k]) / (sampleRate * energy) * (k == 0 || 2 * k == n ? 1 : 2));
    }
    return density;
}

struct Tone {
    std::size_t first, last;  // the bins from valley to valley
    Real power;
    Real frequency;  // Hz
};

Tone toneAround(const Density& density, std::size_t peak) {
    const Signal& bins = density.bins;
    Tone tone{peak, peak, 0, 0};
    while (tone.first > 0 && bins[tone.first - 1] <= bins[tone.first]) {
        --tone.first;
    }
    while (tone.last + 1 < bins.size() && bins[tone.last] >= bins[tone.last + 1]) {
        ++tone.last;
    }
    Real sum = 0, moment = 0;
    for (std::size_t k = tone.first; k <= tone.last; ++k) {
        sum += bins[k];
        moment += bins[k] * static_cast<Real>(k);
    }
    tone.power = sum * density.spacing;
    tone.frequency = moment / sum * density.spacing;
    // Narrower than the window can resolve: measured as one noise bandwidth.
    if (density.bandwidth * bins[peak] > tone.power) {
        tone.power = density.bandwidth * bins[peak];
        tone.frequency = static_cast<Real>(peak) * density.spacing;
    }
    return tone;
}

/// Total harmonic distortion: the powers of the harmonics up to the 40th or fs/2 against that of the fundamental.
Distortion distortion(const Signal& x) {
    Density density = periodogram(x);
    Signal& bins = density.bins;
    bins[0] *= 2;
    const Tone dc = toneAround(density, 0);
    std::fill(bins.begin(), bins.begin() + static_cast<std::ptrdiff_t>(dc.last) + 1, Real{0});
    const Tone fundamental = toneAround(density, largest(bins));
    Real harmonics = 0;
    for (std::size_t order = 2; order <= highestOrder; ++order) {
        const Real target = static_cast<Real>(order) * fundamental.frequency / density.spacing;
        if (target > static_cast<Real>(bins.size() - 1)) {
            break;
        }
        const auto nearest = static_cast<std::ptrdiff_t>(std::lround(target));
        const auto first = bins.begin() + std::max<std::ptrdiff_t>(nearest - 1, 0);
        const auto last = std::min(bins.begin() + nearest + 2, bins.end());
        harmonics += toneAround(density, static_cast<std::size_t>(std::max_element(first, last) - bins.begin())).power;
    }
    return {fundamental.frequency, 100 * std::sqrt(harmonics / fundamental.power)};
}

struct Window {
    double low, high;  // Hz
};
constexpr std::array<Window, 2> frequencyWindows{{{49.6, 50.4}, {10.0, 60.0}}};  // fixed, control

/// The candidate low + 0.1 k Hz with the largest Fourier sum. The grid is that of double arithmetic: its division
/// leaves the last candidate of the fixed window out.
double searchedFrequency(const Signal& x, Window window) {
    const int candidates = static_cast<int>(((0.1 - window.low) + window.high) / 0.1);
    Signal magnitudes;
    for (int k = 0; k < candidates; ++k) {
        const Real step = 2 * pi * static_cast<Real>(window.low + 0.1 * k) / sampleRate;
        Complex sum = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            sum += x[i] * std::polar(Real{1}, -step * static_cast<Real>(i + 1));
        }
        magnitudes.push_back(std::abs(sum));
    }
    return window.low + 0.1 * static_cast<double>(largest(magnitudes));
}

/// Phase of the largest line of x, in radians.
Real dominantAngle(Signal x) {
    removeMean(x);
    const Transform X = transform(combined(x, periodicHannWindow(x.size()), std::multiplies{}), -1);
    Signal magnitudes;
    for (std::size_t k = 0; 2 * k <= X.size(); ++k) {
        magnitudes.push_back(std::abs(X[k]));
    }
    return std::arg(X[largest(magnitudes)]);
}

// ---- Measurements of the six channels, and the parameters that the flags choose from them

struct Measurement {
    std::array<Real, channelCount> rms;
    PerPhase lineVoltage;  // RMS of Ua - Ub, Ub - Uc, Uc - Ua
    Real zeroSequence;     // V
    std::array<Distortion, channelCount> distortion;
    std::array<std::array<double, 3>, 2> frequency;  // per frequency window and phase
    PerPhase activePower;
    std::array<Complex, 3> complexPower;
    std::array<Real, 2> angle;      // Ia against Ua, Ic against Ub
    std::array<Real, 2> lineAngle;  // Ia against Ub - Ua, Ic against Ub - Uc
};

Measurement measure(const Channels& x) {
    Measurement m;
    for (std::size_t c = 0; c < channelCount; ++c) {
        m.rms[c] = rootMeanSquare(x[c]);
        m.distortion[c] = distortion(x[c]);
    }
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const Signal& u = x[phase];
        const Signal& i = x[phase + 3];
        m.lineVoltage[phase] = rootMeanSquare(combined(u, x[(phase + 1) % 3], std::minus{}));
        for (std::size_t window = 0; window < frequencyWindows.size(); ++window) {
            m.frequency[window][phase] = searchedFrequency(u, frequencyWindows[window]);
        }
        m.activePower[phase] = meanProduct(u, i);
        const Transform analyticU = analyticSignal(u);
        const Transform analyticI = analyticSignal(i);
        for (std::size_t k = 0; k < u.size(); ++k) {
            m.complexPower[phase] += analyticU[k] * std::conj(analyticI[k]) / (2 * static_cast<Real>(u.size()));
        }
    }
    m.zeroSequence = rootMeanSquare(combined(combined(x[Ua], x[Ub], std::plus{}), x[Uc], std::plus{})) / 3;
    m.angle = {dominantAngle(x[Ia]) - dominantAngle(x[Ua]), dominantAngle(x[Ic]) - dominantAngle(x[Ub])};
    m.lineAngle = {dominantAngle(x[Ia]) - dominantAngle(combined(x[Ub], x[Ua], std::minus{})),
                   dominantAngle(x[Ic]) - dominantAngle(combined(x[Ub], x[Uc], std::minus{}))};
    return m;
}

/// The phase whose current is rebuilt from the other two: 0, 1, 2, or 3 for none.
std::size_t rebuiltPhase(std::uint32_t flags) {
    return ((flags & RT305_4_REBUILT_PHASE_MASK) / 0x40 + 3) % 4;
}

void rebuildCurrent(Channels& x, std::uint32_t flags) {
    const std::size_t phase = rebuiltPhase(flags);
    if ((flags & RT305_4_TWO_CURRENTS) != 0 && phase < 3) {
        x[3 + phase] =
            combined(x[3 + (phase + 1) % 3], x[3 + (phase + 2) % 3], [](Real a, Real b) { return -(a + b); });
    }
}

void addVoltagesAndCurrents(const Measurement& m, std::uint32_t flags, Parameters& p) {
    const bool four = (flags & RT305_4_FOUR_WIRE) != 0;
    PerPhase current{m.rms[Ia], m.rms[Ib], m.rms[Ic]};
    const std::size_t rebuilt = rebuiltPhase(flags);
    if ((flags & RT305_4_KEEP_REBUILT_RMS) == 0 && rebuilt < 3) {
        current[rebuilt] = (current[(rebuilt + 1) % 3] + current[(rebuilt + 2) % 3]) / 2;
    }
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const std::string letter(1, "abc"[phase]), next(1, "bca"[phase]);
        p["Ud" + letter] = four ? m.rms[phase] : m.rms[phase] / std::sqrt(Real{3});
        p["Ud" + letter + next] = four ? m.lineVoltage[phase] : m.rms[phase];
        p["Id" + letter] = current[phase];
    }
    p["Ud0"] = m.zeroSequence;
}

/// THD and frequency, each behind its gate. The gates of voltages b and c test each other's fundamental.
/// Returns whether all six gates are open.
bool addDistortionAndFrequency(const Measurement& m, std::uint32_t flags, Parameters& p) {
    const std::size_t choice = (flags & RT305_4_FREQUENCY_CONTROL) != 0 ? 1 : 0;
    const Window window = frequencyWindows[choice];
    const auto inside = [window](Real f) {
        if (std::min(std::fabs(f - window.low), std::fabs(f - window.high)) < f * decided) {
            throw std::runtime_error("a fundamental at the border of the frequency window is not decided");
        }
        return window.low < f && f < window.high;
    };
    constexpr std::array<std::size_t, channelCount> gates{Ua, Uc, Ub, Ia, Ib, Ic};
    bool allOpen = true;
    for (std::size_t c = 0; c < channelCount; ++c) {
        const std::size_t set = c / 3 * 3;
        const Real average =
            (m.distortion[set].fundamental + m.distortion[set + 1].fundamental + m.distortion[set + 2].fundamental) / 3;
        const std::string letter(1, "abc"[c - set]);
        const bool open = inside(average) && inside(m.distortion[gates[c]].fundamental);
        allOpen = allOpen && open;
        if (open) {
            p[(set == Ua ? "THD_V" : "THD_I") + letter] = m.distortion[c].percent;
        }
        if (open && set == Ua) {
            p["F" + letter] = m.frequency[choice][c];
        }
    }
    return allOpen;
}

void addThreeWattmeters(const Measurement& m, bool complexPower, Parameters& p) {
    for (const std::string letter : {"a", "b", "c"}) {
        const auto phase = static_cast<std::size_t>(letter[0] - 'a');
        const Complex power = m.complexPower[phase];
        const Real P = complexPower ? power.real() : m.activePower[phase];
        const Real S = complexPower ? std::abs(power) : p.at("Id" + letter) * p.at("Ud" + letter);
        if (!complexPower && std::fabs(std::fabs(P / S) - 1) < decided) {
            throw std::runtime_error("a power factor of one is not decided");
        }
        p["P" + letter] = P;
        p["S" + letter] = S;
        p["Q" + letter] = complexPower ? power.imag() : P * std::tan(std::acos(P / S));
        for (const std::string quantity : {"P", "Q", "S"}) {
            p[quantity] += p[quantity + letter];
        }
    }
}

void addTwoWattmeters(const std::array<Real, 2>& angle, bool magnitudes, Parameters& p) {
    const auto term = [magnitudes](Real value) { return magnitudes ? std::fabs(value) : value; };
    const Real first = p.at("Ida") * p.at("Udab"), second = p.at("Idc") * p.at("Udbc");
    p["P"] = term(std::cos(angle[0]) * first) + term(std::cos(angle[1]) * second);
    p["Q"] = term(std::sin(angle[0]) * first) + term(std::sin(angle[1]) * second);
    p["S"] = std::hypot(p["P"], p["Q"]);
}

Parameters parameters(const Measurement& m, std::uint32_t flags) {
    Parameters p;
    addVoltagesAndCurrents(m, flags, p);
    if (!addDistortionAndFrequency(m, flags, p)) {
        return p;
    }
    switch ((flags & RT305_4_POWER_MASK) >> 16) {
        case 1:
        case 6:
        case 7:
            addThreeWattmeters(m, false, p);
            break;
        case 2:
            addTwoWattmeters(m.angle, false, p);
            break;
        case 3:
            addTwoWattmeters(m.lineAngle, true, p);
            break;
        case 4:
            addThreeWattmeters(m, true, p);
            break;
        default:
            return p;
    }
    p["P"] *= (flags & RT305_4_NEGATE_ACTIVE_POWER) != 0 ? -1 : 1;
    p["Q"] *= (flags & RT305_4_NEGATE_REACTIVE_POWER) != 0 ? -1 : 1;
    return p;
}

// ---- The golden file

struct Entry {
    std::size_t samples;
    std::uint32_t flags;
};

/// Every wiring, frequency window and method; an odd length with both signs turned; and every way in which the flags of
/// a rebuilt current can stand together.
std::vector<Entry> entries(std::size_t samples) {
    constexpr std::uint32_t simulated = 0x10000000, four = simulated | RT305_4_FOUR_WIRE;
    constexpr std::uint32_t control = RT305_4_FREQUENCY_CONTROL;
    constexpr std::uint32_t rebuilt = RT305_4_TWO_CURRENTS, kept = RT305_4_KEEP_REBUILT_RMS;
    std::vector<Entry> list;
    for (const std::uint32_t wiring : {simulated, four}) {
        for (const std::uint32_t frequency : {0U, control}) {
            for (std::uint32_t method = 0; method < 8; ++method) {
                list.push_back({samples, wiring | frequency | method << 16});
            }
        }
    }
    for (std::uint32_t method = 0; method < 6; ++method) {
        const std::uint32_t negated = RT305_4_NEGATE_ACTIVE_POWER | RT305_4_NEGATE_REACTIVE_POWER;
        list.push_back({samples - 1, four | control | negated | method << 16});
    }
    for (const std::uint32_t phase : {RT305_4_REBUILT_PHASE_A, RT305_4_REBUILT_PHASE_B, RT305_4_REBUILT_PHASE_C}) {
        for (const std::uint32_t rest : {0U, kept, rebuilt, rebuilt | kept}) {
            for (const std::uint32_t method : {RT305_4_POWER_THREE_WATTMETER, RT305_4_POWER_TWO_WATTMETER}) {
                list.push_back({samples, four | control | phase | rest | method});
            }
        }
    }
    return list;
}

void print(const Entry& entry, const Parameters& p, bool last) {
    std::printf("    {\"samples\": %zu, \"flags\": \"0x%08X\", \"parameters\": {", entry.samples, entry.flags);
    for (const std::string name : parameterNames) {
        std::printf("%s\"%s\": ", name == "S" ? "" : ", ", name.c_str());
        const auto found = p.find(name);
        if (found == p.end() || std::isnan(found->second)) {
            std::printf("null");
        } else {
            std::printf("%.20Lg", found->second);
        }
    }
    std::printf("}}%s\n", last ? "" : ",");
}

/// The tolerances leave room for other orders of summation and other transforms: this program in plain double stays
/// within 2e-15 of itself for V and A, 5e-15 for THD and 5e-14 for power. Frequencies are points of a grid.
void writeGolden() {
    const Channels all = readRecording();
    const std::vector<Entry> list = entries(all[Ua].size());
    std::map<std::pair<std::size_t, std::uint32_t>, Measurement> measurements;  // by length and rebuilt current
    std::printf("%s", R"({
  "command": "build/debug/tests/reference/parameters_reference > tests/reference/golden_parameters.json",
  "relative tolerance by unit": {"V": 1e-13, "A": 1e-13, "%": 1e-12, "W": 1e-12, "VAR": 1e-12, "VA": 1e-12, "Hz": 0, "-": 0},
  "entries": [
)");
    for (std::size_t i = 0; i < list.size(); ++i) {
        const Entry& entry = list[i];
        const bool rebuilds = (entry.flags & RT305_4_TWO_CURRENTS) != 0;
        const std::pair key(entry.samples, rebuilds ? entry.flags & RT305_4_REBUILT_PHASE_MASK : 0);
        if (!measurements.contains(key)) {
            Channels channels = all;
            for (Signal& x : channels) {
                x.resize(entry.samples);
                x = conditioned(std::move(x));
            }
            rebuildCurrent(channels, entry.flags);
            measurements[key] = measure(channels);
        }
        print(entry, parameters(measurements.at(key), entry.flags), i + 1 == list.size());
    }
    std::printf("  ]\n}\n");
}

}  // namespace

int main() {
    try {
        writeGolden();
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "parameters_reference: %s\n", problem.what());
        return 1;
    }
    return 0;
}

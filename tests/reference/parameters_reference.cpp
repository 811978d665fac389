// Computes the electrical parameters of a recording a second time and writes the golden file, whose head names the
// command. Shares no code with the library: every quantity is its plain definition in extended precision. Stops where a
// comparison is too close to be decided in doubles.

#include <array>
#include <cstdio>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>

#include "reference/recording.h"
#include "rt305_4/rt305_4.h"
#include "support/plain.h"

namespace {

using plain::Complex;
using plain::pi;
using plain::Real;
using Signal = std::vector<Real>;

constexpr Real sampleRate = 10000;  // Hz
constexpr Real decided = 1e-9L;     // the smallest relative difference that doubles decide as we do

enum Channel { Ua, Ub, Uc, Ia, Ib, Ic, channelCount };
using Channels = std::array<Signal, channelCount>;

constexpr std::array<const char*, 35> parameterNames{
    "S",   "Sa",     "Sb",     "Sc",     "P",      "Pa",     "Pb",     "Pc",  "Q",   "Qa",  "Qb", "Qc",
    "Uda", "Udb",    "Udc",    "Udab",   "Udbc",   "Udca",   "Ud0",    "Ida", "Idb", "Idc", "Fa", "Fb",
    "Fc",  "THD_Va", "THD_Vb", "THD_Vc", "THD_Ia", "THD_Ib", "THD_Ic", "Pf",  "Pfa", "Pfb", "Pfc"};
using Parameters = std::map<std::string, Real>;  // those that have a value

Real mean(const Signal& x) {
    Real sum = 0;
    for (const Real value : x) {
        sum += value;
    }
    return sum / static_cast<Real>(x.size());
}

Signal centred(Signal x) {
    std::transform(x.begin(), x.end(), x.begin(), [offset = mean(x)](Real value) { return value - offset; });
    return x;
}

template <class Operation>
Signal combined(const Signal& x, const Signal& y, Operation operation) {
    Signal result(x.size());
    std::transform(x.begin(), x.end(), y.begin(), result.begin(), operation);
    return result;
}

Real rootMeanSquare(const Signal& x) {
    return std::sqrt(mean(combined(x, x, std::multiplies{})));
}

/// Samples of a simulated source, coefficient 1: dropped samples, exact zeros, take the mean of all others, then the
/// offset goes.
Signal conditioned(Signal x) {
    const auto n = static_cast<Real>(x.size());
    const auto dropped = static_cast<Real>(std::count(x.begin(), x.end(), Real{0}));
    std::replace(x.begin(), x.end(), Real{0}, n == dropped ? Real{0} : mean(x) * n / (n - dropped));
    return centred(std::move(x));
}

/// Bins 0 ... n/2 of x under a window.
std::vector<Complex> halfSpectrum(const Signal& x, const Signal& window) {
    return plain::transform(combined(x, window, std::multiplies{}), x.size(), 0, x.size() / 2 + 1);
}

/// x + j H(x): the positive frequencies doubled, the negative ones removed, DC and fs/2 as they are.
std::vector<Complex> analyticSignal(const Signal& x) {
    const std::size_t n = x.size();
    auto z = plain::transform(x, n, 0, n);
    for (std::size_t k = 1; k < n; ++k) {
        z[k] *= 2 * k < n ? Real{2} : 2 * k == n ? Real{1} : Real{0};
    }
    z = plain::transform(z, n, 0, n, +1);
    for (Complex& value : z) {
        value /= static_cast<Real>(n);
    }
    return z;
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

/// One-sided power spectral density in bins of fs/n.
struct Density {
    Signal bins;
    Real spacing;    // Hz
    Real bandwidth;  // Hz, equivalent noise bandwidth of the window
};

Density periodogram(const Signal& x) {
    const std::size_t n = x.size();
    Signal w(n);
    for (std::size_t k = 0; k < n; ++k) {
        w[k] = plain::kaiser(k, n, 38);
    }
    const Real meanSquare = mean(combined(w, w, std::multiplies{}));
    const Real energy = meanSquare * static_cast<Real>(n);
    const Real spacing = sampleRate / static_cast<Real>(n);
    Density density{{}, spacing, meanSquare / (mean(w) * mean(w)) * spacing};
    for (const Complex& bin : halfSpectrum(centred(x), w)) {
        const std::size_t k = density.bins.size();
        density.bins.push_back(std::norm(bin) / (sampleRate * energy) * (k == 0 || 2 * k == n ? 1 : 2));
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
    if (density.bandwidth * bins[peak] > tone.power) {  // a line has one noise bandwidth at least
        tone.power = density.bandwidth * bins[peak];
        tone.frequency = static_cast<Real>(peak) * density.spacing;
    }
    return tone;
}

struct Distortion {
    Real fundamental;  // Hz
    Real percent;      // power of the harmonics up to the 40th or fs/2 relative to that of the fundamental
};

Distortion distortion(const Signal& x) {
    Density density = periodogram(x);
    Signal& bins = density.bins;
    bins[0] *= 2;
    const Tone dc = toneAround(density, 0);
    std::fill(bins.begin(), bins.begin() + static_cast<std::ptrdiff_t>(dc.last) + 1, Real{0});
    const Tone fundamental = toneAround(density, largest(bins));
    Real harmonics = 0;
    for (int order = 2; order <= 40; ++order) {
        const Real target = static_cast<Real>(order) * fundamental.frequency / density.spacing;
        if (target > static_cast<Real>(bins.size() - 1)) {
            break;
        }
        const auto nearest = bins.begin() + std::lround(target);
        const auto line = std::max_element(std::max(nearest, bins.begin() + 1) - 1, std::min(nearest + 2, bins.end()));
        harmonics += toneAround(density, static_cast<std::size_t>(line - bins.begin())).power;
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

/// Phase in radians of the largest line of x under a periodic Hann window.
Real dominantAngle(const Signal& x) {
    Signal hann(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        hann[i] = (1 - std::cos(2 * pi * static_cast<Real>(i) / static_cast<Real>(x.size()))) / 2;
    }
    const auto bins = halfSpectrum(centred(x), hann);
    Signal magnitudes;
    for (const Complex& bin : bins) {
        magnitudes.push_back(std::abs(bin));
    }
    return std::arg(bins[largest(magnitudes)]);
}

struct Measurement {
    std::array<Real, channelCount> rms;
    std::array<Real, 3> lineVoltage;  // RMS of Ua - Ub, Ub - Uc, Uc - Ua
    Real zeroSequence;                // V
    std::array<Distortion, channelCount> distortion;
    std::array<std::array<double, 3>, 2> frequency;  // per frequency window and phase
    std::array<Real, 3> activePower;
    std::array<Complex, 3> complexPower;
    std::array<Real, 2> angle;      // Ia relative to Ua, Ic relative to Ub
    std::array<Real, 2> lineAngle;  // Ia relative to Ub - Ua, Ic relative to Ub - Uc
};

Measurement measure(const Channels& x) {
    Measurement m;
    std::transform(x.begin(), x.end(), m.rms.begin(), rootMeanSquare);
    std::transform(x.begin(), x.end(), m.distortion.begin(), distortion);
    for (std::size_t phase = 0; phase < 3; ++phase) {
        const Signal& u = x[phase];
        const Signal& i = x[phase + 3];
        m.lineVoltage[phase] = rootMeanSquare(combined(u, x[(phase + 1) % 3], std::minus{}));
        for (std::size_t window = 0; window < frequencyWindows.size(); ++window) {
            m.frequency[window][phase] = searchedFrequency(u, frequencyWindows[window]);
        }
        m.activePower[phase] = mean(combined(u, i, std::multiplies{}));
        const auto analyticU = analyticSignal(u);
        const auto analyticI = analyticSignal(i);
        for (std::size_t k = 0; k < u.size(); ++k) {
            m.complexPower[phase] += analyticU[k] * std::conj(analyticI[k]) / (2 * static_cast<Real>(u.size()));
        }
    }
    m.zeroSequence = rootMeanSquare(combined(combined(x[Ua], x[Ub], std::plus{}), x[Uc], std::plus{})) / 3;
    const Real a = dominantAngle(x[Ia]), c = dominantAngle(x[Ic]);
    m.angle = {a - dominantAngle(x[Ua]), c - dominantAngle(x[Ub])};
    m.lineAngle = {a - dominantAngle(combined(x[Ub], x[Ua], std::minus{})),
                   c - dominantAngle(combined(x[Ub], x[Uc], std::minus{}))};
    return m;
}

/// The phase whose current is rebuilt from the other two: 0, 1, 2, or 3 for none.
std::size_t rebuiltPhase(std::uint32_t flags) {
    return ((flags & RT305_4_REBUILT_PHASE_MASK) / RT305_4_REBUILT_PHASE_A + 3) % 4;
}

void addVoltagesAndCurrents(const Measurement& m, std::uint32_t flags, Parameters& p) {
    const bool four = (flags & RT305_4_FOUR_WIRE) != 0;
    std::array<Real, 3> current{m.rms[Ia], m.rms[Ib], m.rms[Ic]};
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
        const auto fundamental = [&](std::size_t channel) { return m.distortion[channel].fundamental; };
        const Real average = (fundamental(set) + fundamental(set + 1) + fundamental(set + 2)) / 3;
        const std::string letter(1, "abc"[c - set]);
        const bool open = inside(average) && inside(fundamental(gates[c]));
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
    const std::uint32_t method = (flags & RT305_4_POWER_MASK) / RT305_4_POWER_THREE_WATTMETER;
    if (!addDistortionAndFrequency(m, flags, p) || method == 0 || method == 5) {
        return p;
    }
    if (method == 2 || method == 3) {
        addTwoWattmeters(method == 2 ? m.angle : m.lineAngle, method == 3, p);
    } else {
        addThreeWattmeters(m, method == 4, p);
    }
    p["P"] *= (flags & RT305_4_NEGATE_ACTIVE_POWER) != 0 ? -1 : 1;
    p["Q"] *= (flags & RT305_4_NEGATE_REACTIVE_POWER) != 0 ? -1 : 1;
    return p;
}

/// What the first samples measure; computed once per length and rebuilt current.
const Measurement& measurementOf(std::size_t samples, std::uint32_t flags) {
    static const auto recorded = recording::samples();
    static std::map<std::pair<std::size_t, std::size_t>, Measurement> measurements;
    const std::size_t phase = (flags & RT305_4_TWO_CURRENTS) != 0 ? rebuiltPhase(flags) : 3;
    const auto [found, isNew] = measurements.try_emplace({samples, phase});
    if (isNew) {
        Channels x;
        for (std::size_t c = 0; c < x.size(); ++c) {
            x[c].assign(recorded[c].begin(), recorded[c].begin() + static_cast<std::ptrdiff_t>(samples));
            x[c] = conditioned(std::move(x[c]));
        }
        if (phase < 3) {
            x[3 + phase] =
                combined(x[3 + (phase + 1) % 3], x[3 + (phase + 2) % 3], [](Real a, Real b) { return -(a + b); });
        }
        found->second = measure(x);
    }
    return found->second;
}

void write(std::size_t samples, std::uint32_t flags) {
    static const char* separator = "";
    const Parameters p = parameters(measurementOf(samples, flags), flags);
    std::printf(R"(%s    {"samples": %zu, "flags": "0x%08X", "parameters": {)", separator, samples, flags);
    for (const std::string name : parameterNames) {
        const auto found = p.find(name);
        const bool hasValue = found != p.end() && !std::isnan(found->second);
        std::printf("%s\"%s\": ", name == "S" ? "" : ", ", name.c_str());
        hasValue ? std::printf("%.20Lg", found->second) : std::printf("null");
    }
    std::printf("}}");
    separator = ",\n";
}

/// Every wiring, frequency window and method; an odd length with both signs inverted; and every combination of the
/// flags of a rebuilt current.
void writeEntries(std::size_t samples) {
    constexpr std::uint32_t simulated = 0x10000000, four = simulated | RT305_4_FOUR_WIRE;
    constexpr std::uint32_t control = RT305_4_FREQUENCY_CONTROL, fourInControl = four | control;
    constexpr std::uint32_t rebuilt = RT305_4_TWO_CURRENTS, kept = RT305_4_KEEP_REBUILT_RMS;
    for (const std::uint32_t setting : {simulated, simulated | control, four, fourInControl}) {
        for (std::uint32_t method = 0; method < 8; ++method) {
            write(samples, setting | method << 16);
        }
    }
    for (std::uint32_t method = 0; method < 6; ++method) {
        write(samples - 1, fourInControl | RT305_4_NEGATE_ACTIVE_POWER | RT305_4_NEGATE_REACTIVE_POWER | method << 16);
    }
    for (const std::uint32_t phase : {RT305_4_REBUILT_PHASE_A, RT305_4_REBUILT_PHASE_B, RT305_4_REBUILT_PHASE_C}) {
        for (const std::uint32_t rest : {0U, kept, rebuilt, rebuilt | kept}) {
            write(samples, fourInControl | phase | rest | RT305_4_POWER_THREE_WATTMETER);
            write(samples, fourInControl | phase | rest | RT305_4_POWER_TWO_WATTMETER);
        }
    }
}

}  // namespace

/// The tolerances leave room for other orders of summation and other transforms: this program in plain double stays
/// within 2e-15 of itself for V and A, 5e-15 for THD and 5e-14 for power. Frequencies are points of a grid.
int main() {
    std::printf("%s", R"({
  "command": "build/debug/tests/reference/parameters_reference > tests/reference/golden_parameters.json",
  "relative tolerance by unit": {"V": 1e-13, "A": 1e-13, "%": 1e-12, "W": 1e-12, "VAR": 1e-12, "VA": 1e-12, "Hz": 0, "-": 0},
  "entries": [
)");
    writeEntries(recording::sampleCount);
    std::printf("\n  ]\n}\n");
}

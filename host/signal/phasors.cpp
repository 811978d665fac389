#include "signal/phasors.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "base/text.h"

namespace rt305 {

namespace {

using std::numbers::pi;

/// How well phasors of unit length agree: 1 for a symmetrical set, 1/3 with one of three turned, 0 with two exchanged.
constexpr double coherentEnough = 0.9;
constexpr double oddEnough = 0.8;

const Phasor a = std::polar(1.0, 2.0 * pi / 3.0);

Phasor meanOf(const Phasors& x) {
    return (x[0] + x[1] + x[2]) / 3.0;
}

/// The components that turn with a-b-c and with a-c-b.
Phasor forward(const Phasors& x) {
    return meanOf({x[0], a * x[1], a * a * x[2]});
}
Phasor backward(const Phasors& x) {
    return meanOf({x[0], a * a * x[1], a * x[2]});
}

bool isLive(const Phasors& x) {
    const auto [smallest, largest] = std::minmax({std::abs(x[0]), std::abs(x[1]), std::abs(x[2])});
    return std::isfinite(std::abs(x[0] + x[1] + x[2])) && smallest > 0.01 * largest;
}

Phasors withUnitLength(Phasors x) {
    std::transform(x.begin(), x.end(), x.begin(), [](const Phasor& p) { return p / std::abs(p); });
    return x;
}

Phasors turned(Phasors x, std::size_t phase) {
    x[phase] = -x[phase];
    return x;
}

std::string channelName(std::size_t channel) {
    return std::string(channelNames[channel]);
}

/// The mean of the angles by which the currents lag their voltages, as a phasor that is 1 long when they agree.
Phasor meanLag(const Phasors& voltages, const Phasors& currents) {
    Phasors lags;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        lags[phase] = voltages[phase] * std::conj(currents[phase]);
    }
    return meanOf(withUnitLength(lags));
}

double coherence(const Phasors& voltages) {
    const Phasors unit = withUnitLength(voltages);
    return std::max(std::abs(forward(unit)), std::abs(backward(unit)));
}

/// Turns the one voltage that makes the set symmetrical. False when the set is not, and there is none.
bool makeSymmetrical(Phasors& voltages, std::vector<std::string>& faults) {
    if (coherence(voltages) >= oddEnough) {
        return true;
    }
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (const Phasors corrected = turned(voltages, phase); coherence(corrected) >= coherentEnough) {
            faults.push_back(channelName(phase) + " seems to be reversed.");
            voltages = corrected;
            return true;
        }
    }
    faults.emplace_back("The voltages are not 120 degrees apart, and no single reversed one explains it.");
    return false;
}

/// An exchange of two currents makes them agree with the voltages in three ways that are 120 degrees apart: the one
/// with the least angle is taken.
void judgeCurrents(const Phasors& voltages, const Phasors& currents, bool isBackward,
                   std::vector<std::string>& faults) {
    const Phasor asWired = meanLag(voltages, currents);
    if (std::abs(asWired) >= oddEnough) {
        if (asWired.real() < 0.0) {
            faults.emplace_back("All currents run against their voltages: power flows back, or all clamps are turned.");
        }
        return;
    }
    std::string fault =
        "The angles between voltage and current differ much between the phases; no single reversed or exchanged "
        "current "
        "explains it.";
    double best = -1.0;
    const auto suspect = [&](const Phasors& corrected, const std::string& suspicion) {
        const Phasor lag = meanLag(voltages, corrected);
        if (std::abs(lag) >= coherentEnough && lag.real() > best) {
            best = lag.real();
            fault = suspicion;
        }
    };
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t next = (phase + 1) % phaseTotal;
        Phasors exchanged = currents;
        std::swap(exchanged[phase], exchanged[next]);
        suspect(turned(currents, phase), channelName(phaseTotal + phase) + " seems to be reversed.");
        suspect(exchanged, (isBackward ? channelName(phase) + " and " + channelName(next) + ", or " : "") +
                               channelName(phaseTotal + phase) + " and " + channelName(phaseTotal + next) +
                               " seem to be exchanged.");
    }
    faults.push_back(fault);
}

}  // namespace

Phasor phasorOf(const std::vector<double>& samples, double frequencyHz, double rateHz) {
    const auto count = static_cast<double>(samples.size());
    Phasor sum = 0.0;
    for (std::size_t k = 0; k < samples.size(); ++k) {
        const double weight = 1.0 - std::cos(2.0 * pi * (static_cast<double>(k) + 0.5) / count);
        sum += weight * samples[k] * std::polar(1.0, -2.0 * pi * frequencyHz * static_cast<double>(k) / rateHz);
    }
    return sum / count * Phasor(0.0, std::numbers::sqrt2);  // times j: the angle of a sine, not of a cosine
}

Unbalance unbalanceOf(const Phasors& phasors) {
    const double with = std::abs(forward(phasors));
    const double against = std::abs(backward(phasors));
    const double positive = std::max(with, against);
    return {100.0 * std::min(with, against) / positive, 100.0 * std::abs(meanOf(phasors)) / positive};
}

double lagDegrees(const Phasor& from, const Phasor& to) {
    return std::arg(from * std::conj(to)) * 180.0 / pi;
}

std::vector<std::string> wiringFaults(Phasors voltages, const Phasors& currents) {
    std::vector<std::string> faults;
    if (!isLive(voltages) || !makeSymmetrical(voltages, faults)) {
        return faults;
    }
    const bool isBackward = std::abs(backward(voltages)) > std::abs(forward(voltages));
    if (isBackward) {
        faults.emplace_back("The phase order is a-c-b: two voltages are exchanged, or the grid turns that way.");
    }
    if (isLive(currents)) {
        judgeCurrents(voltages, currents, isBackward, faults);
    }
    return faults;
}

}  // namespace rt305

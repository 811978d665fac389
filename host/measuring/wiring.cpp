#include "measuring/wiring.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace rt305 {

namespace {

/// The agreement of three phasors of unit length, the magnitude of their mean after the nominal angles are removed:
/// 1 for a symmetrical set, 1/3 with one of them reversed, 0 with two exchanged.
constexpr double agreesWhenCorrected = 0.9;
constexpr double agreesAsWired = 0.8;

bool isLive(const Phasors& x) {
    const auto [smallest, largest] = std::minmax({std::abs(x[0]), std::abs(x[1]), std::abs(x[2])});
    return std::isfinite(std::abs(x[0] + x[1] + x[2])) && smallest > 0.01 * largest;
}

Phasors withUnitLength(Phasors x) {
    std::transform(x.begin(), x.end(), x.begin(), [](const Phasor& p) { return p / std::abs(p); });
    return x;
}

Phasors withReversed(Phasors x, std::size_t phase) {
    x[phase] = -x[phase];
    return x;
}

Phasors withExchanged(Phasors x, std::size_t one, std::size_t other) {
    std::swap(x[one], x[other]);
    return x;
}

std::string channelName(std::size_t channel) {
    return std::string(channelNames[channel]);
}

/// The mean of the angles by which the currents lag their voltages, as a phasor of magnitude 1 when all three agree.
Phasor meanLag(const Phasors& voltages, const Phasors& currents) {
    Phasors lags;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        lags[phase] = voltages[phase] * std::conj(currents[phase]);
    }
    return sequenceComponentsOf(withUnitLength(lags)).zero;
}

double agreementOf(const Phasors& voltages) {
    const auto [forward, backward, zero] = sequenceComponentsOf(withUnitLength(voltages));
    return std::max(std::abs(forward), std::abs(backward));
}

/// Reverses the one voltage that makes the set symmetrical, if it is not already. False when no single one does.
bool makeSymmetrical(Phasors& voltages, std::vector<std::string>& faults) {
    if (agreementOf(voltages) >= agreesAsWired) {
        return true;
    }
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (const Phasors corrected = withReversed(voltages, phase); agreementOf(corrected) >= agreesWhenCorrected) {
            faults.push_back(channelName(phase) + " seems to be reversed.");
            voltages = corrected;
            return true;
        }
    }
    faults.emplace_back("The voltages are not 120 degrees apart, and no single reversed one explains it.");
    return false;
}

/// Three different exchanges of two currents can bring them into agreement with the voltages, at lags 120 degrees
/// apart; the one with the smallest lag is reported.
void judgeCurrents(const Phasors& voltages, const Phasors& currents, bool isBackward,
                   std::vector<std::string>& faults) {
    const Phasor asWired = meanLag(voltages, currents);
    if (std::abs(asWired) >= agreesAsWired) {
        if (asWired.real() < 0.0) {
            faults.emplace_back(
                "All currents oppose their voltages: power flows backwards, or all clamps are reversed.");
        }
        return;
    }
    std::string fault =
        "The angles between voltage and current differ much between the phases; no single reversed or exchanged "
        "current explains it.";
    double best = -1.0;
    const auto suspect = [&](const Phasors& corrected, const std::string& suspicion) {
        const Phasor lag = meanLag(voltages, corrected);
        if (std::abs(lag) >= agreesWhenCorrected && lag.real() > best) {
            best = lag.real();
            fault = suspicion;
        }
    };
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t next = (phase + 1) % phaseTotal;
        suspect(withReversed(currents, phase), channelName(phaseTotal + phase) + " seems to be reversed.");
        suspect(withExchanged(currents, phase, next),
                (isBackward ? channelName(phase) + " and " + channelName(next) + ", or " : "") +
                    channelName(phaseTotal + phase) + " and " + channelName(phaseTotal + next) +
                    " seem to be exchanged.");
    }
    faults.push_back(fault);
}

/// Voltages that may not be what they are taken for: one in the ratio of a line voltage to the others, or three that
/// add up to zero although they are not symmetrical. Takes what is measured as phase voltages.
std::vector<std::string> lineVoltagesAmong(const Phasors& voltages) {
    constexpr double lineRatio = 1.7320508;
    constexpr double tolerance = 0.03;
    const auto isAbout = [](double x, double y) { return std::fabs(x / y - 1.0) < tolerance; };
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const double one = std::abs(voltages[(phase + 1) % phaseTotal]);
        const double other = std::abs(voltages[(phase + 2) % phaseTotal]);
        if (isAbout(one, other) && isAbout(std::abs(voltages[phase]), lineRatio * one)) {
            return {channelName(phase) + " is 1.73 times the other voltages: it may be a line voltage."};
        }
    }
    const auto [negative, zero] = unbalanceOf(voltages);
    if (negative > 1.0 && zero < 0.01) {
        return {
            "The voltages add up to zero although they are not symmetrical, as line voltages do: --wiring three if "
            "they are."};
    }
    return {};
}

/// Empty when there is none.
std::string reasonNotToJudge(const FullMeasurement& full, const Fundamentals& fundamentals) {
    if (const std::string obstacle = full.obstacleToComponents(); !obstacle.empty()) {
        return ", because " + obstacle;
    }
    if (full.asRecorded().settings.part == Part::fault) {
        return " in a fault";
    }
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (!fundamentals.hasSignal[phase]) {
            return ", because " + channelName(phase) +
                   (fundamentals.hasGaps(phase) ? " has missing samples" : " has no fundamental");
        }
    }
    return "";
}

void addCurrentSum(const CurrentSum& sum, std::vector<Remark>& verdict) {
    constexpr double largestShare = 0.05;
    if (sum.ofSum > largestShare * sum.ofLargest) {
        verdict.emplace_back("The currents of three wires must add up to zero, but their sum is " +
                                 formatNumber(100.0 * sum.ofSum / sum.ofLargest, 3) + " % of the largest.",
                             topic::ofCurrent);
    }
}

}  // namespace

std::vector<std::string> wiringFaults(Phasors voltages, const Phasors& currents) {
    std::vector<std::string> faults;
    if (!isLive(voltages) || !makeSymmetrical(voltages, faults)) {
        return faults;
    }
    const auto [forward, backward, zero] = sequenceComponentsOf(voltages);
    const bool isBackward = std::abs(backward) > std::abs(forward);
    if (isBackward) {
        faults.emplace_back("The phase order is a-c-b: two voltages are exchanged, or the grid has this order.");
    }
    if (isLive(currents)) {
        judgeCurrents(voltages, currents, isBackward, faults);
    }
    return faults;
}

std::vector<Remark> judgeWiring(const FullMeasurement& full, const Fundamentals& fundamentals,
                                const DerivedFigures& derived) {
    if (!full.measurement.hasVoltages() || !full.measurement.isThreePhase()) {
        return {};
    }
    if (std::string reason = reasonNotToJudge(full, fundamentals); !reason.empty()) {
        return {"not judged" + reason + "."};
    }
    const auto* const ofCurrents = fundamentals.hasSignal.begin() + phaseTotal;
    const bool areLive = std::all_of(ofCurrents, fundamentals.hasSignal.end(), [](bool live) { return live; });
    std::vector<Remark> verdict;
    for (std::string& fault : wiringFaults(fundamentals.voltages, areLive ? fundamentals.currents : Phasors{})) {
        verdict.emplace_back(std::move(fault), topic::angles);
    }
    if (!full.fromLineVoltages) {
        for (std::string& doubt : lineVoltagesAmong(fundamentals.voltages)) {
            verdict.emplace_back(std::move(doubt), topic::ofVoltage);
        }
    }
    if (verdict.empty()) {
        verdict.emplace_back(full.measurement.isCombined() ? "nothing odd in the order and the angles."
                                                           : "phase order a-b-c, about 120 degrees apart.");
    }
    if (full.fromLineVoltages && derived.currentSum) {
        addCurrentSum(*derived.currentSum, verdict);
    }
    return verdict;
}

}  // namespace rt305

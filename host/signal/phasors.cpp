#include "signal/phasors.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rt305 {

namespace {

using std::numbers::pi;

const Phasor a = std::polar(1.0, 2.0 * pi / 3.0);  // rotates by 120 degrees

Phasor meanOf(const Phasors& x) {
    return (x[0] + x[1] + x[2]) / 3.0;
}

}  // namespace

SequenceComponents sequenceComponentsOf(const Phasors& x) {
    return {meanOf({x[0], a * x[1], a * a * x[2]}), meanOf({x[0], a * a * x[1], a * x[2]}), meanOf(x)};
}

Unbalance unbalanceOf(const Phasors& phasors) {
    const SequenceComponents components = sequenceComponentsOf(phasors);
    const double forward = std::abs(components.forward);
    const double backward = std::abs(components.backward);
    const double positive = std::max(forward, backward);
    return {100.0 * std::min(forward, backward) / positive, 100.0 * std::abs(components.zero) / positive};
}

double lagDegrees(const Phasor& from, const Phasor& to) {
    return std::arg(from * std::conj(to)) * 180.0 / pi;
}

}  // namespace rt305

#include "signal/flicker.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <numeric>

namespace rt305 {

namespace {

using std::numbers::pi;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double groupsPerSecond = 2000.0;
constexpr double adaptationSeconds = 27.3;
constexpr double highPassHz = 0.05;
constexpr double smoothingSeconds = 0.3;
constexpr double calibrationHz = 8.8;
constexpr double firstSeconds = 0.2;

/// Lamp, eye and brain: IEC 61000-4-15, table 1 and the change of voltage at 8.8 Hz that is just seen. Frequencies in
/// Hz.
struct Weighting {
    double k, damping, f1, f2, f3, f4;
    double seenChange;  // dU/U
};
constexpr Weighting weightings[] = {{1.74802, 4.05981, 9.15494, 2.27979, 1.22535, 21.9, 0.00250},
                                    {1.6357, 4.167375, 9.077169, 2.939902, 1.394468, 17.31512, 0.00321}};

}  // namespace

std::complex<double> FlickerMeter::Section::response(double radians) const {
    const auto z = std::polar(1.0, -radians);
    return (b0 + b1 * z + b2 * z * z) / (1.0 + a1 * z + a2 * z * z);
}

FlickerMeter::Section FlickerMeter::section(double n0, double n1, double n2, double d0, double d1, double d2) const {
    const double c = 2.0 * groupRate_;
    const double scale = d0 + d1 * c + d2 * c * c;
    return {(n0 + n1 * c + n2 * c * c) / scale, (2.0 * n0 - 2.0 * n2 * c * c) / scale,
            (n0 - n1 * c + n2 * c * c) / scale, (2.0 * d0 - 2.0 * d2 * c * c) / scale,
            (d0 - d1 * c + d2 * c * c) / scale};
}

FlickerMeter::FlickerMeter(double rateHz, double systemHz, Lamp lamp)
    : groupSize_(std::max<std::size_t>(1, static_cast<std::size_t>(rateHz / groupsPerSecond))),
      groupRate_(rateHz / static_cast<double>(groupSize_)),
      smoothing_(section(1.0, 0.0, 0.0, 1.0, smoothingSeconds, 0.0)),
      adaptation_(1.0 / (adaptationSeconds * groupRate_)) {
    const double high = 2.0 * pi * highPassHz;
    sections_.push_back(section(0.0, 1.0, 0.0, high, 1.0, 0.0));
    const double low = 2.0 * pi * (systemHz < 55.0 ? 35.0 : 42.0);
    for (const double degrees : {15.0, 45.0, 75.0}) {  // Butterworth, 6th order
        sections_.push_back(section(low * low, 0.0, 0.0, low * low, 2.0 * std::cos(degrees * pi / 180.0) * low, 1.0));
    }
    addWeighting(lamp);
}

void FlickerMeter::addWeighting(Lamp lamp) {
    const Weighting& w = weightings[lamp == Lamp::of230V ? 0 : 1];
    const double w1 = 2.0 * pi * w.f1;
    const double w3 = 2.0 * pi * w.f3;
    const double w4 = 2.0 * pi * w.f4;
    sections_.push_back(section(0.0, w.k * w1, 0.0, w1 * w1, 4.0 * pi * w.damping, 1.0));
    sections_.push_back(section(1.0, 1.0 / (2.0 * pi * w.f2), 0.0, 1.0, 1.0 / w3 + 1.0 / w4, 1.0 / (w3 * w4)));
    // u (1 + m sin) has the square 1 + 2 m sin, 2 m being dU/U; behind block 3 its square is smoothed
    const double radians = 2.0 * pi * calibrationHz / groupRate_;
    const double gain = std::accumulate(sections_.begin(), sections_.end(), 1.0, [=](double product, const Section& s) {
        return product * std::abs(s.response(radians));
    });
    const double mean = 0.5 * w.seenChange * w.seenChange * gain * gain;
    scale_ = 1.0 / (mean * (1.0 + std::abs(smoothing_.response(2.0 * radians))));
}

void FlickerMeter::push(std::span<const double> samples) {
    for (const double x : samples) {
        sum_ += x * x;
        if (++summed_ == groupSize_) {
            const double square = sum_ / static_cast<double>(groupSize_);
            sum_ = 0.0;
            summed_ = 0;
            if (reference_ >= 0.0) {
                addGroup(square);
                continue;
            }
            first_.push_back(square);
            if (static_cast<double>(first_.size()) >= firstSeconds * groupRate_) {
                reference_ =
                    std::accumulate(first_.begin(), first_.end(), 0.0,
                                    [](double sum, double each) { return sum + (std::isnan(each) ? 0.0 : each); }) /
                    static_cast<double>(first_.size());
                std::for_each(first_.begin(), first_.end(), [this](double each) { addGroup(each); });
            }
        }
    }
}

/// A missing or dead voltage gives no change.
void FlickerMeter::addGroup(double square) {
    const double usual = std::isnan(square) ? reference_ : square;
    reference_ += adaptation_ * (usual - reference_);
    const double relative = reference_ > 0.0 ? usual / reference_ : 1.0;
    double y = relative - 1.0;  // the high pass removes the constant, which would take it a minute
    for (Section& section : sections_) {
        y = section.filter(y);
    }
    const double smooth = scale_ * smoothing_.filter(y * y);
    const double due = static_cast<double>(sensation_.size()) / valuesPerSecond * groupRate_;
    if (static_cast<double>(groups_++) >= due) {
        sensation_.push_back(static_cast<float>(std::fmax(0.0, smooth)));
    }
}

double shortTermSeverity(std::span<const float> sensation) {
    if (sensation.empty()) {
        return nan;
    }
    std::vector<float> sorted(sensation.begin(), sensation.end());
    std::sort(sorted.begin(), sorted.end(), std::greater<>());
    const auto exceeded = [&sorted](double percent) {
        const double place = percent / 100.0 * static_cast<double>(sorted.size()) - 0.5;
        const auto at = static_cast<std::size_t>(std::clamp(place, 0.0, static_cast<double>(sorted.size() - 1)));
        const double part = std::clamp(place - static_cast<double>(at), 0.0, 1.0);
        return sorted[at] + part * (sorted[std::min(at + 1, sorted.size() - 1)] - sorted[at]);
    };
    const double p50 = (exceeded(30.0) + exceeded(50.0) + exceeded(80.0)) / 3.0;
    const double p10 = (exceeded(6.0) + exceeded(8.0) + exceeded(10.0) + exceeded(13.0) + exceeded(17.0)) / 5.0;
    const double p3 = (exceeded(2.2) + exceeded(3.0) + exceeded(4.0)) / 3.0;
    const double p1 = (exceeded(0.7) + exceeded(1.0) + exceeded(1.5)) / 3.0;
    return std::sqrt(0.0314 * exceeded(0.1) + 0.0525 * p1 + 0.0657 * p3 + 0.28 * p10 + 0.08 * p50);
}

double longTermSeverity(std::span<const double> shortTerm) {
    double sum = 0.0;
    std::size_t count = 0;
    for (const double each : shortTerm) {
        if (!std::isnan(each)) {
            sum += each * each * each;
            ++count;
        }
    }
    return count > 0 ? std::cbrt(sum / static_cast<double>(count)) : nan;
}

}  // namespace rt305

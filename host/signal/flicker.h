#ifndef RT305_HOST_SIGNAL_FLICKER_H
#define RT305_HOST_SIGNAL_FLICKER_H

#include <complex>
#include <span>
#include <vector>

namespace rt305 {

/// The incandescent lamp whose flicker is computed.
enum class Lamp { of230V, of120V };

/// Flicker of one voltage by the five blocks of IEC 61000-4-15, edition 2.
///
/// The squares of the samples are averaged in groups to about 2 kHz, and the filters are the bilinear transforms of the
/// analog ones at that rate. The scale makes the sinusoidal modulation of 8.8 Hz that the standard names for the lamp
/// give a largest sensation of 1. A missing sample counts as no change.
class FlickerMeter {
public:
    /// Values of Pinst a second.
    static constexpr double valuesPerSecond = 100.0;

    FlickerMeter(double rateHz, double systemHz, Lamp lamp);

    void push(std::span<const double> samples);

    /// Pinst, `valuesPerSecond` from the first sample on. All of them are kept.
    const std::vector<float>& sensation() const { return sensation_; }

private:
    /// A first- or second-order section.
    struct Section {
        double b0, b1, b2, a1, a2;
        double z1 = 0.0, z2 = 0.0;

        double filter(double x) {
            const double y = b0 * x + z1;
            z1 = b1 * x - a1 * y + z2;
            z2 = b2 * x - a2 * y;
            return y;
        }
        std::complex<double> response(double radians) const;
    };

    /// The bilinear transform of (n0 + n1 s + n2 s^2) / (d0 + d1 s + d2 s^2).
    Section section(double n0, double n1, double n2, double d0, double d1, double d2) const;
    void addWeighting(Lamp lamp);
    void addGroup(double square);

    std::size_t groupSize_;
    double groupRate_;
    std::vector<Section> sections_{};  // block 3
    Section smoothing_;                // block 4
    double scale_ = 1.0;
    double reference_ = -1.0;  // mean square that the lamp is adapted to; negative: not known yet
    double adaptation_;        // per group
    double sum_ = 0.0;
    std::size_t summed_ = 0;
    std::vector<double> first_{};  // groups of the first fifth of a second, which give the first reference
    std::vector<float> sensation_{};
    std::size_t groups_ = 0;
};

/// Pst of a range of Pinst values: sqrt(0.0314 P0.1 + 0.0525 P1s + 0.0657 P3s + 0.28 P10s + 0.08 P50s), with the levels
/// exceeded for these shares of the range in percent, smoothed as the standard says. NaN for an empty range.
double shortTermSeverity(std::span<const float> sensation);

/// Plt: the cube root of the mean cube. NaN are left out.
double longTermSeverity(std::span<const double> shortTerm);

}  // namespace rt305

#endif

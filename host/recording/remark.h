#ifndef RT305_HOST_RECORDING_REMARK_H
#define RT305_HOST_RECORDING_REMARK_H

#include <string>
#include <utility>

namespace rt305 {

/// The quantities that a remark can concern, as bits.
namespace topic {
inline constexpr unsigned voltage = 1U << 0U;
inline constexpr unsigned current = 1U << 1U;
inline constexpr unsigned frequency = 1U << 2U;
inline constexpr unsigned activePower = 1U << 3U;
inline constexpr unsigned reactivePower = 1U << 4U;
inline constexpr unsigned apparentPower = 1U << 5U;
inline constexpr unsigned powerFactor = 1U << 6U;
inline constexpr unsigned voltageThd = 1U << 7U;
inline constexpr unsigned currentThd = 1U << 8U;
inline constexpr unsigned voltageUnbalance = 1U << 9U;
inline constexpr unsigned currentUnbalance = 1U << 10U;
inline constexpr unsigned library = 1U << 11U;  // the figures that the library gives beside these

inline constexpr unsigned thd = voltageThd | currentThd;
inline constexpr unsigned unbalance = voltageUnbalance | currentUnbalance;
inline constexpr unsigned angles = activePower | reactivePower | powerFactor;  // between voltage and current
inline constexpr unsigned power = angles | apparentPower;
inline constexpr unsigned ofVoltage = voltage | power | voltageThd | voltageUnbalance;
inline constexpr unsigned ofCurrent = current | power | currentThd | currentUnbalance;
}  // namespace topic

/// A sentence that a reader of results must know.
struct Remark {
    Remark(std::string sentence, unsigned quantities = 0)  // NOLINT(google-explicit-constructor)
        : text(std::move(sentence)), topics(quantities) {}

    std::string text;
    unsigned topics;  // 0: the recording as a whole
};

}  // namespace rt305

#endif

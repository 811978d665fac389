#ifndef RT305_HOST_RECORDING_CHANNELS_H
#define RT305_HOST_RECORDING_CHANNELS_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace rt305 {

/// The six channels of a measurement: three voltages, then three currents. A channel number is an index into this list.
inline constexpr std::array<std::string_view, 6> channelNames{"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"};
inline constexpr std::size_t channelTotal = channelNames.size();
inline constexpr std::size_t phaseTotal = 3;

/// The line voltages, which may stand in place of the phase voltages.
inline constexpr std::array<std::string_view, phaseTotal> lineVoltageNames{"Uab", "Ubc", "Uca"};

constexpr bool isCurrent(std::size_t channel) {
    return channel >= phaseTotal;
}

/// Finds a channel by its name, in any case.
std::optional<std::size_t> findChannel(std::string_view name);

template <class T>
using PerChannel = std::array<T, channelTotal>;
template <class T>
using PerPhase = std::array<T, phaseTotal>;

/// Parses a number per channel: six numbers "1,1,1,20,20,20", or "Ia=20,Ib=20" with `otherwise` for the other channels.
/// Fails on any other text, naming the option.
PerChannel<double> parsePerChannel(std::string_view option, std::string_view text, double otherwise);

/// Parses "Ua=COLUMN,Ib=COLUMN" into a column name per channel; empty for the channels that are not listed.
PerChannel<std::string> parseColumnMap(std::string_view option, std::string_view text);

}  // namespace rt305

#endif

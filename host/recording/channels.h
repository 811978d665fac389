#ifndef RT305_HOST_RECORDING_CHANNELS_H
#define RT305_HOST_RECORDING_CHANNELS_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace rt305 {

/// The six channels of a measurement: three voltages, then three currents. A channel is known by its place here.
inline constexpr std::array<std::string_view, 6> channelNames{"Ua", "Ub", "Uc", "Ia", "Ib", "Ic"};
inline constexpr std::size_t channelTotal = channelNames.size();
inline constexpr std::size_t phaseTotal = 3;

constexpr bool isCurrent(std::size_t channel) {
    return channel >= phaseTotal;
}

/// The channel of that name, in any case.
std::optional<std::size_t> findChannel(std::string_view name);

template <class T>
using PerChannel = std::array<T, channelTotal>;

/// Settings by channel: six numbers "1,1,1,20,20,20", or names "Ia=20,Ib=20" that leave the others at `otherwise`.
/// Fails on all other text, naming the option.
PerChannel<double> parsePerChannel(std::string_view option, std::string_view text, double otherwise);

/// Column names by channel from "Ua=COLUMN,Ib=COLUMN"; empty for the channels not named.
PerChannel<std::string> parseColumnMap(std::string_view option, std::string_view text);

}  // namespace rt305

#endif

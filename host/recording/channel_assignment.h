#ifndef RT305_HOST_RECORDING_CHANNEL_ASSIGNMENT_H
#define RT305_HOST_RECORDING_CHANNEL_ASSIGNMENT_H

#include <optional>
#include <string>
#include <vector>

#include "recording/channels.h"
#include "recording/recording.h"
#include "recording/remark.h"

namespace rt305 {

/// Which column holds each channel, and why.
struct Assignment {
    PerChannel<std::optional<std::size_t>> columns;
    PerChannel<std::string> reasons;
    std::vector<Remark> warnings;   // about ambiguous guesses and unused columns
    bool areLineVoltages = false;   // Ua, Ub and Uc are the voltages ab, bc and ca; one may have no column
    PerChannel<bool> isReversed{};  // the column has the opposite sign: "Uba"

    std::string_view nameOf(std::size_t channel) const {
        return areLineVoltages && !isCurrent(channel) ? lineVoltageNames[channel] : channelNames[channel];
    }
};

/// Finds the column of each channel: the user's choice (a column name in any case, or a number from 1), otherwise a
/// guess.
///
/// A column is recognised by a word in its name ("Ua", "V1", "ib", "IL2", "VR"), by two words ("Voltage A", "I_A"), or
/// by its unit and the phase given in the file. With two phases ("Uab", "U12", "UL1L2", "V_CA", phase "AB") it is a
/// line voltage. Line voltages are taken, two of them or more, when there are not three phase voltages. Its unit must
/// be of voltage or current, or missing. If several groups of three columns match that differ only in the rest of their
/// names, the first group is used. Six columns without names are used in order. Of a recording of one phase, the
/// only voltage and the only current are used, with or without a phase in their names. A warning names the columns that
/// look like voltages or currents and are not used.
///
/// Fails when a chosen column does not exist, when two columns outside a group match one channel, and when a column
/// that is used has a fault.
Assignment assignColumns(const Recording& recording, const PerChannel<std::string>& chosen = {});

/// Finds a column by its name in any case, or by its number from 1. Fails when there is none.
std::size_t findColumn(const Recording& recording, const std::string& nameOrNumber);

}  // namespace rt305

#endif

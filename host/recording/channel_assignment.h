#ifndef RT305_HOST_RECORDING_CHANNEL_ASSIGNMENT_H
#define RT305_HOST_RECORDING_CHANNEL_ASSIGNMENT_H

#include <optional>
#include <string>
#include <vector>

#include "recording/channels.h"
#include "recording/recording.h"

namespace rt305 {

/// Which column holds which channel, and why.
struct Assignment {
    PerChannel<std::optional<std::size_t>> columns;
    PerChannel<std::string> reasons;
    std::vector<std::string> warnings;  // of guesses that another column could have met as well
};

/// The column that holds each channel: the user's choice (a column's name in any case, or its number from 1), else a
/// guess.
///
/// A guess takes a column by a word such as "Ua", "V1", "ib", "IL2" or "VR" in its name, by two such as "Voltage A", or
/// by its unit and the phase that the file gives it; never one whose unit is neither of voltage nor of current. Of
/// several groups of three that differ in the rest of their names only, the first is taken. Six columns
/// without names are taken in order.
///
/// Fails when a choice does not exist, when two columns outside a group name one channel, and when a column that is
/// taken has a fault.
Assignment assignColumns(const Recording& recording, const PerChannel<std::string>& chosen = {});

/// The column of that name in any case, else of that number from 1. Fails when there is none.
std::size_t findColumn(const Recording& recording, const std::string& nameOrNumber);

}  // namespace rt305

#endif

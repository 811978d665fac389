#include "recording.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "failure.h"
#include "text.h"

namespace rt305 {

namespace {

/// "MODAQ_Va_V" -> "modaq", "va", "v".
std::vector<std::string> wordsOf(std::string_view name) {
    std::vector<std::string> words(1);
    for (const char c : lowerCase(name)) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            words.back() += c;
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    return words;
}

/// Whether a word of the name is a usual one for the channel: Ua, Va, U1, V1 for the first voltage, Ia, I1.
bool namesChannel(std::string_view name, std::size_t channel) {
    const std::string_view quantities = isCurrent(channel) ? "i" : "uv";
    const char letter = "abc"[channel % phaseTotal];
    const char digit = "123"[channel % phaseTotal];
    const auto words = wordsOf(name);
    return std::any_of(words.begin(), words.end(), [&](const std::string& word) {
        return word.size() == 2 && quantities.find(word[0]) != std::string_view::npos &&
               (word[1] == letter || word[1] == digit);
    });
}

std::optional<std::size_t> findByName(const Recording& recording, std::size_t channel) {
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        const std::string& name = recording.columns[i].name;
        if (!namesChannel(name, channel)) {
            continue;
        }
        if (found) {
            failInput(recording.source + ": columns " + inQuotes(recording.columns[*found].name) + " and " +
                      inQuotes(name) + " both name " + std::string(channelNames[channel]) +
                      "; choose one by name or number with --map " + std::string(channelNames[channel]) + "=COLUMN");
        }
        found = i;
    }
    return found;
}

std::size_t findChosen(const Recording& recording, const std::string& choice) {
    const auto named = std::find_if(recording.columns.begin(), recording.columns.end(),
                                    [&](const Column& column) { return lowerCase(column.name) == lowerCase(choice); });
    if (named != recording.columns.end()) {
        return static_cast<std::size_t>(named - recording.columns.begin());
    }
    const std::size_t number = parseCount(choice).value_or(0);
    if (number < 1 || number > recording.columns.size()) {
        std::vector<std::string> names;
        for (const Column& column : recording.columns) {
            names.push_back(inQuotes(column.name));
        }
        failInput(recording.source + ": there is no column " + inQuotes(choice) + "; the file has " + joined(names));
    }
    return number - 1;
}

}  // namespace

PerChannel<std::optional<std::size_t>> assignColumns(const Recording& recording,
                                                     const PerChannel<std::string>& chosen) {
    PerChannel<std::optional<std::size_t>> columns;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        columns[channel] = chosen[channel].empty() ? findByName(recording, channel)
                                                   : std::optional(findChosen(recording, chosen[channel]));
        if (columns[channel] && !recording.columns[*columns[channel]].fault.empty()) {
            failInput(recording.columns[*columns[channel]].fault);
        }
    }
    return columns;
}

std::vector<double> samplesInBaseUnit(const Column& column) {
    static constexpr std::pair<std::string_view, double> units[] = {{"kV", 1e3}, {"mV", 1e-3}, {"uV", 1e-6},
                                                                    {"kA", 1e3}, {"mA", 1e-3}, {"uA", 1e-6}};
    std::vector<double> samples = column.samples;
    for (const auto& [unit, factor] : units) {
        if (column.unit == unit) {
            std::transform(samples.begin(), samples.end(), samples.begin(), [f = factor](double x) { return x * f; });
        }
    }
    return samples;
}

}  // namespace rt305

#include "recording/channel_assignment.h"

#include <algorithm>
#include <cctype>

#include "base/failure.h"
#include "base/text.h"
#include "base/units.h"

namespace rt305 {

namespace {

using Words = std::vector<std::string>;

/// "MODAQ_Va_V" -> "modaq", "va", "v".
Words wordsOf(std::string_view name) {
    Words words(1);
    for (const char c : lowerCase(name)) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            words.back() += c;
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    return words;
}

/// The characters for the three phases. The columns of a group use the same set.
constexpr std::string_view phaseLetters[] = {"abc", "123", "rst"};

constexpr const char* byName = "by its name";

/// What a column holds, by its name, unit and phase.
struct Identity {
    Quantity quantity = Quantity::unknown;
    std::size_t phase = 0;
    std::string group;  // equal for the columns of one group
    std::string reason;

    std::size_t channel() const { return (quantity == Quantity::current ? phaseTotal : 0) + phase; }
};

struct Phase {
    std::size_t number;
    std::string_view letters;  // the set of phase characters it is from
};

/// Parses "a", "2", "s", or a digit after "l": "l2".
std::optional<Phase> phaseOf(std::string_view word) {
    const bool isLine = word.size() == 2 && word[0] == 'l';
    if (!isLine && word.size() != 1) {
        return std::nullopt;
    }
    for (const std::string_view letters : phaseLetters) {
        const std::size_t number = letters.find(word.back());
        if (number != std::string_view::npos && (!isLine || letters == "123")) {
            return Phase{number, letters};
        }
    }
    return std::nullopt;
}

/// In English, German and French.
Quantity quantityOf(std::string_view word) {
    static constexpr std::pair<std::string_view, Quantity> words[] = {
        {"u", Quantity::voltage},        {"v", Quantity::voltage},       {"voltage", Quantity::voltage},
        {"spannung", Quantity::voltage}, {"tension", Quantity::voltage}, {"i", Quantity::current},
        {"current", Quantity::current},  {"strom", Quantity::current},   {"courant", Quantity::current}};
    const auto* const found =
        std::find_if(std::begin(words), std::end(words), [word](const auto& known) { return known.first == word; });
    return found == std::end(words) ? Quantity::unknown : found->second;
}

/// Parses "ua", "v1", "il2", "ia7", "van": a quantity, a phase, and after a phase letter a number or "n" for neutral.
std::optional<Identity> identifyWord(std::string_view word) {
    const Quantity quantity = quantityOf(word.substr(0, 1));
    if (quantity == Quantity::unknown || word.size() < 2) {
        return std::nullopt;
    }
    const std::size_t phaseEnd = word[1] == 'l' ? 3 : 2;
    const auto phase = phaseOf(word.substr(1, phaseEnd - 1));
    const std::string_view rest = word.substr(std::min(phaseEnd, word.size()));
    const bool restIsNumber = std::all_of(rest.begin(), rest.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!phase || !(rest.empty() || (phase->letters == "abc" && (restIsNumber || rest == "n")))) {
        return std::nullopt;
    }
    return Identity{quantity, phase->number, std::string(phase->letters) + std::string(rest), byName};
}

/// Whether a column holds values computed from another one, not samples.
bool isComputed(const Words& words) {
    static constexpr std::string_view computed[] = {"mag", "magnitude", "ang", "angle", "rms"};
    return std::any_of(words.begin(), words.end(), [](const std::string& word) {
        return std::find(std::begin(computed), std::end(computed), word) != std::end(computed);
    });
}

/// One word with both quantity and phase. The group is the rest of the name.
std::optional<Identity> identifyByOneWord(Words words) {
    for (std::string& word : words) {
        if (auto identity = identifyWord(word)) {
            word.clear();
            for (const std::string& other : words) {
                identity->group += ' ' + other;
            }
            return identity;
        }
    }
    return std::nullopt;
}

/// A word for the quantity and one for the phase, such as "Voltage A". A single letter for the quantity, as in "I_A",
/// comes first: the one in "L1_V" is a unit. The group is the rest of the name.
std::optional<Identity> identifyByTwoWords(const Words& words) {
    Identity identity{Quantity::unknown, 0, "", byName};
    std::optional<Phase> phase;
    std::string rest;
    for (const std::string& word : words) {
        if (const Quantity quantity = quantityOf(word); quantity != Quantity::unknown && (word.size() > 1 || !phase)) {
            identity.quantity = quantity;
        } else if (const auto here = phaseOf(word)) {
            phase = here;
        } else {
            rest += ' ' + word;
        }
    }
    if (!phase || identity.quantity == Quantity::unknown) {
        return std::nullopt;
    }
    identity.phase = phase->number;
    identity.group = std::string(phase->letters) + " words" + rest;
    return identity;
}

std::optional<Identity> identifyByName(std::string_view name) {
    const Words words = wordsOf(name);
    if (isComputed(words)) {
        return std::nullopt;
    }
    const auto identity = identifyByOneWord(words);
    return identity ? identity : identifyByTwoWords(words);
}

std::optional<Identity> identify(const Column& column) {
    const Quantity ofUnit = unitOf(column.unit).quantity;
    if (ofUnit == Quantity::other || ofUnit == Quantity::time) {
        return std::nullopt;
    }
    if (auto identity = identifyByName(column.name)) {
        return ofUnit == Quantity::unknown || ofUnit == identity->quantity ? identity : std::nullopt;
    }
    const auto phase = phaseOf(lowerCase(column.phase));
    if (!phase || ofUnit == Quantity::unknown) {
        return std::nullopt;
    }
    return Identity{ofUnit, phase->number, "phases " + std::string(phase->letters),
                    "by unit " + column.unit + " and phase " + column.phase};
}

/// Columns of one quantity that differ only in their phases.
struct Group {
    std::string name;
    std::array<std::optional<std::size_t>, phaseTotal> columns;

    bool isComplete() const {
        return std::all_of(columns.begin(), columns.end(), [](const auto& column) { return column.has_value(); });
    }
};

using Identities = std::vector<std::optional<Identity>>;

std::vector<Group> groupsOf(const Identities& identities, Quantity quantity) {
    std::vector<Group> groups;
    for (std::size_t i = 0; i < identities.size(); ++i) {
        if (!identities[i] || identities[i]->quantity != quantity) {
            continue;
        }
        const Identity& identity = *identities[i];
        const auto open = std::find_if(groups.begin(), groups.end(), [&identity](const Group& group) {
            return group.name == identity.group && !group.columns[identity.phase];
        });
        Group& group = open == groups.end() ? groups.emplace_back(Group{identity.group, {}}) : *open;
        group.columns[identity.phase] = i;
    }
    return groups;
}

/// The column identified as the channel. Fails when there are several.
std::optional<std::size_t> onlyColumn(const Recording& recording, const Identities& identities, std::size_t channel) {
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < identities.size(); ++i) {
        if (!identities[i] || identities[i]->channel() != channel) {
            continue;
        }
        if (found) {
            failInput(recording.source + ": columns " + inQuotes(recording.columns[*found].name) + " and " +
                      inQuotes(recording.columns[i].name) + " both match " + std::string(channelNames[channel]) +
                      "; choose one by name or number with --map " + std::string(channelNames[channel]) + "=COLUMN");
        }
        found = i;
    }
    return found;
}

/// Guesses the columns of the channels of one quantity that have none.
void guess(const Recording& recording, const Identities& identities, Quantity quantity, Assignment& assignment) {
    const auto groups = groupsOf(identities, quantity);
    const auto isComplete = [](const Group& group) { return group.isComplete(); };
    const auto group = std::find_if(groups.begin(), groups.end(), isComplete);
    const auto complete = std::count_if(groups.begin(), groups.end(), isComplete);
    const std::string suchGroups = complete > 1 ? ", first of " + std::to_string(complete) + " such groups" : "";
    const bool isOfCurrents = quantity == Quantity::current;
    std::vector<std::string> guessed;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t channel = (isOfCurrents ? phaseTotal : 0) + phase;
        auto& column = assignment.columns[channel];
        if (column) {
            continue;
        }
        column = group != groups.end() ? group->columns[phase] : onlyColumn(recording, identities, channel);
        if (column) {
            assignment.reasons[channel] = identities[*column]->reason + suchGroups;
            guessed.push_back(inQuotes(recording.columns[*column].name));
        }
    }
    if (complete > 1 && !guessed.empty()) {
        assignment.warnings.push_back("using " + joined(guessed) + ", the first of " + std::to_string(complete) +
                                      " groups of " + (isOfCurrents ? "currents" : "voltages") +
                                      "; choose others with --map");
    }
}

/// Readers number the columns of a file without names.
bool haveNoNames(const Recording& recording) {
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        if (recording.columns[i].name != std::to_string(i + 1)) {
            return false;
        }
    }
    return true;
}

void guessByPosition(const Recording& recording, Assignment& assignment) {
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        assignment.columns[channel] = channel;
        assignment.reasons[channel] = "by position";
    }
    assignment.warnings.push_back(recording.source +
                                  ": the columns have no names; assuming the order Ua, Ub, Uc, Ia, Ib, Ic; choose "
                                  "others with --map");
}

}  // namespace

std::size_t findColumn(const Recording& recording, const std::string& nameOrNumber) {
    const auto named = std::find_if(recording.columns.begin(), recording.columns.end(), [&](const Column& column) {
        return lowerCase(column.name) == lowerCase(nameOrNumber);
    });
    if (named != recording.columns.end()) {
        return static_cast<std::size_t>(named - recording.columns.begin());
    }
    const std::size_t number = parseCount(nameOrNumber).value_or(0);
    if (number < 1 || number > recording.columns.size()) {
        std::vector<std::string> names;
        for (const Column& column : recording.columns) {
            names.push_back(inQuotes(column.name));
        }
        failInput(recording.source + ": there is no column " + inQuotes(nameOrNumber) + "; the file has " +
                  joined(names));
    }
    return number - 1;
}

Assignment assignColumns(const Recording& recording, const PerChannel<std::string>& chosen) {
    Assignment assignment;
    bool isChosen = false;
    for (std::size_t channel = 0; channel < channelTotal; ++channel) {
        if (!chosen[channel].empty()) {
            assignment.columns[channel] = findColumn(recording, chosen[channel]);
            assignment.reasons[channel] = "by --map";
            isChosen = true;
        }
    }
    Identities identities(recording.columns.size());
    std::transform(recording.columns.begin(), recording.columns.end(), identities.begin(), identify);
    if (!isChosen && recording.columns.size() == channelTotal && haveNoNames(recording)) {
        guessByPosition(recording, assignment);
    }
    guess(recording, identities, Quantity::voltage, assignment);
    guess(recording, identities, Quantity::current, assignment);
    for (const auto& column : assignment.columns) {
        if (column && !recording.columns[*column].fault.empty()) {
            failInput(recording.columns[*column].fault);
        }
    }
    return assignment;
}

}  // namespace rt305

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

/// A phase, or a pair of phases: ab, bc and ca have the numbers 0 to 2.
struct Phase {
    std::size_t number;
    std::string_view letters;  // the set of phase characters it is from
    bool isPair = false;
    bool isReversed = false;  // the pair is ba, cb or ac
};

/// What a column holds, by its name, unit and phase.
struct Identity {
    Quantity quantity = Quantity::unknown;
    Phase phase{};
    std::string group;  // equal for the columns of one group
    std::string reason;

    std::size_t channel() const { return (quantity == Quantity::current ? phaseTotal : 0) + phase.number; }
};

/// Takes a phase from the start of a word: "a", "2", "s", or a digit after "l": "l2".
std::optional<Phase> takePhase(std::string_view& word) {
    const std::size_t place = word.substr(0, 1) == "l" ? 1 : 0;
    if (word.size() <= place) {
        return std::nullopt;
    }
    for (const std::string_view letters : phaseLetters) {
        const std::size_t number = letters.find(word[place]);
        if (number != std::string_view::npos && (place == 0 || letters == "123")) {
            word.remove_prefix(place + 1);
            return Phase{number, letters};
        }
    }
    return std::nullopt;
}

std::optional<Phase> pairOf(const Phase& from, const Phase& to) {
    if (from.letters != to.letters || from.number == to.number || from.isPair || to.isPair) {
        return std::nullopt;
    }
    const bool isReversed = to.number != (from.number + 1) % phaseTotal;
    return Phase{isReversed ? to.number : from.number, from.letters, true, isReversed};
}

/// Takes a phase or a pair of phases from the start of a word: "ab", "12", "l1l2", "l12".
std::optional<Phase> takePhases(std::string_view& word) {
    const auto first = takePhase(word);
    std::string_view rest = word;
    const auto second = first ? takePhase(rest) : std::nullopt;
    const auto pair = second ? pairOf(*first, *second) : std::nullopt;
    word = pair ? rest : word;
    return pair ? pair : first;
}

/// Parses a word that is nothing but a phase or a pair of phases.
std::optional<Phase> phaseOf(std::string_view word) {
    const auto phase = takePhases(word);
    return word.empty() ? phase : std::nullopt;
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

/// Parses "ua", "v1", "il2", "ia7", "van", "uab": a quantity, a phase or, for voltages, a pair, and after phase letters
/// a number or "n" for neutral.
std::optional<Identity> identifyWord(std::string_view word) {
    const Quantity quantity = quantityOf(word.substr(0, 1));
    if (quantity == Quantity::unknown) {
        return std::nullopt;
    }
    std::string_view rest = word.substr(1);
    const auto phase = takePhases(rest);
    const bool restIsNumber = std::all_of(rest.begin(), rest.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!phase || !(rest.empty() || (phase->letters == "abc" && (restIsNumber || rest == "n"))) ||
        (phase->isPair && quantity == Quantity::current)) {
        return std::nullopt;
    }
    return Identity{quantity, *phase, std::string(phase->letters) + std::string(rest), byName};
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

/// The phase that a word of a name gives, or two neighbouring ones: "U_L1_L2". With "ll" for line to line, a phase is a
/// pair with the next.
std::optional<Phase> phaseAmong(const Words& words) {
    std::optional<Phase> phase;
    bool isNeighbour = false;
    for (const std::string& word : words) {
        const auto here = phaseOf(word);
        if (here) {
            const auto pair = isNeighbour ? pairOf(*phase, *here) : std::nullopt;
            phase = pair ? pair : here;
        }
        isNeighbour = here.has_value();
    }
    if (phase && std::find(words.begin(), words.end(), "ll") != words.end()) {
        phase->isPair = true;
    }
    return phase;
}

/// A word for the quantity and one for the phase, such as "Voltage A". A single letter for the quantity, as in "I_A",
/// comes first: the one in "L1_V" is a unit. The group is the rest of the name.
std::optional<Identity> identifyByTwoWords(const Words& words) {
    Identity identity{Quantity::unknown, {}, "", byName};
    bool isAfterPhase = false;
    std::string rest;
    for (const std::string& word : words) {
        const Quantity quantity = quantityOf(word);
        if (quantity != Quantity::unknown && (word.size() > 1 || !isAfterPhase)) {
            identity.quantity = quantity;
        } else if (phaseOf(word)) {
            isAfterPhase = true;
        } else {
            rest += ' ' + word;
        }
    }
    const auto phase = phaseAmong(words);
    if (!phase || identity.quantity == Quantity::unknown || (phase->isPair && identity.quantity == Quantity::current)) {
        return std::nullopt;
    }
    identity.phase = *phase;
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
    std::string field;  // "A", "L1-L2"
    for (const std::string& word : wordsOf(column.phase)) {
        field += word;
    }
    const auto phase = phaseOf(field);
    if (!phase || ofUnit == Quantity::unknown || (phase->isPair && ofUnit == Quantity::current)) {
        return std::nullopt;
    }
    return Identity{ofUnit, *phase, "phases " + std::string(phase->letters),
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

/// What a group holds.
struct GroupKind {
    Quantity quantity;
    bool ofPairs;

    bool includes(const std::optional<Identity>& identity) const {
        return identity && identity->quantity == quantity && identity->phase.isPair == ofPairs;
    }
    unsigned topics() const { return quantity == Quantity::current ? topic::current : topic::voltage; }
    const char* name() const {
        return quantity == Quantity::current ? "currents" : ofPairs ? "line voltages" : "voltages";
    }
};

std::vector<Group> groupsOf(const Identities& identities, GroupKind kind) {
    std::vector<Group> groups;
    for (std::size_t i = 0; i < identities.size(); ++i) {
        if (!kind.includes(identities[i])) {
            continue;
        }
        const Identity& identity = *identities[i];
        const auto open = std::find_if(groups.begin(), groups.end(), [&identity](const Group& group) {
            return group.name == identity.group && !group.columns[identity.phase.number];
        });
        Group& group = open == groups.end() ? groups.emplace_back(Group{identity.group, {}}) : *open;
        group.columns[identity.phase.number] = i;
    }
    return groups;
}

/// The column identified as the channel. Fails when there are several.
std::optional<std::size_t> onlyColumn(const Recording& recording, const Identities& identities, GroupKind kind,
                                      std::size_t channel) {
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < identities.size(); ++i) {
        if (!kind.includes(identities[i]) || identities[i]->channel() != channel) {
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

/// Says which of several groups is used, and marks the columns of all of them as mentioned.
void warnOfGroups(const std::vector<Group>& groups, const std::vector<std::string>& used, GroupKind kind,
                  Assignment& assignment, std::vector<bool>& mentioned) {
    std::size_t complete = 0;
    for (const Group& group : groups) {
        complete += group.isComplete() ? 1 : 0;
        for (std::size_t phase = 0; group.isComplete() && phase < phaseTotal; ++phase) {
            mentioned[*group.columns[phase]] = true;
        }
    }
    assignment.warnings.emplace_back("using " + joined(used) + ", the first of " + std::to_string(complete) +
                                         " groups of " + kind.name() + "; choose others with --map",
                                     kind.topics());
}

/// Guesses the columns of the channels of one kind that have none.
void guess(const Recording& recording, const Identities& identities, GroupKind kind, Assignment& assignment,
           std::vector<bool>& mentioned) {
    const auto groups = groupsOf(identities, kind);
    const auto isComplete = [](const Group& group) { return group.isComplete(); };
    const auto group = std::find_if(groups.begin(), groups.end(), isComplete);
    const auto complete = std::count_if(groups.begin(), groups.end(), isComplete);
    const std::string suchGroups = complete > 1 ? ", first of " + std::to_string(complete) + " such groups" : "";
    std::vector<std::string> guessed;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        const std::size_t channel = (kind.quantity == Quantity::current ? phaseTotal : 0) + phase;
        auto& column = assignment.columns[channel];
        if (column) {
            continue;
        }
        column = group != groups.end() ? group->columns[phase] : onlyColumn(recording, identities, kind, channel);
        if (column) {
            assignment.reasons[channel] = identities[*column]->reason + suchGroups;
            guessed.push_back(inQuotes(recording.columns[*column].name));
        }
    }
    if (complete > 1 && !guessed.empty()) {
        warnOfGroups(groups, guessed, kind, assignment, mentioned);
    }
}

/// The number of different phases, or pairs of them, with a column.
std::size_t countPhases(const Identities& identities, GroupKind kind) {
    std::array<bool, phaseTotal> found{};
    for (const auto& identity : identities) {
        if (kind.includes(identity)) {
            found[identity->phase.number] = true;
        }
    }
    return static_cast<std::size_t>(std::count(found.begin(), found.end(), true));
}

/// Whether the voltages are line voltages: those that the user has chosen if any, else two or more where there are not
/// three phase voltages.
bool useLineVoltages(const Identities& identities, const Assignment& assignment) {
    const auto* const begin = assignment.columns.begin();
    const auto chosen = std::count_if(begin, begin + phaseTotal, [](const auto& column) { return column.has_value(); });
    const auto pairs = std::count_if(begin, begin + phaseTotal, [&identities](const auto& column) {
        return column && identities[*column] && identities[*column]->phase.isPair;
    });
    if (chosen > 0) {
        return chosen == pairs;
    }
    return countPhases(identities, {Quantity::voltage, false}) < phaseTotal &&
           countPhases(identities, {Quantity::voltage, true}) > 1;
}

/// Names the columns that look like channels but are not used.
void warnOfUnused(const Recording& recording, const Identities& identities, const std::vector<bool>& mentioned,
                  Assignment& assignment) {
    constexpr std::size_t mostNames = 6;
    std::vector<std::string> names;
    for (std::size_t i = 0; i < identities.size(); ++i) {
        const Column& column = recording.columns[i];
        const Quantity ofUnit = unitOf(column.unit).quantity;
        const bool isChannel = ofUnit == Quantity::voltage || ofUnit == Quantity::current || identities[i].has_value();
        const bool isUsed =
            std::find(assignment.columns.begin(), assignment.columns.end(), i) != assignment.columns.end();
        if (isChannel && !isUsed && !mentioned[i] && !isComputed(wordsOf(column.name))) {
            names.push_back(inQuotes(column.name));
        }
    }
    if (const std::size_t total = names.size(); total > 0) {
        if (total > mostNames) {
            names.resize(mostNames);
            names.push_back(std::to_string(total - mostNames) + " more");
        }
        assignment.warnings.emplace_back("columns of voltages or currents that are not used: " + joined(names) +
                                         "; --map chooses columns");
    }
}

/// The only column of a quantity, by unit or name; nothing for none and for several.
std::optional<std::size_t> onlyColumnOf(const Recording& recording, Quantity quantity) {
    std::optional<std::size_t> only;
    for (std::size_t i = 0; i < recording.columns.size(); ++i) {
        const Words words = wordsOf(recording.columns[i].name);
        const Quantity ofUnit = unitOf(recording.columns[i].unit).quantity;
        const bool isNamed = ofUnit == Quantity::unknown &&
                             std::any_of(words.begin(), words.end(),
                                         [quantity](const std::string& word) { return quantityOf(word) == quantity; });
        const auto named = identifyByName(recording.columns[i].name);
        const bool isOther = named && (named->quantity != quantity || named->phase.isPair);
        if (isComputed(words) || isOther || !(ofUnit == quantity || isNamed)) {
            continue;
        }
        if (only) {
            return std::nullopt;
        }
        only = i;
    }
    return only;
}

/// The phases of a quantity that have a column.
std::vector<std::size_t> assignedPhases(const Assignment& assignment, std::size_t firstChannel) {
    std::vector<std::size_t> phases;
    for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
        if (assignment.columns[firstChannel + phase]) {
            phases.push_back(phase);
        }
    }
    return phases;
}

/// A recording of one phase, such as of a voltage and a current without a phase in their names: takes the only column
/// of a quantity that has no channel yet, for the phase of the other quantity.
void guessSinglePhase(const Recording& recording, Assignment& assignment) {
    const auto voltages = assignedPhases(assignment, 0);
    const auto currents = assignedPhases(assignment, phaseTotal);
    if (voltages.size() > 1 || currents.size() > 1) {
        return;
    }
    const auto take = [&](Quantity quantity, std::size_t channel, const char* reason) {
        if (const auto column = onlyColumnOf(recording, quantity)) {
            assignment.columns[channel] = column;
            assignment.reasons[channel] = reason;
        }
    };
    if (voltages.empty()) {
        take(Quantity::voltage, currents.empty() ? 0 : currents[0], "the only column of a voltage");
    }
    if (currents.empty()) {
        take(Quantity::current, phaseTotal + (voltages.empty() ? 0 : voltages[0]), "the only column of a current");
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
    assignment.warnings.emplace_back(
        recording.source +
            ": the columns have no names; assuming the order Ua, Ub, Uc, Ia, Ib, Ic; choose "
            "others with --map",
        topic::ofVoltage | topic::ofCurrent);
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
    std::vector<bool> mentioned(recording.columns.size());
    assignment.areLineVoltages = useLineVoltages(identities, assignment);
    guess(recording, identities, {Quantity::voltage, assignment.areLineVoltages}, assignment, mentioned);
    guess(recording, identities, {Quantity::current, false}, assignment, mentioned);
    guessSinglePhase(recording, assignment);
    for (std::size_t phase = 0; assignment.areLineVoltages && phase < phaseTotal; ++phase) {
        const auto column = assignment.columns[phase];
        if (column && identities[*column] && identities[*column]->phase.isReversed) {
            assignment.isReversed[phase] = true;
            assignment.reasons[phase] += ", reversed";
        }
    }
    if (!isChosen) {
        warnOfUnused(recording, identities, mentioned, assignment);
    }
    for (const auto& column : assignment.columns) {
        if (column && !recording.columns[*column].fault.empty()) {
            failInput(recording.columns[*column].fault);
        }
    }
    return assignment;
}

}  // namespace rt305

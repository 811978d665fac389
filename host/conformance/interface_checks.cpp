/// Checks of exported names and constants, of refusals and their messages, and of the texts and their lifetime.

#include <bit>
#include <limits>
#include <nlohmann/json.hpp>

#include "conformance/check.h"
#include "rt305_4/easy.h"

namespace rt305 {

namespace {

using nlohmann::json;

constexpr std::uint32_t unknownType = 5;
constexpr std::uint32_t unknownOperation = RT305_4_OPERATION_DISTORTION + 1;
constexpr std::size_t parameterTotal = 35;

constexpr const char* untouched = "untouched";

constexpr const char* badType = "This data type is not supported";
constexpr const char* badCount = "The sample rate or sample number is not correct";
constexpr const char* badOperation = "This operation is not supported";
constexpr const char* tooFewChannels = "There is no data for one or more phases";
constexpr const char* badLength = "The number of samples is  not correct";
constexpr const char* badPointer = "One or more output parameters are set incorrectly";

const Measurement& fiveCycles(std::uint32_t inputType) {
    static const GeneratorSettings generator{.durationSeconds = 0.1};
    static const Measurement combined = generated(generator, allChannels);
    static const Measurement voltages = generated(generator, voltagesOnly);
    static const Measurement currents = generated(generator, currentsOnly);
    return inputType == allChannels ? combined : inputType == voltagesOnly ? voltages : currents;
}

void expectAccepted(const Library& library, Call& call) {
    expectCount("result", static_cast<std::size_t>(library.process(call)), 1);
}

/// The call is refused with this message, and writes no other text.
void expectRefused(const Library& library, Call& call, const char* message) {
    call.texts.fill(untouched);
    expectCount("result", static_cast<std::size_t>(library.process(call)), 0);
    expectText("message", call.texts[RT305_4_TEXT_ERROR], message);
    for (std::size_t i = 0; i < RT305_4_TEXT_ERROR; ++i) {
        expectText("text " + std::to_string(i), call.texts[i], untouched);
    }
}

void* addressOf(const Library& library, const std::string& name) {
    void* const address = library.find(name.c_str());
    expect(address != nullptr, name + " is not exported");
    return address;
}

/// On the first call of a library.
void unmadeTextsAreEmpty(const Library& library) {
    Call call(fiveCycles(allChannels), RT305_4_OPERATION_PARAMETERS);
    call.texts.fill(untouched);
    expectAccepted(library, call);
    for (std::size_t i = RT305_4_TEXT_PARAMETERS + 1; i < RT305_4_TEXT_ERROR; ++i) {
        expectText("text " + std::to_string(i), call.texts[i], "");
    }
    expectText("the message after success", call.texts[RT305_4_TEXT_ERROR], untouched);
}

void exportedNames(const Library& library) {
    for (const char* const name : {"getVersion", "getSupportedInputTypes", "dataProccess", "rtInf", "rtMinusInf",
                                   "rtNaN", "rtInfF", "rtMinusInfF", "rtNaNF", "rtGetInf", "rtGetMinusInf", "rtGetNaN",
                                   "rtGetInfF", "rtGetMinusInfF", "rtGetNaNF"}) {
        addressOf(library, name);
    }
}

void version(const Library& library) {
    expectText("version", library.version(), RT305_4_VERSION);
}

void inputTypes(const Library& library) {
    const auto list =
        reinterpret_cast<decltype(&::getSupportedInputTypes)>(addressOf(library, "getSupportedInputTypes"));
    list(nullptr);  // allowed and without effect
    const std::int32_t* types = nullptr;
    list(&types);
    expect(types != nullptr, "no list");
    constexpr std::int32_t endOfList = 0;
    for (const std::int32_t expected : {4, 8, 21, endOfList}) {
        expectNumber("type", *types++, expected, 0.0);
    }
}

/// The exported constant and the function return the same bits.
template <class T, class Bits>
void constant(const Library& library, const std::string& suffix, Bits expected) {
    const T exported = *static_cast<const T*>(addressOf(library, "rt" + suffix));
    const T fromFunction = reinterpret_cast<T (*)()>(addressOf(library, "rtGet" + suffix))();
    for (const T value : {exported, fromFunction}) {
        expect(std::bit_cast<Bits>(value) == expected, suffix + " has the wrong bits");
    }
}

void nonFiniteConstants(const Library& library) {
    constant<double, std::uint64_t>(library, "Inf", 0x7FF0000000000000U);
    constant<double, std::uint64_t>(library, "MinusInf", 0xFFF0000000000000U);
    constant<double, std::uint64_t>(library, "NaN", 0x7FF8000000000000U);
    constant<float, std::uint32_t>(library, "InfF", 0x7F800000U);
    constant<float, std::uint32_t>(library, "MinusInfF", 0xFF800000U);
    constant<float, std::uint32_t>(library, "NaNF", 0x7FC00000U);
}

/// A change to a valid request.
struct Change {
    const char* name;
    std::uint32_t inputType;
    void (*apply)(Call&);
    const char* message;  // of the refusal; null: accepted
};

constexpr Change refusals[] = {
    {"an input type that is not in the list", allChannels, [](Call& c) { c.request.inputType = unknownType; }, badType},
    {"no samples", allChannels, [](Call& c) { c.request.samplesNumber = 0; }, badCount},
    {"a rate of zero", allChannels, [](Call& c) { c.request.sampleRate = -0.0; }, badCount},
    {"an operation above 3", allChannels, [](Call& c) { c.request.operation = unknownOperation; }, badOperation},
    {"type 4 with two channels", voltagesOnly, [](Call& c) { c.channels.resize(2); }, tooFewChannels},
    {"type 8 with two channels", currentsOnly, [](Call& c) { c.channels.resize(2); }, tooFewChannels},
    {"type 21 with five channels", allChannels, [](Call& c) { c.channels.resize(5); }, tooFewChannels},
    {"type 4 without Ua", voltagesOnly, [](Call& c) { c.channels.erase(c.channels.begin()); }, badLength},
    {"type 8 with voltages only", currentsOnly, [](Call& c) { c.channels.resize(3); }, badLength},
    {"type 21 with one channel twice", allChannels, [](Call& c) { c.channels[5].phase = 0; }, badLength},
    {"an empty channel", allChannels, [](Call& c) { c.channels[3].count = 0; }, badLength},
    {"one sample too few", allChannels, [](Call& c) { --c.channels[1].count; }, badLength},
    {"a sample count that no channel has", currentsOnly, [](Call& c) { --c.request.samplesNumber; }, badLength},
};

constexpr Change harmless[] = {
    {"a rate that is not a number", allChannels,
     [](Call& c) { c.request.sampleRate = std::numeric_limits<double>::quiet_NaN(); }, nullptr},
    {"descriptors of unknown kind or phase", allChannels,
     [](Call& c) {
         c.channels.insert(c.channels.begin(), c.channels[0]);
         c.channels[0].phase = 3;
         c.channels.push_back(c.channels[2]);
         c.channels.back().signalKind = 2;
     },
     nullptr},
    {"a descriptor that a later one replaces", allChannels,
     [](Call& c) {
         c.channels.insert(c.channels.begin(), c.channels[0]);
         c.channels[0].coefficient = 7.0;
         c.channels[0].count = 1;
     },
     nullptr},
};

void nullOutputs(const Library& library) {
    for (std::uint32_t i = 0; i < RT305_4_TEXT_ERROR; ++i) {
        Call call(fiveCycles(allChannels), RT305_4_OPERATION_PARAMETERS);
        *rt305_4_output(&call.request, i) = nullptr;
        expectRefused(library, call, badPointer);
    }
}

void refused(const Library& library, const Change& change) {
    Call call(fiveCycles(allChannels), RT305_4_OPERATION_PARAMETERS);
    call.request.inputType = change.inputType;
    change.apply(call);
    expectRefused(library, call, change.message);
}

/// A request with every fault is refused for the first of them, and for the next one as each is corrected.
void orderOfRefusals(const Library& library) {
    Call call(fiveCycles(allChannels), RT305_4_OPERATION_PARAMETERS);
    const auto channels = call.channels;
    const char** const output = call.request.spectrumParamU;
    call.request.spectrumParamU = nullptr;
    call.request.inputType = unknownType;
    call.request.samplesNumber = 0;
    call.request.operation = unknownOperation;
    call.channels.resize(5);
    expectRefused(library, call, badPointer);
    call.request.spectrumParamU = output;
    expectRefused(library, call, badType);
    call.request.inputType = allChannels;
    expectRefused(library, call, badCount);
    call.request.samplesNumber = 1;
    expectRefused(library, call, badOperation);
    call.request.operation = RT305_4_OPERATION_DISTORTION;
    expectRefused(library, call, tooFewChannels);
    call.channels = channels;
    expectRefused(library, call, badLength);
}

/// The change has no effect on the parameters.
void accepted(const Library& library, const Change& change) {
    Call plain(fiveCycles(change.inputType), RT305_4_OPERATION_PARAMETERS);
    library.process(plain);
    const std::string expected = plain.texts[RT305_4_TEXT_PARAMETERS];
    expect(!expected.empty(), "there are no parameters");
    Call changed(fiveCycles(change.inputType), RT305_4_OPERATION_PARAMETERS);
    change.apply(changed);
    expectAccepted(library, changed);
    expectText("parameters", changed.texts[RT305_4_TEXT_PARAMETERS], expected);
}

void typeZero(const Library& library) {
    Call call(fiveCycles(allChannels), RT305_4_OPERATION_DISTORTION);
    call.request.inputType = 0;
    call.channels.clear();
    expectAccepted(library, call);
    const json rows = json::parse(call.texts[RT305_4_TEXT_PARAMETERS]).at("paramData");
    expectCount("parameters", rows.size(), parameterTotal);
    for (const json& row : rows) {
        expect(row.at("dataName").is_null(), "a parameter has a value");
    }
}

/// A text remains until a call makes it again: other operations, the other kind and refused calls do not change it.
void textsRemain(const Library& library) {
    Call first(fiveCycles(allChannels), RT305_4_OPERATION_SIGNALS);
    library.process(first);
    const std::string voltages = first.texts[RT305_4_TEXT_SIGNALS_U];
    const std::string currents = first.texts[RT305_4_TEXT_SIGNALS_I];
    Call refused(fiveCycles(allChannels), unknownOperation);
    library.process(refused);
    Call spectrum(fiveCycles(allChannels), RT305_4_OPERATION_SPECTRUM);
    library.process(spectrum);
    expect(spectrum.texts[RT305_4_TEXT_SIGNALS_U] == voltages && spectrum.texts[RT305_4_TEXT_SIGNALS_I] == currents,
           "another operation changed the signals");
    Call onlyVoltages(fiveCycles(voltagesOnly), RT305_4_OPERATION_SIGNALS);
    onlyVoltages.channels[0].coefficient = 2.0;
    library.process(onlyVoltages);
    expect(onlyVoltages.texts[RT305_4_TEXT_SIGNALS_U] != voltages, "the text of the voltages was not replaced");
    expect(onlyVoltages.texts[RT305_4_TEXT_SIGNALS_I] == currents, "a call with voltages only changed the currents");
}

/// Sorted keys, no blanks, numbers as the JSON library writes them: each text equals the dump of its parsed value.
void strictJson(const Library& library) {
    for (const std::uint32_t inputType : {voltagesOnly, currentsOnly, allChannels}) {
        for (std::uint32_t operation = 0; operation < unknownOperation; ++operation) {
            const ResultTexts texts = library.measure(fiveCycles(inputType), operation);
            expect(!texts.parameters.empty(), "there are no parameters");
            for (const std::string& text : {texts.parameters, texts.voltages, texts.currents}) {
                expect(text.empty() || json::parse(text).dump() == text,
                       "a text of type " + std::to_string(inputType) + ", operation " + std::to_string(operation));
            }
        }
    }
}

/// The keys and axes of the two tables of an operation.
struct TableLayout {
    const char* name;
    std::uint32_t operation;
    const char* tables[2];
    const char* keys;
    const char* labelKey;
    const char* xLabel;
    const char* yLabels[2];  // empty: any
};

constexpr TableLayout tableLayouts[] = {
    {"signalDataU and signalDataI",
     RT305_4_OPERATION_SIGNALS,
     {"signalDataU", "signalDataI"},
     "LastName LastNameX LastNameY dataName paramData ",
     "LastName",
     "Sample",
     {"Voltage, V", "Current, A"}},
    {"spectrumDataU and spectrumDataI",
     RT305_4_OPERATION_SPECTRUM,
     {"spectrumDataU", "spectrumDataI"},
     "LastNameX LastNameY dataTnv dataTnvf name paramData ",
     "name",
     "Frequency, Hz",
     {"", ""}},
    {"thdDataU and thdDataI",
     RT305_4_OPERATION_DISTORTION,
     {"thdDataU", "thdDataI"},
     "LastNameX LastNameY dataX dataY name ",
     "name",
     "Frequency, Hz",
     {"Amp, dB", "Amp, dB"}},
};

void tableLayout(const Library& library, const TableLayout& layout) {
    const ResultTexts texts = library.measure(fiveCycles(allChannels), layout.operation);
    for (const std::size_t kind : {0U, 1U}) {
        const json rows = json::parse(kind == 0 ? texts.voltages : texts.currents).at(layout.tables[kind]);
        expectCount("rows", rows.size(), phaseTotal);
        for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
            std::string keys;
            for (const auto& item : rows[phase].items()) {
                keys += item.key() + ' ';
            }
            const std::string yLabel = rows[phase].at("LastNameY");
            expectText("keys", keys, layout.keys);
            expectText("label", rows[phase].at(layout.labelKey), std::string(1, "VI"[kind]) + "abc"[phase]);
            expectText("horizontal axis", rows[phase].at("LastNameX"), layout.xLabel);
            expectText("vertical axis", yLabel, *layout.yLabels[kind] == '\0' ? yLabel : layout.yLabels[kind]);
        }
    }
}

}  // namespace

std::vector<Check> interfaceChecks() {
    std::vector<Check> checks{{"texts are empty before a call makes them", unmadeTextsAreEmpty},
                              {"all fifteen names are exported", exportedNames},
                              {"the version text", version},
                              {"the list of input types", inputTypes},
                              {"the non-finite constants", nonFiniteConstants},
                              {"refused: an output pointer that is null", nullOutputs}};
    addRows(checks, "refused: ", refusals, refused);
    checks.push_back({"the order of refusals", orderOfRefusals});
    addRows(checks, "accepted: ", harmless, accepted);
    checks.push_back({"accepted: type 0, giving no values", typeZero});
    checks.push_back({"texts remain until a call replaces them", textsRemain});
    checks.push_back({"texts are strict and compact JSON", strictJson});
    addRows(checks, "keys and axes of ", tableLayouts, tableLayout);
    return checks;
}

}  // namespace rt305

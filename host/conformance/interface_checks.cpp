/// What the interface promises of names, constants, refusals and the life of its texts.

#include <bit>
#include <limits>
#include <nlohmann/json.hpp>

#include "conformance/check.h"

namespace rt305 {

namespace {

using nlohmann::json;

constexpr std::uint32_t all = RT305_4_INPUT_VOLTAGES_AND_CURRENTS;
constexpr const char* untouched = "untouched";

constexpr const char* badType = "This data type is not supported";
constexpr const char* badCount = "The sample rate or sample number is not correct";
constexpr const char* badOperation = "This operation is not supported";
constexpr const char* tooFewChannels = "There is no data for one or more phases";
constexpr const char* badLength = "The number of samples is  not correct";
constexpr const char* badPointer = "One or more output parameters are set incorrectly";

const Measurement& fiveCycles(std::uint32_t inputType) {
    static const GeneratorSettings generator{.durationSeconds = 0.1};
    static const Measurement all21 = generated(generator, all);
    static const Measurement voltages = generated(generator, RT305_4_INPUT_VOLTAGES);
    static const Measurement currents = generated(generator, RT305_4_INPUT_CURRENTS);
    return inputType == all ? all21 : inputType == RT305_4_INPUT_VOLTAGES ? voltages : currents;
}

void* addressOf(const Library& library, const std::string& name) {
    void* const address = library.find(name.c_str());
    expect(address != nullptr, name + " is not exported");
    return address;
}

void unmadeTextsAreEmpty(const Library& library) {
    Call call(fiveCycles(all), RT305_4_OPERATION_PARAMETERS);
    call.texts.fill(untouched);
    expectCount("result", static_cast<std::size_t>(library.process(call)), 1);
    for (std::size_t i = 1; i < errorText; ++i) {
        expectText("text " + std::to_string(i), call.texts[i], "");
    }
    expectText("the message place after success", call.texts[errorText], untouched);
}

void fifteenNames(const Library& library) {
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
    list(nullptr);  // allowed, does nothing
    const std::int32_t* types = nullptr;
    list(&types);
    expect(types != nullptr, "no list");
    for (const std::int32_t expected : {4, 8, 21, 0}) {
        expectNumber("type", *types++, expected, 0.0);
    }
}

/// The same bits in the constant and from the function.
template <class T, class Bits>
void constant(const Library& library, const std::string& suffix, Bits expected) {
    const T exported = *static_cast<const T*>(addressOf(library, "rt" + suffix));
    const T fromFunction = reinterpret_cast<T (*)()>(addressOf(library, "rtGet" + suffix))();
    for (const T value : {exported, fromFunction}) {
        expect(std::bit_cast<Bits>(value) == expected, suffix + " has other bits");
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

/// Refused with this message, and nothing written but the message.
void expectRefused(const Library& library, Call& call, const char* message) {
    call.texts.fill(untouched);
    expectCount("result", static_cast<std::size_t>(library.process(call)), 0);
    expectText("message", call.texts[errorText], message);
    for (std::size_t i = 0; i < errorText; ++i) {
        expectText("text " + std::to_string(i), call.texts[i], untouched);
    }
}

struct Change {
    const char* name;
    std::uint32_t inputType;
    void (*apply)(Call&);
    const char* message;  // null: accepted
};

constexpr Change refusals[] = {
    {"a type that is not in the list", all, [](Call& c) { c.request.inputType = 5; }, badType},
    {"no samples", all, [](Call& c) { c.request.samplesNumber = 0; }, badCount},
    {"a rate of zero", all, [](Call& c) { c.request.sampleRate = -0.0; }, badCount},
    {"an operation above 3", all, [](Call& c) { c.request.operation = 4; }, badOperation},
    {"type 4 with two channels", 4, [](Call& c) { c.channels.resize(2); }, tooFewChannels},
    {"type 8 with two channels", 8, [](Call& c) { c.channels.resize(2); }, tooFewChannels},
    {"type 21 with five channels", all, [](Call& c) { c.channels.resize(5); }, tooFewChannels},
    {"type 4 without Ua", 4, [](Call& c) { c.channels.erase(c.channels.begin()); }, badLength},
    {"type 8 with voltages alone", 8, [](Call& c) { c.channels.resize(3); }, badLength},
    {"type 21 with one channel twice", all, [](Call& c) { c.channels[5].phase = 0; }, badLength},
    {"an empty channel", all, [](Call& c) { c.channels[3].count = 0; }, badLength},
    {"one sample too few", all, [](Call& c) { --c.channels[1].count; }, badLength},
    {"a sample count that no channel has", 8, [](Call& c) { --c.request.samplesNumber; }, badLength},
};

constexpr Change harmless[] = {
    {"a rate that is not a number", all,
     [](Call& c) { c.request.sampleRate = std::numeric_limits<double>::quiet_NaN(); }, nullptr},
    {"descriptors of unknown kind or phase", all,
     [](Call& c) {
         c.channels.insert(c.channels.begin(), c.channels[0]);
         c.channels[0].phase = 3;
         c.channels.push_back(c.channels[2]);
         c.channels.back().signalKind = 2;
     },
     nullptr},
    {"a descriptor that a later one replaces", all,
     [](Call& c) {
         c.channels.insert(c.channels.begin(), c.channels[0]);
         c.channels[0].coefficient = 7.0;
         c.channels[0].count = 1;
     },
     nullptr},
};

void nullPlaces(const Library& library) {
    for (std::size_t i = 0; i < errorText; ++i) {
        Call call(fiveCycles(all), RT305_4_OPERATION_PARAMETERS);
        call.request.*textPlaces[i] = nullptr;
        expectRefused(library, call, badPointer);
    }
}

/// A request with every fault is refused for the first of them, and for the next as each is mended.
void orderOfRefusals(const Library& library) {
    Call call(fiveCycles(all), RT305_4_OPERATION_PARAMETERS);
    const auto channels = call.channels;
    call.request.inputType = 5;
    call.request.samplesNumber = 0;
    call.request.operation = 4;
    call.channels.resize(5);
    const char** const place = call.request.spectrumParamU;
    call.request.spectrumParamU = nullptr;
    expectRefused(library, call, badPointer);
    call.request.spectrumParamU = place;
    expectRefused(library, call, badType);
    call.request.inputType = all;
    expectRefused(library, call, badCount);
    call.request.samplesNumber = 1;
    expectRefused(library, call, badOperation);
    call.request.operation = 3;
    expectRefused(library, call, tooFewChannels);
    call.channels = channels;
    expectRefused(library, call, badLength);
}

void changesNothing(const Library& library, const Change& change) {
    Call plain(fiveCycles(change.inputType), RT305_4_OPERATION_PARAMETERS);
    library.process(plain);
    const std::string expected = plain.texts[0];
    expect(!expected.empty(), "there are no parameters");
    Call changed(fiveCycles(change.inputType), RT305_4_OPERATION_PARAMETERS);
    change.apply(changed);
    expectCount("result", static_cast<std::size_t>(library.process(changed)), 1);
    expectText("parameters", changed.texts[0], expected);
}

void typeZero(const Library& library) {
    Call call(fiveCycles(all), 3);
    call.request.inputType = 0;
    call.channels.clear();
    expectCount("result", static_cast<std::size_t>(library.process(call)), 1);
    const json rows = json::parse(call.texts[0]).at("paramData");
    expectCount("parameters", rows.size(), 35);
    for (const json& row : rows) {
        expect(row.at("dataName").is_null(), "a parameter has a value");
    }
}

/// A text stays until a call makes it anew: other operations, the other kind and refused calls leave it.
void staleTexts(const Library& library) {
    Call first(fiveCycles(all), RT305_4_OPERATION_SIGNALS);
    library.process(first);
    const std::string voltages = first.texts[1];
    const std::string currents = first.texts[2];
    Call refused(fiveCycles(all), 4);
    library.process(refused);
    Call spectrum(fiveCycles(all), RT305_4_OPERATION_SPECTRUM);
    library.process(spectrum);
    expect(spectrum.texts[1] == voltages && spectrum.texts[2] == currents, "another operation changed the signals");
    Call onlyVoltages(fiveCycles(RT305_4_INPUT_VOLTAGES), RT305_4_OPERATION_SIGNALS);
    onlyVoltages.channels[0].coefficient = 2.0;
    library.process(onlyVoltages);
    expect(onlyVoltages.texts[1] != voltages, "the voltages were not made anew");
    expect(onlyVoltages.texts[2] == currents, "voltages alone changed the currents");
}

/// Keys sorted, no blanks, numbers as the JSON library writes them: so each text is the dump of its own value.
void strictJson(const Library& library) {
    for (const std::uint32_t inputType : {4U, 8U, 21U}) {
        for (std::uint32_t operation = 0; operation <= 3; ++operation) {
            const ResultTexts texts = library.measure(fiveCycles(inputType), operation);
            expect(!texts.parameters.empty(), "there are no parameters");
            for (const std::string& text : {texts.parameters, texts.voltages, texts.currents}) {
                expect(text.empty() || json::parse(text).dump() == text,
                       "a text of type " + std::to_string(inputType) + ", operation " + std::to_string(operation));
            }
        }
    }
}

/// The form of the two tables of an operation.
struct Form {
    std::uint32_t operation;
    const char* tables[2];
    const char* keys;
    const char* labelKey;
    const char* xLabel;
    const char* yLabels[2];  // empty: free
};

constexpr Form forms[] = {
    {RT305_4_OPERATION_SIGNALS,
     {"signalDataU", "signalDataI"},
     "LastName LastNameX LastNameY dataName paramData ",
     "LastName",
     "Sample",
     {"Voltage, V", "Current, A"}},
    {RT305_4_OPERATION_SPECTRUM,
     {"spectrumDataU", "spectrumDataI"},
     "LastNameX LastNameY dataTnv dataTnvf name paramData ",
     "name",
     "Frequency, Hz",
     {"", ""}},
    {RT305_4_OPERATION_DISTORTION,
     {"thdDataU", "thdDataI"},
     "LastNameX LastNameY dataX dataY name ",
     "name",
     "Frequency, Hz",
     {"Amp, dB", "Amp, dB"}},
};

void tableForm(const Library& library, const Form& form) {
    const ResultTexts texts = library.measure(fiveCycles(all), form.operation);
    for (const std::size_t kind : {0U, 1U}) {
        const json rows = json::parse(kind == 0 ? texts.voltages : texts.currents).at(form.tables[kind]);
        expectCount("rows", rows.size(), phaseTotal);
        for (std::size_t phase = 0; phase < phaseTotal; ++phase) {
            std::string keys;
            for (const auto& item : rows[phase].items()) {
                keys += item.key() + ' ';
            }
            const std::string yLabel = rows[phase].at("LastNameY");
            expectText("keys", keys, form.keys);
            expectText("label", rows[phase].at(form.labelKey), std::string(1, "VI"[kind]) + "abc"[phase]);
            expectText("horizontal axis", rows[phase].at("LastNameX"), form.xLabel);
            expectText("vertical axis", yLabel, *form.yLabels[kind] == '\0' ? yLabel : form.yLabels[kind]);
        }
    }
}

}  // namespace

std::vector<Check> interfaceChecks() {
    std::vector<Check> checks{{"texts that no call has made are empty", unmadeTextsAreEmpty},
                              {"fifteen names are exported", fifteenNames},
                              {"the version text", version},
                              {"the list of input types", inputTypes},
                              {"the non-finite constants", nonFiniteConstants},
                              {"refused: a result place that is null", nullPlaces}};
    for (const Change& change : refusals) {
        checks.push_back({std::string("refused: ") + change.name, [&change](const Library& library) {
                              Call call(fiveCycles(all), RT305_4_OPERATION_PARAMETERS);
                              call.request.inputType = change.inputType;
                              change.apply(call);
                              expectRefused(library, call, change.message);
                          }});
    }
    checks.push_back({"the order of refusals", orderOfRefusals});
    for (const Change& change : harmless) {
        checks.push_back({std::string("accepted: ") + change.name,
                          [&change](const Library& library) { changesNothing(library, change); }});
    }
    checks.push_back({"accepted: type 0, without parameters", typeZero});
    checks.push_back({"texts stay until they are made anew", staleTexts});
    checks.push_back({"texts are strict and compact JSON", strictJson});
    for (const Form& form : forms) {
        checks.push_back({std::string("the form of ") + form.tables[0] + " and " + form.tables[1],
                          [&form](const Library& library) { tableForm(library, form); }});
    }
    return checks;
}

}  // namespace rt305

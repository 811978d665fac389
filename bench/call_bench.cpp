// Times of whole calls through the C interface, in units of T.

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

#include "ratio_report.h"
#include "reference_transform.h"
#include "requests.h"

namespace {

constexpr std::array<std::size_t, 7> lengths{1, 500, 2000, 10000, 16384, 100000, 1000000};
constexpr std::size_t typicalLength = 10000;

std::string titleOf(std::size_t n) {
    return "Whole calls, " + std::to_string(n) + " samples";
}

void addRow(const std::string& table, const NamedRecipe& named) {
    static const ReferenceTransform transform;
    const std::shared_ptr<support::Call> call = makeCall(named.recipe);
    addContender(table, named.name, "call", [call] { call->run(); });
    addContender(table, named.name, unitOfTime, [] { transform(); });
}

/// The limits hold for typical work: type 21, 10,000 samples.
void addTypicalWork(const std::string& table) {
    for (const NamedRecipe& named : parameterVariants()) {
        addRow(table, named);
    }
    for (const char* const frequency : {"fixed", "control"}) {
        addLimit(table, std::string(frequency) + ", no power", {17, 14});
        for (const char* const power : {"two-wattmeter", "two-wattmeter-phase", "three-wattmeter-complex"}) {
            addLimit(table, std::string(frequency) + ", " + power, {22, 17});
        }
    }

    Recipe recipe;
    recipe.operation = RT305_4_OPERATION_DISTORTION;
    addRow(table, {"distortion, fixed", recipe});
    addLimit(table, "distortion, fixed", {17, 14});
    recipe.measurementFlags |= RT305_4_FREQUENCY_CONTROL;
    addRow(table, {"distortion, control", recipe});
    addLimit(table, "distortion, control", {17, 14});
    recipe = Recipe{};
    recipe.operation = RT305_4_OPERATION_SIGNALS;
    addRow(table, {"signals", recipe});
    addLimit(table, "signals", {66, 50});

    for (const NamedRecipe& named : spectrumVariants()) {
        addRow(table, {"spectrum, " + named.name, named.recipe});
        addLimit(table, "spectrum, " + named.name, {110, 70});
    }
}

/// The limits of short records.
void addShortLimits() {
    const struct {
        std::size_t n;
        const char* row;
        Limit limit;
    } limits[]{
        {1, "type 4, operation 0", {0.15, 0.08}}, {500, "type 4, operation 0", {0.2, 0.1}},
        {500, "type 4, operation 1", {2, 1.4}},   {500, "type 4, operation 3", {0.9, 0.5}},
        {2000, "type 21, operation 0", {5, 3.5}}, {2000, "type 21, operation 1", {16, 13}},
        {2000, "type 21, operation 2", {25, 18}}, {2000, "type 21, operation 3", {5, 3.5}},
    };
    for (const auto& [n, row, limit] : limits) {
        addLimit(titleOf(n), row, limit);
    }
}

/// One figure for each row and length.
void printByLength(const char* title, double (*figure)(const std::string& row, std::size_t n)) {
    std::printf("\n%s\n%-20s", title, "");
    for (const std::size_t n : lengths) {
        std::printf(" %9zu", n);
    }
    std::printf("\n");
    for (const NamedRecipe& named : operationsOfLength(typicalLength)) {
        std::printf("%-20s", named.name.c_str());
        for (const std::size_t n : lengths) {
            std::printf(" %9.2f", figure(named.name, n));
        }
        std::printf("\n");
    }
}

double time(const std::string& row, std::size_t n) {
    return ratioToFirstPeer(titleOf(n), row);
}

double timePerSample(const std::string& row, std::size_t n) {
    return time(row, n) / static_cast<double>(n) * static_cast<double>(typicalLength) / time(row, typicalLength);
}

/// Relative to the time of 10,000 samples.
double growth(const std::string& row, std::size_t n) {
    return timePerSample(row, n) * std::log(static_cast<double>(typicalLength)) / std::log(static_cast<double>(n));
}

void printTimePerSample(const std::string& row, std::size_t n, Limit limit) {
    const double measured = timePerSample(row, n);
    std::printf("%-20s %9zu %9.2f", row.c_str(), n, measured);
    printVerdict(measured, limit);
    std::printf("\n");
}

void printGrowthVerdicts() {
    std::printf("\nTime per sample over that of 10000 samples\n");
    printTimePerSample("type 21, operation 0", 2000, {1.5, 1.2});
    for (const NamedRecipe& named : operationsOfLength(typicalLength)) {
        printTimePerSample(named.name, 1000000, {2.5, 2.5});
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string typical = "Typical work: type 21, 10000 samples";
    addTypicalWork(typical);
    for (const std::size_t n : lengths) {
        for (const NamedRecipe& named : operationsOfLength(n)) {
            addRow(titleOf(n), named);
        }
    }
    addShortLimits();
    const int failure = runContenders(argc, argv);
    if (failure != 0) {
        return failure;
    }
    printTable(typical);
    if (std::isnan(time("type 21, operation 0", typicalLength))) {
        return 0;  // excluded by the filter on the command line
    }
    for (const std::size_t n : {1, 500, 2000}) {
        printTable(titleOf(n));
    }
    printByLength("Whole calls in T, by samples per channel", time);
    printByLength("Time over n log n, relative to 10000 samples", growth);
    printGrowthVerdicts();
    return 0;
}

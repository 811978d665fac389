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
    addLimit(table, "fixed, no power", {34, 22});
    addLimit(table, "control, no power", {42, 28});
    addLimit(table, "fixed, two-wattmeter", {45, 30});
    addLimit(table, "fixed, two-wattmeter-phase", {45, 30});
    addLimit(table, "fixed, three-wattmeter-complex", {45, 30});

    Recipe recipe;
    recipe.operation = RT305_4_OPERATION_DISTORTION;
    addRow(table, {"distortion, fixed", recipe});
    addLimit(table, "distortion, fixed", {34, 22});
    recipe.measurementFlags |= RT305_4_FREQUENCY_CONTROL;
    addRow(table, {"distortion, control", recipe});
    addLimit(table, "distortion, control", {42, 28});
    recipe = Recipe{};
    recipe.operation = RT305_4_OPERATION_SIGNALS;
    addRow(table, {"signals", recipe});
    addLimit(table, "signals", {120, 80});

    for (const NamedRecipe& named : spectrumVariants()) {
        addRow(table, {"spectrum, " + named.name, named.recipe});
        addLimit(table, "spectrum, " + named.name, {180, 110});
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

void printGrowthVerdicts() {
    std::printf("\nTime per sample of 1000000 samples over that of 10000\n");
    for (const NamedRecipe& named : operationsOfLength(typicalLength)) {
        const double measured = timePerSample(named.name, 1000000);
        std::printf("%-20s %9.2f", named.name.c_str(), measured);
        printVerdict(measured, {2.5, 2.5});
        std::printf("\n");
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
    const int failure = runContenders(argc, argv);
    if (failure != 0) {
        return failure;
    }
    printTable(typical);
    if (std::isnan(time("type 21, operation 0", typicalLength))) {
        return 0;  // excluded by the filter on the command line
    }
    printByLength("Whole calls in T, by samples per channel", time);
    printByLength("Time over n log n, relative to 10000 samples", growth);
    printGrowthVerdicts();
    return 0;
}

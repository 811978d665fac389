// Compares two builds of the library: compare OLD.so NEW.so [options of Google Benchmark]
//
// First their texts for mixed requests: the same bytes, or every number within 1e-13 of the largest of its row. Levels
// in dB are compared as amplitudes. Harmonics below 1e-13 of the largest sample are rounding errors and are not
// compared. Then the times of whole calls as ratios of one run. Exits with 1 if a text differs by more.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <map>
#include <memory>

#include "adapter/nlohmann/json.h"
#include "ratio_report.h"
#include "reference_transform.h"
#include "requests.h"

namespace {

using support::Call;

using nlohmann::json;

constexpr std::size_t mixedCount = 600;
constexpr double tolerance = 1e-13;

/// A parsed text: its numbers by row, and the rest of the text.
class Document {
public:
    explicit Document(const std::string& text) : rest(json::parse(text)) { takeFrom(rest, "", "", false); }

    std::map<std::string, std::vector<double>> rows;
    json rest;

private:
    /// A row is an array of numbers, or the values of one key in the objects of an array, in one unit.
    /// here: path of the node with the indices of objects; row: the path without the last index.
    void takeFrom(json& node, const std::string& here, const std::string& row, bool level) {
        if (node.is_number() || node.is_null()) {
            const double value = node.is_null() ? std::numeric_limits<double>::quiet_NaN() : node.get<double>();
            rows[row].push_back(level ? std::pow(10.0, value / 20.0) : value);
            node = nullptr;
        } else if (node.is_array()) {
            for (std::size_t i = 0; i < node.size(); ++i) {
                takeFrom(node[i], here + '[' + std::to_string(i) + ']', here, level);
            }
        } else if (node.is_object()) {
            const std::string unit = ' ' + node.value("units", node.value("UomName", ""));
            const bool levels = level || node.value("LastNameY", "").find("dB") != std::string::npos;
            for (auto& [key, value] : node.items()) {
                const bool axis = key == "dataTnvf" || key == "dataX" || key == "fi";
                takeFrom(value, here + '/' + key, row + '/' + key + (value.is_primitive() ? unit : ""),
                         levels && !axis);
            }
        }
    }
};

double largestOf(const std::vector<double>& row) {
    double largest = 0.0;
    for (const double value : row) {
        largest = std::fmax(largest, std::fabs(value));
    }
    return largest;
}

/// The largest deviation of two rows of one length, relative to the largest value.
double deviation(const std::vector<double>& a, const std::vector<double>& b) {
    const double unit = std::max(std::fmax(largestOf(a), largestOf(b)), std::numeric_limits<double>::min());
    double worst = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const bool same = a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i]));
        const double difference = same ? 0.0 : std::fabs(a[i] - b[i]) / unit;
        worst = std::max(worst, std::isnan(difference) ? std::numeric_limits<double>::infinity() : difference);
    }
    return worst;
}

struct Difference {
    double deviation = 0.0;  // infinite when more than numbers differ
    std::string row;
};

/// Removes the harmonics that are below the floor in both: their levels and frequencies are rounding errors.
void dropRounding(Document& a, Document& b, double floor) {
    for (auto& [name, amplitudes] : a.rows) {
        if (name.ends_with("/dataY")) {
            const std::string place = name.substr(0, name.size() - 1) + 'X';
            for (std::size_t i = 0; i < amplitudes.size(); ++i) {
                double& other = b.rows.at(name)[i];
                if (!(amplitudes[i] > floor || other > floor)) {
                    amplitudes[i] = other = 0.0;
                    a.rows.at(place)[i] = b.rows.at(place)[i] = 0.0;
                }
            }
        }
    }
}

Difference differenceOf(const std::string& a, const std::string& b, double floor) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (!json::accept(a) || !json::accept(b)) {
        return {infinity, "not JSON"};
    }
    Document first(a);
    Document second(b);
    if (first.rest != second.rest) {
        return {infinity, "names or counts"};
    }
    dropRounding(first, second, floor);
    Difference worst;
    for (const auto& [name, row] : first.rows) {
        const double here = deviation(row, second.rows.at(name));
        if (here > worst.deviation) {
            worst = {here, name};
        }
    }
    return worst;
}

/// The texts that the call makes, or its message.
std::vector<std::string> answerOf(Call& call, support::Process process) {
    return call.run(process) ? call.madeTexts() : std::vector<std::string>{call.texts.errorString};
}

/// The largest of the conditioned samples.
double largestSample(const Recipe& recipe, support::Process process) {
    Recipe signals = recipe;
    signals.operation = RT305_4_OPERATION_SIGNALS;
    double largest = 0.0;
    for (const std::string& text : answerOf(*makeCall(signals), process)) {
        for (const auto& [name, row] : Document(text).rows) {
            largest = name.ends_with("/dataName") ? std::max(largest, largestOf(row)) : largest;
        }
    }
    return largest;
}

struct Tally {
    std::size_t equal = 0;
    std::size_t close = 0;
    std::size_t different = 0;
    double worst = 0.0;  // of the texts that are close but not equal
};

void compareTexts(const Recipe& recipe, support::Process before, support::Process after, Tally& tally) {
    const std::unique_ptr<Call> call = makeCall(recipe);
    const std::vector<std::string> expected = answerOf(*call, before);
    const std::vector<std::string> actual = answerOf(*call, after);
    for (std::size_t i = 0; i < std::max(expected.size(), actual.size()); ++i) {
        if (i < expected.size() && i < actual.size() && expected[i] == actual[i]) {
            ++tally.equal;
            continue;
        }
        const double floor =
            recipe.operation == RT305_4_OPERATION_DISTORTION ? tolerance * largestSample(recipe, before) : 0.0;
        const Difference difference = expected.size() == actual.size()
                                          ? differenceOf(expected[i], actual[i], floor)
                                          : Difference{std::numeric_limits<double>::infinity(), "the answer"};
        if (difference.deviation <= tolerance) {
            ++tally.close;
            tally.worst = std::max(tally.worst, difference.deviation);
        } else {
            ++tally.different;
            std::printf("%s\n    %s differs by %.2g\n", describe(recipe).c_str(), difference.row.c_str(),
                        difference.deviation);
        }
    }
}

bool textsAgree(support::Process before, support::Process after) {
    Tally tally;
    for (const Recipe& recipe : mixedRequests(mixedCount)) {
        compareTexts(recipe, before, after, tally);
    }
    std::printf("%zu requests: %zu texts byte-equal, %zu equal within %.0e (worst %.1e), %zu different\n", mixedCount,
                tally.equal, tally.close, tolerance, tally.worst, tally.different);
    return tally.different == 0;
}

void addRows(const std::string& table, const std::vector<NamedRecipe>& recipes, support::Process before,
             support::Process after) {
    static const ReferenceTransform transform;
    for (const NamedRecipe& named : recipes) {
        const std::shared_ptr<Call> call = makeCall(named.recipe);
        addContender(table, named.name, "new", [call, after] { call->run(after); });
        addContender(table, named.name, "old", [call, before] { call->run(before); });
        addContender(table, named.name, unitOfTime, [] { transform(); });
    }
}

/// dlopen searches the system for a file name without a slash.
std::string asPath(const char* file) {
    return std::strchr(file, '/') == nullptr ? std::string("./") + file : file;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: compare OLD.so NEW.so [options of Google Benchmark]\n", stderr);
        return 2;
    }
    const support::Process before = support::loadProcess(asPath(argv[1]).c_str());
    const support::Process after = support::loadProcess(asPath(argv[2]).c_str());
    const bool agree = textsAgree(before, after);
    for (const std::size_t n : {1U, 500U, 2000U, 10000U, 16384U}) {
        addRows("Whole calls, " + std::to_string(n) + (n == 1 ? " sample" : " samples"), operationsOfLength(n), before,
                after);
    }
    addRows("Parameters, type 21, 10000 samples", parameterVariants(), before, after);
    addRows("Spectra, type 21, 10000 samples", spectrumVariants(), before, after);
    argv[2] = argv[0];
    const int failure = printRatios(argc - 2, argv + 2);
    return failure != 0 ? failure : agree ? 0 : 1;
}

#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace {

constexpr double shortestBatch = 2e-4;  // s
constexpr const char* geometricMean = "geometric mean";
constexpr const char* worst = "worst";

double secondsOf(const std::function<void()>& work, std::size_t count) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    for (std::size_t i = 0; i < count; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double>(Clock::now() - start).count() / static_cast<double>(count);
}

double median(std::vector<double> values) {
    if (values.empty()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct Contender {
    std::string name;
    std::function<void()> work;
    std::size_t batch = 0;      // runs that are timed together; 0 until known
    std::vector<double> times;  // s, one a round

    void measure() {
        if (batch == 0) {
            work();
            batch = 1 + static_cast<std::size_t>(shortestBatch / secondsOf(work, 1));
        }
        if (batch > 1) {
            work();  // brings its data back into the caches, which the contender before has filled
        }
        times.push_back(secondsOf(work, batch));
    }
};

struct Row {
    std::string label;
    std::vector<Contender> contenders;
    std::optional<Limit> limit;

    void measure(benchmark::State& state) {
        for (auto _ : state) {
            for (Contender& contender : contenders) {
                contender.measure();
            }
        }
    }

    const Contender& ours() const { return contenders.front(); }

    double ratioTo(const Contender& peer) const {
        std::vector<double> ratios(peer.times.size());
        std::transform(ours().times.begin(), ours().times.end(), peer.times.begin(), ratios.begin(), std::divides<>());
        return median(std::move(ratios));
    }
};

struct Table {
    std::string title;
    std::vector<Row> rows;
    std::vector<std::pair<std::string, Limit>> summaryLimits;
};

std::vector<Table>& tables() {
    static std::vector<Table> all;
    return all;
}

Table& tableOf(const std::string& title) {
    const auto at = std::find_if(tables().begin(), tables().end(), [&](const Table& t) { return t.title == title; });
    return at != tables().end() ? *at : tables().emplace_back(Table{title, {}, {}});
}

Row& rowOf(Table& table, const std::string& label) {
    const auto at = std::find_if(table.rows.begin(), table.rows.end(), [&](const Row& r) { return r.label == label; });
    return at != table.rows.end() ? *at : table.rows.emplace_back(Row{label, {}, {}});
}

void printVerdict(double ratio, const Limit& limit) {
    std::printf("   required %g, goal %g: %s", limit.required, limit.goal, verdict(ratio, limit));
}

void printRow(const Row& row, int labelWidth) {
    std::printf("%-*s %11.2f", labelWidth, row.label.c_str(), median(row.ours().times) * 1e6);
    for (auto peer = row.contenders.begin() + 1; peer != row.contenders.end(); ++peer) {
        std::printf(" %15.2f", row.ratioTo(*peer));
    }
    if (row.limit) {
        printVerdict(row.ratioTo(row.contenders[1]), *row.limit);
    }
    std::printf("\n");
}

/// One figure for all rows of a table.
void printSummary(const Table& table, const char* name, int labelWidth, double (*summary)(const std::vector<double>&)) {
    std::printf("%-*s %11s", labelWidth, name, "");
    const std::size_t contenders = table.rows.front().contenders.size();
    for (std::size_t peer = 1; peer < contenders; ++peer) {
        std::vector<double> ratios;
        for (const Row& row : table.rows) {
            if (!row.ours().times.empty() && peer < row.contenders.size()) {
                ratios.push_back(row.ratioTo(row.contenders[peer]));
            }
        }
        if (table.rows.front().contenders[peer].name == unitOfTime) {
            continue;  // rows in a unit are not rivals
        }
        const double value = summary(ratios);
        std::printf(" %15.2f", value);
        for (const auto& [of, limit] : table.summaryLimits) {
            if (peer == 1 && of == name) {
                printVerdict(value, limit);
            }
        }
    }
    std::printf("\n");
}

double geometricMeanOf(const std::vector<double>& ratios) {
    double sum = 0.0;
    for (const double ratio : ratios) {
        sum += std::log(ratio);
    }
    return std::exp(sum / static_cast<double>(ratios.size()));
}

double worstOf(const std::vector<double>& ratios) {
    return *std::max_element(ratios.begin(), ratios.end());
}

void print(const Table& table) {
    const auto measured = [](const Row& row) { return !row.ours().times.empty(); };
    if (std::none_of(table.rows.begin(), table.rows.end(), measured)) {
        return;  // the filter on the command line left it out
    }
    int labelWidth = 14;
    for (const Row& row : table.rows) {
        labelWidth = std::max(labelWidth, static_cast<int>(row.label.size()));
    }
    const std::vector<Contender>& header = table.rows.front().contenders;
    std::printf("\n%s\n%-*s %11s", table.title.c_str(), labelWidth, "", (header.front().name + " us").c_str());
    for (auto peer = header.begin() + 1; peer != header.end(); ++peer) {
        std::printf(" %15s", ("/ " + peer->name).c_str());
    }
    std::printf("\n");
    for (const Row& row : table.rows) {
        if (measured(row)) {
            printRow(row, labelWidth);
        }
    }
    if (header.size() > 1 && header[1].name != unitOfTime) {
        printSummary(table, geometricMean, labelWidth, geometricMeanOf);
        printSummary(table, worst, labelWidth, worstOf);
    }
}

/// The rounds are booked by the rows themselves.
class Silent : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
};

}  // namespace

void addContender(const std::string& table, const std::string& row, const std::string& name,
                  std::function<void()> work) {
    rowOf(tableOf(table), row).contenders.push_back({name, std::move(work), 0, {}});
}

void addLimit(const std::string& table, const std::string& row, Limit limit) {
    if (row == geometricMean || row == worst) {
        tableOf(table).summaryLimits.emplace_back(row, limit);
    } else {
        rowOf(tableOf(table), row).limit = limit;
    }
}

const char* verdict(double measured, Limit limit) {
    return measured <= limit.goal ? "goal met" : measured <= limit.required ? "met" : "MISSED";
}

int printRatios(int argc, char** argv) {
    std::vector<std::string> defaults{argv[0], "--benchmark_repetitions=5", "--benchmark_min_time=0.05",
                                      "--benchmark_enable_random_interleaving=true"};
    std::vector<char*> arguments;
    for (std::string& option : defaults) {
        arguments.push_back(option.data());
    }
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
        return 2;
    }
    for (Table& table : tables()) {
        for (Row& row : table.rows) {
            benchmark::RegisterBenchmark((table.title + ": " + row.label).c_str(), [&row](benchmark::State& state) {
                row.measure(state);
            })->UseRealTime();
        }
    }
    Silent silent;
    benchmark::RunSpecifiedBenchmarks(&silent);
    for (const Table& table : tables()) {
        print(table);
    }
    return 0;
}

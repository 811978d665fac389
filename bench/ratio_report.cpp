#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

#include "timing.h"

namespace {

constexpr double shortestBatch = 2e-4;  // s

double secondsOf(const std::function<void()>& work, std::size_t count) {
    const double start = processorSeconds();
    for (std::size_t i = 0; i < count; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    return (processorSeconds() - start) / static_cast<double>(count);
}

struct Contender {
    std::string name;
    std::function<void()> work;
    std::size_t batch = 0;      // runs per timing; 0 until known
    std::vector<double> times;  // s, one per round

    void measure() {
        if (batch == 0) {
            batch = 1 + static_cast<std::size_t>(shortestBatch / secondsOf(work, 1));
        }
        if (batch > 1) {
            work();  // reloads its data into the caches
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

/// Prints a summary of all rows, such as the geometric mean, for each rival; none for a peer that is a unit of time.
void printSummary(const Table& table, const char* name, int labelWidth, double (*summary)(const std::vector<double>&)) {
    const std::vector<Contender>& header = table.rows.front().contenders;
    std::vector<double> values;
    std::printf("%-*s %11s", labelWidth, name, "");
    for (std::size_t peer = 1; peer < header.size() && header[peer].name != unitOfTime; ++peer) {
        std::vector<double> ratios;
        for (const Row& row : table.rows) {
            if (!row.ours().times.empty()) {
                ratios.push_back(row.ratioTo(row.contenders[peer]));
            }
        }
        values.push_back(summary(ratios));
        std::printf(" %15.2f", values.back());
    }
    for (const auto& [of, limit] : table.summaryLimits) {
        if (of == name) {
            printVerdict(values.front(), limit);
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
        return;  // excluded by the filter on the command line
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

/// Prints nothing: the rows record their own rounds.
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

void printVerdict(double measured, Limit limit) {
    const bool twoSteps = limit.goal < limit.required;
    std::printf("   required %g", limit.required);
    if (twoSteps) {
        std::printf(", goal %g", limit.goal);
    }
    std::printf(": %s", !(measured <= limit.required)        ? "MISSED"
                        : twoSteps && measured <= limit.goal ? "goal met"
                                                             : "met");
}

int runContenders(int argc, char** argv) {
    settleHeap();
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
            benchmark::RegisterBenchmark((table.title + ": " + row.label).c_str(),
                                         [&row](benchmark::State& state) { row.measure(state); });
        }
    }
    Silent silent;
    benchmark::RunSpecifiedBenchmarks(&silent);
    return 0;
}

void printTable(const std::string& title) {
    print(tableOf(title));
}

double ratioToFirstPeer(const std::string& table, const std::string& row) {
    const Row& found = rowOf(tableOf(table), row);
    return found.contenders.size() > 1 ? found.ratioTo(found.contenders[1]) : std::numeric_limits<double>::quiet_NaN();
}

int printRatios(int argc, char** argv) {
    const int failure = runContenders(argc, argv);
    if (failure == 0) {
        std::for_each(tables().begin(), tables().end(), print);
    }
    return failure;
}

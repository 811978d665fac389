#include "ratio_report.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

/// Values by key in the order of their first use.
template <class Value>
class Ordered {
public:
    Value& operator[](const std::string& key) {
        const auto at = std::find_if(items_.begin(), items_.end(), [&](const auto& item) { return item.first == key; });
        return at != items_.end() ? at->second : items_.emplace_back(key, Value{}).second;
    }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<std::pair<std::string, Value>> items_;
};

using Seconds = std::vector<double>;
using Row = Ordered<Seconds>;
using Table = Ordered<Row>;

/// All contenders, known before the runs so that the tables keep the order of registration.
Ordered<Table>& tables() {
    static Ordered<Table> all;
    return all;
}

double median(Seconds times) {
    std::sort(times.begin(), times.end());
    return times.empty() ? std::nan("") : times[times.size() / 2];
}

class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                const std::string& name = run.run_name.function_name;
                const std::size_t first = name.find('|');
                const std::size_t second = name.find('|', first + 1);
                tables()[name.substr(0, first)][name.substr(first + 1, second - first - 1)][name.substr(second + 1)]
                    .push_back(run.real_accumulated_time / static_cast<double>(run.iterations));
            }
        }
    }
};

void print(const std::string& title, const Table& table) {
    const Row& header = table.begin()->second;
    std::printf("\n%s\n%10s %10s", title.c_str(), "", (header.begin()->first + " us").c_str());
    for (auto peer = header.begin() + 1; peer != header.end(); ++peer) {
        std::printf(" %15s", ("/ " + peer->first).c_str());
    }
    Ordered<Seconds> logarithms;
    for (const auto& [label, row] : table) {
        const double ours = median(row.begin()->second);
        std::printf("\n%10s %10.2f", label.c_str(), ours * 1e6);
        for (auto peer = row.begin() + 1; peer != row.end(); ++peer) {
            const double ratio = ours / median(peer->second);
            logarithms[peer->first].push_back(std::log(ratio));
            std::printf(" %15.2f", ratio);
        }
    }
    std::printf("\n%21s", "geometric mean");
    for (const auto& [peer, logs] : logarithms) {
        double sum = 0.0;
        for (const double value : logs) {
            sum += value;
        }
        std::printf(" %15.2f", std::exp(sum / static_cast<double>(logs.size())));
    }
    std::printf("\n");
}

}  // namespace

void addContender(const std::string& table, const std::string& row, const std::string& name,
                  std::function<void()> work) {
    tables()[table][row][name];
    benchmark::RegisterBenchmark((table + '|' + row + '|' + name).c_str(),
                                 [work = std::move(work)](benchmark::State& state) {
                                     for (auto _ : state) {
                                         work();
                                         benchmark::ClobberMemory();
                                     }
                                 });
}

int printRatios(int argc, char** argv) {
    std::vector<std::string> defaults{argv[0], "--benchmark_repetitions=9", "--benchmark_min_time=0.01",
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
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (const auto& [title, table] : tables()) {
        print(title, table);
    }
    return 0;
}

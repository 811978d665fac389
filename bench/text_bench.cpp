// Times of writing a row of numbers as text: ours, the JSON library's dump, and for information std::to_chars, which
// gives other digits.

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "adapter/nlohmann/json.h"
#include "ratio_report.h"
#include "table/json_number.h"

namespace {

constexpr std::size_t rowLength = 10000;
constexpr std::size_t room = rowLength * (roomForJsonNumber + 1);

template <class Number>
void addRow(const std::string& label, Number number) {
    struct Row {
        std::vector<double> numbers;
        nlohmann::json json;
        std::vector<char> text = std::vector<char>(room);
    };
    const auto row = std::make_shared<Row>();
    for (std::size_t i = 0; i < rowLength; ++i) {
        row->numbers.push_back(number(static_cast<double>(i)));
    }
    row->json = row->numbers;
    const std::string table = "Text of 10,000 numbers, ours / peer";
    addContender(table, label, "ours", [row] { writeJsonNumbers(row->text.data(), row->numbers); });
    addContender(table, label, "dump", [row] { static_cast<void>(row->json.dump()); });
    addContender(table, label, "to_chars", [row] {
        char* out = row->text.data();
        for (const double x : row->numbers) {
            out = std::to_chars(out, out + roomForJsonNumber, x).ptr;
            *out++ = ',';
        }
    });
}

}  // namespace

int main(int argc, char** argv) {
    std::mt19937_64 random(1);
    std::uniform_int_distribution<std::uint64_t> finite(0, 0x7FEFFFFFFFFFFFFF);
    std::uniform_real_distribution<double> uniform;
    std::normal_distribution<double> noise;
    addRow("any bits", [&](double) { return std::bit_cast<double>(finite(random)); });
    addRow("0 to 1", [&](double) { return uniform(random); });
    addRow("voltage", [&](double i) { return 325.0 * std::sin(0.0314 * i) + noise(random); });
    addRow("spectrum", [&](double) { return std::exp(3.0 * noise(random) - 8.0); });
    addRow("axis", [](double i) { return 0.25 * i; });
    addRow("integers", [](double i) { return i; });
    addRow("decimals", [&](double) { return std::round(1e5 * uniform(random)) / 1e3; });
    return printRatios(argc, argv);
}

// The texts of every input type and operation for samples that are the same on every machine: machine_texts prints
// them; machine_texts FILE compares them with a file.
#include <cstdio>
#include <fstream>

#include "answers.h"
#include "reference/recording.h"

int main(int argc, char** argv) {
    constexpr double allowed = 2e-14;  // variants of the mathematics library differ in the last bit
    double largest = 0.0;
    std::size_t same = 0;
    std::ifstream file(argc > 1 ? argv[1] : "/dev/null");
    const auto samples = recording::samples();
    const auto texts = answers([&](std::uint32_t channel) { return samples[channel]; });
    for (const std::string& text : texts) {
        std::string other;
        if (argc < 2) {
            std::puts(text.c_str());
            continue;
        }
        std::getline(file, other);
        same += text == other ? 1 : 0;
        largest = std::max(largest, difference(nlohmann::json::parse(text), nlohmann::json::parse(other)));
    }
    std::fprintf(stderr, "%zu of %zu texts are the same bytes, the largest relative difference is %.1e\n", same,
                 texts.size(), largest);
    return largest < allowed ? 0 : 1;
}

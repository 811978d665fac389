// The texts of every input type and operation: machine_texts prints them; machine_texts FILE compares them with a file.
#include <cstdio>
#include <fstream>

#include "answers.h"

int main(int argc, char** argv) {
    constexpr double allowed = 1e-12;  // variants of the mathematics library differ in the last bit
    double largest = 0.0;
    std::ifstream file(argc > 1 ? argv[1] : "/dev/null");
    for (const std::string& text : ordinaryAnswers()) {
        std::string other;
        if (argc < 2) {
            std::puts(text.c_str());
        } else {
            std::getline(file, other);
            largest = std::max(largest, difference(nlohmann::json::parse(text), nlohmann::json::parse(other)));
        }
    }
    std::fprintf(stderr, "the largest relative difference is %.1e\n", largest);
    return largest < allowed ? 0 : 1;
}

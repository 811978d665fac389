// The texts of every input type and operation on one machine beside those of another:
//     machine_texts FILE        compares its own texts with those in the file
//     machine_texts             prints them
#include <cstdio>
#include <fstream>
#include <iostream>

#include "answers.h"

namespace {

/// Sines of numbers differ in the last bit between the variants of the mathematics library.
constexpr double allowed = 1e-12;

int compare(std::istream& other) {
    std::size_t count = 0;
    std::size_t same = 0;
    double largest = 0.0;
    for (const Texts& call : ordinaryAnswers()) {
        for (const std::string& text : call) {
            std::string theirs;
            std::getline(other, theirs);
            ++count;
            same += text == theirs ? 1 : 0;
            largest = std::max(largest, difference(text, theirs));
        }
    }
    std::printf("%zu of %zu texts are the same bytes, the largest difference is %.1e\n", same, count, largest);
    return largest < allowed ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) {
        std::ifstream other(argv[1]);
        return compare(other);
    }
    for (const Texts& call : ordinaryAnswers()) {
        for (const std::string& text : call) {
            std::cout << text << '\n';
        }
    }
    return 0;
}

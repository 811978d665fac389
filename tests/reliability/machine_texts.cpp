// The texts of every input type and operation, to be compared between machines:
//     machine_texts             prints them
//     machine_texts FILE        compares them with those in the file
#include <cstdio>
#include <fstream>
#include <iostream>

#include "answers.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        for (const std::string& text : ordinaryAnswers()) {
            std::cout << text << '\n';
        }
        return 0;
    }
    constexpr double allowed = 1e-12;  // variants of the mathematics library differ in the last bit
    double largest = 0.0;
    std::ifstream file(argv[1]);
    for (const std::string& text : ordinaryAnswers()) {
        std::string other;
        std::getline(file, other);
        largest = std::max(largest, difference(nlohmann::json::parse(text), nlohmann::json::parse(other)));
    }
    std::printf("the largest relative difference is %.1e\n", largest);
    return largest < allowed ? 0 : 1;
}

// A text whose memory runs out leaves as std::bad_alloc, wherever that happens.

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "adapter/nlohmann/json.h"
#include "table/mlab_table.h"

namespace {

long allocationsLeft = -1;  // negative: without limit

class Limit {
public:
    explicit Limit(long allocations) { allocationsLeft = allocations; }
    ~Limit() { allocationsLeft = -1; }
};

}  // namespace

// Not inlined, or the compiler sees free() called on what it takes for the library's operator new.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    allocationsLeft -= allocationsLeft > 0 ? 1 : 0;
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

class Named : public MatlabTable {
public:
    explicit Named(std::string name) : name_(std::move(name)) {}
    std::string getName() const override { return name_; }

private:
    std::string name_;
};

/// The text, or how it failed, with so many allocations.
std::string textWith(const MatlabTable& table, long allocations) {
    try {
        const Limit limit(allocations);
        return table.toJsonText();
    } catch (const std::bad_alloc&) {
        return "no memory";
    } catch (const nlohmann::json::type_error& error) {
        return std::to_string(error.id);
    }
}

TEST(TextMemory, RunsOutAsBadAlloc) {
    const std::string name = "a name to escape, \" and longer than what a string holds in place";
    for (const char* const end : {"", "\xFF"}) {
        Named table(name + end);
        table.resize(2, 2);
        table.setCell(0, 0, MatlabCell(std::vector<double>(100, 0.1)));
        table.setCell(1, 0, MatlabCell(MatlabTable(1, 1)));
        table.setCell(0, 1, MatlabCell(name));
        const std::string text = textWith(table, -1);
        EXPECT_EQ(text.size() == 3, *end != '\0') << "a name that is no UTF-8 is an error of its own";
        long allocations = 0;
        while (textWith(table, allocations) == "no memory" && allocations < 1000) {
            ++allocations;
        }
        EXPECT_GT(allocations, 5);
        EXPECT_EQ(textWith(table, allocations), text);
    }
}

}  // namespace

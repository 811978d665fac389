// Every allocation of a call fails, once or together with all that follow: the call ends with std::bad_alloc, gives all
// memory back, leaves the texts of the last success as they were, and the next call is right.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <functional>
#include <memory>

#include "failing_memory.h"
#include "plugin/plugin_host.h"
#include "table/mlab_param_table.h"

namespace {

using Texts = std::vector<std::string>;

Texts textsOf(const Call& call) {
    return {call.texts.begin(), call.texts.begin() + Call::error};
}

struct Case {
    std::size_t n;
    std::uint32_t spectrumFlags;
    std::uint32_t measurementFlags;
};

// A power of two and two primes, with options that take different ways through the stages.
constexpr Case cases[]{
    {64, RT305_4_SPECTRUM_WINDOW_HANN | RT305_4_SPECTRUM_CRITERION,
     RT305_4_POWER_TWO_WATTMETER_PHASE | RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_B},
    {61, RT305_4_SPECTRUM_WINDOW_KAISER | RT305_4_SPECTRUM_LEVEL_DB | RT305_4_SPECTRUM_MODE_2,
     RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX | RT305_4_FREQUENCY_CONTROL},
    {509, RT305_4_SPECTRUM_WINDOW_HAMMING, RT305_4_POWER_TWO_WATTMETER},
};

void fill(Call& call, const Case& c, std::uint32_t type, std::uint32_t operation, double amplitude) {
    for (std::uint32_t channel = 0; channel < 6; ++channel) {
        call.add(static_cast<std::int32_t>(channel / 3), channel % 3, sine(c.n, amplitude, 200.0 + 50.0 * channel));
    }
    call.request.samplesNumber = c.n;
    call.request.inputType = type;
    call.request.operation = operation;
    call.request.auxMode = 3;
    call.request.options = {c.spectrumFlags, c.measurementFlags};
}

/// Runs work with every one of its allocations failing in turn; check follows each failure. Returns how many there are.
template <class Work, class Check>
long forEachAllocation(FailingMemory::Mode mode, Work work, Check check) {
    for (long k = 0;; ++k) {
        const long before = liveBlocks();
        bool ended = false;
        bool struck = false;
        {
            const FailingMemory failing(k, mode);
            try {
                work();
            } catch (const std::bad_alloc&) {
                ended = true;
            }
            struck = failing.struck();
        }
        EXPECT_EQ(ended, struck) << "allocation " << k;
        if (!struck) {
            return k;
        }
        EXPECT_EQ(liveBlocks(), before) << "blocks leaked when allocation " << k << " failed";
        check();
    }
}

class AllocationFailure : public testing::TestWithParam<FailingMemory::Mode> {};
INSTANTIATE_TEST_SUITE_P(Each, AllocationFailure, testing::Values(FailingMemory::once, FailingMemory::forGood),
                         [](const auto& mode) { return mode.param == FailingMemory::once ? "Once" : "ForGood"; });

TEST_P(AllocationFailure, LeavesACallAsIfItHadNotBeen) {
    long total = 0;
    for (const Case& c : cases) {
        for (const std::uint32_t type : {4U, 8U, 21U, 0U}) {
            for (std::uint32_t operation = 0; operation < 4; ++operation) {
                SCOPED_TRACE("type " + std::to_string(type) + ", operation " + std::to_string(operation) + ", " +
                             std::to_string(c.n) + " samples");
                // Two calls with different texts take turns: one succeeds, the other one fails and then succeeds. What
                // a failing call publishes would be seen in the texts of the other.
                std::array<Call, 2> calls;
                std::array<Texts, 2> wanted;
                for (std::size_t i = 0; i < 2; ++i) {
                    fill(calls[i], c, type, operation, 1.0 + static_cast<double>(i));
                    ASSERT_EQ(calls[i].run(), 1);
                    wanted[i] = textsOf(calls[i]);
                }
                std::size_t turn = 0;
                const long count = forEachAllocation(
                    GetParam(), [&] { calls[turn].run(); },
                    [&] {
                        EXPECT_EQ(textsOf(calls[1 - turn]), wanted[1 - turn]);
                        EXPECT_EQ(calls[turn].run(), 1);
                        EXPECT_EQ(textsOf(calls[turn]), wanted[turn]);
                        turn = 1 - turn;
                    });
                EXPECT_GT(count, 0);
                total += count;
            }
        }
    }
    std::printf("%ld allocations failed\n", total);
}

class NamedTable : public MatlabParamTable {
public:
    using MatlabParamTable::MatlabParamTable;
    Scheme getScheme() const override {
        return {{"a name that does not fit into the object", MatlabCell::CellDataType::text},
                {"values", MatlabCell::CellDataType::floatingVector},
                {"nested", MatlabCell::CellDataType::table}};
    }
    MatlabTable* clone() const override { return new NamedTable(this); }
};

void fill(NamedTable& table) {
    table.resize(3, 2);
    for (std::uint64_t row = 0; row < 2; ++row) {
        table.setCell(0, row, MatlabCell("a text that does not fit into the object either, " + std::to_string(row)));
        table.setCell(1, row, MatlabCell(std::vector<double>{1.5, 2.5}));
        NamedTable nested(1, 1);
        nested.setCell(0, 0, MatlabCell(std::vector<std::int64_t>{1, 2, 3}));
        table.setCell(2, row, MatlabCell(nested));
    }
}

TEST_P(AllocationFailure, LeavesATableAsItWas) {
    NamedTable table;
    fill(table);
    const std::string text = table.toJsonText();
    const char* kept[]{"nothing has this name"};
    const std::function<void()> works[]{
        [&] {
            NamedTable other;
            fill(other);
        },
        [&] { const MatlabTable other(table); },
        [&] { const std::unique_ptr<MatlabTable> other(table.clone()); },
        [&] { static_cast<void>(table.getCell(2, 1, MatlabCell())); },
        [&] { static_cast<void>(table.toJsonText()); },
        [&] { static_cast<void>(table.getParamNames()); },
        [&] { static_cast<void>(table.getColumnWidth(0, 3)); },
        [&] { table.setCell(2, 0, *table.findCell(2, 1)); },
        [&] { NamedTable(&table).thinningRows(kept, 1); },  // removes row by row, so on a copy
        // These change the table only when all allocations have succeeded.
        [&] { table.resize(4, 5); },
        [&] { table.removeRow("a text that does not fit into the object either, 0"); },
    };
    for (const auto& work : works) {
        const std::int64_t cells = MatlabCell::objectsCounter;
        const long count = forEachAllocation(GetParam(), work, [&] {
            ASSERT_EQ(table.toJsonText(), text);
            ASSERT_EQ(MatlabCell::objectsCounter, cells);
        });
        EXPECT_GT(count, 0) << "work " << &work - works;
        table.remove();
        fill(table);
    }
}

}  // namespace

// Every allocation of a call fails, once or together with all later ones: the call ends with std::bad_alloc, frees all
// memory, keeps the texts of the last success, and the next call succeeds.

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "answers.h"
#include "calc/channel_kind.h"
#include "results/signal_tables.h"

namespace {

using support::Call;

struct {
    long left = -1;  // allocations before the one that fails; -1: none fails
    bool forGood = false;
    bool failed = false;
    long live = 0;  // blocks that are not freed yet
} memory;

void* allocated(std::size_t size, std::size_t alignment) {
    if (memory.left == 0) {
        memory.failed = true;
        memory.left = memory.forGood ? 0 : -1;
        throw std::bad_alloc();
    }
    memory.left -= memory.left > 0 ? 1 : 0;
    ++memory.live;
    return std::aligned_alloc(alignment, (size / alignment + 1) * alignment);
}

void released(void* block) noexcept {
    memory.live -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace

// These replace the operators of the C++ runtime, for the library too. The array forms of a sanitizer would not call
// them.
#define REPLACE_NEW_AND_DELETE(array)                                                 \
    void* operator new array(std::size_t size) {                                      \
        return allocated(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);                     \
    }                                                                                 \
    void* operator new array(std::size_t size, std::align_val_t alignment) {          \
        return allocated(size, static_cast<std::size_t>(alignment));                  \
    }                                                                                 \
    void operator delete array(void* block) noexcept {                                \
        released(block);                                                              \
    }                                                                                 \
    void operator delete array(void* block, std::size_t) noexcept {                   \
        released(block);                                                              \
    }                                                                                 \
    void operator delete array(void* block, std::align_val_t) noexcept {              \
        released(block);                                                              \
    }                                                                                 \
    void operator delete array(void* block, std::size_t, std::align_val_t) noexcept { \
        released(block);                                                              \
    }
REPLACE_NEW_AND_DELETE()
REPLACE_NEW_AND_DELETE([])

namespace {

/// Runs work while each of its allocations fails in turn, and check after each failure.
template <class Work, class Check>
void failEachAllocation(bool forGood, Work work, Check check) {
    for (long k = 0;; ++k) {
        const long before = memory.live;
        bool ended = false;
        memory.left = k;
        memory.forGood = forGood;
        memory.failed = false;
        try {
            work();
        } catch (const std::bad_alloc&) {
            ended = true;
        }
        memory.left = -1;
        ASSERT_EQ(ended, memory.failed) << "allocation " << k;
        if (!ended) {
            ASSERT_GT(k, 0) << "nothing is allocated";
            return;
        }
        ASSERT_EQ(memory.live, before) << "leak when allocation " << k << " failed";
        check();
    }
}

class AllocationFailure : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(OnceAndForGood, AllocationFailure, testing::Bool());

// A power of two and two primes, with options that take different paths through the stages.
constexpr struct {
    std::size_t n;
    std::uint32_t spectrumFlags;
    std::uint32_t measurementFlags;
} cases[]{
    {64, RT305_4_SPECTRUM_WINDOW_HANN | RT305_4_SPECTRUM_CRITERION,
     RT305_4_POWER_TWO_WATTMETER_PHASE | RT305_4_TWO_CURRENTS | RT305_4_REBUILT_PHASE_B},
    {61, RT305_4_SPECTRUM_WINDOW_KAISER | RT305_4_SPECTRUM_LEVEL_DB | RT305_4_SPECTRUM_MODE_2,
     RT305_4_FOUR_WIRE | RT305_4_POWER_THREE_WATTMETER_COMPLEX | RT305_4_FREQUENCY_CONTROL},
    {509, RT305_4_SPECTRUM_WINDOW_HAMMING, RT305_4_POWER_TWO_WATTMETER},
};

std::vector<std::string> allTexts(Call& call) {
    std::vector<std::string> texts;
    for (std::uint32_t number = 0; number < RT305_4_TEXT_ERROR; ++number) {
        texts.push_back(call.text(number));
    }
    return texts;
}

TEST_P(AllocationFailure, LeavesNoTraceOfTheCall) {
    for (const auto& c : cases) {
        for (const std::uint32_t type : allTypes) {
            for (std::uint32_t operation = 0; operation < 4; ++operation) {
                SCOPED_TRACE(testing::Message() << "type " << type << ", operation " << operation << ", n " << c.n);
                // Two calls with different texts take turns: what a failing call publishes would show in the other's.
                std::unique_ptr<Call> calls[2];
                std::vector<std::string> wanted[2];
                for (std::uint32_t i = 0; i < 2; ++i) {
                    calls[i] = std::make_unique<Call>(type, operation, support::sixChannels([&](std::uint32_t channel) {
                                                          return noisySine(c.n, channel + i);
                                                      }));
                    calls[i]->request.options = {c.spectrumFlags, c.measurementFlags};
                    ASSERT_TRUE(calls[i]->run());
                    wanted[i] = allTexts(*calls[i]);
                }
                std::size_t turn = 0;
                failEachAllocation(
                    GetParam(), [&] { calls[turn]->run(); },
                    [&] {
                        EXPECT_EQ(allTexts(*calls[1 - turn]), wanted[1 - turn]);
                        EXPECT_TRUE(calls[turn]->run());
                        EXPECT_EQ(allTexts(*calls[turn]), wanted[turn]);
                        turn = 1 - turn;
                    });
            }
        }
    }
}

TEST_P(AllocationFailure, LeavesTheTableUnchanged) {
    calc_modul_K9_web_ns::coder::b_table record;
    record.prefill(calc_modul_K9_web_ns::voltage);
    record.variables.signals.fill(std::make_shared<const std::vector<double>>(2, 1.5));
    RT305_4_USignalTable table;
    table.init(record);
    const std::string text = table.toJsonText();
    const std::function<void()> works[]{
        [&] { RT305_4_USignalTable().init(record); },
        [&] { const MatlabTable other(table); },
        [&] { const std::unique_ptr<MatlabTable> other(table.clone()); },
        [&] { static_cast<void>(table.getCell(4, 1, MatlabCell())); },
        [&] { static_cast<void>(table.toJsonText()); },
        [&] { static_cast<void>(table.getColumnWidth(1, 3)); },
        [&] { table.setCell(4, 0, *table.findCell(4, 1)); },
        [&] { table.resize(6, 5); },  // must not change the table before all allocations have succeeded
    };
    for (const auto& work : works) {
        const std::int64_t cells = MatlabCell::objectsCounter;
        SCOPED_TRACE(&work - works);
        failEachAllocation(GetParam(), work, [&] {
            ASSERT_EQ(table.toJsonText(), text);
            ASSERT_EQ(MatlabCell::objectsCounter, cells);
        });
    }
}

}  // namespace

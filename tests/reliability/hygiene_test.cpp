// What a call leaves unchanged in the host's process, and the process states in which it works.

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "answers.h"

namespace {

using Lines = std::vector<std::string>;

#ifdef __x86_64__
/// The control bits of both floating-point units, without the exception flags.
std::string floatingPointMode() {
    std::uint16_t x87 = 0;
    __asm__("fnstcw %0" : "=m"(x87));
    return "floating point " + std::to_string(__builtin_ia32_stmxcsr() & ~0x3FU) + " " + std::to_string(x87);
}
void flushSubnormals() {
    __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() | 0x8040U);
}
#else
std::string floatingPointMode() {
    std::fenv_t mode;
    std::fegetenv(&mode);
    return "floating point " + std::to_string(mode.__fpcr);
}
void flushSubnormals() {
    std::fenv_t mode;
    std::fegetenv(&mode);
    mode.__fpcr |= 1U << 24U;
    std::fesetenv(&mode);
}
#endif

/// All process state that a library could change: descriptors, modes, locale, folder, environment, signals, threads.
Lines processState() {
    Lines state{floatingPointMode(), std::setlocale(LC_ALL, nullptr), std::filesystem::current_path()};
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        state.push_back(entry.path().string() + " -> " + std::filesystem::read_symlink(entry).string());
    }
    for (char** variable = environ; *variable != nullptr; ++variable) {
        state.emplace_back(*variable);
    }
    for (int signal = 1; signal < SIGRTMAX; ++signal) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        state.push_back("signal handler " + std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_handler)) +
                        " flags " + std::to_string(action.sa_flags));
    }
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("Umask:") || line.starts_with("Threads:") ||
            (line.starts_with("Sig") && !line.starts_with("SigQ:"))) {  // SigQ counts the signals of all processes
            state.push_back(line);
        }
    }
    return state;
}

TEST(Hygiene, LeavesTheProcessUnchanged) {
    const Lines before = processState();
    ordinaryAnswers();
    EXPECT_FALSE(support::Call(0, 0, std::vector<ChannelData>{}).run());
    EXPECT_EQ(processState(), before);
}

/// A read-only copy of some objects, at the start or at the end of memory between two inaccessible pages. Stays mapped.
template <class T>
const T* guardedCopy(const std::vector<T>& objects, bool atEnd) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t size = objects.size() * sizeof(T);
    const std::size_t inner = (size + page - 1) / page * page;
    char* const base =
        static_cast<char*>(mmap(nullptr, inner + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base + page, inner, PROT_READ | PROT_WRITE);
    void* const copy = std::memcpy(base + page + (atEnd ? inner - size : 0), objects.data(), size);
    mprotect(base + page, inner, PROT_READ);
    return static_cast<const T*>(copy);
}

TEST(Hygiene, ReadsNothingOutsideSamplesAndDescriptors) {
    for (const std::size_t n : {1U, 2U, 3U, 7U, 16U, 61U, 64U, 1023U, 2500U, 4099U}) {
        for (const bool atEnd : {false, true}) {
            const double* const samples = guardedCopy(noisySine(n, 0), atEnd);
            support::Call call(0, 0, support::sixChannels([n](std::uint32_t) { return signals::Samples(n); }));
            for (ChannelData& channel : call.channels) {
                channel.samples = samples;
            }
            call.request.channels = guardedCopy(call.channels, atEnd);
            for (const std::uint32_t type : allTypes) {
                for (std::uint32_t operation = 0; operation < 4; ++operation) {
                    call.request.inputType = type;
                    call.request.operation = operation;
                    ASSERT_TRUE(call.run());
                }
            }
        }
    }
}

TEST(Hygiene, GivesTheSameTextsUnderALocaleWithADecimalComma) {
    const Lines wanted = ordinaryAnswers();
    const std::string folder = testing::TempDir() + "rt305_4_locales" + std::to_string(getpid());
    std::filesystem::create_directory(folder);
    ASSERT_EQ(std::system(("localedef -i de_DE -f UTF-8 " + folder + "/de_DE.UTF-8").c_str()), 0);
    setenv("LOCPATH", folder.c_str(), 1);
    const bool german = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    std::filesystem::remove_all(folder);
    ASSERT_TRUE(german);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(ordinaryAnswers(), wanted);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
}

TEST(FloatingPoint, WorksInEveryModeAndKeepsIt) {
    const Lines wanted = ordinaryAnswers();
    std::fenv_t usual;
    std::fegetenv(&usual);
    for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        for (const bool flushes : {false, true}) {
            std::fesetround(rounding);
            if (flushes) {
                flushSubnormals();
            }
            const std::string before = floatingPointMode();
            const Lines texts = ordinaryAnswers();
            for (const double value : {0.0, 1e-310, 1e300, std::nan(""), HUGE_VAL}) {
                answers([&](std::uint32_t) { return signals::Samples(256, value); });
            }
            const std::string after = floatingPointMode();
            std::fesetenv(&usual);
            EXPECT_EQ(before, after);
            for (std::size_t i = 0; i < wanted.size(); ++i) {
                EXPECT_LT(difference(nlohmann::json::parse(wanted[i]), nlohmann::json::parse(texts[i])), 1e-9)
                    << "text " << i << ", " << before;
            }
        }
    }
}

TEST(FloatingPoint, SetsOffNoTrapAndNoFlagOfTheHost) {
    std::fenv_t usual;
    std::feholdexcept(&usual);
    feenableexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW);
    const std::string before = floatingPointMode();
    answers([](std::uint32_t) { return signals::Samples(256); });
    const std::string after = floatingPointMode();
    const int flags = std::fetestexcept(FE_ALL_EXCEPT);
    std::fesetenv(&usual);
    EXPECT_EQ(before, after);
    EXPECT_EQ(flags, 0);
}

#ifdef __SANITIZE_ADDRESS__
constexpr long stackSize = 1024 * 1024;  // sanitizers make stack frames many times as large
#else
constexpr long stackSize = 64 * 1024;
#endif

TEST(Hygiene, RunsOnASmallThreadStack) {
    const auto work = [](void*) -> void* {
        for (const std::size_t n : {61U, 64U, 2500U, 10007U}) {
            answers([&](std::uint32_t channel) { return noisySine(n, channel); });
        }
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    const long smallest = std::max(stackSize, sysconf(_SC_THREAD_STACK_MIN));
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, static_cast<std::size_t>(smallest)), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, work, nullptr), 0);
    pthread_join(thread,
                 nullptr);  // an overflow would have ended the program: the page below the stack is inaccessible
}

}  // namespace

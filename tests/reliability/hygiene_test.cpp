// What a call leaves alone in the host's process, and the process states in which it works all the same.

#include <dirent.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>
#include <xmmintrin.h>

#include <algorithm>
#include <cfenv>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "answers.h"
#include "plugin/plugin_host.h"

namespace {

/// The control bits of both floating-point units.
std::string floatingPointMode() {
    std::uint16_t x87 = 0;
    __asm__("fnstcw %0" : "=m"(x87));
    constexpr unsigned exceptionFlags = 0x3F;
    return std::to_string(_mm_getcsr() & ~exceptionFlags) + " " + std::to_string(x87);
}

std::vector<std::string> openDescriptors() {
    std::vector<std::string> open;
    const std::string folder = "/proc/self/fd/";
    DIR* const entries = opendir(folder.c_str());
    for (const dirent* entry = readdir(entries); entry != nullptr; entry = readdir(entries)) {
        char target[256]{};
        if (readlink((folder + entry->d_name).c_str(), target, sizeof target - 1) > 0) {
            open.push_back(std::string(entry->d_name) + " -> " + target);
        }
    }
    closedir(entries);
    std::sort(open.begin(), open.end());
    return open;
}

/// Everything of the process that a library could change behind its host's back, as comparable lines.
std::vector<std::string> processState() {
    std::vector<std::string> state = openDescriptors();
    state.push_back("floating point " + floatingPointMode());
    state.push_back(std::string("locale ") + std::setlocale(LC_ALL, nullptr));
    char folder[4096]{};
    state.push_back(std::string("folder ") + getcwd(folder, sizeof folder));
    for (char** variable = environ; *variable != nullptr; ++variable) {
        state.emplace_back(*variable);
    }
    for (int signal = 1; signal < SIGRTMAX; ++signal) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        state.push_back("handler " + std::to_string(reinterpret_cast<std::uintptr_t>(action.sa_handler)) + " flags " +
                        std::to_string(action.sa_flags));
    }
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        for (const char* kept : {"Umask:", "Threads:", "SigBlk:", "SigIgn:", "SigCgt:"}) {
            if (line.starts_with(kept)) {
                state.push_back(line);
            }
        }
    }
    return state;
}

TEST(Hygiene, LeavesTheProcessAsItWas) {
    const auto before = processState();
    ordinaryAnswers();
    Call refused;
    EXPECT_EQ(refused.run(), 0);
    EXPECT_EQ(processState(), before);
}

/// Read-only memory between two pages that nobody may touch, with the content at its very start or its very end.
class GuardedMemory {
public:
    GuardedMemory(const void* content, std::size_t size, bool atEnd) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t inner = (size + page - 1) / page * page;
        whole_ = inner + 2 * page;
        base_ = static_cast<char*>(mmap(nullptr, whole_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(base_ + page, inner, PROT_READ | PROT_WRITE);
        content_ = base_ + page + (atEnd ? inner - size : 0);
        std::memcpy(content_, content, size);
        mprotect(base_ + page, inner, PROT_READ);
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory() { munmap(base_, whole_); }

    template <class T>
    const T* as() const {
        return reinterpret_cast<const T*>(content_);
    }

private:
    char* base_;
    char* content_;
    std::size_t whole_;
};

TEST(Hygiene, ReadsTheSamplesAndDescriptorsAndNothingBesideThem) {
    for (const std::size_t n : {1U, 2U, 3U, 7U, 16U, 61U, 64U, 1023U, 2500U, 4099U}) {
        for (const bool atEnd : {false, true}) {
            Call call;
            std::vector<std::unique_ptr<GuardedMemory>> memory;
            for (std::uint32_t channel = 0; channel < 6; ++channel) {
                call.add(static_cast<std::int32_t>(channel / 3), channel % 3, noisySine(n, channel));
                memory.push_back(
                    std::make_unique<GuardedMemory>(call.samples[channel].data(), n * sizeof(double), atEnd));
                call.descriptors[channel].samples = memory.back()->as<double>();
            }
            const GuardedMemory descriptors(call.descriptors.data(), 6 * sizeof(ChannelData), atEnd);
            call.request.channels = descriptors.as<ChannelData>();
            call.request.channelCount = 6;
            call.request.samplesNumber = n;
            for (const std::uint32_t type : {4U, 8U, 21U}) {
                for (std::uint32_t operation = 0; operation < 4; ++operation) {
                    call.request.inputType = type;
                    call.request.operation = operation;
                    ASSERT_EQ(Plugin::instance().process(call.request), 1);
                }
            }
        }
    }
}

TEST(Hygiene, GivesTheSameTextsUnderALocaleWithADecimalComma) {
    const auto wanted = ordinaryAnswers();
    const std::string folder = testing::TempDir() + "rt305_4_locales" + std::to_string(getpid());
    ASSERT_EQ(std::system(("mkdir " + folder + " && localedef -i de_DE -f UTF-8 " + folder + "/de_DE.UTF-8").c_str()),
              0);
    setenv("LOCPATH", folder.c_str(), 1);
    const bool german = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
    ASSERT_EQ(std::system(("rm -r " + folder).c_str()), 0);
    ASSERT_TRUE(german);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    const auto before = processState();
    EXPECT_EQ(ordinaryAnswers(), wanted);
    EXPECT_EQ(processState(), before);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
}

/// A floating-point mode of the calling thread, while it lives.
class FloatingPointMode {
public:
    FloatingPointMode(int rounding, bool flushingToZero) {
        std::fesetround(rounding);
        constexpr unsigned flushToZeroAndDenormalsAreZero = 0x8040;
        _mm_setcsr(_mm_getcsr() | (flushingToZero ? flushToZeroAndDenormalsAreZero : 0));
    }
    FloatingPointMode(const FloatingPointMode&) = delete;
    FloatingPointMode& operator=(const FloatingPointMode&) = delete;
    ~FloatingPointMode() { std::fesetenv(&saved_); }

private:
    std::fenv_t saved_ = [] {
        std::fenv_t now;
        std::fegetenv(&now);
        return now;
    }();
};

TEST(FloatingPoint, WorksInEveryModeAndKeepsIt) {
    const auto wanted = ordinaryAnswers();
    for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        for (const bool flushing : {false, true}) {
            SCOPED_TRACE(testing::Message() << "rounding " << rounding << (flushing ? ", flushing" : ""));
            std::vector<Texts> texts;
            std::string before;
            std::string after;
            {
                const FloatingPointMode mode(rounding, flushing);
                before = floatingPointMode();
                texts = ordinaryAnswers();
                for (const double value : {0.0, 1e-310, 1e300, std::nan(""), HUGE_VAL}) {
                    answers([&](std::uint32_t) { return std::vector<double>(256, value); });
                }
                after = floatingPointMode();
            }
            EXPECT_EQ(before, after);
            for (std::size_t call = 0; call < wanted.size(); ++call) {
                for (std::size_t text = 0; text < wanted[call].size(); ++text) {
                    EXPECT_LT(difference(wanted[call][text], texts[call][text]), 1e-9)
                        << "call " << call << ", text " << text;
                }
            }
        }
    }
}

/// Sanitizers make frames many times as large.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t stackSize = 1024 * 1024;
#else
constexpr std::size_t stackSize = 64 * 1024;
#endif

/// Runs work on a thread of that stack size. Returns how much of the stack was written, in bytes, the C library's part
/// for the thread included.
std::size_t stackUsedBy(void* (*work)(void*)) {
    void* const stack = mmap(nullptr, stackSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    constexpr unsigned char paint = 0xA5;
    std::memset(stack, paint, stackSize);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, stack, stackSize), 0);
    pthread_t thread;
    const int error = pthread_create(&thread, &attributes, work, nullptr);
    EXPECT_EQ(error, 0);
    if (error == 0) {
        pthread_join(thread, nullptr);
    }
    pthread_attr_destroy(&attributes);
    const auto* const bytes = static_cast<const unsigned char*>(stack);
    const auto* const used = std::find_if(bytes, bytes + stackSize, [](unsigned char byte) { return byte != paint; });
    const std::size_t size = static_cast<std::size_t>(bytes + stackSize - used);
    munmap(stack, stackSize);
    return size;
}

TEST(Hygiene, RunsOnASmallThreadStack) {
    const std::size_t used = stackUsedBy([](void*) -> void* {
        for (const std::size_t n : {61U, 64U, 2500U, 10007U}) {
            answers([&](std::uint32_t channel) { return noisySine(n, channel); });
        }
        return nullptr;
    });
    EXPECT_LT(used, stackSize);
    std::printf("%zu bytes of the thread's %zu used\n", used, stackSize);
}

}  // namespace

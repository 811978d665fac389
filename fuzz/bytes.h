#ifndef RT305_4_FUZZ_BYTES_H
#define RT305_4_FUZZ_BYTES_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace fuzz {

/// Reads values from a fuzzer's input, front to back. Beyond its end everything is zero, so every input is valid.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

    bool empty() const { return left_ == 0; }

    /// A number by its bit pattern.
    template <class T>
    T raw() {
        static_assert(std::is_arithmetic_v<T> && !std::is_same_v<T, bool>);
        T value{};
        const std::size_t n = std::min(sizeof value, left_);
        if (n > 0) {
            std::memcpy(&value, at_, n);
        }
        at_ += n;
        left_ -= n;
        return value;
    }

    bool flag() { return raw<std::uint8_t>() % 2 == 1; }

    /// 0 ... most
    std::size_t upTo(std::size_t most) {
        const std::size_t value = most < 256 ? raw<std::uint8_t>() : raw<std::uint32_t>();
        return value % (most + 1);
    }

    /// One of the usual values, or any.
    template <class T, std::size_t n>
    T oneOf(const T (&usual)[n]) {
        const std::size_t which = raw<std::uint8_t>();
        return which < 16 * n ? usual[which % n] : raw<T>();
    }

    std::string text(std::size_t most) {
        const std::size_t n = std::min(upTo(most), left_);
        std::string result(reinterpret_cast<const char*>(at_), n);
        at_ += n;
        left_ -= n;
        return result;
    }

    /// All that is left.
    std::string rest() {
        std::string result(reinterpret_cast<const char*>(at_), left_);
        left_ = 0;
        return result;
    }

    /// A special value, a small decimal, or any double.
    double number() {
        using limits = std::numeric_limits<double>;
        static constexpr double special[] = {0.0,
                                             -0.0,
                                             1.0,
                                             limits::quiet_NaN(),
                                             limits::infinity(),
                                             -limits::infinity(),
                                             limits::denorm_min(),
                                             limits::min(),
                                             limits::max(),
                                             -limits::max(),
                                             1e-300,
                                             1e300,
                                             50.0,
                                             500.0,
                                             10000.0,
                                             9007199254740993.0};
        const std::size_t kind = raw<std::uint8_t>();
        if (kind < 64) {
            return special[kind % std::size(special)];
        }
        return kind < 192 ? raw<std::int16_t>() / 16.0 : raw<double>();
    }

    /// A number whose square and whose products with a few thousand such numbers stay far from overflow and underflow.
    double tame() {
        const double mantissa = raw<std::int16_t>();
        return std::ldexp(mantissa, raw<std::int8_t>() / 4);
    }

    /// n tame samples from few bytes: a wave with a harmonic and noise at 10 kHz, or a short repeated pattern.
    std::vector<double> tameSignal(std::size_t n) {
        return flag() ? wave(n) : pattern(n, [this] { return tame(); });
    }

    /// n samples of any kind: a tame signal with some special values, or special values everywhere.
    std::vector<double> signal(std::size_t n) {
        const std::size_t kind = raw<std::uint8_t>() % 8;
        if (kind == 7) {
            return pattern(n, [this] { return number(); });
        }
        std::vector<double> x = tameSignal(n);
        for (std::size_t replaced = kind > 4 ? kind - 4 : 0; replaced > 0 && n > 0; --replaced) {
            x[upTo(n - 1)] = number();
        }
        return x;
    }

private:
    std::vector<double> wave(std::size_t n) {
        const double amplitude = tame();
        const double perSample = 6.283185307179586 * 1e-4 * (raw<std::uint16_t>() / 512.0);
        const double phase = raw<std::int8_t>() / 20.0;
        const double harmonic = raw<std::int8_t>() / 128.0;
        const double order = raw<std::uint8_t>() % 64;
        const double noise = raw<std::int8_t>() / 1024.0;
        std::uint32_t random = raw<std::uint8_t>();
        std::vector<double> x(n);
        for (std::size_t i = 0; i < n; ++i) {
            random = random * 1664525U + 1013904223U;
            const double angle = perSample * static_cast<double>(i) + phase;
            x[i] =
                amplitude * (std::sin(angle) + harmonic * std::cos(order * angle) + noise * (random * 0x1p-32 - 0.5));
        }
        return x;
    }

    template <class Next>
    std::vector<double> pattern(std::size_t n, Next next) {
        std::vector<double> period(1 + raw<std::uint8_t>() % 16);
        std::generate(period.begin(), period.end(), next);
        std::vector<double> x(n);
        for (std::size_t i = 0; i < n; ++i) {
            x[i] = period[i % period.size()];
        }
        return x;
    }

    const std::uint8_t* at_;
    std::size_t left_;
};

}  // namespace fuzz

#endif

#ifndef RT305_4_CALC_FIXED_WIDTH_TEXT_H
#define RT305_4_CALC_FIXED_WIDTH_TEXT_H

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace calc_modul_K9_web_ns::coder {

/// `Count` texts of the same width, stored back to back without terminators. Empty until assigned.
template <std::size_t Count, std::size_t Width>
class Labels {
public:
    std::string_view operator[](std::size_t i) const {
        assert(i < Count);
        return {text_[i], text_[i][0] == '\0' ? 0 : Width};
    }

    void assign(const std::array<std::string_view, Count>& texts) {
        for (std::size_t i = 0; i < Count; ++i) {
            assert(texts[i].size() == Width);
            texts[i].copy(text_[i], Width);
        }
    }
    void assignAll(std::string_view text) {
        std::array<std::string_view, Count> texts;
        texts.fill(text);
        assign(texts);
    }

private:
    char text_[Count][Width] = {};
};

/// `Count` texts of different widths, `Bytes` characters in all, stored back to back without terminators.
template <std::size_t Count, std::size_t Bytes>
class FixedWidthTexts {
public:
    constexpr FixedWidthTexts() = default;
    constexpr explicit FixedWidthTexts(const std::array<std::string_view, Count>& texts) {
        std::size_t end = 0;
        for (std::size_t i = 0; i < Count; ++i) {
            for (const char c : texts[i]) {
                text_[end++] = c;
            }
            end_[i] = static_cast<std::uint8_t>(end);
        }
        assert(end == Bytes);
    }

    constexpr std::string_view operator[](std::size_t i) const {
        const std::size_t from = i == 0 ? 0 : end_[i - 1];
        return {text_.data() + from, end_[i] - from};
    }

private:
    std::array<char, Bytes> text_{};
    std::array<std::uint8_t, Count> end_{};
};

}  // namespace calc_modul_K9_web_ns::coder

#endif

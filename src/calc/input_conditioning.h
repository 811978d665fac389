#ifndef RT305_4_CALC_INPUT_CONDITIONING_H
#define RT305_4_CALC_INPUT_CONDITIONING_H

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string_view>

#include "calc/channel_kind.h"
#include "calc/options.h"
#include "toolkit/broadcasting.h"
#include "toolkit/sums.h"

namespace calc_modul_K9_web_ns {

/// One raw channel with the calibration that converts its samples to volts or amperes.
struct RawChannel {
    coder::samples samples;
    double gain = 1.0;
    double coefficient = 1.0;
    double inputResistance = 0.0;  // ohm
};

using RawChannelSet = std::array<RawChannel, coder::phases>;

/// Scale factor of the acquisition hardware for one channel. With A = 1 + (19.53125 gain + 35) / 1000: input resistance
/// 0 gives 0.0049417429956896556 / A; the shunts 24.9 and 127 ohm give (1/R) (3/4096) 6.74712643678161 / A; any other
/// resistance, and any source but "real", gives 1.
double hardwareScale(std::string_view source, double inputResistance, double gain);

/// A calibrated, offset-free signal: y = (x - offset) * scale * coefficient. Its samples are computed where they are
/// needed, so that those of many channels need not be in memory at once.
class ConditionedChannel {
public:
    /// No samples.
    ConditionedChannel() = default;
    /// Samples that are conditioned already.
    explicit ConditionedChannel(coder::samples y) : x_(y) {}
    /// Exact zeros among the first N samples are replaced by sum(x) / (N - zeros); the offset is the mean after that.
    /// If N exceeds the channel's length, all samples are examined, but the divisor stays N - zeros. NaN spreads.
    /// total: the sum of the samples.
    ConditionedChannel(const RawChannel& raw, double total, double N, std::string_view source);

    std::size_t size() const { return x_.size(); }
    /// out = y[from] ... y[from + count - 1]. A single sample is found at every index.
    void write(std::size_t from, std::size_t count, double* out) const;

private:
    coder::samples x_;
    std::size_t examined_ = 0;  // samples of which zeros are replaced
    double replacement_ = 0.0;
    double offset_ = 0.0;
    double scale_ = 1.0;
    double coefficient_ = 1.0;
};

/// The conditioned channels of one set; they are views of the raw samples.
class ConditionedSet {
public:
    /// No samples.
    ConditionedSet() = default;
    /// Signals that are conditioned already.
    ConditionedSet(const ChannelSet& set);  // implicit: a stage accepts either
    ConditionedSet(const RawChannelSet& raw, double N, std::string_view source);

    /// Makes a channel minus the sum of the others, with singleton expansion.
    void rebuild(const PhaseWithOthers& missing) { rebuilt_ = missing; }

    std::size_t length(std::size_t phase) const;
    bool haveOneLength() const { return length(1) == length(0) && length(2) == length(0); }
    void write(std::size_t phase, std::size_t from, std::size_t count, double* out) const;
    void write(std::size_t phase, double* out) const { write(phase, 0, length(phase), out); }
    coder::row row(std::size_t phase) const;
    ChannelSet rows() const { return {row(0), row(1), row(2)}; }

    /// The element-wise op(a, b) of two channels, of the length expandedLength.
    template <class Op>
    void writeCombined(std::size_t a, std::size_t b, std::size_t from, std::size_t count, double* out, Op op) const {
        double other[coder::sumBlock];
        write(a, from, count, out);
        for (std::size_t done = 0; done < count; done += coder::sumBlock) {
            const std::size_t some = std::min(count - done, coder::sumBlock);
            write(b, from + done, some, other);
            std::transform(out + done, out + done + some, other, out + done, op);
        }
    }

    /// Blocked sum over i of term({a, b, c}, i), where i is an index of samples a[i], b[i], c[i] of the three channels,
    /// which have one length. About `chains` sums run side by side.
    template <std::size_t chains, class Term>
    auto blockedSum(Term term) const {
        using Samples = std::array<const double*, coder::phases>;
        using Value = decltype(term(Samples{}, std::size_t{}));
        const std::size_t n = length(0);
        const std::size_t room = std::min(n, coder::blocksAtOnce<Value, chains> * coder::sumBlock);
        const auto memory = std::make_unique_for_overwrite<double[]>(coder::phases * room);
        double* const y = memory.get();
        return coder::blockedSumOfParts<chains>(n, [&](std::size_t from, std::size_t count) {
            for (std::size_t phase = 0; phase < coder::phases; ++phase) {
                write(phase, from, count, y + phase * room);
            }
            return [=, x = Samples{y, y + room, y + 2 * room}](std::size_t i) { return term(x, i); };
        });
    }

private:
    std::array<ConditionedChannel, coder::phases> channels_;
    std::optional<PhaseWithOthers> rebuilt_;
};

/// The signals of one set in memory.
void data_305_4(const RawChannelSet& raw, double N, std::string_view source, ChannelSet& conditioned);

}  // namespace calc_modul_K9_web_ns

#endif

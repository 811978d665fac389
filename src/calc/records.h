#ifndef RT305_4_CALC_RECORDS_H
#define RT305_4_CALC_RECORDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "calc/fixed_width_text.h"
#include "toolkit/array.h"
#include "toolkit/non_finite.h"

// The records in which the computation returns its results: plain values, owned by the caller, each a small table of
// named variables with one entry per row. If the stage of a record does not run, the record stays as prefill() left it.

namespace calc_modul_K9_web_ns {

struct ChannelKind;

namespace coder {

using namespace ::coder;

/// Number of phases, and of rows in every record of one channel set.
inline constexpr std::size_t phases = 3;

/// An empty character row; descriptions and units of variables are not used by these records.
struct cell_wrap_3 {
    std::array<std::int32_t, 2> size{1, 0};
};

namespace tabular {
enum class Continuity : std::int32_t { unset = 0 };
}

/// Description of a whole record, empty as well.
struct struct2_T {
    std::array<std::int32_t, 2> size{1, 0};
};

using cell_wrap_8 = Labels<phases, 2>;    // row labels
using cell_wrap_16 = Labels<phases, 4>;   // vertical axis of a spectrum
using cell_wrap_17 = Labels<phases, 13>;  // horizontal axis of a spectrum
using cell_wrap_22 = Labels<phases, 7>;   // vertical axis of a distortion spectrum

/// A row that several cells share, such as a frequency axis; null when there is none.
using SharedRow = std::shared_ptr<const std::vector<double>>;

using cell_wrap_9 = std::array<SharedRow, phases>;  // one row of samples or bins per phase

/// The first part of every record. `variables` is the number of columns of the result table.
template <std::size_t Variables>
struct table_header {
    double dimensions = 2.0;
    double variables = Variables;
    std::array<cell_wrap_3, Variables> descriptions{};
    std::array<cell_wrap_3, Variables> units{};
    std::array<tabular::Continuity, Variables> continuity{};
    std::array<std::uint8_t, 4> flags{};
};

/// Rows of the parameter record, in order.
enum class Parameter : std::uint8_t {
    // clang-format off
    S, Sa, Sb, Sc,
    P, Pa, Pb, Pc,
    Q, Qa, Qb, Qc,
    Uda, Udb, Udc, Udab, Udbc, Udca, Ud0,
    Ida, Idb, Idc,
    Fa, Fb, Fc,
    THD_Va, THD_Vb, THD_Vc, THD_Ia, THD_Ib, THD_Ic,
    Pf, Pfa, Pfb, Pfc,
    count
    // clang-format on
};
inline constexpr auto parameterCount = static_cast<std::size_t>(Parameter::count);

/// Electrical parameters: names, values (NaN until a stage sets them) and units.
struct d_table {
    using Names = FixedWidthTexts<parameterCount, 107>;
    using Units = FixedWidthTexts<parameterCount, 50>;

    table_header<3> header;
    Names names;
    std::array<double, parameterCount> values{};
    Units units;
    struct2_T properties;

    double& operator[](Parameter which) { return values[static_cast<std::size_t>(which)]; }
    double operator[](Parameter which) const { return values[static_cast<std::size_t>(which)]; }

    void prefill();
};

/// Statistics of one signal: mean, rms, peak2rms, peak2peak.
struct table {
    static constexpr std::size_t rows = 4;

    table_header<3> header;
    FixedWidthTexts<rows, 24> names{std::array<std::string_view, rows>{"mean", "rms", "peak2rms", "peak2peak"}};
    std::array<double, rows> values{};
    Labels<rows, 1> units;
    struct2_T properties;
};

/// The variables of b_table.
struct cell_14 {
    cell_wrap_8 labels;
    cell_wrap_9 signals;
    Labels<phases, 10> verticalAxis;
    Labels<phases, 6> horizontalAxis;
    std::array<table, phases> statistics;
};

/// Time signals of one channel set, with their statistics.
struct b_table {
    table_header<5> header;
    cell_14 variables;
    struct2_T properties;

    void prefill(const ChannelKind& kind);
};

/// Harmonics of one channel set: frequencies in Hz and levels in dB.
struct c_table {
    table_header<5> header;
    cell_wrap_8 labels;
    std::array<std::vector<double>, phases> frequencies;
    std::array<std::vector<double>, phases> levels;
    cell_wrap_22 verticalAxis;
    cell_wrap_17 horizontalAxis;
    struct2_T properties;

    void prefill(const ChannelKind& kind);
};

/// The largest lines of one spectrum.
struct e_table {
    double dimensions = 2.0;
    double rows = 0.0;
    double variables = 2.0;
    std::array<cell_wrap_3, 2> descriptions{};
    std::array<cell_wrap_3, 2> units{};
    std::array<tabular::Continuity, 2> continuity{};
    std::array<std::uint8_t, 4> flags{};
    column frequencies;
    column magnitudes;
};

/// Spectra of one channel set: amplitudes or levels, their common frequencies in Hz, and the largest lines.
struct f_table {
    table_header<6> header;
    cell_wrap_8 labels;
    cell_wrap_9 spectra;
    SharedRow frequencies;
    cell_wrap_16 verticalAxis;
    cell_wrap_17 horizontalAxis;
    std::array<e_table, phases> maxima;
    struct2_T properties;

    void prefill(const ChannelKind& kind);
};

}  // namespace coder
}  // namespace calc_modul_K9_web_ns

#endif

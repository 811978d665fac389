#ifndef RT305_4_TABLE_MLAB_CELL_H
#define RT305_4_TABLE_MLAB_CELL_H

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

class MatlabTable;

/// One value of a table: a text, a number, a row of numbers, or a nested table that the cell owns.
/// The type is set by the constructor and changes only by assignment. Copies keep the id of their source.
class MatlabCell {
public:
    enum class CellDataType : std::uint32_t {
        none = 0,
        text = 1,
        unsignedInteger = 2,
        signedInteger = 3,
        floating = 4,
        table = 5,
        floatingVector = 6,
        signedVector = 7,
        unsignedVector = 8
    };

    /// A row of doubles that several cells share.
    using SharedRow = std::shared_ptr<const std::vector<double>>;

    /// Number of ids given so far, and number of live cells. Neither is locked: only one thread at a time may make
    /// cells.
    static std::int64_t cellCounter;
    static std::int64_t objectsCounter;

    MatlabCell() : MatlabCell(std::in_place_type<std::monostate>) {}
    explicit MatlabCell(const std::string& value) : MatlabCell(std::string_view(value)) {}
    explicit MatlabCell(std::string_view value) : MatlabCell(std::in_place_type<std::string>, value) {}
    explicit MatlabCell(unsigned long value) : MatlabCell(std::in_place_type<std::uint64_t>, value) {}
    explicit MatlabCell(long value) : MatlabCell(std::in_place_type<std::int64_t>, value) {}
    explicit MatlabCell(int value) : MatlabCell(std::in_place_type<std::int64_t>, value) {}
    explicit MatlabCell(double value) : MatlabCell(std::in_place_type<double>, value) {}
    explicit MatlabCell(float value) : MatlabCell(std::in_place_type<double>, value) {}
    /// A deep copy of the table, made by its virtual clone.
    explicit MatlabCell(const MatlabTable& table);
    /// Takes the table over; not null.
    explicit MatlabCell(std::unique_ptr<MatlabTable> table);
    explicit MatlabCell(std::vector<double> values)
        : MatlabCell(std::make_shared<const std::vector<double>>(std::move(values))) {}
    /// Shares the row; not null.
    explicit MatlabCell(SharedRow values);
    explicit MatlabCell(std::vector<std::int64_t> values) : MatlabCell(Value(std::move(values))) {}
    explicit MatlabCell(std::vector<std::uint64_t> values) : MatlabCell(Value(std::move(values))) {}
    /// Narrow elements are widened: signed ones to 64-bit signed, unsigned ones to 64-bit unsigned, float to double.
    template <std::signed_integral T>
    explicit MatlabCell(const std::vector<T>& values)
        : MatlabCell(std::vector<std::int64_t>(values.begin(), values.end())) {}
    template <std::unsigned_integral T>
    explicit MatlabCell(const std::vector<T>& values)
        : MatlabCell(std::vector<std::uint64_t>(values.begin(), values.end())) {}
    explicit MatlabCell(const std::vector<float>& values)
        : MatlabCell(std::vector<double>(values.begin(), values.end())) {}

    /// A moved-from cell has no value.
    MatlabCell(const MatlabCell& other);
    MatlabCell(MatlabCell&& other) noexcept;
    MatlabCell& operator=(const MatlabCell& other);
    MatlabCell& operator=(MatlabCell&& other) noexcept;
    virtual ~MatlabCell() { --objectsCounter; }

    /// Typed access. *ok, when given, is set to whether the cell has that type; if not, the result is 0 or empty.
    std::uint64_t toUInt(bool* ok = nullptr) const;
    std::int64_t toInt(bool* ok = nullptr) const;
    double toDouble(bool* ok = nullptr) const;
    MatlabTable* toMatlabTable(bool* ok = nullptr) const;
    const std::vector<std::int64_t>& toIntVector(bool* ok = nullptr) const;
    const std::vector<std::uint64_t>& toUIntVector(bool* ok = nullptr) const;
    const std::vector<double>& toDoubleVector(bool* ok = nullptr) const;
    const std::string& toText(bool* ok = nullptr) const;
    /// The value as text: numbers by the printf rules %llu, %lld and %.10e, vectors and tables by their size, as in
    /// "[1x3 double]" and "[2x3 table]" (columns first). *ok is false only for a cell without a value.
    std::string toString(bool* ok = nullptr) const;

    bool isValid() const { return getDataType() != CellDataType::none; }
    CellDataType getDataType() const { return static_cast<CellDataType>(value_.index()); }
    std::int64_t getCellId() const { return id_; }

private:
    /// A table whose copies are made by its virtual clone.
    class OwnedTable {
    public:
        explicit OwnedTable(std::unique_ptr<MatlabTable> table);
        OwnedTable(const OwnedTable& other);
        OwnedTable(OwnedTable&&) noexcept;
        OwnedTable& operator=(const OwnedTable& other);
        OwnedTable& operator=(OwnedTable&&) noexcept;
        ~OwnedTable();
        MatlabTable* get() const { return table_.get(); }

    private:
        std::unique_ptr<MatlabTable> table_;
    };

    /// The index of the alternative is the CellDataType.
    using Value = std::variant<std::monostate, std::string, std::uint64_t, std::int64_t, double, OwnedTable, SharedRow,
                               std::vector<std::int64_t>, std::vector<std::uint64_t>>;

    /// The value is made in place; a table is filled with many cells.
    template <class T, class... Arguments>
    explicit MatlabCell(std::in_place_type_t<T> type, Arguments&&... arguments)
        : value_(type, std::forward<Arguments>(arguments)...), id_(++cellCounter) {
        ++objectsCounter;
    }
    explicit MatlabCell(Value value);

    template <class T>
    const T& valueOr(const T& fallback, bool* ok) const;

    Value value_;
    std::int64_t id_;
};

#endif

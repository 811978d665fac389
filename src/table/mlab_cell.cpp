#include "table/mlab_cell.h"

#include <cassert>
#include <cstdio>
#include <utility>

#include "table/mlab_table.h"

std::int64_t MatlabCell::cellCounter = 0;
std::int64_t MatlabCell::objectsCounter = 0;

namespace {

const std::string noText;
const MatlabCell::SharedRow noRow;
const std::vector<double> noDoubles;
const std::vector<std::int64_t> noInts;
const std::vector<std::uint64_t> noUInts;

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    char buffer[64];
    const int length = std::snprintf(buffer, sizeof buffer, format, arguments...);
    assert(length > 0 && static_cast<std::size_t>(length) < sizeof buffer);
    return {buffer, static_cast<std::size_t>(length)};
}

/// Text form of each alternative.
struct ToText {
    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::uint64_t value) const {
        return formatted("%llu", static_cast<unsigned long long>(value));
    }
    std::string operator()(std::int64_t value) const { return formatted("%lld", static_cast<long long>(value)); }
    std::string operator()(double value) const { return formatted("%.10e", value); }
    std::string operator()(const MatlabCell::SharedRow& row) const { return rowSize(row->size(), "double"); }
    std::string operator()(const std::vector<std::int64_t>& row) const { return rowSize(row.size(), "int64"); }
    std::string operator()(const std::vector<std::uint64_t>& row) const { return rowSize(row.size(), "uint64"); }
    template <class OwnedTable>
    std::string operator()(const OwnedTable& table) const {
        return formatted("[%ix%i table]", static_cast<int>(table.get()->getColNum()),
                         static_cast<int>(table.get()->getRowNum()));
    }

    static std::string rowSize(std::size_t count, const char* type) {
        return formatted("[1x%llu %s]", static_cast<unsigned long long>(count), type);
    }
};

}  // namespace

MatlabCell::OwnedTable::OwnedTable(std::unique_ptr<MatlabTable> table) : table_(std::move(table)) {}
MatlabCell::OwnedTable::OwnedTable(const OwnedTable& other) : table_(other.table_ ? other.table_->clone() : nullptr) {}
MatlabCell::OwnedTable::OwnedTable(OwnedTable&&) noexcept = default;
MatlabCell::OwnedTable& MatlabCell::OwnedTable::operator=(const OwnedTable& other) {
    return *this = OwnedTable(other);
}
MatlabCell::OwnedTable& MatlabCell::OwnedTable::operator=(OwnedTable&&) noexcept = default;
MatlabCell::OwnedTable::~OwnedTable() = default;

MatlabCell::MatlabCell(Value value) : value_(std::move(value)), id_(++cellCounter) {
    ++objectsCounter;
}

MatlabCell::MatlabCell(const MatlabTable& table) : MatlabCell(std::unique_ptr<MatlabTable>(table.clone())) {}
MatlabCell::MatlabCell(std::unique_ptr<MatlabTable> table) : MatlabCell(Value(OwnedTable(std::move(table)))) {
    assert(toMatlabTable() != nullptr);
}

MatlabCell::MatlabCell(SharedRow values) : MatlabCell(Value(std::move(values))) {
    assert(std::get<SharedRow>(value_) != nullptr);
}

MatlabCell::MatlabCell(const MatlabCell& other) : MatlabCell(other.value_) {
    id_ = other.id_;
}
MatlabCell::MatlabCell(MatlabCell&& other) noexcept : MatlabCell(std::exchange(other.value_, Value())) {
    id_ = other.id_;
}
// The source may be part of the table that this cell owns and is about to release, so its value is taken first.
MatlabCell& MatlabCell::operator=(const MatlabCell& other) {
    if (this != &other) {
        Value value(other.value_);
        id_ = other.id_;
        value_ = std::move(value);
    }
    return *this;
}
MatlabCell& MatlabCell::operator=(MatlabCell&& other) noexcept {
    Value value(std::exchange(other.value_, Value()));
    id_ = other.id_;
    value_ = std::move(value);
    return *this;
}

template <class T>
const T& MatlabCell::valueOr(const T& fallback, bool* ok) const {
    const T* const value = std::get_if<T>(&value_);
    if (ok != nullptr) {
        *ok = value != nullptr;
    }
    return value != nullptr ? *value : fallback;
}

std::uint64_t MatlabCell::toUInt(bool* ok) const {
    return valueOr(std::uint64_t{0}, ok);
}
std::int64_t MatlabCell::toInt(bool* ok) const {
    return valueOr(std::int64_t{0}, ok);
}
double MatlabCell::toDouble(bool* ok) const {
    return valueOr(0.0, ok);
}
const std::string& MatlabCell::toText(bool* ok) const {
    return valueOr(noText, ok);
}
const std::vector<std::int64_t>& MatlabCell::toIntVector(bool* ok) const {
    return valueOr(noInts, ok);
}
const std::vector<std::uint64_t>& MatlabCell::toUIntVector(bool* ok) const {
    return valueOr(noUInts, ok);
}
const std::vector<double>& MatlabCell::toDoubleVector(bool* ok) const {
    const SharedRow& row = valueOr(noRow, ok);
    return row != nullptr ? *row : noDoubles;
}

MatlabTable* MatlabCell::toMatlabTable(bool* ok) const {
    const OwnedTable* const owned = std::get_if<OwnedTable>(&value_);
    MatlabTable* const table = owned != nullptr ? owned->get() : nullptr;
    if (ok != nullptr) {
        *ok = table != nullptr;
    }
    return table;
}

std::string MatlabCell::toString(bool* ok) const {
    if (ok != nullptr) {
        *ok = isValid();
    }
    return std::visit(ToText(), value_);
}

#include <cstring>

#include "adapter/nlohmann/json.h"
#include "table/mlab_table.h"

namespace {

/// Number of toJson calls that are active: 1 in the outermost table. An exception leaves it right.
class NestingLevel {
public:
    NestingLevel() { ++nestingLevel; }
    ~NestingLevel() { --nestingLevel; }
    NestingLevel(const NestingLevel&) = delete;
    NestingLevel& operator=(const NestingLevel&) = delete;
    static bool isOutermost() { return nestingLevel <= 1; }

private:
    static std::int32_t nestingLevel;
};

std::int32_t NestingLevel::nestingLevel = 0;

/// The key of a column without a name: the literal cut at its front by the column's index.
const char* unnamedKey(std::uint64_t col) {
    static constexpr char literal[] = "column";
    return literal + std::min<std::uint64_t>(col, sizeof literal - 1);
}

/// Result texts are printable ASCII. Three bytes of the devices' code page have a letter, all others become blanks.
std::string printableAscii(std::string text) {
    for (char& c : text) {
        switch (static_cast<unsigned char>(c)) {
            case 0xC0:
                c = 'A';
                break;
            case 0xC1:
                c = 'B';
                break;
            case 0xF1:
                c = 'c';
                break;
            default:
                if (c < 0x20 || c > 0x7E) {
                    c = ' ';
                }
        }
    }
    return text;
}

}  // namespace

nlohmann::json MatlabTable::toJson() const {
    const Scheme scheme = getScheme();
    if (cells_.empty() && scheme.empty()) {
        return "{}";
    }
    const NestingLevel level;
    nlohmann::json result;
    for (std::uint64_t row = 0; row < rows_; ++row) {
        nlohmann::json object = nlohmann::json::object();
        for (std::uint64_t col = 0; col < cols_; ++col) {
            const bool named = col < scheme.size() && !scheme[col].name.empty();
            object[named ? scheme[col].name.c_str() : unnamedKey(col)] = getJsonValue(col, row);
        }
        nlohmann::json& rows = NestingLevel::isOutermost() ? result[getName()] : result;
        rows.push_back(std::move(object));
    }
    return result;
}

nlohmann::json MatlabTable::getJsonValue(std::uint64_t col, std::uint64_t row) const {
    const MatlabCell* const cell = cellAt(col, row);
    if (cell == nullptr) {
        return "";
    }
    using enum MatlabCell::CellDataType;
    switch (cell->getDataType()) {
        case text:
            return printableAscii(cell->toString());
        case unsignedInteger:
            return cell->toUInt();
        case signedInteger:
            return cell->toInt();
        case floating:
            return cell->toDouble();
        case table:
            return cell->toMatlabTable()->toJson();
        case floatingVector:
            return cell->toDoubleVector();
        case signedVector:
            return cell->toIntVector();
        case unsignedVector:
            return cell->toUIntVector();
        case none:
            break;
    }
    return cell->toString();
}

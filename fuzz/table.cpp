// Runs random operations on tables and on a plain model of them; compares the JSON text with the dump of the value.

#include "table/mlab_table.h"

#include <array>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "bytes.h"
#include "extras/mlab_param_table.h"
#include "require.h"

namespace {

using fuzz::Bytes;
using fuzz::require;

/// A table with a schema and a name of any bytes.
class NamedTable : public MatlabParamTable {
public:
    NamedTable() = default;
    NamedTable(const NamedTable& other) : MatlabParamTable(other), scheme(other.scheme), name(other.name) {}

    Scheme getScheme() const override { return scheme; }
    std::string getName() const override { return name; }
    MatlabTable* clone() const override { return new NamedTable(*this); }

    Scheme scheme;
    std::string name = "table";
};

/// A table and what it is expected to hold: the text of each cell, row by row.
struct Modelled {
    NamedTable table;
    std::vector<std::vector<std::string>> rows;
    std::size_t cols = 0;
};
using Tables = std::array<Modelled, 3>;

std::string anyName(Bytes& bytes) {
    static constexpr const char* usual[] = {"", "a", "b", "column", "LastName", "\xC3\xA9", "\xFF"};
    return bytes.flag() ? usual[bytes.upTo(std::size(usual) - 1)] : bytes.text(12);
}

template <class T>
std::vector<T> anyVector(Bytes& bytes) {
    std::vector<T> values(bytes.raw<std::uint8_t>() < 250 ? bytes.upTo(12) : bytes.upTo(3000));
    for (T& value : values) {
        if constexpr (std::is_same_v<T, double>) {
            value = bytes.number();
        } else {
            value = bytes.raw<T>();
        }
    }
    return values;
}

MatlabCell anyCell(Bytes& bytes, const Tables& tables) {
    switch (bytes.raw<std::uint8_t>() % 10) {
        case 0:
            return MatlabCell();
        case 1:
            return MatlabCell(bytes.text(20));
        case 2:
            return MatlabCell(bytes.raw<unsigned long>());
        case 3:
            return MatlabCell(bytes.raw<long>());
        case 4:
            return MatlabCell(anyVector<double>(bytes));
        case 5:
            return MatlabCell(anyVector<std::int64_t>(bytes));
        case 6:
            return MatlabCell(anyVector<std::uint64_t>(bytes));
        case 7:
            return MatlabCell(anyVector<std::int8_t>(bytes));
        case 8:
            return MatlabCell(static_cast<const MatlabTable&>(tables[bytes.upTo(tables.size() - 1)].table));
        default:
            return MatlabCell(bytes.number());
    }
}

void resizeModel(Modelled& modelled, std::size_t cols, std::size_t rows) {
    const bool hadCells = modelled.cols > 0 && !modelled.rows.empty();
    if (cols * rows == 0 && hadCells) {
        cols = 0;
        rows = 0;
    }
    modelled.cols = cols;
    modelled.rows.resize(rows);
    for (auto& row : modelled.rows) {
        row.resize(cols);
    }
}

void removeModelRow(Modelled& modelled, std::size_t row) {
    if (row >= modelled.rows.size()) {
        return;
    }
    modelled.rows.erase(modelled.rows.begin() + static_cast<std::ptrdiff_t>(row));
    if (modelled.rows.empty()) {
        modelled.cols = 0;
    }
}

void removeNamed(Modelled& modelled, const std::string& name) {
    modelled.table.removeRow(name.c_str());
    for (std::size_t row = 0; modelled.cols > 0 && row < modelled.rows.size(); ++row) {
        if (modelled.rows[row][0] == name.c_str()) {
            removeModelRow(modelled, row);
            return;
        }
    }
}

void thinOut(Modelled& modelled, const std::array<std::string, 2>& names) {
    std::array<const char*, 3> entries{names[0].c_str(), nullptr, names[1].c_str()};
    modelled.table.thinningRows(entries.data(), entries.size());
    for (std::size_t row = modelled.rows.size(); modelled.cols > 0 && row-- > 0;) {
        const std::string& name = modelled.rows[row][0];
        const bool kept = std::any_of(names.begin(), names.end(), [&](const std::string& entry) {
            return entry[0] != '\0' && name == entry.c_str();
        });
        if (!kept) {
            removeModelRow(modelled, row);
        }
    }
}

void change(Bytes& bytes, Tables& tables) {
    Modelled& modelled = tables[bytes.upTo(tables.size() - 1)];
    switch (bytes.raw<std::uint8_t>() % 8) {
        case 0: {
            const std::size_t cols = bytes.upTo(9);
            const std::size_t rows = bytes.upTo(3);
            modelled.table.resize(cols, rows);
            return resizeModel(modelled, cols, rows);
        }
        case 1: {
            const std::size_t row = bytes.upTo(3);
            modelled.table.MatlabTable::removeRow(row);
            return removeModelRow(modelled, row);
        }
        case 2:
            return removeNamed(modelled, anyName(bytes));
        case 3:
            return thinOut(modelled, {anyName(bytes), anyName(bytes)});
        case 4:
            modelled.table.name = anyName(bytes);
            return;
        case 5:
            modelled.table.scheme.push_back({anyName(bytes), MatlabCell::CellDataType::text});
            return;
        default: {
            const std::size_t col = bytes.upTo(9);
            const std::size_t row = bytes.upTo(3);
            MatlabCell cell = anyCell(bytes, tables);
            if (col < modelled.cols && row < modelled.rows.size()) {
                modelled.rows[row][col] = cell.toString();
            }
            modelled.table.setCell(col, row, std::move(cell));
        }
    }
}

void requireAsModelled(const Modelled& modelled, const MatlabTable& table) {
    require(table.getRowNum() == modelled.rows.size() && table.getColNum() == modelled.cols, "a table has its size");
    for (std::size_t row = 0; row < modelled.rows.size(); ++row) {
        for (std::size_t col = 0; col < modelled.cols; ++col) {
            require(table.findCell(col, row)->toString() == modelled.rows[row][col], "a cell holds what was put there");
        }
    }
}

/// The text, or the error in place of it.
template <class Write>
std::string textOrError(Write write) {
    try {
        return write();
    } catch (const nlohmann::json::type_error& error) {
        require(error.id == 316, "only invalid UTF-8 is refused");
        return error.what();
    }
}

void requireSameText(const MatlabTable& table) {
    const std::string text = textOrError([&] { return table.toJsonText(); });
    const std::string dumped = textOrError([&] { return table.toJson().dump(); });
    require(text == dumped, "the text is the dump of the value");
}

/// Depth of nested tables, the outermost included.
int depthOf(const MatlabTable& table) {
    int depth = 0;
    for (std::uint64_t row = 0; row < table.getRowNum(); ++row) {
        for (std::uint64_t col = 0; col < table.getColNum(); ++col) {
            if (const MatlabTable* const nested = table.findCell(col, row)->toMatlabTable()) {
                depth = std::max(depth, depthOf(*nested));
            }
        }
    }
    return depth + 1;
}

void run(Bytes& bytes) {
    Tables tables;
    for (int step = 0; step < 60 && !bytes.empty(); ++step) {
        change(bytes, tables);
        for (Modelled& modelled : tables) {
            if (depthOf(modelled.table) > 3) {  // or copies of copies would grow without limit
                modelled.table.remove();
                modelled.rows.clear();
                modelled.cols = 0;
            }
        }
    }
    for (const Modelled& modelled : tables) {
        requireAsModelled(modelled, modelled.table);
        requireSameText(modelled.table);
        const std::unique_ptr<MatlabTable> copy(modelled.table.clone());
        requireSameText(*copy);
        if (modelled.cols > 0 && !modelled.rows.empty()) {
            requireAsModelled(modelled, *copy);
        }
        requireSameText(MatlabTable(modelled.table));  // without the schema
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::int64_t before = MatlabCell::objectsCounter;
    Bytes bytes(data, size);
    run(bytes);
    require(MatlabCell::objectsCounter == before, "every cell is destroyed");
    return 0;
}

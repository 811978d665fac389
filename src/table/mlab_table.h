#ifndef RT305_4_TABLE_MLAB_TABLE_H
#define RT305_4_TABLE_MLAB_TABLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "adapter/nlohmann/json_fwd.h"
#include "table/mlab_cell.h"

/// A grid of cells with a column schema and a name; derived classes supply both.
/// Operations that take two indexes or two counts take the column first.
class MatlabTable {
public:
    struct Column {
        std::string name;
        MatlabCell::CellDataType type;
    };
    using Scheme = std::vector<Column>;

    MatlabTable() = default;
    MatlabTable(int cols, int rows);
    /// Copies have the cells (with their ids, nested tables cloned) but no column names. A table without rows or
    /// columns, or a null pointer, gives a table without either.
    MatlabTable(const MatlabTable& other);
    explicit MatlabTable(const MatlabTable* other);
    MatlabTable& operator=(const MatlabTable&) = delete;

    virtual ~MatlabTable() = default;
    virtual Scheme getScheme() const;
    /// Writes the table to standard output; columns are at least minWidth wide.
    virtual void printTable(int minWidth) const;
    /// A deep copy that the caller owns.
    virtual MatlabTable* clone() const;
    /// The outermost table gives {name: [row, ...]}, a nested one [row, ...], each row an object keyed by column name.
    /// A table with a scheme but no rows gives null, one with neither the text "{}".
    /// Nested tables are written by the same rule, not by an override of theirs.
    virtual nlohmann::json toJson() const;
    virtual std::string getName() const;

    std::uint64_t getRowNum() const { return rows_; }
    std::uint64_t getColNum() const { return cols_; }
    /// Keeps the cells that are within both the old and the new size; all others are new and have no value.
    void resize(std::uint64_t cols, std::uint64_t rows);
    /// The cell at a position; null outside the table.
    const MatlabCell* findCell(std::uint64_t col, std::uint64_t row) const {
        return col < cols_ && row < rows_ ? &cells_[row * cols_ + col] : nullptr;
    }
    MatlabCell getCell(std::uint64_t col, std::uint64_t row, const MatlabCell& fallback) const;
    /// Replaces all cells, row by row; their number is a multiple of cols.
    void setCells(std::uint64_t cols, std::vector<MatlabCell> cells);
    /// Does nothing when the position is outside the table.
    void setCell(std::uint64_t col, std::uint64_t row, MatlabCell cell);
    void setColumnName(std::uint64_t col, const std::string& name);
    /// The name in the scheme (not the one set by setColumnName); empty beyond the scheme.
    std::string getColumnName(std::uint64_t col) const;
    /// One more than the longest of minWidth, the column name and the values; minWidth itself without cells.
    int getColumnWidth(std::uint64_t col, int minWidth) const;
    /// Removing the only row also removes the columns.
    void removeRow(std::uint64_t row);
    void remove();
    void printCellIds() const;
    /// The text of toJson(), written directly, without building the value.
    std::string toJsonText() const;
    nlohmann::json getJsonValue(std::uint64_t col, std::uint64_t row) const;

private:
    std::uint64_t rows_ = 0;
    std::uint64_t cols_ = 0;
    std::vector<MatlabCell> cells_;  // row by row
    std::vector<std::string> columnNames_;
};

#endif

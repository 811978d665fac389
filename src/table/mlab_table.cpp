#include "table/mlab_table.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <limits>
#include <new>

namespace {

/// rows * cols; throws when that many cells exceed the address space.
std::size_t cellCount(std::uint64_t cols, std::uint64_t rows) {
    constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max() / sizeof(MatlabCell);
    if (rows != 0 && cols > most / rows) {
        throw std::bad_array_new_length();
    }
    return cols * rows;
}

std::uint64_t countOf(int n) {
    return n < 0 ? 0 : static_cast<std::uint64_t>(n);
}

void printLine(std::string line) {
    line += '\n';
    // Errors of standard output are left to its owner.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stdout));
    static_cast<void>(std::fflush(stdout));
}

std::string padded(std::string text, int width) {
    text.resize(std::max(text.size(), static_cast<std::size_t>(std::max(width, 0))), ' ');
    return text;
}

constexpr int idWidth = 4;

}  // namespace

MatlabTable::MatlabTable(int cols, int rows) {
    resize(countOf(cols), countOf(rows));
}

MatlabTable::MatlabTable(const MatlabTable& other) : MatlabTable(&other) {}

MatlabTable::MatlabTable(const MatlabTable* other) {
    if (other != nullptr && !other->cells_.empty()) {
        rows_ = other->rows_;
        cols_ = other->cols_;
        cells_ = other->cells_;
        columnNames_.resize(cols_);
    }
}

MatlabTable::Scheme MatlabTable::getScheme() const {
    return {};
}

MatlabTable* MatlabTable::clone() const {
    return new MatlabTable(this);
}

std::string MatlabTable::getName() const {
    return "table";
}

void MatlabTable::resize(std::uint64_t cols, std::uint64_t rows) {
    std::vector<MatlabCell> cells(cellCount(cols, rows));
    if (cells.empty() && !cells_.empty()) {
        cols = 0;
        rows = 0;
    }
    columnNames_.resize(cols);
    for (std::uint64_t row = 0; row < std::min(rows, rows_); ++row) {
        for (std::uint64_t col = 0; col < std::min(cols, cols_); ++col) {
            cells[row * cols + col] = std::move(cells_[row * cols_ + col]);
        }
    }
    cells_ = std::move(cells);
    rows_ = rows;
    cols_ = cols;
    assert(cells_.size() == rows_ * cols_ && columnNames_.size() == cols_);
}

MatlabCell MatlabTable::getCell(std::uint64_t col, std::uint64_t row, const MatlabCell& fallback) const {
    const MatlabCell* const cell = findCell(col, row);
    return cell != nullptr ? *cell : fallback;
}

void MatlabTable::setCells(std::uint64_t cols, std::vector<MatlabCell> cells) {
    assert(cols > 0 && !cells.empty() && cells.size() % cols == 0);
    columnNames_.resize(cols);
    cells_ = std::move(cells);
    cols_ = cols;
    rows_ = cells_.size() / cols;
}

void MatlabTable::setCell(std::uint64_t col, std::uint64_t row, MatlabCell cell) {
    if (findCell(col, row) != nullptr) {
        cells_[row * cols_ + col] = std::move(cell);
    }
}

void MatlabTable::setColumnName(std::uint64_t col, const std::string& name) {
    if (col < cols_) {
        columnNames_[col] = name;
    }
}

std::string MatlabTable::getColumnName(std::uint64_t col) const {
    const Scheme scheme = getScheme();
    return col < scheme.size() ? scheme[col].name : std::string();
}

int MatlabTable::getColumnWidth(std::uint64_t col, int minWidth) const {
    if (cells_.empty()) {
        return minWidth;
    }
    std::size_t width = std::max(countOf(minWidth), getColumnName(col).size());
    for (std::uint64_t row = 0; row < rows_; ++row) {
        const MatlabCell* const cell = findCell(col, row);
        if (cell != nullptr && cell->isValid()) {
            width = std::max(width, cell->toString().size());
        }
    }
    return static_cast<int>(width) + 1;
}

void MatlabTable::removeRow(std::uint64_t row) {
    if (row >= rows_) {
        return;
    }
    if (rows_ == 1) {
        remove();
        return;
    }
    std::vector<MatlabCell> cells((rows_ - 1) * cols_);
    const auto removed = cells_.begin() + static_cast<std::ptrdiff_t>(row * cols_);
    std::move(removed + static_cast<std::ptrdiff_t>(cols_), cells_.end(),
              std::move(cells_.begin(), removed, cells.begin()));
    cells_ = std::move(cells);
    --rows_;
}

void MatlabTable::remove() {
    cells_.clear();
    rows_ = 0;
    cols_ = 0;
}

void MatlabTable::printTable(int minWidth) const {
    const Scheme scheme = getScheme();
    if (scheme.empty() || cells_.empty()) {
        printLine("Table is empty");
        return;
    }
    std::vector<int> widths;
    std::string header = padded("ID", idWidth);
    for (std::uint64_t col = 0; col < scheme.size(); ++col) {
        widths.push_back(getColumnWidth(col, minWidth));
        header += padded(scheme[col].name, widths.back());
    }
    printLine(header);
    printLine(std::string(header.size(), '-'));
    for (std::uint64_t row = 0; row < rows_; ++row) {
        std::string line = padded(std::to_string(row + 1), idWidth);
        for (std::uint64_t col = 0; col < scheme.size(); ++col) {
            const MatlabCell* const cell = findCell(col, row);
            line += padded(cell != nullptr ? cell->toString() : std::string(), widths[col]);
        }
        printLine(line);
    }
}

void MatlabTable::printCellIds() const {
    printLine("---------");
    for (const MatlabCell& cell : cells_) {
        printLine("Cell id = " + std::to_string(cell.getCellId()) + (cell.isValid() ? " true " : " false ") +
                  cell.toString());
    }
    printLine("---------");
}

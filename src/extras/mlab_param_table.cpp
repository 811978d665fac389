#include "extras/mlab_param_table.h"

#include <algorithm>
#include <span>

std::string MatlabParamTable::nameOf(std::uint64_t row, bool* ok) const {
    return getCell(0, row, MatlabCell()).toString(ok);
}

void MatlabParamTable::removeRow(const char* name) {
    if (name == nullptr || getColNum() == 0) {
        return;
    }
    for (std::uint64_t row = 0; row < getRowNum(); ++row) {
        if (nameOf(row) == name) {
            MatlabTable::removeRow(row);
            return;
        }
    }
}

void MatlabParamTable::thinningRows(const char** names, std::size_t count) {
    if (names == nullptr || count == 0 || getColNum() == 0) {
        return;
    }
    const std::span wanted(names, count);
    for (std::uint64_t row = getRowNum(); row-- > 0;) {
        const std::string name = nameOf(row);
        const bool kept = std::any_of(wanted.begin(), wanted.end(), [&](const char* entry) {
            return entry != nullptr && *entry != '\0' && name == entry;
        });
        if (!kept) {
            MatlabTable::removeRow(row);
        }
    }
}

std::vector<std::string> MatlabParamTable::getParamNames() const {
    std::vector<std::string> names;
    for (std::uint64_t row = 0; row < getRowNum() && getColNum() > 0; ++row) {
        bool ok = false;
        std::string name = nameOf(row, &ok);
        if (ok) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

#ifndef RT305_4_EXTRAS_MLAB_PARAM_TABLE_H
#define RT305_4_EXTRAS_MLAB_PARAM_TABLE_H

#include <cstddef>

#include "table/mlab_table.h"

/// A table whose rows are parameters, named by the text of their first cell. Names are compared byte by byte.
class MatlabParamTable : public MatlabTable {
public:
    MatlabParamTable() = default;
    MatlabParamTable(int cols, int rows) : MatlabTable(cols, rows) {}
    MatlabParamTable(const MatlabParamTable& other) : MatlabTable(other) {}
    explicit MatlabParamTable(const MatlabTable* other) : MatlabTable(other) {}

    using MatlabTable::removeRow;
    /// Removes the first row of that name; nothing when there is none or name is null.
    virtual void removeRow(const char* name);
    /// Removes every row whose name is not among names[count]; null and empty entries match no row. Nothing when names
    /// is null or count is 0.
    virtual void thinningRows(const char** names, std::size_t count);
    /// The names of all rows whose first cell has a value.
    virtual std::vector<std::string> getParamNames() const;

private:
    std::string nameOf(std::uint64_t row, bool* ok = nullptr) const;
};

#endif

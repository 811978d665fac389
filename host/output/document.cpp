#include "output/document.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "base/csv_field.h"
#include "base/terminal.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "output/json.h"

namespace rt305 {

namespace {

/// {"rms": {"unit": "V", "Ua": 230.2, ...}, ...}; a missing value is null.
Json rowsOf(const ResultTable& table) {
    Json rows = Json::object();
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        Json& row = rows[table.rows[r].key] = Json{{"unit", table.rows[r].unit}};
        for (std::size_t c = 0; c < table.columns.size(); ++c) {
            if (table.cells[r][c]) {
                row[table.columns[c].key] = *table.cells[r][c];
            }
        }
    }
    return rows;
}

/// Adds the entries of the channel whose columns are those from `first` to before `last`.
void addEntries(const ResultTable& table, std::size_t first, std::size_t last, Json& list) {
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        Json entry{{"channel", table.columns[first].channel}};
        if (!table.rowKey.empty()) {
            entry[table.rowKey] = r + 1;
        }
        const std::size_t unmeasured = entry.size();
        for (std::size_t c = first; c < last; ++c) {
            if (const auto& figure = table.cells[r][c]) {
                const bool isWhole = table.columns[c].mostDecimals == 0 && !std::isnan(*figure);
                entry[table.columns[c].key] = isWhole ? Json(std::lround(*figure)) : Json(*figure);
            }
        }
        if (entry.size() > unmeasured) {
            list.push_back(std::move(entry));
        }
    }
}

/// [{"channel": "Ua", "order": 5, "percent": 2.1}, ...], channel after channel.
void addList(const ResultTable& table, Json& list) {
    const auto& columns = table.columns;
    for (std::size_t first = 0, last = 0; first < columns.size(); first = last) {
        while (last < columns.size() && columns[last].channel == columns[first].channel) {
            ++last;
        }
        addEntries(table, first, last, list);
    }
}

Json jsonOf(const ResultDocument& document) {
    Json object = originOf(document.recording, document.options, document.library);
    object["measured"] = {{"start", document.startSeconds},
                          {"samples", document.samples},
                          {"rate", document.rateHz},
                          {"content", document.content},
                          {"settings", document.settings.empty() ? Json() : Json(document.settings)}};
    for (const ResultTable& table : document.tables) {
        if (table.isList()) {  // voltages and currents share one
            Json& list = object.emplace(table.name, Json::array()).first.value();
            addList(table, list);
        } else {
            object[table.name] = rowsOf(table);
        }
    }
    object["remarks"] = jsonOf(document.remarks);
    object["warnings"] = jsonOf(document.warnings);
    return object;
}

char separatorOf(OutputForm form) {
    return form == OutputForm::plain ? '\t' : ',';
}

/// A text as a field of CSV, or of plain lines.
std::string fieldOf(const std::string& text, OutputForm form) {
    return form == OutputForm::plain ? shown(text) : csvField(shown(text));
}

void writeFields(const std::vector<std::string>& fields, OutputForm form, std::ostream& out) {
    std::string line;
    for (const std::string& field : fields) {
        line += fieldOf(field, form) + separatorOf(form);
    }
    line.back() = '\n';
    out << line;
}

std::string csvNumber(const ResultTable::Cell& figure) {
    return figure && !std::isnan(*figure) ? formatNumber(*figure, 15) : "";
}

/// Writes one line for each figure; a missing value is empty.
void writeFigures(const ResultDocument& document, const ResultTable& table, OutputForm form, std::ostream& out) {
    const char separator = separatorOf(form);
    const std::string start = fieldOf(document.recording.file, form) + separator +
                              formatNumber(document.startSeconds, 12) + separator + fieldOf(table.name, form) +
                              separator;
    std::vector<std::string> columns;
    for (const ResultTable::Line& column : table.columns) {
        columns.push_back(fieldOf(column.csvKey(), form) + separator);
    }
    std::string lines;
    for (std::size_t r = 0; r < table.rows.size(); ++r) {
        const std::string row = start + fieldOf(table.rows[r].key, form) + separator;
        const std::string unit = separator + fieldOf(table.rows[r].unit, form) + '\n';
        for (std::size_t c = 0; c < table.columns.size(); ++c) {
            if (const auto& figure = table.cells[r][c]) {
                lines.append(row).append(columns[c]).append(csvNumber(figure));
                lines += table.unitsByColumn ? separator + fieldOf(table.columns[c].unit, form) + '\n' : unit;
            }
        }
    }
    out << lines;
}

/// The lists of a document, which have the same rows.
std::vector<const ResultTable*> listsOf(const ResultDocument& document) {
    std::vector<const ResultTable*> lists;
    for (const ResultTable& table : document.tables) {
        if (table.isList() && document.figures.empty()) {
            lists.push_back(&table);
        }
    }
    return lists;
}

/// The names of all figures outside lists.
std::vector<FigureName> figuresOf(const ResultDocument& document) {
    std::vector<FigureName> names(document.figures.begin(), document.figures.end());
    for (const ResultTable& table : document.tables) {
        for (std::size_t r = 0; document.figures.empty() && r < table.rows.size(); ++r) {
            for (std::size_t c = 0; c < table.columns.size(); ++c) {
                if (table.cells[r][c]) {
                    names.push_back({table.name, table.rows[r].key, table.columns[c].key});
                }
            }
        }
    }
    return names;
}

ResultTable::Cell figureAt(const ResultDocument& document, const FigureName& name) {
    const auto isNamed = [](const std::string& key) {
        return [&key](const ResultTable::Line& line) { return line.key == key; };
    };
    const ResultTable* const table = document.table(name.table);
    if (table == nullptr) {
        return std::nullopt;
    }
    const auto row = std::find_if(table->rows.begin(), table->rows.end(), isNamed(name.row));
    const auto column = std::find_if(table->columns.begin(), table->columns.end(), isNamed(name.column));
    return row == table->rows.end() || column == table->columns.end()
               ? std::nullopt
               : table->cells[static_cast<std::size_t>(row - table->rows.begin())]
                             [static_cast<std::size_t>(column - table->columns.begin())];
}

void writeWideHeading(const ResultDocument& document, std::ostream& out) {
    std::vector<std::string> fields{"file", "start"};
    const auto lists = listsOf(document);
    if (lists.empty()) {
        for (const FigureName& name : figuresOf(document)) {
            fields.push_back(name.text());
        }
    } else {
        fields.push_back(lists[0]->rowKey.empty() ? "rank" : lists[0]->rowKey);
    }
    for (const ResultTable* const list : lists) {
        for (const ResultTable::Line& column : list->columns) {
            fields.push_back(column.csvKey());
        }
    }
    writeFields(fields, OutputForm::csvWide, out);
}

/// Writes a row for each row of the lists, or one row with all figures.
void writeWide(const ResultDocument& document, std::ostream& out) {
    const std::vector<std::string> first{document.recording.file, formatNumber(document.startSeconds, 12)};
    const auto lists = listsOf(document);
    std::size_t longest = 0;
    for (const ResultTable* const list : lists) {
        longest = std::max(longest, list->rows.size());
    }
    for (std::size_t r = 0; r < longest; ++r) {
        std::vector<std::string> fields = first;
        fields.push_back(std::to_string(r + 1));
        for (const ResultTable* const list : lists) {
            for (std::size_t c = 0; c < list->columns.size(); ++c) {
                fields.push_back(r < list->rows.size() ? csvNumber(list->cells[r][c]) : "");
            }
        }
        writeFields(fields, OutputForm::csvWide, out);
    }
    if (lists.empty()) {
        std::vector<std::string> fields = first;
        for (const FigureName& name : figuresOf(document)) {
            fields.push_back(csvNumber(figureAt(document, name)));
        }
        writeFields(fields, OutputForm::csvWide, out);
    }
}

void writeText(const ResultDocument& document, bool styled, std::ostream& out) {
    out << shown(document.recording.file) << '\n'
        << counted(document.samples, "sample") << " at " << formatNumber(document.rateHz) << " Hz"
        << (document.startSeconds > 0.0 ? " from " + formatNumber(document.startSeconds, 9) + " s on" : "") << ", "
        << document.content << ", library " << document.library << '\n';
    if (!document.settings.empty()) {
        out << document.settings << '\n';
    }
    for (const ResultTable& table : document.tables) {
        out << (table.rows.empty() ? "" : '\n' + textOf(table, styled));
    }
    out << (document.remarks.empty() ? "" : "\n");
    for (const Remark& remark : document.remarks) {
        out << wrapped(shown(remark.text), textWidth());
    }
}

}  // namespace

const ResultTable* ResultDocument::table(std::string_view name) const {
    const auto found =
        std::find_if(tables.begin(), tables.end(), [name](const ResultTable& t) { return t.name == name; });
    return found == tables.end() ? nullptr : &*found;
}

void writeHeading(OutputForm form, const ResultDocument& document, std::ostream& out) {
    if (form == OutputForm::csvWide) {
        return writeWideHeading(document, out);
    }
    out << (form == OutputForm::csv ? "file,start,table,quantity,column,value,unit\n" : "");
}

void write(const ResultDocument& document, OutputForm form, bool styled, std::ostream& out) {
    switch (form) {
        case OutputForm::text:
            return writeText(document, styled, out);
        case OutputForm::json:
        case OutputForm::jsonLines:
            out << dumped(jsonOf(document), form == OutputForm::json);
            return;
        case OutputForm::csv:
        case OutputForm::plain:
            for (const ResultTable& table : document.tables) {
                writeFigures(document, table, form, out);
            }
            return;
        case OutputForm::csvWide:
            return writeWide(document, out);
        case OutputForm::raw:
            for (const std::string& text : document.rawTexts) {
                out << text << '\n';
            }
    }
}

void writeErrorLine(const FailedDocument& failed, std::ostream& out) {
    Json line = originOf(failed.recording, failed.options, failed.library);
    line["error"] = failed.message;
    line["exit_code"] = failed.exitCode;
    out << dumped(line, false);
}

}  // namespace rt305

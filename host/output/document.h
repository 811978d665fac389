#ifndef RT305_HOST_OUTPUT_DOCUMENT_H
#define RT305_HOST_OUTPUT_DOCUMENT_H

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "output/recording_facts.h"
#include "output/result_table.h"
#include "recording/remark.h"

namespace rt305 {

/// How results are written.
enum class OutputForm {
    text,       // tables for people
    json,       // one document, indented
    jsonLines,  // one document a line
    csv,        // one figure a line, with a heading
    csvWide,    // one row a document, or a row of lists, with a heading
    plain,      // one figure a line, tabs between the fields, no heading
    raw         // the library's own texts, byte for byte
};

/// The place of a figure in the tables of a document.
struct FigureName {
    std::string table;
    std::string row;
    std::string column;

    std::string text() const { return table + "_" + row + "_" + column; }
};

/// The results of one recording, or of one window of it.
struct ResultDocument {
    RecordingFacts recording{};
    GivenOptions options{};
    double startSeconds = 0.0;  // after the first sample of the segment
    std::size_t samples = 0;
    double rateHz = 0.0;
    std::string content{};   // "voltages and currents"
    std::string library{};   // its version
    std::string settings{};  // how it was measured, in a few words; may be empty
    std::vector<ResultTable> tables{};
    std::vector<Remark> remarks{};          // what a reader of the results must know
    std::vector<Remark> warnings{};         // what makes the results doubtful; also printed on stderr
    std::vector<std::string> rawTexts{};    // as the library wrote them
    std::span<const FigureName> figures{};  // the columns of its wide CSV, where it is one of many; empty: all it has

    /// The table of that name; null when the document has none.
    const ResultTable* table(std::string_view name) const;
};

/// What comes once before all documents: the names of the CSV fields. `document` is one of them, or has their
/// `figures`.
void writeHeading(OutputForm form, const ResultDocument& document, std::ostream& out);

void write(const ResultDocument& document, OutputForm form, bool styled, std::ostream& out);

/// A document that could not be made.
struct FailedDocument {
    RecordingFacts recording;  // as far as it is known
    GivenOptions options;
    std::string library;
    std::string message;
    int exitCode;
};

/// The line in its place: {"tool":...,"recording":{"file":...},"options":...,"error":...,"exit_code":...}.
void writeErrorLine(const FailedDocument& failed, std::ostream& out);

}  // namespace rt305

#endif

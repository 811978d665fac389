#ifndef RT305_HOST_CLI_COMMANDS_H
#define RT305_HOST_CLI_COMMANDS_H

#include <string>
#include <vector>

#include "measuring/measurement.h"
#include "output/document.h"
#include "output/quality_document.h"
#include "output/quality_settings.h"
#include "page/page_texts.h"
#include "reading/comtrade_configuration.h"
#include "reading/read_options.h"
#include "recording/generator.h"
#include "writing/conversion.h"

namespace rt305 {

/// The tool's subcommands. Data go to stdout, warnings to stderr. A command that fails throws Failure.

struct MeasureOptions {
    std::string file;  // "-": stdin
    ReadOptions reading;
    MeasurementSettings settings;
    std::string library;       // the library file; empty: searched for
    std::string settingsFile;  // "auto": .rt305.toml; empty: none
    OutputForm form = OutputForm::text;
    GivenOptions given;  // for JSON
};

/// How to read the recording for the form of output: JSON has the checksums of files.
ReadOptions readOptionsOf(const MeasureOptions& options);

/// Reads a recording, and shows that on a terminal if it takes long.
Recording readShowingProgress(const std::string& file, const ReadOptions& reading);

/// The files of a command that works on many.
struct FileOptions {
    std::vector<std::string> files;
    std::string filesFrom;  // a file that lists more, one a line; "-": stdin; empty: none
    std::size_t jobs = 1;   // processes
    MeasureOptions each;    // how each file is read and measured

    bool isMany() const { return files.size() > 1 || !filesFrom.empty(); }
};

/// A command that writes documents about many files.
struct DocumentOptions : FileOptions {
    std::string outputFolder;    // for a file of results of each recording; empty: stdout
    bool force = false;          // also measure what has a result there
    bool retriesFailed = false;  // measure the files that failed there
};

/// Full measurements of many files and windows.
struct BatchOptions : DocumentOptions {
    double windowSeconds = 0.0;  // 0: the whole recording at once
    double stepSeconds = 0.0;    // from the start of one window to the next; 0: the length of a window
};

/// Power quality of many files.
struct QualityOptions : DocumentOptions {
    QualityChoice choice{};
    std::string limitsFile;  // empty: no verdict
    QualityRows rows = QualityRows::cycles;
};

/// Full measurements of recordings as HTML pages.
struct ReportOptions : FileOptions {
    PageTexts texts;
    std::string limitsFile{};  // empty: none are drawn
    std::string output;        // a file, or a folder for a page each and an index; empty: stdout
};

/// A recording in another form.
struct ConvertOptions {
    MeasureOptions measure;  // the file, how it is read, and the part of it
    Conversion conversion;
    std::string form;  // "cff" and the like; empty: by the extension of the file
    SampleForm samples = SampleForm::binary32;
    std::string file;  // empty: stdout
};

struct GenerateOptions {
    GeneratorSettings settings;
    int digits = 6;
    std::string file;  // empty: stdout
};

struct CheckOptions {
    std::string library;  // the library file; empty: searched for
};

void showRecording(const MeasureOptions& options);

/// Reports the failures of single files itself. Returns the exit code.
int measureEverything(BatchOptions options);
int analyseQuality(QualityOptions options);
int writeReports(ReportOptions options);

void showParameters(const MeasureOptions& options);
void showSignals(const MeasureOptions& options);
void showSpectra(const MeasureOptions& options);
void showHarmonics(const MeasureOptions& options);
void convertRecording(const ConvertOptions& options);
void checkLibrary(const CheckOptions& options);
void generateRecording(const GenerateOptions& options);

}  // namespace rt305

#endif

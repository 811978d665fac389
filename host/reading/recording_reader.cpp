#include "reading/recording_reader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>

#include "base/checksum.h"
#include "base/failure.h"
#include "base/limits.h"
#include "base/read_text.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "base/units.h"
#include "reading/comtrade_file.h"
#include "reading/comtrade_reader.h"
#include "reading/csv_reader.h"
#include "reading/gzip.h"
#include "reading/sound_reader.h"
#include "recording/channel_assignment.h"
#include "toolkit/large_pages.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void failReading(const std::string& name) {
    if (errno == ENOMEM) {
        throw std::bad_alloc();
    }
    failInput(name + ": " + std::strerror(errno));
}

/// Reads a stream of `expected` bytes, or of an unknown number (0), to its end.
std::string contentOf(std::istream& stream, const std::string& name, std::size_t expected) {
    const std::size_t most = expected > 0 ? largestFile : largestStream;
    std::string content;
    std::vector<char> block(std::size_t{1} << 16);
    if (expected <= most) {
        coder::reserveLargePages(content, expected);
    }
    do {  // read() reports errors, such as a folder instead of a file, that an iterator would throw
        if (content.size() > most || expected > most) {
            failInput(name + ": has more than the " + std::to_string(most) + " bytes that can be read");
        }
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        content.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    if (stream.bad() || (&stream == &std::cin && std::ferror(stdin) != 0)) {
        failReading(name);
    }
    return content;
}

std::string contentOf(const std::string& path) {
    if (path == "-") {
        return contentOf(std::cin, "stdin", 0);
    }
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    if (fs::is_character_file(status) || fs::is_block_file(status) || fs::is_socket(status)) {
        failInput(path + ": is a device, not a file");
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        failReading(path);
    }
    return contentOf(file, path, fs::is_regular_file(status) ? fs::file_size(path, ignored) : 0);
}

/// Reads the files of a recording and lists them.
class SourceFiles {
public:
    explicit SourceFiles(const ReadOptions& options) : options_(options) {}

    /// The content of a file, "-" for stdin, decompressed. The checksum is that of the file itself.
    std::string read(const std::string& path) {
        std::string content = contentOf(path);
        files_.push_back({path, options_.withChecksums ? checksumOf(content) : ""});
        if (isGzip(content)) {
            return decompressed(content, path == "-" ? "stdin" : path);
        }
        return content;
    }

    /// All files have been read.
    void end() const {
        if (options_.whenRead) {
            options_.whenRead(files_);
        }
    }

    const std::vector<SourceFile>& all() const { return files_; }

private:
    const ReadOptions& options_;
    std::vector<SourceFile> files_{};
};

/// A path without the ".gz" of a compressed file.
fs::path withoutGzip(const fs::path& path) {
    return lowerCase(path.extension().string()) == ".gz" ? fs::path(path).replace_extension() : path;
}

/// The extension of a path in lower case, before ".gz".
std::string extensionOf(const fs::path& path) {
    return lowerCase(withoutGzip(path).extension().string());
}

/// An extension in upper case with the letters of `choice` in lower case; its last bit stands for the last letter.
std::string spellingOf(std::string_view extension, std::size_t choice) {
    std::string spelling(extension);
    for (std::size_t i = spelling.size(); i-- > 1; choice /= 2) {
        if (choice % 2 == 0) {
            spelling[i] = static_cast<char>(spelling[i] - 'a' + 'A');
        }
    }
    return spelling;
}

/// Finds the file in the same folder with the same name and this extension, in any case, compressed or not; empty when
/// there is none. Asks for each spelling, because a folder may hold thousands of other files. Fails on what is not a
/// regular file: a pipe would wait for ever.
std::string companionOf(const fs::path& path, std::string_view extension) {
    const std::size_t spellings = std::size_t{1} << (extension.size() - 1);
    for (const char* const compression : {"", ".gz", ".GZ"}) {
        for (std::size_t choice = 0; choice < spellings; ++choice) {
            std::error_code ignored;
            const fs::path found = withoutGzip(path).replace_extension(spellingOf(extension, choice) + compression);
            const fs::file_status status = fs::status(found, ignored);
            if (fs::exists(status) && !fs::is_regular_file(status)) {
                failInput(found.string() + ": is not a regular file");
            }
            if (fs::exists(status)) {
                return found.string();
            }
        }
    }
    return "";
}

std::string requiredCompanionOf(const std::string& path, std::string_view extension) {
    std::string companion = companionOf(path, extension);
    if (companion.empty()) {
        failInput(path + ": there is no " + withoutGzip(path).stem().string() + std::string(extension) +
                  " in its folder" + (extension == ".dat" ? "; --dat names one elsewhere" : ""));
    }
    return companion;
}

Recording readComtradePair(const std::string& configurationPath, const std::string& configuration,
                           const ReadOptions& options, SourceFiles& files) {
    const std::string dataPath =
        options.dataFile.empty() ? requiredCompanionOf(configurationPath, ".dat") : options.dataFile;
    const std::string headerPath = companionOf(configurationPath, ".hdr");
    std::string data = files.read(dataPath);
    const std::string header = headerPath.empty() ? "" : files.read(headerPath);
    files.end();
    return readComtrade({configurationPath, configuration, dataPath, data, {}, header}, options, ReadText(&data));
}

Recording readByContent(const std::string& path, const ReadOptions& options, SourceFiles& files) {
    const bool fromStdin = path == "-";
    const std::string extension = extensionOf(path);
    if (!fromStdin && extension == ".dat" && !companionOf(path, ".cfg").empty()) {
        return readByContent(companionOf(path, ".cfg"), options, files);
    }
    const std::string source = fromStdin ? "stdin" : path;
    std::string content = files.read(path);
    if (isSound(content)) {
        files.end();
        return readSound(content, source, options);
    }
    convertUtf16(content, options.encoding);
    const bool isOfPair = !fromStdin && (extension == ".cfg" || isComtradeConfiguration(content));
    if (!options.dataFile.empty() && !isOfPair) {
        failUsage("--dat: " + source + " is not the .cfg file of a COMTRADE record");
    }
    if (!isOfPair || isComtradeFile(content)) {
        files.end();
    }
    if (isComtradeFile(content)) {
        return readComtrade(splitComtradeFile(content, source), options, ReadText(&content));
    }
    if (isOfPair) {
        return readComtradePair(path, content, options, files);
    }
    if (content.find('\0') != std::string::npos) {
        failInput(source + ": byte " + std::to_string(content.find('\0')) + ": unrecognised binary file" +
                  (extension == ".dat" ? "; a COMTRADE record needs its .cfg file in the same folder" : ""));
    }
    return readCsv(content, source, options, ReadText(&content));
}

/// The first `longestName` bytes of a text in UTF-8, without a part of a character at the end.
std::string shortened(std::string text) {
    if (text.size() > longestName) {
        std::size_t end = longestName;
        while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
            --end;
        }
        text.erase(end);
    }
    return text;
}

/// Fails unless each segment has a rate in the range that the tool accepts.
void requireRates(const Recording& recording) {
    for (const Segment& segment : recording.segments) {
        if (!(segment.rateHz >= lowestRateHz * (1.0 - rateTolerance) &&
              segment.rateHz <= highestRateHz * (1.0 + rateTolerance))) {
            failInput(recording.source + ": the sample rate, " + recording.rateOrigin + ", is " +
                      formatNumber(segment.rateHz) + " Hz at sample " + std::to_string(segment.first + 1) +
                      "; it must be 1 Hz to 1 GHz. --rate gives another");
        }
    }
}

/// Warns when the user gives another rate than the file, which is no mistake only where the file is wrong.
void warnOfOtherRate(double rateHz, Recording& recording) {
    constexpr double sameRate = 0.01;
    const double fileHz = recording.segments.empty() ? rateHz : recording.segments[mainSegment(recording)].rateHz;
    if (std::isfinite(fileHz) && std::fabs(rateHz / fileHz - 1.0) > sameRate) {
        recording.warnings.emplace_back(recording.source + ": by the file the rate is " + formatNumber(fileHz) +
                                        " Hz; --rate " + formatNumber(rateHz) +
                                        " changes all times and frequencies by the factor " +
                                        formatNumber(rateHz / fileHz, 4) + " (convert --resample keeps them)");
    }
}

void scale(Column& column, double factor) {
    for (double& x : column.samples) {
        x *= factor;
    }
}

/// Converts to the wanted side of the transformer, if the file gives the present one.
void changeSide(Column& column, Transformer::Side side) {
    Transformer& transformer = column.transformer;
    if (side == Transformer::Side::unknown || transformer.side == Transformer::Side::unknown ||
        transformer.side == side) {
        return;
    }
    const double ratio = transformer.primary / transformer.secondary;
    scale(column, side == Transformer::Side::primary ? ratio : 1.0 / ratio);
    transformer.side = side;
}

}  // namespace

Recording readRecording(const std::string& path, const ReadOptions& options) {
    SourceFiles files(options);
    Recording recording = readByContent(path, options, files);
    recording.files = files.all();
    return completed(std::move(recording), options);
}

Recording completed(Recording recording, const ReadOptions& options) {
    const auto isUndecoded = [](const Column& column) { return !isUtf8(column.name) || !isUtf8(column.unit); };
    if (options.encoding.empty() && std::any_of(recording.columns.begin(), recording.columns.end(), isUndecoded)) {
        recording.warnings.emplace_back(undecodedText(recording.source));
    }
    for (Column& column : recording.columns) {
        column.name = shortened(toUtf8(column.name, options.encoding));
        column.unit = shortened(toUtf8(column.unit, options.encoding));
        changeSide(column, options.side);
        const Quantity quantity = unitOf(column.unit).quantity;
        if (options.storedAsRms && quantity != Quantity::other && quantity != Quantity::time) {
            scale(column, std::sqrt(2.0));
        }
    }
    for (const auto& [name, factor] : options.gains) {
        scale(recording.columns[findColumn(recording, name)], factor);
    }
    for (auto& [label, text] : recording.facts) {
        text = shortened(std::move(text));
    }
    if (options.rateHz) {
        warnOfOtherRate(*options.rateHz, recording);
        recording.setRate(*options.rateHz, "as given");
    }
    requireRates(recording);
    return recording;
}

}  // namespace rt305

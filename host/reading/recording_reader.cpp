#include "reading/recording_reader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "base/failure.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "base/units.h"
#include "reading/comtrade_file.h"
#include "reading/comtrade_reader.h"
#include "reading/csv_reader.h"
#include "reading/gzip.h"
#include "reading/sound_reader.h"
#include "recording/channel_assignment.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

std::string contentOf(std::istream& stream, const std::string& name) {
    std::string content;
    std::vector<char> block(std::size_t{1} << 16);
    do {  // read() reports errors, such as a folder instead of a file, that an iterator would throw
        stream.read(block.data(), static_cast<std::streamsize>(block.size()));
        content.append(block.data(), static_cast<std::size_t>(stream.gcount()));
    } while (stream);
    if (stream.bad()) {
        failInput(name + ": " + std::strerror(errno));
    }
    return isGzip(content) ? decompressed(content, name) : content;
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        failInput(path + ": " + std::strerror(errno));
    }
    return contentOf(file, path);
}

/// A path without the ".gz" of a compressed file.
fs::path withoutGzip(const fs::path& path) {
    return lowerCase(path.extension().string()) == ".gz" ? fs::path(path).replace_extension() : path;
}

/// The extension of a path in lower case, before ".gz".
std::string extensionOf(const fs::path& path) {
    return lowerCase(withoutGzip(path).extension().string());
}

/// Finds the file in the same folder with the same name and this extension, in any case, compressed or not; empty when
/// there is none.
std::string companionOf(const fs::path& path, std::string_view extension) {
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    std::error_code ignored;
    std::vector<std::string> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, ignored)) {
        const fs::path name = entry.path().filename();
        if (withoutGzip(name).stem() == withoutGzip(path).stem() && extensionOf(name) == extension) {
            found.push_back(path.has_parent_path() ? (folder / name).string() : name.string());
        }
    }
    return found.empty() ? "" : *std::min_element(found.begin(), found.end());
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
                           const ReadOptions& options) {
    const std::string dataPath =
        options.dataFile.empty() ? requiredCompanionOf(configurationPath, ".dat") : options.dataFile;
    const std::string headerPath = companionOf(configurationPath, ".hdr");
    const std::string data = contentOf(dataPath);
    const std::string header = headerPath.empty() ? "" : contentOf(headerPath);
    Recording recording = readComtrade({configurationPath, configuration, dataPath, data, {}, header}, options);
    recording.files = {configurationPath, dataPath};
    if (!headerPath.empty()) {
        recording.files.push_back(headerPath);
    }
    return recording;
}

Recording readByContent(const std::string& path, const ReadOptions& options) {
    const bool fromStdin = path == "-";
    const std::string extension = extensionOf(path);
    if (!fromStdin && extension == ".dat" && !companionOf(path, ".cfg").empty()) {
        return readByContent(companionOf(path, ".cfg"), options);
    }
    const std::string source = fromStdin ? "stdin" : path;
    std::string content = fromStdin ? contentOf(std::cin, source) : contentOf(path);
    if (isSound(content)) {
        return readSound(content, source, options);
    }
    convertUtf16(content, options.encoding);
    const bool isOfPair = !fromStdin && (extension == ".cfg" || isComtradeConfiguration(content));
    if (!options.dataFile.empty() && !isOfPair) {
        failUsage("--dat: " + source + " is not the .cfg file of a COMTRADE record");
    }
    if (isComtradeFile(content)) {
        return readComtrade(splitComtradeFile(content, source), options);
    }
    if (isOfPair) {
        return readComtradePair(path, content, options);
    }
    if (content.find('\0') != std::string::npos) {
        failInput(source + ": byte " + std::to_string(content.find('\0')) + ": unrecognised binary file" +
                  (extension == ".dat" ? "; a COMTRADE record needs its .cfg file in the same folder" : ""));
    }
    return readCsv(content, source, options);
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
    Recording recording = readByContent(path, options);
    if (recording.files.empty() && path != "-") {
        recording.files = {path};
    }
    const auto isUndecoded = [](const Column& column) { return !isUtf8(column.name) || !isUtf8(column.unit); };
    if (options.encoding.empty() && std::any_of(recording.columns.begin(), recording.columns.end(), isUndecoded)) {
        recording.warnings.push_back(undecodedText(recording.source));
    }
    for (Column& column : recording.columns) {
        column.name = toUtf8(column.name, options.encoding);
        column.unit = toUtf8(column.unit, options.encoding);
        changeSide(column, options.side);
        const Quantity quantity = unitOf(column.unit).quantity;
        if (options.storedAsRms && quantity != Quantity::other && quantity != Quantity::time) {
            scale(column, std::sqrt(2.0));
        }
    }
    for (const auto& [name, factor] : options.gains) {
        scale(recording.columns[findColumn(recording, name)], factor);
    }
    if (options.rateHz) {
        recording.setRate(*options.rateHz, "as given");
    }
    return recording;
}

}  // namespace rt305

#include "reading/sound_reader.h"

#include <sndfile.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/failure.h"
#include "base/limits.h"
#include "base/text.h"
#include "base/units.h"

namespace rt305 {

namespace {

/// Lets the sound library read a file from memory.
struct MemoryFile {
    std::string_view content;
    sf_count_t at = 0;

    static MemoryFile& of(void* user) { return *static_cast<MemoryFile*>(user); }
    static sf_count_t length(void* user) { return static_cast<sf_count_t>(of(user).content.size()); }
    static sf_count_t tell(void* user) { return of(user).at; }

    static sf_count_t seek(sf_count_t offset, int whence, void* user) {
        MemoryFile& file = of(user);
        const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.at : length(user);
        file.at = std::clamp<sf_count_t>(base + offset, 0, length(user));
        return file.at;
    }

    static sf_count_t read(void* target, sf_count_t count, void* user) {
        MemoryFile& file = of(user);
        count = std::clamp<sf_count_t>(count, 0, length(user) - file.at);
        std::memcpy(target, file.content.data() + file.at, static_cast<std::size_t>(count));
        file.at += count;
        return count;
    }

    static sf_count_t write(const void*, sf_count_t, void*) { return 0; }
};

std::string formatName(const SF_INFO& info) {
    std::string names;
    for (const int part : {info.format & SF_FORMAT_TYPEMASK, info.format & SF_FORMAT_SUBMASK}) {
        SF_FORMAT_INFO format{};
        format.format = part;
        if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &format, sizeof(format)) == 0 && format.name != nullptr) {
            names += (names.empty() ? "" : ", ") + std::string(format.name);
        }
    }
    return names;
}

std::vector<Column> columnsOf(std::size_t channels, const ReadOptions& options) {
    std::vector<Column> columns;
    for (std::size_t i = 0; i < channels; ++i) {
        const std::string heading = options.columns.empty() ? std::to_string(i + 1) : options.columns[i];
        const auto [name, unit] = nameAndUnit(heading);
        columns.push_back({std::string(name), std::string(unit), {}, {}});
    }
    return columns;
}

/// Fails when the samples become more than `most`.
void readSamples(SNDFILE* file, std::size_t most, const std::string& source, std::vector<Column>& columns) {
    constexpr sf_count_t blockFrames = 4096;
    const std::size_t channels = columns.size();
    std::vector<double> block(static_cast<std::size_t>(blockFrames) * channels);
    for (sf_count_t frames = 0; (frames = sf_readf_double(file, block.data(), blockFrames)) > 0;) {
        if (channels * (columns[0].samples.size() + static_cast<std::size_t>(frames)) > most) {
            failInput(source + ": holds more than " + std::to_string(most) +
                      " samples in all channels, too many for its size; split it");
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames) * channels; ++i) {
            columns[i % channels].samples.push_back(block[i]);
        }
    }
}

}  // namespace

bool isSound(std::string_view content) {
    const std::string_view mark = content.substr(0, 4);
    return mark == "RIFF" || mark == "RIFX" || mark == "RF64" || mark == "fLaC";
}

Recording readSound(std::string_view content, const std::string& source, const ReadOptions& options) {
    SF_VIRTUAL_IO access{MemoryFile::length, MemoryFile::seek, MemoryFile::read, MemoryFile::write, MemoryFile::tell};
    MemoryFile memory{content};
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open_virtual(&access, SFM_READ, &info, &memory),
                                                           sf_close);
    if (!file) {
        failInput(source + ": " + sf_strerror(nullptr));
    }
    const auto channels = static_cast<std::size_t>(info.channels);
    options.requireColumnTotal(channels, source);
    Recording recording;
    recording.source = source;
    recording.format = formatName(info);
    recording.columns = columnsOf(channels, options);
    readSamples(file.get(), mostSamplesIn(content.size()), source, recording.columns);
    recording.length = recording.columns[0].samples.size();
    if (recording.length == 0) {
        failInput(source + ": there are no samples");
    }
    if (static_cast<sf_count_t>(recording.length) != info.frames) {
        recording.warnings.emplace_back(source + ": holds " + counted(recording.length, "sample") +
                                        ", but its header announces " + std::to_string(info.frames));
    }
    recording.setRate(info.samplerate, "as the file says");
    if (options.gains.empty()) {
        recording.warnings.emplace_back(
            "samples are relative to full scale; convert them to V and A with --gain NAME=FACTOR,...",
            topic::voltage | topic::current | topic::power);
    }
    return recording;
}

}  // namespace rt305

#include "writing/sample_writers.h"

#include <sndfile.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>

#include "base/csv_field.h"
#include "base/failure.h"
#include "base/units.h"
#include "writing/number_text.h"

namespace rt305 {

namespace {

double secondsOf(std::size_t sample, const Recording& recording) {
    return static_cast<double>(sample) / recording.segments[0].rateHz;
}

/// A text in quotes of Python, with control characters escaped.
std::string pythonText(const std::string& text) {
    constexpr const char* digits = "0123456789abcdef";
    std::string quotedText = "'";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < ' ') {
            quotedText += std::string("\\x") + digits[code / 16] + digits[code % 16];
        } else {
            quotedText += (c == '\'' || c == '\\' ? "\\" : "") + std::string(1, c);
        }
    }
    return quotedText + "'";
}

/// The description of the records of a NumPy file.
std::string numpyHeader(const Recording& recording) {
    std::vector<std::string> names{"time (s)"};
    for (const Column& column : recording.columns) {
        std::string name = headingOf(column);
        for (int number = 2; std::find(names.begin(), names.end(), name) != names.end(); ++number) {
            name = headingOf(column) + " " + std::to_string(number);
        }
        names.push_back(std::move(name));
    }
    std::string fields;
    for (const std::string& name : names) {
        fields += "(" + pythonText(name) + ", '<f8'), ";
    }
    return "{'descr': [" + fields + "], 'fortran_order': False, 'shape': (" + std::to_string(recording.length) +
           ",), }";
}

void writeDouble(double value, std::ostream& out) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    std::array<char, 8> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes.at(i) = static_cast<char>(bits >> (8 * i));
    }
    out.write(bytes.data(), bytes.size());
}

/// Lets the sound library write a file to memory.
struct MemoryTarget {
    std::string content{};
    std::size_t at = 0;

    static MemoryTarget& of(void* user) { return *static_cast<MemoryTarget*>(user); }
    static sf_count_t length(void* user) { return static_cast<sf_count_t>(of(user).content.size()); }
    static sf_count_t tell(void* user) { return static_cast<sf_count_t>(of(user).at); }
    static sf_count_t read(void*, sf_count_t, void*) { return 0; }

    static sf_count_t seek(sf_count_t offset, int whence, void* user) {
        const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? tell(user) : length(user);
        of(user).at = static_cast<std::size_t>(std::max<sf_count_t>(base + offset, 0));
        return tell(user);
    }

    static sf_count_t write(const void* source, sf_count_t count, void* user) {
        MemoryTarget& target = of(user);
        const auto size = static_cast<std::size_t>(count);
        target.content.resize(std::max(target.content.size(), target.at + size));
        std::memcpy(target.content.data() + target.at, source, size);
        target.at += size;
        return count;
    }
};

}  // namespace

std::string headingOf(const Column& column) {
    const bool isInName = column.name.size() > column.unit.size() && column.name.back() == ')' &&
                          nameAndUnit(column.name).second == column.unit;
    return column.name + (column.unit.empty() || isInName ? "" : " (" + column.unit + ")");
}

void writeSampleTable(const Recording& recording, std::ostream& out) {
    out << "time (s)";
    for (const Column& column : recording.columns) {
        out << ',' << csvField(headingOf(column));
    }
    out << '\n';
    for (std::size_t k = 0; k < recording.length; ++k) {
        std::string row = plainText(secondsOf(k, recording));
        for (const Column& column : recording.columns) {
            row += "," + (std::isnan(column.samples[k]) ? "" : exactText(column.samples[k]));
        }
        out << row << '\n';
    }
}

void writeNumpy(const Recording& recording, std::ostream& out) {
    constexpr std::size_t beforeHeader = 12;  // magic, version 3.0 and the length of the header
    constexpr std::size_t alignment = 64;
    std::string header = numpyHeader(recording);
    header.resize((beforeHeader + header.size()) / alignment * alignment + alignment - beforeHeader - 1, ' ');
    header += '\n';
    out.write("\x93NUMPY\x03\x00", 8);
    for (std::size_t i = 0; i < 4; ++i) {
        out.put(static_cast<char>(header.size() >> (8 * i)));
    }
    out << header;
    for (std::size_t k = 0; k < recording.length; ++k) {
        writeDouble(secondsOf(k, recording), out);
        for (const Column& column : recording.columns) {
            writeDouble(column.samples[k], out);
        }
    }
}

std::string soundFile(const Recording& recording) {
    const double rateHz = recording.segments[0].rateHz;
    constexpr double mostRate = 2147483647.0;
    constexpr std::size_t mostChannels = 1024;
    if (rateHz != std::floor(rateHz) || rateHz > mostRate) {
        failUsage("WAV has whole rates only, and this one is " + exactText(rateHz) + " Hz; give --resample");
    }
    if (recording.columns.size() > mostChannels) {
        failUsage("a WAV file has at most 1024 columns; choose some with --only");
    }
    SF_VIRTUAL_IO access{MemoryTarget::length, MemoryTarget::seek, MemoryTarget::read, MemoryTarget::write,
                         MemoryTarget::tell};
    MemoryTarget target;
    SF_INFO info{};
    info.samplerate = static_cast<int>(rateHz);
    info.channels = static_cast<int>(recording.columns.size());
    const bool isLarge = recording.length * recording.columns.size() > (std::size_t{1} << 28U);
    info.format = (isLarge ? SF_FORMAT_RF64 : SF_FORMAT_WAV) | SF_FORMAT_DOUBLE;
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(sf_open_virtual(&access, SFM_WRITE, &info, &target), sf_close);
    if (!file) {
        failEnvironment(std::string("cannot write WAV: ") + sf_strerror(nullptr));
    }
    sf_command(file.get(), SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);  // it has the time of writing
    std::vector<double> frame(recording.columns.size());
    for (std::size_t k = 0; k < recording.length; ++k) {
        std::transform(recording.columns.begin(), recording.columns.end(), frame.begin(),
                       [k](const Column& column) { return column.samples[k]; });
        sf_writef_double(file.get(), frame.data(), 1);
    }
    file.reset();  // completes the header
    return std::move(target.content);
}

}  // namespace rt305

#ifndef RT305_HOST_CLI_RECORDING_NAMES_H
#define RT305_HOST_CLI_RECORDING_NAMES_H

#include <array>
#include <climits>
#include <deque>
#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <vector>

namespace rt305 {

/// The recordings that a name stands for, in the order of their paths. A folder: the recordings in it and in the
/// folders below, by their extensions (recordingExtensions); a .cfg file stands for its pair; what begins with a dot
/// and links to folders are left out. A folder that cannot be read is in the list, to fail as a recording without
/// stopping the others. A pattern with *, ? or [ that is no file: what it matches, of a pair only the .cfg file. Any
/// other name, and a pattern without matches: the name.
std::vector<std::string> recordingsNamed(const std::string& name);

/// What a recording in a folder ends with, besides ".gz".
inline constexpr const char* recordingExtensions[] = {".cff", ".cfg", ".csv", ".flac", ".tsv", ".wav"};

/// Fails on a folder without recordings.
std::vector<std::string> recordingsNamed(const std::vector<std::string>& names);

/// Recordings that were named, then those of a list with a name on each line.
class RecordingNames {
public:
    /// The list is a file; "-" is stdin; empty: none.
    RecordingNames(const std::vector<std::string>& files, const std::string& list);

    /// The next recording; nothing after the last, or where the list cannot be read any further.
    std::optional<std::string> next();

    /// Fails unless the list has been read to its end.
    void requireEnd() const;

private:
    [[noreturn]] void failList() const;

    std::deque<std::string> waiting_;
    std::string listName_;
    std::ifstream file_{};
    std::istream* list_;
    std::array<char, PATH_MAX + 2> line_{};
    std::size_t lineNumber_ = 0;
};

}  // namespace rt305

#endif

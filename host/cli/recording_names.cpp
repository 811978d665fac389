#include "cli/recording_names.h"

#include <glob.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <memory>
#include <string_view>

#include "base/failure.h"
#include "base/text.h"
#include "cli/open_file.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

/// A path without ".gz" and without its extension, and that extension in lower case.
struct SplitPath {
    explicit SplitPath(fs::path path) {
        if (lowerCase(path.extension().string()) == ".gz") {
            path.replace_extension();
        }
        extension = lowerCase(path.extension().string());
        stem = path.replace_extension().string();
    }
    std::string stem;
    std::string extension;
};

bool isRecording(const fs::path& path) {
    return std::find(std::begin(recordingExtensions), std::end(recordingExtensions), SplitPath(path).extension) !=
           std::end(recordingExtensions);
}

std::vector<std::string> recordingsInFolder(const std::string& folder) {
    std::vector<std::string> found;
    std::vector<std::string> waiting{folder};
    while (!waiting.empty()) {
        const std::string inside = std::move(waiting.back());
        waiting.pop_back();
        std::error_code error;
        for (auto entry = fs::directory_iterator(inside, error); !error && entry != end(entry);
             entry.increment(error)) {
            std::error_code ignored;
            const std::string path = entry->path().string();
            if (entry->path().filename().string()[0] == '.') {
                continue;
            }
            if (entry->symlink_status(ignored).type() == fs::file_type::directory) {
                waiting.push_back(path);
            } else if (entry->is_regular_file(ignored) && isRecording(path)) {
                found.push_back(path);
            }
        }
        if (error) {
            found.push_back(inside);
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// What a pattern matches, and the folders in its way that cannot be read.
std::vector<std::string> matchesOf(const std::string& pattern) {
    static std::vector<std::string> unreadable;
    unreadable.clear();
    const auto keep = [](const char* folder, int error) {
        if (error != ENOENT) {
            unreadable.emplace_back(folder);
        }
        return 0;
    };
    glob_t matches{};
    const std::unique_ptr<glob_t, decltype(&globfree)> owner(&matches, globfree);
    if (glob(pattern.c_str(), 0, keep, &matches) == GLOB_NOSPACE) {
        throw std::bad_alloc();
    }
    std::vector<std::string> all(matches.gl_pathv, matches.gl_pathv + matches.gl_pathc);
    all.insert(all.end(), unreadable.begin(), unreadable.end());
    return all;
}

/// Without the other files of COMTRADE records whose .cfg file is among them.
std::vector<std::string> withPairsOnce(const std::vector<std::string>& names) {
    std::vector<std::string> configurations;
    for (const std::string& name : names) {
        if (const SplitPath path(name); path.extension == ".cfg") {
            configurations.push_back(path.stem);
        }
    }
    std::sort(configurations.begin(), configurations.end());
    std::vector<std::string> once;
    std::copy_if(names.begin(), names.end(), std::back_inserter(once), [&configurations](const std::string& name) {
        const SplitPath path(name);
        const bool isOther = path.extension == ".dat" || path.extension == ".hdr" || path.extension == ".inf";
        return !isOther || !std::binary_search(configurations.begin(), configurations.end(), path.stem);
    });
    return once;
}

std::string_view withoutCarriageReturn(std::string_view line) {
    return line.substr(0, line.size() - (!line.empty() && line.back() == '\r' ? 1 : 0));
}

}  // namespace

std::vector<std::string> recordingsNamed(const std::string& name) {
    std::error_code ignored;
    if (isFolder(name)) {
        return recordingsInFolder(name);
    }
    if (name.find_first_of("*?[") == std::string::npos || fs::exists(name, ignored)) {
        return {name};
    }
    std::vector<std::string> recordings;
    for (const std::string& match : withPairsOnce(matchesOf(name))) {
        const auto inside = isFolder(match) ? recordingsInFolder(match) : std::vector{match};
        recordings.insert(recordings.end(), inside.begin(), inside.end());
    }
    return recordings.empty() ? std::vector{name} : recordings;
}

std::vector<std::string> recordingsNamed(const std::vector<std::string>& names) {
    std::vector<std::string> all;
    for (const std::string& name : names) {
        const auto some = recordingsNamed(name);
        if (some.empty()) {
            failInput(name + ": no recordings in this folder: no file ends with " +
                      joined({std::begin(recordingExtensions), std::end(recordingExtensions)}, "or") +
                      ", or with .gz behind that");
        }
        all.insert(all.end(), some.begin(), some.end());
    }
    return all;
}

RecordingNames::RecordingNames(const std::vector<std::string>& files, const std::string& list)
    : waiting_(files.begin(), files.end()),
      listName_(list == "-" ? "stdin" : list),
      list_(list == "-" ? &std::cin : nullptr) {
    if (!listName_.empty() && list_ == nullptr) {
        file_.open(listName_);
        list_ = &file_;
        if (!file_) {
            failList();
        }
    }
}

std::optional<std::string> RecordingNames::next() {
    while (waiting_.empty() && list_ != nullptr &&
           list_->getline(line_.data(), static_cast<std::streamsize>(line_.size()))) {
        ++lineNumber_;
        if (const std::string name(withoutCarriageReturn(line_.data())); !name.empty()) {
            const auto recordings = recordingsNamed(name);
            waiting_.assign(recordings.begin(), recordings.end());
            if (recordings.empty()) {
                return name;  // it fails as a recording
            }
        }
    }
    if (waiting_.empty()) {
        return std::nullopt;
    }
    std::string name = std::move(waiting_.front());
    waiting_.pop_front();
    return name;
}

void RecordingNames::requireEnd() const {
    if (list_ != nullptr && (list_->bad() || (list_ == &std::cin && std::ferror(stdin) != 0))) {
        failList();
    }
    if (list_ != nullptr && !list_->eof()) {
        failInput(listName_ + ": line " + std::to_string(lineNumber_ + 1) + " is too long for the name of a file");
    }
}

void RecordingNames::failList() const {
    failInput(listName_ + ": " + std::strerror(errno));
}

}  // namespace rt305

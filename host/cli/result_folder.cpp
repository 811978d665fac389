#include "cli/result_folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <new>

#include "base/checksum.h"
#include "base/text.h"
#include "base/text_encoding.h"
#include "base/version.h"
#include "cli/open_file.h"
#include "cli/output_file.h"
#include "output/json.h"

namespace rt305 {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void failFolder(const std::string& path, int error = errno) {
    throw FolderFailure(path + ": " + std::strerror(error));
}

int lock(int file, int operation) {
    int outcome = 0;
    do {
        outcome = flock(file, operation);
    } while (outcome != 0 && errno == EINTR);
    return outcome;
}

/// Removes the files that no process has locked.
void removeAbandoned(const std::string& folder) {
    std::error_code error;
    for (auto entry = fs::directory_iterator(folder, error); !error && entry != end(entry); entry.increment(error)) {
        const OpenFile file(entry->path().string(), O_RDWR);
        if (file.descriptor() >= 0 && lock(file.descriptor(), LOCK_EX | LOCK_NB) == 0) {
            unlink(entry->path().c_str());
        }
    }
}

/// Whether the last line of a file has no end: the process that wrote it was killed, or the disk was full.
bool isTorn(int file) {
    struct stat status {};
    char last = '\n';
    return fstat(file, &status) == 0 && status.st_size > 0 && pread(file, &last, 1, status.st_size - 1) == 1 &&
           last != '\n';
}

/// The name without the extension of a recording, short enough for a file name with more behind it.
std::string stemOf(const std::string& name) {
    constexpr std::size_t longest = 200;  // bytes
    fs::path path = name;
    if (path.extension() == ".gz" || path.extension() == ".GZ") {
        path = path.stem();
    }
    const std::string stem = path.stem().string();
    return isUtf8(stem) ? firstBytes(stem, longest) : firstBytes(percentEscaped(stem), longest);
}

}  // namespace

std::string ResultIdentity::fileName() const {
    constexpr std::size_t digits = 16;
    Json identity{{"tool", toolVersion}, {"library", library}, {"command", command}, {"options", jsonOf(options)}};
    for (const SourceFile& file : files) {
        identity["files"].push_back({percentEscaped(baseNameOf(file.name)), file.checksum});
    }
    return stemOf(baseNameOf(files.at(0).name)) + '-' + checksumOf(dumped(identity, false)).substr(0, digits) +
           ".jsonl";
}

ResultFolder::ResultFolder(const std::string& path) : path_(path) {
    std::error_code error;
    fs::create_directories(unfinishedFolder(), error);
    if (error) {
        throw FolderFailure(path + ": " + error.message());
    }
    removeAbandoned(unfinishedFolder());
}

bool ResultFolder::has(const std::string& result) const {
    std::error_code ignored;
    return fs::exists(path_ + "/" + result, ignored);
}

std::size_t ResultFolder::linesOf(const std::string& result) const {
    std::ifstream file(path_ + "/" + result, std::ios::binary);
    return static_cast<std::size_t>(
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n'));
}

void ResultFolder::log(const ManifestLine& line) const {
    Json json{{"command", line.command}};
    setName(json, line.file);
    json.update(
        {{"state", line.state}, {"seconds", line.seconds}, {"exit_code", line.exitCode}, {"windows", line.windows}});
    for (const auto& [key, text] :
         {std::pair{"result", line.result}, {"sha256", line.checksum}, {"error", line.error}}) {
        json[key] = text.empty() ? Json() : Json(text);
    }
    const std::string path = path_ + "/manifest.jsonl";
    const OpenFile file(path, O_RDWR | O_APPEND | O_CREAT);
    if (file.descriptor() < 0) {
        failFolder(path);
    }
    // Local file systems append whole lines without a lock; those of a network need it to find the end of the file.
    static_cast<void>(lock(file.descriptor(), LOCK_EX));
    const std::string text = (isTorn(file.descriptor()) ? "\n" : "") + dumped(json, false);
    if (write(file.descriptor(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        failFolder(path);
    }
}

std::vector<std::string> failedFilesIn(const std::string& folder, const std::string& command) {
    const std::string path = folder + "/manifest.jsonl";
    std::ifstream manifest(path, std::ios::binary);
    if (!manifest) {
        failInput(path + ": " + std::strerror(errno));
    }
    std::vector<std::string> files;
    std::map<std::string, bool> hasFailed;
    for (std::string text; std::getline(manifest, text);) {
        const Json line = Json::parse(text, nullptr, false);
        if (!line.is_object() || line.value("command", "") != command) {
            continue;
        }
        const std::string file = nameIn(line);
        if (hasFailed.insert_or_assign(file, line.value("state", "") == stateFailed).second) {
            files.push_back(file);
        }
    }
    files.erase(std::remove_if(files.begin(), files.end(), [&](const auto& file) { return !hasFailed[file]; }),
                files.end());
    return files;
}

UnfinishedResult::UnfinishedResult(const ResultFolder& folder) : folder_(folder) {
    struct stat status {};
    do {  // until no other process has taken the file for one that was left
        if (file_ >= 0) {
            close(file_);
        }
        path_ = folder.unfinishedFolder() + "/XXXXXX";
        file_ = mkstemp(path_.data());
        if (file_ < 0 || fchmod(file_, modeOfNewFile()) != 0) {
            failFolder(folder.path());
        }
        static_cast<void>(lock(file_, LOCK_EX));
    } while (fstat(file_, &status) == 0 && status.st_nlink == 0);
    buffer_.emplace(file_);
    stream_.rdbuf(&*buffer_);
}

UnfinishedResult::~UnfinishedResult() {
    if (file_ >= 0) {
        if (!path_.empty()) {
            unlink(path_.c_str());
        }
        close(file_);
    }
}

void UnfinishedResult::finish(const std::string& result) {
    stream_.flush();
    if (!stream_) {
        failFolder(folder_.path() + "/" + result, buffer_->error());
    }
    if (fsync(file_) != 0 || std::rename(path_.c_str(), (folder_.path() + "/" + result).c_str()) != 0) {
        failFolder(folder_.path() + "/" + result);
    }
    path_.clear();
}

}  // namespace rt305

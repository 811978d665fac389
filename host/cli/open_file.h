#ifndef RT305_HOST_CLI_OPEN_FILE_H
#define RT305_HOST_CLI_OPEN_FILE_H

#include <array>
#include <streambuf>
#include <string>

namespace rt305 {

/// Whether a path is a folder or a regular file; false where that cannot be found out.
bool isFolder(const std::string& path);
bool isRegularFile(const std::string& path);

/// A file that is closed, and so unlocked, at the end.
class OpenFile {
public:
    /// `flags` are those of open(). The descriptor is negative if that failed.
    OpenFile(const std::string& path, int flags);
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { close(); }

    int descriptor() const { return file_; }

    /// Whether all that was written has arrived: some file systems say so only here.
    bool close();

private:
    int file_;
};

/// Writes a stream to a file descriptor, which it does not close, and keeps the cause of the first failure: errno
/// itself is that of whatever failed last.
class DescriptorBuffer : public std::streambuf {
public:
    explicit DescriptorBuffer(int descriptor);
    DescriptorBuffer(const DescriptorBuffer&) = delete;
    DescriptorBuffer& operator=(const DescriptorBuffer&) = delete;

    /// The errno of the first write that failed; 0 if none did.
    int error() const { return error_; }

protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize count) override;
    int sync() override;

private:
    bool write(const char* text, std::streamsize count);

    int descriptor_;
    int error_ = 0;
    std::array<char, 65536> waiting_;
};

}  // namespace rt305

#endif

#include "cli/open_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace rt305 {

bool isFolder(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_directory(path, ignored);
}

bool isRegularFile(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

OpenFile::OpenFile(const std::string& path, int flags) : file_(open(path.c_str(), flags | O_CLOEXEC, 0666)) {}

bool OpenFile::close() {
    return file_ < 0 || ::close(std::exchange(file_, -1)) == 0;
}

DescriptorBuffer::DescriptorBuffer(int descriptor) : descriptor_(descriptor) {
    setp(waiting_.begin(), waiting_.end());
}

DescriptorBuffer::int_type DescriptorBuffer::overflow(int_type c) {
    if (sync() != 0) {
        return traits_type::eof();
    }
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : sputc(traits_type::to_char_type(c));
}

std::streamsize DescriptorBuffer::xsputn(const char* text, std::streamsize count) {
    if (count < epptr() - pptr()) {
        return std::streambuf::xsputn(text, count);
    }
    return sync() == 0 && write(text, count) ? count : 0;
}

int DescriptorBuffer::sync() {
    const bool isWritten = write(pbase(), pptr() - pbase());
    setp(waiting_.begin(), waiting_.end());
    return isWritten ? 0 : -1;
}

bool DescriptorBuffer::write(const char* text, std::streamsize count) {
    while (error_ == 0 && count > 0) {
        const ssize_t written = ::write(descriptor_, text, static_cast<std::size_t>(count));
        if (written >= 0) {
            text += written;
            count -= written;
        } else if (errno != EINTR) {
            error_ = errno;
        }
    }
    return error_ == 0;
}

}  // namespace rt305

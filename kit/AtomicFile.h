// AtomicFile: a file written beside its destination and renamed over it only when whole.
#pragma once

#include <cstddef>
#include <string>

namespace kit {

/// Writes a file whole or not at all: the bytes go into a new file beside `path`, which is
/// flushed to the disk and renamed over `path` by commit(). Until then, and whatever fails on
/// the way (a full disk, a file size limit, a folder that is not there), the file that was at
/// `path` stays as it was; an uncommitted file removes what it wrote when it goes.
class AtomicFile {
public:
    explicit AtomicFile(std::string path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Appends bytes; false (and error() says why) once anything has failed.
    bool write(const void* bytes, std::size_t length);
    /// Flushes, gives the file the usual permissions and renames it over the destination.
    bool commit();
    /// Names the destination and the reason, after a failure.
    const std::string& error() const { return m_error; }

private:
    bool fail(int code);
    void abandon();

    std::string m_path;
    std::string m_temporary;
    int m_fd = -1;
    std::string m_error;
};

} // namespace kit

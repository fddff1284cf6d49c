// AtomicFile: a file written beside its destination and renamed over it only when whole.
#include "kit/AtomicFile.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

namespace kit {

namespace {

// The process's file creation mask, read without changing it (umask() can only set it, which
// would race with files other threads create).
mode_t currentUmask()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("Umask:", 0) == 0)
            return mode_t(std::strtoul(line.c_str() + 6, nullptr, 8));
    }
    return 022;
}

} // namespace

AtomicFile::AtomicFile(std::string path) : m_path(std::move(path)), m_temporary(m_path + ".XXXXXX")
{
    m_fd = mkostemp(m_temporary.data(), O_CLOEXEC);
    if (m_fd < 0)
        fail(errno);
}

AtomicFile::~AtomicFile() { abandon(); }

bool AtomicFile::fail(int code)
{
    if (m_error.empty())
        m_error = "cannot write " + m_path + ": " + std::strerror(code);
    abandon();
    return false;
}

void AtomicFile::abandon()
{
    if (m_fd < 0)
        return;
    ::close(m_fd);
    ::unlink(m_temporary.c_str());
    m_fd = -1;
}

bool AtomicFile::write(const void* bytes, std::size_t length)
{
    if (m_fd < 0)
        return false;
    const auto* first = static_cast<const char*>(bytes);
    for (std::size_t done = 0; done < length;) {
        const ssize_t wrote = ::write(m_fd, first + done, length - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            return fail(wrote < 0 ? errno : ENOSPC);
        done += std::size_t(wrote);
    }
    return true;
}

bool AtomicFile::commit()
{
    if (m_fd < 0)
        return false;
    // mkostemp makes the file private; a saved file gets the usual permissions.
    if (::fchmod(m_fd, 0666 & ~currentUmask()) != 0 || ::fsync(m_fd) != 0)
        return fail(errno);
    const int fd = m_fd;
    m_fd = -1;
    if (::close(fd) != 0 || ::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
        const int code = errno;
        ::unlink(m_temporary.c_str());
        return fail(code);
    }
    return true;
}

} // namespace kit

// Data: copying and wrapping byte blocks.
#include "kit/Data.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kit {

Data::Data(std::vector<std::uint8_t> copy) : m_copy(std::move(copy)), m_bytes(m_copy.data()), m_length(m_copy.size()) {}

Data::~Data()
{
    if (m_freeWhenDone)
        std::free(m_bytes);
}

RefPtr<Data> Data::dataWithBytes(const void* bytes, std::size_t length)
{
    if (!bytes && length)
        return nullptr;
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    return adoptRef(new Data(std::vector<std::uint8_t>(first, first + length)));
}

RefPtr<Data> Data::dataWithBytesNoCopy(void* bytes, std::size_t length, bool freeWhenDone)
{
    if (!bytes && length)
        return nullptr;
    return adoptRef(new Data(static_cast<std::uint8_t*>(bytes), length, freeWhenDone));
}

bool Data::writeToFileAtomically(const std::string& path, std::string* error) const
{
    auto fail = [&](int code) {
        if (error)
            *error = "cannot write " + path + ": " + std::strerror(code);
        return false;
    };
    std::string temporary = path + ".XXXXXX";
    const int fd = mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0)
        return fail(errno);
    auto abandon = [&](int code) {
        ::close(fd);
        ::unlink(temporary.c_str());
        return fail(code);
    };
    for (std::size_t done = 0; done < m_length;) {
        const ssize_t wrote = ::write(fd, m_bytes + done, m_length - done);
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            return abandon(wrote < 0 ? errno : ENOSPC);
        done += std::size_t(wrote);
    }
    // mkostemp makes the file private; a saved file gets the usual permissions.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::fchmod(fd, 0666 & ~mask) != 0 || ::fsync(fd) != 0)
        return abandon(errno);
    if (::close(fd) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return fail(code);
    }
    if (::rename(temporary.c_str(), path.c_str()) != 0) {
        const int code = errno;
        ::unlink(temporary.c_str());
        return fail(code);
    }
    return true;
}

} // namespace kit

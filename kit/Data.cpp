// Data: copying and wrapping byte blocks.
#include "kit/Data.h"

#include "kit/AtomicFile.h"

#include <cstdlib>

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
    AtomicFile file(path);
    if (file.write(m_bytes, m_length) && file.commit())
        return true;
    if (error)
        *error = file.error();
    return false;
}

} // namespace kit

// Data: a byte block handed to the kit, copied or wrapped as the caller says.
#pragma once

#include "kit/Object.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace kit {

/// Immutable bytes. A wrapping data object reads the caller's memory in place; the caller keeps
/// it alive, and frees it, unless the data was told to free it with free().
class Data final : public Object {
public:
    static RefPtr<Data> dataWithBytes(const void* bytes, std::size_t length);
    static RefPtr<Data> dataWithBytesNoCopy(void* bytes, std::size_t length, bool freeWhenDone);

    const std::uint8_t* bytes() const { return m_bytes; }
    std::size_t length() const { return m_length; }
    /// Writes the bytes to `path` whole or not at all (see AtomicFile); on failure `error` names
    /// the path and the reason.
    bool writeToFileAtomically(const std::string& path, std::string* error = nullptr) const;

private:
    Data(std::uint8_t* bytes, std::size_t length, bool freeWhenDone)
        : m_bytes(bytes), m_length(length), m_freeWhenDone(freeWhenDone)
    {
    }
    explicit Data(std::vector<std::uint8_t> copy);
    ~Data() override;

    std::vector<std::uint8_t> m_copy;
    std::uint8_t* m_bytes;
    std::size_t m_length;
    bool m_freeWhenDone = false;
};

} // namespace kit

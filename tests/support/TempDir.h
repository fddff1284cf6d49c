// TempDir: a fresh folder for a test, removed with everything in it afterwards.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <stdlib.h>

class TempDir {
public:
    TempDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "qm-test-XXXXXX").string();
        m_path = mkdtemp(pattern.data()) ? pattern : std::string();
    }
    ~TempDir()
    {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    /// Writes a file below the folder, making the folders on the way.
    std::filesystem::path write(const std::string& relative, const std::string& text) const
    {
        const auto file = m_path / relative;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }

private:
    std::filesystem::path m_path;
};

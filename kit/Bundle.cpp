// Bundle: paths under a bundle's resource folder.
#include "kit/Bundle.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace kit {

Bundle& Bundle::mainBundle()
{
    static Bundle* bundle = [] {
        std::error_code ec;
        const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
        return new Bundle(ec ? std::string() : exe.parent_path().parent_path().parent_path().string());
    }();
    return *bundle;
}

RefPtr<Bundle> Bundle::bundleWithPath(const std::string& path)
{
    std::error_code ec;
    if (path.empty() || !fs::is_directory(path, ec))
        return nullptr;
    return adoptRef(new Bundle(fs::path(path).lexically_normal().string()));
}

std::string Bundle::resourcePath() const { return (fs::path(m_path) / "Contents" / "Resources").string(); }

std::optional<std::string> Bundle::pathForResource(
    const std::string& name, const std::string& type, const std::string& directory) const
{
    if (m_path.empty() || name.empty())
        return std::nullopt;
    const std::string file = type.empty() ? name : name + "." + type;
    const fs::path path = (fs::path(resourcePath()) / directory / file).lexically_normal();
    std::error_code ec;
    if (!fs::exists(path, ec))
        return std::nullopt;
    return path.string();
}

const StringsTable* Bundle::table(const std::string& name) const
{
    auto it = m_tables.find(name);
    if (it == m_tables.end()) {
        std::optional<StringsTable> loaded;
        if (auto path = pathForResource(name, "strings"))
            loaded = StringsTable::load(*path);
        it = m_tables.emplace(name, std::move(loaded)).first;
    }
    return it->second ? &*it->second : nullptr;
}

std::string Bundle::localizedString(const std::string& key, const std::string& value, const std::string& table) const
{
    if (const StringsTable* strings = this->table(table.empty() ? "Localizable" : table)) {
        if (const std::string* found = strings->find(key))
            return *found;
    }
    return value.empty() ? key : value;
}

} // namespace kit

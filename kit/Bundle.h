// Bundle: a folder with Contents/Resources, resource lookup and localised strings.
#pragma once

#include "kit/Object.h"
#include "kit/StringsTable.h"

#include <map>
#include <optional>
#include <string>

namespace kit {

class Bundle final : public Object {
public:
    /// The application's bundle: the folder two levels above the running executable
    /// (`…/X.app` for `…/X.app/Contents/bin/program`). Made on first use.
    static Bundle& mainBundle();
    /// A bundle object for an existing folder, or null.
    static RefPtr<Bundle> bundleWithPath(const std::string& path);

    const std::string& bundlePath() const { return m_path; }
    /// `<bundle>/Contents/Resources`.
    std::string resourcePath() const;
    /// `<resource folder>/<directory>/<name>.<type>`, normalised, when that file or folder
    /// exists; the type may be empty (no dot is added then).
    std::optional<std::string> pathForResource(
        const std::string& name, const std::string& type, const std::string& directory = {}) const;

    /// The value for `key` in the strings table `table` (default "Localizable") of the
    /// resource folder; `value`, or the key itself when `value` is empty, when there is none.
    std::string localizedString(
        const std::string& key, const std::string& value = {}, const std::string& table = {}) const;

private:
    explicit Bundle(std::string path) : m_path(std::move(path)) {}
    const StringsTable* table(const std::string& name) const;

    std::string m_path;
    mutable std::map<std::string, std::optional<StringsTable>> m_tables;
};

} // namespace kit

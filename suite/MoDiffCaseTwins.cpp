#include "MoDiffCaseTwins.h"

#include <filesystem>
#include <unicode/unistr.h>

namespace fs = std::filesystem;

namespace {

/// A name as it is when case doesn't count.
std::string folded(std::string const& name) {
    std::string result;
    icu::UnicodeString::fromUTF8(name).foldCase().toUTF8String(result);
    return result;
}

} // namespace

std::string MoDiffCaseTwins::find(std::string const& path) {
    fs::path const wanted(path);
    list(wanted.parent_path().string());
    std::string const name = wanted.filename().string();
    auto const [first, last] = m_names.equal_range(folded(name));
    for (auto entry = first; entry != last; ++entry)
        if (entry->second != name)
            return (wanted.parent_path() / entry->second).string();
    return "";
}

void MoDiffCaseTwins::list(std::string const& directory) {
    if (m_isListed && directory == m_directory)
        return;
    m_isListed = true;
    m_directory = directory;
    m_names.clear();
    std::error_code error; // a directory that cannot be read has no twins to offer
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
        std::string name = entry->path().filename().string();
        m_names.emplace(folded(name), std::move(name));
    }
}

#include "MoDiffPageDirectory.h"

#include "MoDiffOutputFile.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace fs = std::filesystem;

char const MoDiffPageDirectory::kListName[] = "modiff-report.txt";

namespace {

char const kHeader[] = "Pages of modiff report, which the next report into this directory may replace or remove:";
std::size_t const kPairNameLength = 32; // hex digits
char const kPairs[] = "pairs/";
char const kEnding[] = ".html";

/// Whether a name is one that pages have; nobody else's line in the list leads anywhere.
bool isPage(std::string const& name) {
    if (name == "index.html")
        return true;
    std::size_t const begin = sizeof kPairs - 1;
    return name.size() == begin + kPairNameLength + sizeof kEnding - 1 && name.compare(0, begin, kPairs) == 0 &&
           name.find_first_not_of("0123456789abcdef", begin) == begin + kPairNameLength &&
           name.compare(begin + kPairNameLength, sizeof kEnding - 1, kEnding) == 0;
}

/// Whether a name is that of a page which was being written, "index.html.AbCdEf".
bool isTemporaryPage(std::string const& name) {
    std::size_t const suffix = 7;
    return name.size() > suffix && name[name.size() - suffix] == '.' && isPage(name.substr(0, name.size() - suffix));
}

} // namespace

MoDiffPageDirectory::MoDiffPageDirectory(std::string directory, std::set<std::string> files)
    : m_directory(std::move(directory)), m_files(std::move(files)) {
    readList();
    for (std::string const& file : m_files)
        if (m_older.count(file) == 0 && fs::exists(fs::symlink_status(fs::path(m_directory) / file)))
            throw std::runtime_error(m_directory + "/" + file +
                                     " is there and no page of an earlier report; choose another directory");
    fs::create_directories(fs::path(m_directory) / kPairs);
    std::set<std::string> both = m_files;
    both.insert(m_older.begin(), m_older.end());
    writeList(both);
}

void MoDiffPageDirectory::readList() {
    std::ifstream list(m_directory + "/" + kListName);
    std::string line;
    if (!list.is_open())
        return;
    if (!std::getline(list, line) || line != kHeader)
        throw std::runtime_error(m_directory + "/" + kListName + " is no list of pages; choose another directory");
    while (std::getline(list, line))
        if (isPage(line))
            m_older.insert(line);
}

void MoDiffPageDirectory::writeList(std::set<std::string> const& files) const {
    std::string text = std::string(kHeader) + "\n";
    for (std::string const& file : files)
        text += file + "\n";
    write(kListName, text);
}

void MoDiffPageDirectory::write(std::string const& file, std::string_view contents) const {
    MoDiffOutputFile::replace(m_directory + "/" + file, contents, 0644, MoDiffOutputFile::eSoon);
}

void MoDiffPageDirectory::removeOthers() const {
    std::error_code ignored;
    for (std::string const& file : m_older)
        if (m_files.count(file) == 0)
            fs::remove(fs::path(m_directory) / file, ignored);
    for (std::string const folder : {"", kPairs})
        for (fs::directory_entry const& entry : fs::directory_iterator(fs::path(m_directory) / folder, ignored))
            if (isTemporaryPage(folder + entry.path().filename().string()))
                fs::remove(entry.path(), ignored);
    writeList(m_files);
}

#ifndef MO_DIFF_PAGE_DIRECTORY_H
#define MO_DIFF_PAGE_DIRECTORY_H

#include <set>
#include <string>
#include <string_view>

/// The directory that pages are written into. Which files in it are pages of a report stands in a list there, so that
/// nothing else is ever replaced or removed; the list names a page before it is written. A page takes the place of an
/// older one when it is whole.
class MoDiffPageDirectory {
public:
    static char const kListName[]; ///< "modiff-report.txt"

    /// Makes the directory. Raises std::exception when it cannot be used, or when a file in it has the name of a page
    /// and is none.
    /// @param files the pages that are going to be written: names with slashes from the directory
    MoDiffPageDirectory(std::string directory, std::set<std::string> files);

    void write(std::string const& file, std::string_view contents) const;
    /// Removes pages of an older report and what interrupted ones left.
    void removeOthers() const;

private:
    void readList();
    void writeList(std::set<std::string> const& files) const;

    std::string m_directory;
    std::set<std::string> m_files;
    std::set<std::string> m_older; ///< as the list has them
};

#endif

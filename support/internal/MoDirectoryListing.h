#ifndef MO_DIRECTORY_LISTING_H
#define MO_DIRECTORY_LISTING_H

#include <memory>
#include <string>
#include <vector>

/// The names in a directory in ascending byte order, remembered between uses.
///
/// A remembered listing is used again only when it cannot hide a file: the directory lies on a local file system,
/// whose change time the kernel keeps, that time is the same as when the directory was read, and it was then already
/// old enough for a later change to show. May be made and used from several threads at once.
class MoDirectoryListing {
public:
    using Names = std::vector<std::string>;

    /// Reads the directory or takes a remembered listing; one that cannot be read is empty.
    explicit MoDirectoryListing(std::string const& directory);

    /// Forgets all remembered listings.
    static void forgetAll();

    /// The first name that is not less than the given text.
    Names::const_iterator firstFrom(std::string const& text) const;
    Names::const_iterator end() const { return m_names->end(); }

    /// Tells whether a path leads to a directory; false also when it leads nowhere.
    static bool isDirectory(std::string const& path);

private:
    std::shared_ptr<Names const> m_names;
};

#endif

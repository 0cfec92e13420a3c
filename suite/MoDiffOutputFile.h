#ifndef MO_DIFF_OUTPUT_FILE_H
#define MO_DIFF_OUTPUT_FILE_H

#include <string>
#include <string_view>

/// A file that is written without a buffer, so that every failure shows at once. Errors raise std::system_error.
class MoDiffOutputFile {
public:
    /// Creates or empties the file.
    explicit MoDiffOutputFile(std::string const& name);
    ~MoDiffOutputFile();
    MoDiffOutputFile(MoDiffOutputFile const&) = delete;
    MoDiffOutputFile& operator=(MoDiffOutputFile const&) = delete;

    /// Writes all of the bytes, in one piece as far as the system allows.
    void write(std::string_view bytes);

    enum Synchronization { eNow, eSoon };
    /// Puts a file with these contents and permission bits in the place of whatever has the name. Until it is
    /// complete, what stood there stays.
    /// @param synchronization whether it is to be on the disk when the call returns, rather than soon
    static void replace(std::string const& name, std::string_view contents, unsigned permissions,
                        Synchronization synchronization = eNow);

private:
    MoDiffOutputFile(std::string const& name, int descriptor);

    std::string m_name;
    int m_descriptor;
};

#endif

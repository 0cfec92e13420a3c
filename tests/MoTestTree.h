#ifndef MO_TEST_TREE_H
#define MO_TEST_TREE_H

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <stdlib.h>
#include <string>

/// A fresh directory with server/run, which becomes the working directory, and server/webcontent beside it; left and
/// removed at the end of the scope.
class MoTestTree {
public:
    MoTestTree() : m_previous(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "modiff-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make " + name);
        m_root = name;
        std::filesystem::create_directories(m_root / "server/webcontent");
        std::filesystem::create_directories(m_root / "server/run");
        std::filesystem::current_path(m_root / "server/run");
    }
    ~MoTestTree() {
        std::error_code ignored;
        std::filesystem::current_path(m_previous, ignored);
        std::filesystem::remove_all(m_root, ignored);
    }
    MoTestTree(MoTestTree const&) = delete;
    MoTestTree& operator=(MoTestTree const&) = delete;

    std::filesystem::path const& root() const { return m_root; }

    /// Writes a file and makes the directories above it.
    static void write(std::filesystem::path const& path, std::string const& content) {
        if (path.has_parent_path())
            std::filesystem::create_directories(path.parent_path());
        if (!(std::ofstream(path, std::ios::binary) << content).flush())
            throw std::runtime_error("cannot write " + path.string());
    }
    /// A file's content; "(none)" when it cannot be opened.
    static std::string read(std::filesystem::path const& path) {
        std::ifstream in(path, std::ios::binary);
        return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(none)";
    }
    /// The number of entries in a directory; "/proc/self/fd" tells the open descriptors.
    static long count(char const* directory) {
        namespace fs = std::filesystem;
        return static_cast<long>(std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
    }

private:
    std::filesystem::path m_previous;
    std::filesystem::path m_root;
};

#endif

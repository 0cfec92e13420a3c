#ifndef MO_DIFF_FILE_ENGINE_H
#define MO_DIFF_FILE_ENGINE_H

#include "MoDiffEngine.h"

#include <list>
#include <string>

class MoDiffResult;

/// Base of all format engines: finds the masters of a report, pairs each with the actual file of the same name in
/// the format's output directory, has the pair compared and delivers the result.
///
/// The path given to verifyOutput() only locates the masters; the file itself need not exist. Masters lie in the
/// folder "Masters" beside it, actual files in "../webcontent/" below the process's working directory. An engine is
/// not changed by any operation and used from one thread at a time.
class KLT_EXPORT MoDiffFileEngine : public MoDiffEngine {
public:
    /// @param subDirectory a directory below both the masters' and the output directory; null or empty for none.
    ///        The text is not copied: it must stay alive and unchanged as long as the engine.
    explicit MoDiffFileEngine(char const* subDirectory);
    ~MoDiffFileEngine() override;

    /// Delivers one result, which must outlive it, to one listener at a time.
    class KLT_EXPORT Notifier {
    public:
        explicit Notifier(MoDiffResult const& result) : m_result(result) {}
        /// A null listener raises KLTAssertError.
        void operator()(MoDiffListener* listener) const;

    private:
        MoDiffResult const& m_result;
    };

    /// Compares every master that the glob finds, in its order; each yields one result. Without a master nothing is
    /// reported. An error raised by a comparison or a listener passes through; the remaining masters are not
    /// compared.
    void verifyOutput(std::set<MoDiffListener*> const& listeners, char const* actualFileName) const override;
    /// The last step of the output directory, for example "v5DebugCSV".
    virtual std::string getOutputDirectoryTypeName() const = 0;
    /// The pattern that finds the masters of an actual file; the body here takes *report\*.pdf* in the master
    /// directory.
    virtual std::string getMasterFileGlobExpression(std::string const& actualFile) const = 0;
    /// Compares an existing master with an existing actual file.
    /// @return a new result that the caller owns; never null
    virtual MoDiffResult* performDiff(std::string const& masterFile, std::string const& actualFile) const = 0;
    /// Appends the files that match a pattern; see MoGlob::globFiles.
    virtual void globFiles(char const* pattern, std::list<std::string>& files) const;
    /// Tells whether a regular file readable by its owner is at the path.
    virtual bool doesFileExist(std::string const& path) const;

    /// "../webcontent/" + type name (+ "/" + sub-directory).
    std::string getOutputDirectory() const;
    /// The actual file's directory + "/Masters" (+ "/" + sub-directory).
    std::string getMasterFileDirectory(std::string const& actualFile) const;
    /// The actual file's name without directory and extension.
    std::string getReportName(std::string const& actualFile) const;
    /// The file in the output directory that has the master's name.
    std::string getActualFile(std::string const& masterFile) const;
    /// Compares one master with its actual file and delivers the result; a missing actual file is a result, too.
    void compareMaster(std::string const& masterFile, std::set<MoDiffListener*> const& listeners) const;
    /// Delivers a result to every listener in the set's order. A null listener raises KLTAssertError. A listener may
    /// change the set meanwhile: one that has been removed is told nothing more, one that has been added may be.
    void notifyListeners(std::set<MoDiffListener*> const& listeners, MoDiffResult const& result) const;

    /// Compares two files byte for byte, holding two blocks of them in memory.
    /// @return a new result that the caller owns: pass, different, or file missing when one cannot be opened, the
    ///         master first. A read error counts as a difference.
    static MoDiffResult* areFilesIdentical(std::string const& masterFile, std::string const& actualFile);

private:
    bool hasSubDirectory() const;

    char const* m_subDirectory;
};

#endif

#ifndef MO_DIFF_RESULT_H
#define MO_DIFF_RESULT_H

#include "KLTExport.h"

#include <string>

class MoDiffListener;

/// The outcome of comparing one master file with one actual file. Immutable. Made with new by a comparison and owned
/// by its caller, who deletes it; a listener may use it only during the notification.
class KLT_EXPORT MoDiffResult {
public:
    virtual ~MoDiffResult();
    MoDiffResult(MoDiffResult const&) = default;
    MoDiffResult& operator=(MoDiffResult const&) = delete;

    /// Calls the listener's notification for this result's class.
    virtual void notifyListener(MoDiffListener& listener) const = 0;
    /// True only for MoDiffResultPass.
    virtual bool isPassed() const = 0;

    /// The paths exactly as the comparison was given them; valid as long as this object.
    std::string const& getMasterName() const { return m_masterName; }
    std::string const& getActualName() const { return m_actualName; }

protected:
    MoDiffResult(std::string const& masterName, std::string const& actualName);

private:
    std::string m_masterName;
    std::string m_actualName;
};

#endif

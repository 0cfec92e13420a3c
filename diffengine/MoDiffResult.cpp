#include "MoDiffResult.h"

MoDiffResult::MoDiffResult(std::string const& masterName, std::string const& actualName)
    : m_masterName(masterName), m_actualName(actualName) {
}

MoDiffResult::~MoDiffResult() = default;

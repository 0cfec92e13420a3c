#include "MoDiffWorkflowPause.h"

#include <ostream>
#include <random>

namespace {

std::string randomToken() {
    std::random_device numbers;
    std::string token = "modiff";
    for (int count = 0; count < 4; ++count)
        token += "-" + std::to_string(numbers());
    return token;
}

} // namespace

MoDiffWorkflowPause::MoDiffWorkflowPause(std::ostream& out) : m_out(out), m_token(randomToken()) {
    m_out << "::stop-commands::" << m_token << std::endl;
}

MoDiffWorkflowPause::~MoDiffWorkflowPause() {
    m_out << "::" << m_token << "::" << std::endl;
}

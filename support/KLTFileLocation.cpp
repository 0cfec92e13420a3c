#include "KLTFileLocation.h"

KLTFileLocation::KLTFileLocation(char const* fileName, int line)
    : m_fileName(fileName ? fileName : ""), m_line(line) {
}

#include "MoDiffCleansedText.h"

#include "MoDiffCleansingMap.h"
#include "MoDiffFileContent.h"
#include "MoDiffNormalizationPatterns.h"

#include <algorithm>
#include <stdexcept>
#include <xxhash.h>

namespace {

void dropBehindNul(std::string& file) {
    file.resize(std::min(file.find('\0'), file.size()));
}

std::uint64_t hashOf(std::string_view file) {
    return XXH3_64bits(file.data(), file.size());
}

} // namespace

MoDiffCleansedText::MoDiffCleansedText(std::string file, MoDiffLib::Patterns const& patterns)
    : m_text(std::move(file)) {
    dropBehindNul(m_text);
    m_fileHash = hashOf(m_text);
    MoPackedRanges stretches;
    MoDiffCleansingMap::cleanse(m_text, patterns, [&stretches](MoDiffCleansingMap::Stretch const& stretch) {
        stretches.append({stretch.begin, stretch.length, stretch.step});
    });
    m_hidden = MoDiffHiddenStretches(std::move(stretches));
    m_isWhole = m_hidden.isEmpty();
    m_names = {"CarriageReturn"};
    for (MoDiffNormalizationPattern const* const pattern : patterns)
        m_names.push_back(MoDiffNormalizationPatterns::nameOf(pattern));
}

MoDiffSourceText MoDiffCleansedText::takeFile(std::string const& name) {
    if (m_isWhole)
        return MoDiffSourceText(std::move(m_text));
    std::string().swap(m_text); // frees its memory before the file takes as much
    std::string file = MoDiffFileContent::read(name);
    dropBehindNul(file);
    if (hashOf(file) != m_fileHash)
        throw std::runtime_error(name + " changed while it was looked at");
    return sourceOf(std::move(file));
}

MoDiffSourceText MoDiffCleansedText::takeBack(std::string file) {
    dropBehindNul(file);
    return sourceOf(std::move(file));
}

MoDiffSourceText MoDiffCleansedText::sourceOf(std::string file) {
    return {std::move(file), std::move(m_hidden), std::move(m_names)};
}

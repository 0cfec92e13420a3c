#include "MoDiffDecisions.h"

#include "MoDiffOutputFile.h"
#include "MoDiffRecordText.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <unistd.h>

namespace {

std::string const kWords[] = {"accept", "reject"}; // in the order of Choice

std::string textOf(nlohmann::json const& object, char const* key) {
    return MoDiffRecordText::bytesOf(object.at(key).get_ref<std::string const&>());
}

MoDiffDecisions::Decision decisionOf(nlohmann::json const& object) {
    std::string const word = textOf(object, "decision");
    if (word != kWords[MoDiffDecisions::eAccept] && word != kWords[MoDiffDecisions::eReject])
        throw std::runtime_error("there is no decision " + word);
    return {word == kWords[MoDiffDecisions::eReject] ? MoDiffDecisions::eReject : MoDiffDecisions::eAccept,
            textOf(object, "remark"),
            {textOf(object.at("hash"), "master"), textOf(object.at("hash"), "actual")}};
}

} // namespace

MoDiffDecisions::MoDiffDecisions(std::string const& directory) : m_file(directory + "/decisions.jsonl") {
    std::ifstream file(m_file, std::ios::binary);
    std::size_t number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        try {
            nlohmann::json const object = nlohmann::json::parse(line);
            m_decisions[textOf(object, "pair")] = decisionOf(object);
        } catch (std::exception const& error) {
            throw std::runtime_error(m_file + ":" + std::to_string(number) + ": " + error.what());
        }
    }
}

MoDiffDecisions::Decision const* MoDiffDecisions::find(MoDiffPairResult const& pair) const {
    auto const found = m_decisions.find(pair.id);
    if (found == m_decisions.end())
        return nullptr;
    MoDiffBothSides<std::string> const& hash = found->second.hash;
    return hash.master == pair.hash.master && hash.actual == pair.hash.actual ? &found->second : nullptr;
}

void MoDiffDecisions::set(MoDiffPairResult const& pair, Choice choice, std::string const& remark) {
    m_decisions[pair.id] = {choice, remark, pair.hash};
}

void MoDiffDecisions::save() const {
    if (m_decisions.empty()) {
        unlink(m_file.c_str());
        return;
    }
    std::string lines;
    for (auto const& [id, decision] : m_decisions)
        lines += "{\"pair\":" + MoDiffRecordText::quoted(id) +
                 ",\"decision\":" + MoDiffRecordText::quoted(kWords[decision.choice]) +
                 ",\"remark\":" + MoDiffRecordText::quoted(decision.remark) +
                 ",\"hash\":{\"master\":" + MoDiffRecordText::quoted(decision.hash.master) +
                 ",\"actual\":" + MoDiffRecordText::quoted(decision.hash.actual) + "}}\n";
    MoDiffOutputFile::replace(m_file, lines, 0644);
}

#include "MoDiffRecordOptions.h"

#include "MoDiffConfigurationOptions.h"
#include "MoDiffConfigurationReader.h"
#include "MoDiffShellWord.h"
#include "MoDiffShownText.h"

#include <CLI/CLI.hpp>
#include <filesystem>

namespace fs = std::filesystem;

MoDiffRecordOptions::MoDiffRecordOptions(CLI::App& options) {
    auto const notEmpty = [](std::string const& value) { return value.empty() ? "needs a value" : std::string(); };
    options
        .add_option("--record", m_directory,
                    "Directory of the record; default: modiff-run beside the configuration file")
        ->type_name("DIR")
        ->check(notEmpty);
    options
        .add_option("--config", m_file,
                    "Configuration file; default: the nearest modiff.toml, from the current directory upwards")
        ->type_name("FILE")
        ->check(notEmpty);
}

MoDiffOpenedRecord MoDiffRecordOptions::open(std::ostream& notes) const {
    MoDiffSuiteConfiguration configuration =
        MoDiffConfigurationReader::read(m_file.empty() ? MoDiffConfigurationReader::find(".") : m_file);
    MoDiffConfigurationReader::resolve(configuration);
    if (!configuration.file.empty())
        configuration.file = fs::absolute(configuration.file).lexically_normal().string();
    std::string const directory = m_directory.empty() ? MoDiffConfigurationOptions::defaultOutDirectory(configuration)
                                                      : fs::absolute(m_directory).lexically_normal().string();
    MoDiffOpenedRecord record{configuration, MoDiffRecordPairs(directory)};
    std::error_code ignored;
    if (fs::is_directory(record.pairs.workingDirectory(), ignored)) // not so on another machine
        record.configuration.workingDirectory = record.pairs.workingDirectory();
    MoDiffConfigurationOptions::enterWorkingDirectory(record.configuration);
    if (!record.pairs.incomplete().empty())
        notes << "note       " << MoDiffShownText::escaped(record.pairs.incomplete()) << std::endl;
    return record;
}

std::string MoDiffRecordOptions::words() const {
    return m_directory.empty() ? "" : " --record " + MoDiffShownText::escaped(m_directory);
}

std::string MoDiffRecordOptions::shellWords() const {
    auto const option = [](char const* name, std::string const& value) {
        return value.empty() ? "" : name + MoDiffShellWord::quoted(fs::absolute(value).lexically_normal().string());
    };
    return option(" --record ", m_directory) + option(" --config ", m_file);
}

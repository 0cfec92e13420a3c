#include "MoDiffConfigurationOptions.h"

#include "MoDiffConfigurationReader.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

struct Row {
    char const* option;
    char const* key; ///< of the configuration file
    char const* type;
    char const* about;
    bool isList;
};

Row const kRows[] = {
    {"--working-directory", "working-directory", "DIR", "Where ../webcontent is seen from", false},
    {"--root", "roots", "DIR", "Search only this directory, below the working directory, for Masters; repeatable",
     true},
    {"--exclude", "exclude", "GLOB", "Leave out directories and masters that meet this; repeatable", true},
    {"--sub-directory", "sub-directories", "DIR", "Compare only this language, say, of Masters; repeatable", true},
    {"-j,--jobs", "jobs", "N", "Compare in so many processes; default: the cores", false},
    {"--time-limit", "time-limit", "TIME", "Longest time for one pair, such as 90s or 5m; none for no limit", false},
    {"--memory-limit", "memory-limit", "SIZE", "Most memory for one pair, such as 2GiB; none for no limit", false},
    {"--max-age", "max-age", "TIME", "Warn of actual files that are older, such as 1d", false},
    {"--new", "new", "WORD", "Actual files without master: fail, warn or ignore", false},
    {"--nul", "nul", "WORD", "Texts with a NUL that are not the same bytes: error or warn", false},
    {"--ignore", "ignore", "FORMAT:KIND", "Leave out this kind of differences in a script's format; repeatable",
     true},
    {"--hidden-warning", "hidden-warning", "PERCENT", "Warn of passed pairs of which cleansing deletes more", false},
};

} // namespace

MoDiffConfigurationOptions::MoDiffConfigurationOptions(CLI::App& options, Source source) : m_options(options) {
    bool const isRead = source == eFileAndOptions;
    if (isRead)
        options
            .add_option("--config", m_file,
                        "Configuration file; default: the nearest modiff.toml, from the current directory upwards")
            ->type_name("FILE")
            ->group("Configuration");
    for (Row const& row : kRows)
        options.add_option(row.option, m_values[row.key], row.about)
            ->type_name(row.type)
            ->allow_extra_args(false)
            ->multi_option_policy(row.isList ? CLI::MultiOptionPolicy::TakeAll : CLI::MultiOptionPolicy::TakeLast)
            ->group(isRead ? "Configuration (options win over the file)" : "Configuration");
}

MoDiffSuiteConfiguration MoDiffConfigurationOptions::read() const {
    bool const isNamed = m_options.count("--config") > 0;
    MoDiffSuiteConfiguration configuration =
        MoDiffConfigurationReader::read(isNamed ? m_file : MoDiffConfigurationReader::find("."));
    set(configuration);
    MoDiffConfigurationReader::resolve(configuration);
    return configuration;
}

MoDiffSuiteConfiguration MoDiffConfigurationOptions::readOptions() const {
    MoDiffSuiteConfiguration configuration = MoDiffConfigurationReader::read("");
    set(configuration);
    return configuration;
}

void MoDiffConfigurationOptions::set(MoDiffSuiteConfiguration& configuration) const {
    for (Row const& row : kRows) {
        std::string const option = std::string(row.option).substr(std::string(row.option).find("--"));
        if (m_options.count(option) == 0)
            continue;
        std::vector<std::string> values = m_values.at(row.key);
        if (std::string(row.key) == "working-directory")
            values.back() = fs::absolute(values.back()).string();
        MoDiffConfigurationReader::setOption(configuration, row.key, values, option);
    }
}

void MoDiffConfigurationOptions::enterWorkingDirectory(MoDiffSuiteConfiguration const& configuration) {
    std::error_code error;
    fs::current_path(configuration.workingDirectory, error);
    if (error)
        throw std::system_error(error, "cannot enter the working directory " + configuration.workingDirectory);
}

std::string MoDiffConfigurationOptions::defaultOutDirectory(MoDiffSuiteConfiguration const& configuration) {
    fs::path const directory =
        configuration.file.empty() ? fs::current_path() : fs::absolute(configuration.file).parent_path();
    return (directory / "modiff-run").string();
}

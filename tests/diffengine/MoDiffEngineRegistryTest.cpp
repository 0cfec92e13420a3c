#include "libMoDiffEngine.h"

#include <gtest/gtest.h>
#include <stdexcept>

namespace {

struct Engine : MoDiffEngine {
    Engine(char name, std::string& calls) : m_name(name), m_calls(calls) {}
    void verifyOutput(std::set<MoDiffListener*> const& listeners, char const* actualFileName) const override {
        m_calls += m_name + std::string(actualFileName) + std::to_string(listeners.size()) + " ";
        if (m_name == '!')
            throw std::runtime_error("engine");
    }
    char m_name;
    std::string& m_calls;
};

TEST(MoDiffEngineRegistry, runs_the_engines_of_the_format_in_the_order_of_registration) {
    std::string calls;
    Engine a('a', calls), b('b', calls), c('c', calls), broken('!', calls);
    MoDiffListener first, second;
    {
        MoDiffEngineRegistry registry;
        std::pair<MoOutputFormat, Engine*> const pairs[] = {
            {eFormatVmd, &c}, {eFormatHtml, &b},     {eFormatHtml, &a}, {eFormatHtml, &b},
            {eFormatMht, &c}, {eFormatMht, &broken}, {eFormatMht, &c}};
        for (auto const& [format, engine] : pairs)
            registry.registerDiffEngine(format, engine);
        for (MoDiffListener* listener : {&first, &second, &first})
            registry.addListener(listener);
        registry.verifyOutput(eFormatHtml, "r");
        registry.verifyOutput(eFormatCsv, "r");
        registry.removeListener(&first);
        registry.removeListener(&first);
        EXPECT_THROW(registry.verifyOutput(eFormatMht, "s"), std::runtime_error);
        registry.removeListener(&second);
        registry.verifyOutput(eFormatVmd, "t");
    }
    a.verifyOutput({}, "u"); // the registry deleted nothing
    EXPECT_EQ("br2 ar2 br2 cs1 !s1 ct0 au0 ", calls);
}

} // namespace

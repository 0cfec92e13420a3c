#include "libMoDiffEngine.h"

#include <iostream>

struct Printer : MoDiffListener {
    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResult const& result) override {
        std::cout << (result.isPassed() ? "passed " : "FAILED ") << result.getMasterName() << std::endl;
    }
};

int main() {
    MoDiffHtmlFileEngine engine(nullptr);
    Printer printer;
    MoDiffEngineRegistry registry;
    registry.registerDiffEngine(eFormatHtml, &engine);
    registry.addListener(&printer);
    registry.verifyOutput(eFormatHtml, "reports/sales/Sales.html");
}

#include "MoRecordingListener.h"
#include "MoTestTree.h"

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <thread>
#include <typeinfo>

namespace {

thread_local long untilFailure = 0; // allocations up to the one that fails; 0: none fails
thread_local bool failsFromThenOn = false;
thread_local void (*raiseInstead)() = nullptr; // what a failing allocation does before it raises std::bad_alloc
thread_local bool hasFailed = false;
thread_local long living = 0;

void* allocate(std::size_t size) noexcept {
    if (untilFailure > 0 && --untilFailure == 0) {
        hasFailed = true;
        untilFailure = failsFromThenOn ? 1 : 0;
        return nullptr;
    }
    void* const memory = std::malloc(size > 0 ? size : 1);
    living += memory ? 1 : 0;
    return memory;
}

void* allocateOrThrow(std::size_t size) {
    if (void* const memory = allocate(size))
        return memory;
    if (raiseInstead)
        raiseInstead();
    throw std::bad_alloc();
}

void release(void* memory) noexcept {
    living -= memory ? 1 : 0;
    std::free(memory);
}

} // namespace

// For the whole test program, the library included; malloc-based, so that sanitizers still see every block.
// clang-format off
void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
// clang-format on

namespace {

/// Lets each allocation of an action fail in turn until it needs no more; each time the action must end as it should
/// or for lack of memory, and nothing may leak. Returns the number of allocations.
long failEveryAllocation(std::function<void()> const& action, std::function<void(bool hasEnded)> const& check) {
    for (long n = 1;; ++n) {
        long const descriptors = MoTestTree::count("/proc/self/fd"), before = living;
        std::string ending = "end";
        hasFailed = false;
        untilFailure = n;
        try {
            action();
        } catch (std::bad_alloc const&) {
            ending = "no memory";
        } catch (KLTOutOfMemoryError const&) {
            ending = "no memory";
        }
        untilFailure = 0;
        check(ending == "end");
        EXPECT_EQ(before, living) << "allocation " << n;
        EXPECT_EQ(descriptors, MoTestTree::count("/proc/self/fd")) << "allocation " << n;
        if (!hasFailed || testing::Test::HasFailure())
            return n - 1;
    }
}

/// Counts results and may raise at one of them.
struct CountingListener : MoDiffListener {
    using MoDiffListener::comparisonNotification;
    void comparisonNotification(MoDiffResult const&) override {
        if (++count == raiseAt)
            throw std::runtime_error("listener");
    }
    int count = 0, raiseAt = 0;
};

/// One passing, one differing and one missing page.
class FaultTest : public testing::Test {
protected:
    FaultTest() {
        for (char const* page : {"Masters/r_1.html", "Masters/r_2.html", "Masters/r_3.html"})
            MoTestTree::write(page, "<script>é\xE9</script>\r\n<b id=\"PRMT_1\">x");
        MoTestTree::write("../webcontent/v5DebugHTML/r_1.html", "<b>x");
        MoTestTree::write("../webcontent/v5DebugHTML/r_2.html", "<b>y\xE9");
        std::this_thread::sleep_for(std::chrono::milliseconds(150)); // the listing is remembered now and not later
        verify();
        verify();
    }

    void verify() {
        MoDiffHtmlFileEngine html(nullptr);
        MoDiffFileLog log("summary.xml");
        MoDiffLogNormalized normalized;
        MoDiffEngineRegistry registry;
        registry.registerDiffEngine(eFormatHtml, &html);
        registry.addListener(&log);
        registry.addListener(&normalized);
        registry.addListener(&m_listener);
        m_listener.count = 0;
        registry.verifyOutput(eFormatHtml, "r.html");
    }

    MoTestTree const m_tree;
    CountingListener m_listener;
};

TEST_F(FaultTest, a_verification_survives_the_failure_of_any_allocation) {
    verify();
    std::string const summary = MoTestTree::read("summary.xml");
    auto const check = [&](bool hasEnded) {
        EXPECT_TRUE(!hasEnded || (m_listener.count == 3 && summary == MoTestTree::read("summary.xml")));
    };
    EXPECT_GT(failEveryAllocation([&] { verify(); }, check), 30);
}

TEST_F(FaultTest, a_listener_may_raise_at_any_result) {
    for (int const at : {1, 2, 3}) {
        long const descriptors = MoTestTree::count("/proc/self/fd"), before = living;
        m_listener.raiseAt = at;
        EXPECT_THROW(verify(), std::runtime_error);
        EXPECT_EQ(at, m_listener.count);
        EXPECT_EQ(before, living);
        EXPECT_EQ(descriptors, MoTestTree::count("/proc/self/fd"));
        EXPECT_NE(std::string::npos, MoTestTree::read("summary.xml").find("</TestSummary>\n"));
    }
}

TEST(TextFault, a_text_is_cleansed_or_left_alone) {
    std::string const before = "é<script>(\xE9)</script>" + std::string(3000, 'x') + "aba";
    for (char const* expression : {"(?s)<script.*?</script>", "(x|é)+?a", "x*+b", "\\bé"}) {
        std::string text = before, whole = before;
        MoDiffNormalizationPattern(expression).normalizeText(whole.data());
        auto const action = [&] { MoDiffNormalizationPattern(expression).normalizeText(text.data()); };
        failEveryAllocation(action, [&](bool hasEnded) {
            EXPECT_EQ(hasEnded ? whole : before, text) << expression;
            text = before;
        });
    }
}

TEST(TextFault, a_failing_allocation_of_a_text_is_reported_with_its_place) {
    MoFileHandle file("/dev/null", "r");
    struct {
        void (*raise)();
        bool fromThenOn;
        std::type_info const& type;
        char const* trace;
    } const rows[] = {
        {[] {}, false, typeid(KLTOutOfMemoryError), "MoDiffLib231KLT_THROW"},
        {[] {}, true, typeid(KLTOutOfMemoryError), ""}, // no memory for the back-trace either
        {[] { throw std::runtime_error("x"); }, false, typeid(KLTStdExceptionError), "MoDiffLib231KLT_THROW"},
        {[] { KLTAssertError(0, "x").hurl(KLTFileLocation("A", 1), nullptr, "T"); }, false, typeid(KLTAssertError),
         "A1TMoDiffLib231KLT_RETHROW"}};
    for (auto const& row : rows) {
        std::string trace = "nothing was raised";
        raiseInstead = row.raise;
        failsFromThenOn = row.fromThenOn;
        untilFailure = 1;
        try {
            MoDiffLib::Text const text(MoDiffLib::slurpFile(file));
        } catch (KLTThrowable const& error) {
            untilFailure = 0;
            trace.clear();
            EXPECT_TRUE(row.type == typeid(error)) << typeid(error).name();
            for (KLTBackTraceEntry const& entry : error.getBackTrace())
                trace += entry.location.getFileName() + std::to_string(entry.location.getLine()) + entry.tag;
        }
        raiseInstead = nullptr;
        EXPECT_EQ(row.trace, trace);
    }
}

} // namespace

#include "KLTAssert.h"
#include "KLTAssertError.h"
#include "KLTOutOfMemoryError.h"
#include "KLTStdExceptionError.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <stdexcept>

namespace {

#define TWICE(x) ((x)*2)

template<typename Error, typename Raise>
Error caught(Raise raise) {
    try {
        raise();
    } catch (Error& error) {
        return error;
    }
    ADD_FAILURE() << "nothing was raised";
    return Error(0, "");
}

TEST(KLTAssert, text_is_the_source_unexpanded_and_place_is_here) {
    int const line = __LINE__ + 1;
    auto const error = caught<KLTAssertError>([] { KLT_ASSERT(EOF != -1 && TWICE(2) == 4); });
    EXPECT_STREQ("KLT_ASSERT(EOF != -1 && TWICE(2) == 4);", error.getText());
    EXPECT_STREQ(error.getText(), error.what());
    ASSERT_EQ(1U, error.getBackTrace().size());
    EXPECT_STREQ("KLTAssertTest", error.getBackTrace().front().location.getFileName());
    EXPECT_EQ(line, error.getBackTrace().front().location.getLine());
    EXPECT_EQ("KLT_THROW", error.getBackTrace().front().tag);
    EXPECT_EQ("", error.getBackTrace().front().text);
}

TEST(KLTAssert, named_text_keeps_the_name_in_quotes) {
    auto const error = caught<KLTAssertError>([] { KLT_ASSERT_NAMED(TWICE(0) != 0, "Twice is more "); });
    EXPECT_STREQ("KLT_ASSERT_NAMED(TWICE(0) != 0, \"Twice is more \");", error.getText());
}

TEST(KLTThrowable, is_raised_again_as_its_own_class_with_a_longer_trace) {
    auto const raise = [] {
        try {
            KLTOutOfMemoryError(0, nullptr).hurl(KLTFileLocation("A", 1), "detail", "KLT_THROW");
        } catch (KLTThrowable& error) {
            error.addBackTrace(KLTFileLocation("B", 2), nullptr, "KLT_RETHROW");
            throw;
        }
    };
    auto const error = caught<KLTOutOfMemoryError>(raise);
    EXPECT_STREQ("", error.getText());
    ASSERT_EQ(2U, error.getBackTrace().size());
    EXPECT_EQ("detail", error.getBackTrace().front().text);
    EXPECT_STREQ("B", error.getBackTrace().back().location.getFileName());
    EXPECT_EQ("KLT_RETHROW", error.getBackTrace().back().tag);
}

TEST(KLTThrowable, wrapped_exception_keeps_its_message) {
    try {
        KLTStdExceptionError(std::runtime_error("disk on fire")).hurl(KLTFileLocation("A", 1), nullptr, "KLT_THROW");
    } catch (std::exception const& error) {
        EXPECT_STREQ("disk on fire", error.what());
        EXPECT_NE(nullptr, dynamic_cast<KLTStdExceptionError const*>(&error));
    }
}

} // namespace

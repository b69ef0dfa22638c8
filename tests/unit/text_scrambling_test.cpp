#include "core/code_page.h"
#include "core/mirelo_error.h"
#include "core/text_file.h"
#include "core/text_scrambling.h"
#include "test_environment.h"

#include <gtest/gtest.h>

using namespace mirelo;

namespace {

class TextScramblingTest : public mirelo::testing::ApplicationTest {};

int failureNumber(const std::function<void()> &operation) {
    try {
        operation();
    } catch (const MireloError &error) {
        return error.number();
    }
    return 0;
}

TEST_F(TextScramblingTest, a_fixed_text_is_stored_as_exactly_these_bytes) {
    // Even codes go up by three, odd codes by five; a line feed is stored as 13, a carriage
    // return as 18, so the file has no line structure a text tool would see.
    const std::string plain = "<Pnr>Å\tä\n\r</Pnr>";
    WriteTextFile(ScrambleText(plain), path("data/fixed.xml"));
    const std::string expected = "\x3F\x53\x71\x75\x41\xCA\x0E\xE7\x0D\x12\x3F\x34\x53\x71\x75\x41";
    EXPECT_EQ(mirelo::testing::readBytes(path("data/fixed.xml")), expected);
    EXPECT_EQ(UnscrambleText(ReadTextFile(path("data/fixed.xml"))), plain);
}

TEST_F(TextScramblingTest, every_storable_code_survives_the_round_trip) {
    std::string bytes;
    for (int code = 0; code <= 250; ++code) {
        bytes += static_cast<char>(code);
    }
    bytes += '\xFC'; // ü becomes 255 and passes
    const std::string plain = CodePageToUtf8(bytes);
    const std::string stored = ScrambleText(plain);
    EXPECT_EQ(stored, mirelo::testing::scrambleBytes(bytes));
    EXPECT_EQ(stored.back(), '\xFF');
    EXPECT_EQ(UnscrambleText(stored), plain);
    EXPECT_EQ(ScrambleText(""), "");
    EXPECT_EQ(UnscrambleText(""), "");
}

TEST_F(TextScramblingTest, codes_that_would_leave_the_byte_range_fail_the_whole_operation) {
    for (const char *letter : {"û", "ý", "þ", "ÿ"}) {
        EXPECT_EQ(failureNumber([&] { ScrambleText(std::string("Jörgen ") + letter); }), 5)
            << letter;
    }
    // Among the last few bytes and among plain letters read eight at a time alike.
    for (const char stored : {'\x00', '\x01', '\x02', '\x04'}) {
        for (const std::string &text :
             {std::string("AB") + stored, std::string(7, 'A') + stored + std::string(8, 'B')}) {
            EXPECT_EQ(failureNumber([&] { UnscrambleText(text); }), 5);
        }
    }
}

TEST_F(TextScramblingTest, characters_outside_the_code_page_become_question_marks) {
    EXPECT_EQ(UnscrambleText(ScrambleText("Ω≈€")), "??€");
}

TEST_F(TextScramblingTest, a_plain_file_is_not_rejected_but_turned_into_noise) {
    const std::string noise = UnscrambleText("<?xml version=\"1.0\"?><a/>");
    EXPECT_EQ(noise.find("<a"), std::string::npos);
}

} // namespace

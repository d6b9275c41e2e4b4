#include "ZvCore/XString.h"
#include "ZvCore/TextFormat.h"

#include <clocale>
#include <cstdio>
#include <gtest/gtest.h>

TEST(XStringW, EveryCodePointSurvivesUtf8AndBack) {
    std::u16string all;
    for (char32_t c = 0; c <= 0x10FFFF; c += c < 0x3000 ? 1 : 97) {
        if (c >= 0xD800 && c <= 0xDFFF)
            continue;
        if (c < 0x10000)
            all += char16_t(c);
        else
            (all += char16_t(0xD7C0 + (c >> 10))) += char16_t(0xDC00 + (c & 0x3FF));
    }
    const XStringW text(all);
    EXPECT_EQ(XStringW::FromUtf8(text.ToUtf8()), text);
    EXPECT_EQ(XStringW(u"aé€😀").ToUtf8(), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

// The cases of the Unicode Standard, table 3-8 and the paragraphs around it.
TEST(XStringW, MalformedSequencesBecomeOneReplacementForEachMaximalPart) {
    const struct {
        const char* utf8;
        const char16_t* expected;
    } cases[] = {
        {"a\x80z", u"a\uFFFDz"},                                                // lone trailing byte
        {"\xC0\xAF\xE0\x80\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},            // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},                                // a surrogate
        {"\xF4\x91\x92\x93\xFF", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},            // above U+10FFFF
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA"}, // truncated
        {"\xE2\x82", u"\uFFFD"},                                                // ends early
    };
    for (const auto& c : cases)
        EXPECT_EQ(XStringW::FromUtf8(c.utf8), XStringW(c.expected)) << c.utf8;
    const char16_t unpaired[] = {'a', 0xDC00, 'b', 0xD800, 0};
    EXPECT_EQ(XStringW(unpaired).ToUtf8(), "a\xEF\xBF\xBD"
                                           "b\xEF\xBF\xBD");
}

TEST(XStringW, CaseFollowsOneTableInEveryScriptAndKeepsLength) {
    const struct {
        const char16_t* lower;
        const char16_t* upper;
    } pairs[] = {
        {u"layer 0_x", u"LAYER 0_X"}, {u"àéîõüÿþ÷", u"ÀÉÎÕÜŸÞ÷"}, {u"ąčđęğłňőřşťůžƀǆȟ", u"ĄČĐĘĞŁŇŐŘŞŤŮŽɃǄȞ"},
        {u"άβγδσωϊ", u"ΆΒΓΔΣΩΪ"},     {u"абвѓёџґ", u"АБВЃЁЏҐ"},   {u"աբգֆ", u"ԱԲԳՖ"},
        {u"აბჰ", u"ᲐᲑᲰ"},       {u"ạộὰ", u"ẠỘᾺ"},           {u"𐐨ⓐａ", u"𐐀ⒶＡ"},
    };
    for (const auto& p : pairs) {
        EXPECT_EQ(XStringW(p.lower).ToUpper(), XStringW(p.upper)) << XStringW(p.lower).ToUtf8();
        EXPECT_EQ(XStringW(p.upper).ToLower(), XStringW(p.lower)) << XStringW(p.upper).ToUtf8();
        EXPECT_TRUE(XStringW(p.lower).EqualsNoCase(p.upper));
    }
    EXPECT_EQ(XStringW(u"straße ŉ 漢字").ToUpper(), XStringW(u"STRAßE ŉ 漢字"));
    EXPECT_EQ(XStringW(u"ς").ToUpper(), XStringW(u"Σ"));
    EXPECT_FALSE(XStringW(u"abc").EqualsNoCase(u"abd"));
    EXPECT_FALSE(XStringW(u"abc").EqualsNoCase(u"ab"));
}

TEST(XStringW, FormatsAsPrintfDoes) {
    const auto i64 = int64_t(1) << 40;
    EXPECT_EQ(XStringW::Format("%s é %d%%", "ü", -3), XStringW(u"ü é -3%"));
    EXPECT_EQ(XStringA::Format("%%I64d %*d|%-*d|%.*f", 4, 7, 3, 5, 2, 1.0), XStringA("%I64d    7|5  |1.00"));
    EXPECT_EQ(
        XStringA::Format("%5.2f|%-8s|%08X|%+d|%c|%.3s|%g", 3.14159, "ab", 0xBEEFu, 5, 'x', "abcdef", 1e-7),
        XStringA(" 3.14|ab      |0000BEEF|+5|x|abc|1e-07"));
    EXPECT_EQ(XStringA::Format("%lld %llu %zu %hd %ld", (long long)-i64, (unsigned long long)i64, size_t(9),
                               short(44), 8L),
              XStringA("-1099511627776 1099511627776 9 44 8"));
    EXPECT_EQ(XStringA::Format("%.*f", 400, 1.0).Length(), 402u);
    // Through pointers: compilers know these forms only on one of the platforms.
    const auto format = &XStringA::Format;
    EXPECT_EQ(format("%I64d %06I64X %I32d %s", i64, uint64_t(0xABC), 12, static_cast<const char*>(nullptr)),
              XStringA("1099511627776 000ABC 12 (null)"));
    EXPECT_EQ(format("50%! and %", 0), XStringA("50%! and %"));
}

TEST(XStringW, DecimalSignIsAPointInEveryLocale) {
    const std::string former = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "German_Germany.1252"))
        return void(std::puts("no locale with a decimal comma here"));
    const XStringA text = XStringA::Format("%.2f %s", 1.5, "1,5");
    std::setlocale(LC_NUMERIC, former.c_str());
    EXPECT_EQ(text, XStringA("1.50 1,5"));
}

TEST(XStringW, TrimsUnicodeWhiteSpaceOnly) {
    EXPECT_EQ(XStringW(u"\u00A0\t a b\u3000\r\n").Trimmed(), XStringW(u"a b"));
    EXPECT_EQ(XStringW(u" \n ").Trimmed(), XStringW());
}

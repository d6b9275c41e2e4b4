#include "Tests/Support/NativeFiles.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include <gtest/gtest.h>

namespace {

struct Stream : testing::Test {
    Stream() { native.Attach(drawing, file); }
    void Rewind() { file.Seek(0); }
    /// The bytes of a string record, and the reader at its start.
    void Give(uint8_t encoding, int32_t length, std::initializer_list<uint8_t> characters) {
        file.Seek(0);
        file.WriteValue(encoding);
        file.WriteValue(length);
        file.Write(std::data(characters), characters.size());
        Rewind();
    }
    ZvDrawing drawing;
    ZvCore::MemFile file;
    ZvNativeFile native;
};

} // namespace

using NativeStrings = Stream;

TEST_F(NativeStrings, FormIsEncodingLengthAndCharactersWithoutTerminator) {
    EXPECT_TRUE(native.WriteString("abc"));
    EXPECT_TRUE(native.WriteString(u"xyz", 2));
    EXPECT_TRUE(native.WriteString(static_cast<const char16_t*>(nullptr)));
    const std::vector<uint8_t> expected = {0, 3, 0,   0, 0,   'a', 'b', 'c', 1, 2, 0,
                                           0, 0, 'x', 0, 'y', 0,   1,   0,   0, 0, 0};
    EXPECT_EQ(file.Take(), expected);
}

TEST_F(NativeStrings, NarrowBytesAreWidenedAsSignedNumbers) {
    Give(0, 2, {0xE9, 'a'});
    XStringW text;
    ASSERT_TRUE(native.ReadStringW(text));
    EXPECT_EQ(text.Str(), (std::u16string{char16_t(0xFFE9), u'a'}));
    EXPECT_EQ(file.Position(), 7u);
    const char field[] = {char(0xE9), 'b', 0, 'c'};
    EXPECT_EQ(ZvNativeFile::ReadCharString(field, 4).Str(), (std::u16string{char16_t(0xFFE9), u'b'}));
}

TEST_F(NativeStrings, WideTextReadNarrowGoesThroughTheCodePage) {
    const XStringW wide(u"Stra\u00DFe");
    ASSERT_TRUE(native.WriteString(wide));
    Rewind();
    XStringA narrow;
    ASSERT_TRUE(native.ReadStringA(narrow));
#ifndef _WIN32
    EXPECT_EQ(narrow.Str(), "Stra\xC3\x9F"
                            "e");
#endif
    EXPECT_EQ(narrow.Str().substr(0, 4), "Stra");
    EXPECT_EQ(file.Position(), file.Length());
}

TEST_F(NativeStrings, ASmallBufferTakesWhatFitsAndTheRestIsSkipped) {
    native.WriteString("abcdef");
    native.WriteString(u"uvwxyz");
    Rewind();
    char narrow[4];
    char16_t wide[4];
    ASSERT_TRUE(native.ReadStringRaw(narrow, 4));
    EXPECT_STREQ(narrow, "abc");
    ASSERT_TRUE(native.ReadStringRaw(wide, 4));
    EXPECT_EQ(std::u16string(wide), u"uvw");
    EXPECT_EQ(file.Position(), file.Length());
}

TEST_F(NativeStrings, LongStringsOutgrowTheStackBuffer) {
    const std::string text(7984 + 100, 'q');
    native.WriteString(text.c_str());
    native.WriteString(text.substr(0, 7983).c_str());
    Rewind();
    XStringA back;
    ASSERT_TRUE(native.ReadStringA(back));
    EXPECT_EQ(back.Str(), text);
    ASSERT_TRUE(native.ReadStringA(back));
    EXPECT_EQ(back.Length(), 7983u);
}

TEST_F(NativeStrings, HeadsThatCannotBeTrueAreRefusedWithoutAllocating) {
    struct Case {
        uint8_t encoding;
        int32_t length;
    };
    for (const Case& c : {Case{2, 1}, Case{0, -1}, Case{0, 3}, Case{1, 2}, Case{1, 0x7FFFFFFF}}) {
        Give(c.encoding, c.length, {'a', 'b'});
        XStringW text;
        EXPECT_FALSE(native.ReadStringW(text)) << int(c.encoding) << " " << c.length;
        Rewind();
        XStringA narrow;
        EXPECT_FALSE(native.ReadStringA(narrow)) << int(c.encoding) << " " << c.length;
    }
}

TEST_F(NativeStrings, AStringEndsWithItsRecordAtTheLatest) {
    native.WriteString(u"abcdef");
    Rewind();
    const ZvNativeDesc::RecordScope record(native.Desc(), 0, 16);
    XStringW text;
    EXPECT_FALSE(native.ReadStringW(text));
}

TEST_F(NativeStrings, CharFieldsTakeLowBytesAndEndInZero) {
    char field[4] = {'x', 'x', 'x', 'x'};
    ZvNativeFile::WriteCharString(XStringW(u"a\u01E9cdef"), field, sizeof field);
    EXPECT_EQ(std::string(field, 4), std::string("a\xE9"
                                                 "c\0",
                                                 4));
}

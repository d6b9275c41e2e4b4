#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvPreviewBitmap.h"
#include <cstring>
#include <gtest/gtest.h>

namespace {

template <class Record>
std::array<uint8_t, Record::kSize> Bytes(const Record& record) {
    std::array<uint8_t, Record::kSize> bytes{};
    record.Store(bytes.data());
    return bytes;
}

template <class T>
T At(const uint8_t* bytes, size_t offset) {
    T value;
    std::memcpy(&value, bytes + offset, sizeof value);
    return value;
}

} // namespace

TEST(NativeHeader, FieldsStandWhereTheFormatHasThem) {
    ZvNativeHeader header;
    std::memcpy(header.magic, ZvNativeHeader::kMagic, 8);
    header.version = 1075;
    header.length = 0x1122334455667788;
    header.entityHeadSize = 30;
    header.clientCount = 3;
    header.clientsOffset = 1001, header.tablesOffset = 1002, header.settingsOffset = 1003;
    header.digest.fill(0xAB);
    header.flags = 2, header.solidOffset = 104, header.minimumReader = 1070, header.buildStamp = 99;
    const auto bytes = Bytes(header);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 0), 104u);
    EXPECT_STREQ(reinterpret_cast<const char*>(bytes.data() + 8), "zvdfzvd");
    EXPECT_EQ(At<int32_t>(bytes.data(), 16), 1075);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 20), 0x1122334455667788u);
    EXPECT_EQ(At<uint32_t>(bytes.data(), 28), 30u);
    EXPECT_EQ(At<uint32_t>(bytes.data(), 32), 3u);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 36), 1001u);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 44), 1002u);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 52), 1003u);
    EXPECT_EQ(bytes[60], 0xAB);
    EXPECT_EQ(bytes[75], 0xAB);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 76), 2u);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 84), 104u);
    EXPECT_EQ(At<int32_t>(bytes.data(), 92), 1070);
    EXPECT_EQ(At<uint64_t>(bytes.data(), 96), 99u);
    ZvNativeHeader again;
    again.Parse(bytes.data());
    EXPECT_EQ(Bytes(again), bytes);
}

TEST(NativeHeader, ColourOfARecordHeadStoodTheOtherWayRoundBeforeVersion1050) {
    uint8_t bytes[ZvNativeRecordHead::kSize] = {};
    const int16_t index = -2;
    const uint32_t value = 0x80112233;
    std::memcpy(bytes + 20, &index, 2);
    std::memcpy(bytes + 22, &value, 4);
    ZvNativeRecordHead old;
    old.Parse(bytes, 1049);
    EXPECT_EQ(old.colorIndex, -2);
    EXPECT_EQ(old.colorValue, 0x80112233u);
    uint8_t current[ZvNativeRecordHead::kSize];
    old.Store(current);
    EXPECT_EQ(At<uint32_t>(current, 20), 0x80112233u);
    EXPECT_EQ(At<int16_t>(current, 24), -2);
}

TEST(NativeHeader, NamesOfRecordsAreThirtyTwoBitsWideOrNone) {
    ZvNativeRecordHead head;
    uint32_t name = 7;
    head.name = ~uint64_t(0);
    EXPECT_TRUE(head.Name32(name));
    EXPECT_EQ(name, 0u);
    head.name = 0xFFFFFFFF;
    EXPECT_TRUE(head.Name32(name));
    EXPECT_EQ(name, 0xFFFFFFFFu);
    head.name = 0x100000000;
    EXPECT_FALSE(head.Name32(name));
}

TEST(NativeHeader, LongNamesOfClientsAndTypesAreCutBetweenCharacters) {
    ZvNativeClientRecord client;
    client.name.assign(1022, 'a').append("\xC3\xA9");
    ZvNativeTypeRecord type;
    type.name.assign(61, 'b').append("\xE2\x82\xAC");
    const auto clientBytes = Bytes(client);
    const auto typeBytes = Bytes(type);
    ZvNativeClientRecord clientBack;
    clientBack.Parse(clientBytes.data());
    ZvNativeTypeRecord typeBack;
    typeBack.Parse(typeBytes.data());
    EXPECT_EQ(clientBack.name, std::string(1022, 'a'));
    EXPECT_EQ(typeBack.name, std::string(61, 'b'));
    EXPECT_EQ(At<uint32_t>(clientBytes.data(), 0), 1064u);
    EXPECT_EQ(At<uint32_t>(typeBytes.data(), 0), 138u);
}

TEST(NativeHeader, MinimumReaderFollowsTheTable) {
    const std::pair<int, int> rows[] = {{1075, 1070}, {1070, 1070}, {1069, 1067}, {1067, 1067},
                                        {1066, 1064}, {1065, 1064}, {1064, 1064}, {1062, 1062},
                                        {1061, 1061}, {1060, 1060}, {1013, 1013}, {1080, 1080}};
    for (const auto& [version, minimum] : rows)
        EXPECT_EQ(ZvNativeFile::MinimumReaderVersion(version), minimum) << version;
}

TEST(NativeHeader, PreviewBitmapsSurviveAndForeignBytesAreRefused) {
    ZvPreviewBitmap bitmap;
    bitmap.width = 3, bitmap.height = 2;
    bitmap.pixels = {0x112233, 0x445566, 0x778899, 0xAABBCC, 0xDDEEFF, 0x010203};
    const std::vector<uint8_t> bytes = bitmap.Encode();
    ZvPreviewBitmap back;
    ASSERT_TRUE(back.Decode(bytes.data(), bytes.size()));
    EXPECT_EQ(back.width, 3);
    EXPECT_EQ(back.pixels, bitmap.pixels);
    for (size_t cut = 0; cut < bytes.size(); ++cut)
        EXPECT_FALSE(back.Decode(bytes.data(), cut)) << cut;
    std::vector<uint8_t> huge = bytes;
    const int32_t side = 1 << 20;
    std::memcpy(huge.data() + 18, &side, 4);
    EXPECT_FALSE(back.Decode(huge.data(), huge.size()));
    EXPECT_EQ(back.pixels, bitmap.pixels);
}

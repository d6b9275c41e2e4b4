#include "AnsweringHost.h"
#include "Tests/Support/NativeFiles.h"
#include "Zelvan/Entities/ZvXLine.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeCheck.h"
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvServer.h"
#include <gtest/gtest.h>

using namespace NativeFiles;

namespace {

Bytes Stored(ZvDrawing& drawing) {
    ZvNativeOptions options;
    options.compressionLevel = 0;
    options.blockDigests = false;
    return Save(drawing, options);
}

/// A current file with other numbers in its header.
Bytes WithVersion(int version, int minimumReader, uint64_t flags = 0) {
    Bytes bytes = Stored(*Sample());
    Put<int32_t>(bytes, 16, version);
    Put<int32_t>(bytes, 92, minimumReader);
    Put<uint64_t>(bytes, 76, flags);
    Seal(bytes);
    return bytes;
}

/// A file of an older version, put together from the sections of a current one: what is between the versions is how sections
/// and heads are laid out, not what they mean.
class OldFile {
public:
    OldFile(ZvDrawing& drawing, int version) : m_version(version), m_current(Stored(drawing)) {
        m_header.Parse(m_current.data());
    }
    Bytes Make() {
        m_bytes.assign(m_current.begin(), m_current.begin() + 104);
        Settings();
        Tables();
        Clients();
        Put<int32_t>(m_bytes, 16, m_version);
        Put<int32_t>(m_bytes, 92, m_version);
        Put<uint64_t>(m_bytes, 36, m_clientsAt);
        Put<uint64_t>(m_bytes, 44, m_tablesAt);
        Seal(m_bytes);
        return m_bytes;
    }
    XStringW settingsText;
    /// Name under which clients are known before they had guids.
    std::string clientName = "Zelvan";
    uint32_t clientId = 1;

private:
    void Add(const Bytes& bytes) { m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end()); }
    void Settings() {
        Bytes content(40, 0xCC); // variables of unknown form
        if (m_version >= 1048) {
            const Bytes block(m_current.begin() + 104, m_current.begin() + ptrdiff_t(m_header.tablesOffset));
            return Add(block);
        }
        if (m_version >= 1027) {
            content.clear();
            Append<uint8_t>(content, 1);
            Append<int32_t>(content, int32_t(settingsText.Length()));
            for (char16_t c : settingsText.Str())
                Append<char16_t>(content, c);
        }
        Add(Block(content));
    }
    void Tables() {
        m_tablesAt = m_bytes.size();
        Bytes tables(m_current.begin() + ptrdiff_t(m_header.tablesOffset),
                     m_current.begin() + ptrdiff_t(m_header.clientsOffset));
        if (m_version < 1050)
            for (uint32_t name = 1; name < 100; ++name)
                SwapColour(tables, name);
        Add(tables);
    }
    static void SwapColour(Bytes& tables, uint32_t name) {
        Bytes head;
        Append<uint16_t>(head, 1);
        Append<uint16_t>(head, 35);
        Append<uint64_t>(head, name);
        const size_t at = Find(tables, head);
        if (at == std::string::npos)
            return;
        const auto value = Get<uint32_t>(tables, at + 12);
        const auto index = Get<int16_t>(tables, at + 16);
        Put<int16_t>(tables, at + 12, index);
        Put<uint32_t>(tables, at + 14, value);
    }
    void Clients() {
        m_clientsAt = m_bytes.size();
        ZvNativeClientRecord record;
        record.name = clientName;
        record.id = clientId;
        record.records = 5;
        if (m_version >= 1014)
            std::memcpy(record.guid, ZvServer::BuiltInClient().guid.bytes.data(), 16);
        Bytes bytes(ZvNativeClientRecord::kSize);
        record.Store(bytes.data());
        Put<uint32_t>(m_bytes, 32, 1);
        Add(m_version >= 1028 ? Block(bytes) : bytes);
    }
    int m_version;
    Bytes m_current, m_bytes;
    ZvNativeHeader m_header;
    uint64_t m_tablesAt = 0, m_clientsAt = 0;
};

std::unique_ptr<ZvDrawing> Plain() {
    auto drawing = std::make_unique<ZvDrawing>();
    for (int i = 0; i < 5; ++i) {
        auto line = std::make_unique<ZvXLine>(Vec3d{double(i), 0, 0}, Vec3d{3, double(i), 0});
        line->SetColor(ZvColor(10 * i, 20, 30));
        drawing->Insert(std::move(line));
    }
    return drawing;
}

} // namespace

TEST(NativeVersions, ANewerFileOpensAfterTheQuestionWhenItsMinimumReaderAllowsIt) {
    const Bytes bytes = WithVersion(1080, 1070);
    AnsweringHost yes(ZvAnswer::Yes), no(ZvAnswer::No);
    ZvNativeOptions options;
    options.host = &no;
    EXPECT_FALSE(Load(bytes, options).Ok());
    options.host = &yes;
    EXPECT_TRUE(Load(bytes, options).Ok());
    ASSERT_EQ(yes.texts.size(), 1u);
    EXPECT_EQ(
        yes.texts[0],
        "Version Change|This file has been saved with a newer version of Zelvan. \n You may open this file, "
        "but you will lose some information stored inside it. \n Do you want to continue loading this file?");
    EXPECT_TRUE(Load(WithVersion(1080, 1070, 2), options).Ok()) << "flag bit 1";
    options.askNewerVersion = false;
    EXPECT_TRUE(Load(bytes, options).Ok());
    EXPECT_EQ(yes.texts.size(), 1u);
    const Loaded alone = Load(bytes);
    EXPECT_TRUE(alone.Ok());
    EXPECT_FALSE(alone.errors.HasErrors());
    EXPECT_FALSE(alone.errors.IsEmpty()) << "a warning is due";
}

TEST(NativeVersions, AFileThatNeedsANewerProgramIsError2006WithItsName) {
    ZvNativeOptions options;
    options.fileName = "plan.zvd";
    const Loaded loaded = Load(WithVersion(1080, 1080), options);
    EXPECT_FALSE(loaded.Ok());
    EXPECT_TRUE(loaded.errors.Has(2006));
    EXPECT_NE(loaded.errors.ToString().find("plan.zvd"), std::string::npos);
    EXPECT_EQ(loaded.drawing->NameTable().Count(), 0);
}

TEST(NativeVersions, OlderLayoutsGiveTheSameDrawing) {
    const auto drawing = Plain();
    const std::string expected = Census(*drawing);
    for (int version : {1074, 1073, 1069, 1055, 1054, 1050, 1049, 1048, 1047, 1028, 1027,
                        1026, 1022, 1021, 1015, 1014, 1013, 1012, 900,  0,    -5}) {
        OldFile old(*drawing, version);
        const Loaded loaded = Load(old.Make());
        EXPECT_TRUE(loaded.Ok()) << version << " " << loaded.errors.ToString();
        EXPECT_EQ(Census(*loaded.drawing), expected) << version;
        const Bytes bytes = old.Make();
        const auto file = ZvCore::MemFile::OverView(bytes.data(), bytes.size());
        EXPECT_TRUE(ZvNativeCheck::Run(*file).IsSound()) << version;
    }
}

TEST(NativeVersions, SettingsWereOneStringBefore1048) {
    OldFile old(*Plain(), 1040);
    old.settingsText = XStringW(u"CursorNudgeDistance=3\nTitle=Plan");
    const Loaded loaded = Load(old.Make());
    ASSERT_TRUE(loaded.Ok()) << loaded.errors.ToString();
}

TEST(NativeVersions, ClientsAreFoundByNameBefore1014AndByGuidFromThenOn) {
    OldFile byName(*Plain(), 1013);
    byName.clientName = "Somebody Else";
    EXPECT_EQ(Load(byName.Make()).drawing->NameTable().Count(), 5) << "kept as proxies";
    EXPECT_NE(Load(byName.Make())
                  .errors.ToString()
                  .find("5 objects could not be loaded. They were generated by the module Somebody Else"),
              std::string::npos);
    OldFile byGuid(*Plain(), 1014);
    byGuid.clientName = "Renamed since";
    EXPECT_TRUE(Load(byGuid.Make()).errors.IsEmpty());
}

TEST(NativeVersions, TheDateOfAFileComesFromItsVersionUntilItIsStored) {
    const auto date = [](int version, uint64_t stamp) {
        Bytes bytes = OldFile(*Plain(), version).Make();
        Put<uint64_t>(bytes, 96, stamp);
        Seal(bytes);
        return Load(bytes).drawing->FileDate();
    };
    EXPECT_EQ(date(1068, 5), DateTime::FromUtc(2010, 7, 26));
    EXPECT_EQ(date(1069, 5), DateTime::FromUtc(2012, 9, 3));
    EXPECT_EQ(date(1072, 5), DateTime::FromUtc(2012, 9, 3));
    EXPECT_EQ(date(1073, 5).ticks, 5u);
}

TEST(NativeVersions, BlockDigestsBindFrom1015On) {
    for (int version : {1014, 1015}) {
        Bytes bytes = OldFile(*Plain(), version).Make();
        bytes[104 + 20] = 1; // the first block's digest
        Seal(bytes);
        const Loaded loaded = Load(bytes);
        EXPECT_EQ(loaded.Ok(), version < 1015) << version;
        EXPECT_EQ(loaded.errors.Has(2003), version >= 1015) << version;
    }
}

TEST(NativeVersions, FlagBitZeroMeansSolidFrom1022On) {
    for (int version : {1021, 1022}) {
        Bytes bytes = OldFile(*Plain(), version).Make();
        Put<uint64_t>(bytes, 76, 1);
        Seal(bytes);
        EXPECT_EQ(Load(bytes).Ok(), version < 1022) << version;
    }
}

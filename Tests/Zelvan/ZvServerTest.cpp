#include "Zelvan/ZvServer.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvName.h"
#include <gtest/gtest.h>

TEST(ZvServer, MakesTheKindsThatItLists) {
    const ZvServer& server = ZvServer::Instance();
    const ZvServer::Client& own = ZvServer::BuiltInClient();
    EXPECT_EQ(own.code, 1);
    EXPECT_EQ(own.name, "Zelvan");
    EXPECT_FALSE(own.guid.IsNull());
    EXPECT_EQ(server.FindClient(own.guid), server.FindClient(uint16_t(1)));
    uint16_t last = 0;
    for (const ZvServer::Kind* kind : server.Kinds(1)) {
        EXPECT_TRUE(last == 0 || kind->type > last);
        last = kind->type;
        EXPECT_NE(kind->typeName, "");
        EXPECT_NE(server.NewEntity(kind->client, kind->type), nullptr) << kind->typeName;
    }
    EXPECT_EQ(server.NewEntity(ZvEntityCode::Full(1, ZvEntityCode::PointEnt))->GetEntityCode(),
              ZvEntityCode::PointEnt);
    EXPECT_EQ(server.NewEntity(1, 60000), nullptr);
    EXPECT_EQ(server.NewEntity(999, ZvEntityCode::PointEnt), nullptr);
}

TEST(ZvServer, RefusesClientsAndKindsThatClash) {
    ZvServer& server = ZvServer::Instance();
    const Guid guid = Guid::New();
    EXPECT_FALSE(server.RegisterClient({1, "Other", guid}));
    EXPECT_FALSE(server.RegisterClient({40001, "Zelvan", guid}));
    EXPECT_FALSE(server.RegisterClient({40001, "Other", ZvServer::BuiltInClient().guid}));
    EXPECT_FALSE(server.RegisterClient({40001, "Other", Guid{}}));
    EXPECT_FALSE(server.RegisterClient({0, "Other", guid}));
    const ZvServer::Factory make = [] { return ZvServer::Instance().NewEntity(1, ZvEntityCode::PointEnt); };
    EXPECT_FALSE(server.RegisterKind({40001, 7, "Kind", make}));
    ASSERT_TRUE(server.RegisterClient({40001, "Other", guid}));
    EXPECT_TRUE(server.RegisterKind({40001, 7, "Kind", make}));
    EXPECT_FALSE(server.RegisterKind({40001, 7, "Again", make}));
    EXPECT_FALSE(server.RegisterKind({40001, 8, "Nothing", nullptr}));
    EXPECT_NE(server.NewEntity(40001, 7), nullptr);
    EXPECT_EQ(server.FindClient("Other")->code, 40001);
}

TEST(ZvServer, KnowsDrawingsFromTheirConstructionToTheirEnd) {
    struct Listener : ZvcIEventListener {
        std::vector<int> codes;
        void OnEvent(const ZvcEvent& event) override { codes.push_back(event.code); }
    } listener;
    ZvServer& server = ZvServer::Instance();
    server.AddListener(&listener);
    const size_t before = server.Drawings().size();
    {
        ZvDrawing drawing;
        EXPECT_TRUE(server.IsRegistered(&drawing));
        drawing.MakeCurrentDrawing();
        EXPECT_EQ(server.CurrentDrawing(), &drawing);
    }
    EXPECT_EQ(server.CurrentDrawing(), nullptr);
    EXPECT_EQ(server.Drawings().size(), before);
    EXPECT_EQ(listener.codes,
              (std::vector<int>{ZvServer::kDrawingRegistered, ZvServer::kDrawingCreated,
                                ZvServer::kCurrentDrawingChanged, ZvServer::kCurrentDrawingChanged,
                                ZvServer::kDrawingUnregistered}));
    server.RemoveListener(&listener);
}

TEST(ZvName, ReadsDecimalNumbersOnly) {
    struct Case {
        const char16_t* text;
        bool ok;
        uint32_t value;
    };
    for (const Case& c :
         {Case{u"0", true, 0}, Case{u" 17\t", true, 17}, Case{u"4294967295", true, 4294967295u},
          Case{u"4294967296", false, 0}, Case{u"", false, 0}, Case{u"-1", false, 0}, Case{u"1 2", false, 0},
          Case{u"0x10", false, 0}, Case{u"99999999999999999999", false, 0}}) {
        ZvName name(3);
        EXPECT_EQ(ZvName::ParseString(c.text, name), c.ok);
        EXPECT_EQ(name.value, c.ok ? c.value : 3);
        EXPECT_EQ(ZvName::FromString(c.text).value, c.value);
    }
    EXPECT_EQ(ZvName(4000000000u).ToString(), XStringW(u"4000000000"));
}

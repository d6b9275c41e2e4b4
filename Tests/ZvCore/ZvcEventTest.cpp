#include "ZvCore/ZvcEvent.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace {

class Listener : public ZvcIEventListener {
public:
    explicit Listener(std::function<void(const ZvcEvent&)> then = {}) : m_then(std::move(then)) {}
    void OnEvent(const ZvcEvent& event) override {
        ++heard;
        if (m_then)
            m_then(event);
    }
    int heard = 0;

private:
    std::function<void(const ZvcEvent&)> m_then;
};

} // namespace

TEST(ZvcEvent, ListenersHearInOrderAndOnce) {
    ZvcIEventSender sender;
    std::vector<int> order;
    int subject = 0;
    Listener first([&](const ZvcEvent& e) {
        order.push_back(1);
        EXPECT_EQ(e.code, 20);
        EXPECT_EQ(e.value, 5);
        EXPECT_EQ(e.sender, &sender);
        EXPECT_EQ(e.subject, &subject);
    });
    Listener second([&](const ZvcEvent&) { order.push_back(2); });
    for (Listener* listener : {&first, &second, &first})
        sender.AddListener(listener);
    sender.PostEvent(20, 5, &subject);
    EXPECT_EQ(order, (std::vector{1, 2}));
    sender.RemoveListener(&first);
    sender.PostEvent(20);
    EXPECT_EQ(order, (std::vector{1, 2, 2}));
}

TEST(ZvcEvent, SubscriptionsMayChangeDuringAPost) {
    ZvcIEventSender sender;
    Listener late, removed, again;
    auto dying = std::make_unique<Listener>();
    Listener changer([&](const ZvcEvent& e) {
        if (e.code != 1)
            return;
        sender.RemoveListener(&removed);
        sender.RemoveListener(&again);
        sender.AddListener(&again);
        sender.AddListener(&late);
        dying.reset();
        sender.PostEvent(2); // the inner post reaches the listeners of this moment
        sender.RemoveListener(&changer);
    });
    for (ZvcIEventListener* l :
         {static_cast<ZvcIEventListener*>(&changer), static_cast<ZvcIEventListener*>(&removed),
          static_cast<ZvcIEventListener*>(dying.get()), static_cast<ZvcIEventListener*>(&again)})
        sender.AddListener(l);
    sender.PostEvent(1);
    EXPECT_EQ(removed.heard, 0);
    EXPECT_EQ(changer.heard, 2);
    EXPECT_EQ(late.heard, 1) << "the inner event, not the one during which it subscribed";
    EXPECT_EQ(again.heard, 1);
    sender.PostEvent(1);
    EXPECT_EQ(changer.heard, 2);
    EXPECT_EQ(late.heard, 2);
}

TEST(ZvcEvent, SenderMayDieDuringNestedPosts) {
    auto sender = std::make_unique<ZvcIEventSender>();
    Listener killer([&](const ZvcEvent& e) {
        if (e.code == 1)
            sender->PostEvent(2);
        else
            sender.reset();
    });
    Listener after;
    sender->AddListener(&killer);
    sender->AddListener(&after);
    sender->PostEvent(1);
    EXPECT_EQ(sender, nullptr);
    EXPECT_EQ(killer.heard, 2);
    EXPECT_EQ(after.heard, 0);
}

TEST(ZvcEvent, CopiesOfListenersAreNotSubscribed) {
    auto sender = std::make_unique<ZvcIEventSender>();
    Listener original;
    sender->AddListener(&original);
    {
        Listener copy = original;
        EXPECT_FALSE(sender->HasListener(&copy));
        sender.reset(); // neither may now be told again
    }
    EXPECT_EQ(original.heard, 0);
}

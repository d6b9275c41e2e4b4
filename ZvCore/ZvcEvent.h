#pragma once
#include "ZvCore/Api.h"
#include <cstdint>
#include <vector>

class ZvcIEventSender;

/// A numbered event. The meaning of `code`, `value` and `subject` is stated where the sender declares its
/// codes.
struct ZvcEvent {
    int code = 0;
    int64_t value = 0;
    ZvcIEventSender* sender = nullptr;
    void* subject = nullptr;
};

class ZV_API ZvcIEventListener {
public:
    ZvcIEventListener() = default;
    /// Subscriptions belong to the object, not to its value: a copy has none.
    ZvcIEventListener(const ZvcIEventListener&) {}
    ZvcIEventListener& operator=(const ZvcIEventListener&) { return *this; }
    virtual ~ZvcIEventListener();
    virtual void OnEvent(const ZvcEvent& event) = 0;

private:
    friend class ZvcIEventSender;
    std::vector<ZvcIEventSender*> m_senders; // kept so that a dying listener unsubscribes itself
};

/// Posts events to its listeners in the order in which they subscribed. Listeners may subscribe and
/// unsubscribe (themselves or others), die, post further events and destroy the sender while an event is
/// being posted; one added during a post first hears the next event. Window thread only.
class ZV_API ZvcIEventSender {
public:
    ZvcIEventSender() = default;
    ZvcIEventSender(const ZvcIEventSender&) = delete;
    ZvcIEventSender& operator=(const ZvcIEventSender&) = delete;
    virtual ~ZvcIEventSender();
    /// Null and repeated subscriptions are ignored.
    void AddListener(ZvcIEventListener* listener);
    void RemoveListener(ZvcIEventListener* listener);
    bool HasListener(const ZvcIEventListener* listener) const;
    void PostEvent(int code, int64_t value = 0, void* subject = nullptr);

private:
    friend class ZvcIEventListener;
    void Forget(ZvcIEventListener* listener);
    std::vector<ZvcIEventListener*> m_listeners; // null while a removed entry waits for the post to end
    int m_posting = 0;
    bool* m_died = nullptr; // of the innermost post: told when the sender goes
};

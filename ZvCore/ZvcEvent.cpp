#include "ZvCore/ZvcEvent.h"
#include <algorithm>

ZvcIEventListener::~ZvcIEventListener() {
    for (ZvcIEventSender* sender : m_senders)
        sender->Forget(this);
}

ZvcIEventSender::~ZvcIEventSender() {
    for (ZvcIEventListener* listener : m_listeners)
        if (listener)
            std::erase(listener->m_senders, this);
    if (m_died)
        *m_died = true;
}

void ZvcIEventSender::AddListener(ZvcIEventListener* listener) {
    if (!listener || HasListener(listener))
        return;
    m_listeners.push_back(listener);
    listener->m_senders.push_back(this);
}

void ZvcIEventSender::RemoveListener(ZvcIEventListener* listener) {
    if (!listener || !HasListener(listener))
        return;
    Forget(listener);
    std::erase(listener->m_senders, this);
}

bool ZvcIEventSender::HasListener(const ZvcIEventListener* listener) const {
    return listener && std::find(m_listeners.begin(), m_listeners.end(), listener) != m_listeners.end();
}

void ZvcIEventSender::Forget(ZvcIEventListener* listener) {
    if (m_posting == 0)
        std::erase(m_listeners, listener);
    else
        std::replace(m_listeners.begin(), m_listeners.end(), listener,
                     static_cast<ZvcIEventListener*>(nullptr));
}

void ZvcIEventSender::PostEvent(int code, int64_t value, void* subject) {
    const ZvcEvent event{code, value, this, subject};
    const size_t count = m_listeners.size();
    bool died = false;
    bool* const outer = m_died;
    m_died = &died;
    ++m_posting;
    for (size_t i = 0; i < count; ++i) {
        if (!m_listeners[i])
            continue;
        m_listeners[i]->OnEvent(event);
        if (died) {
            if (outer)
                *outer = true;
            return;
        }
    }
    m_died = outer;
    if (--m_posting == 0)
        std::erase(m_listeners, nullptr);
}

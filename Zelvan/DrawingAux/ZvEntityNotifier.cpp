#include "Zelvan/DrawingAux/ZvEntityNotifier.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/ZvDrawing.h"
#include <algorithm>

namespace {

bool Erase(std::unordered_map<uint32_t, std::vector<uint32_t>>& map, uint32_t key, uint32_t value) {
    const auto found = map.find(key);
    if (found == map.end() || !std::erase(found->second, value))
        return false;
    if (found->second.empty())
        map.erase(found);
    return true;
}

} // namespace

bool ZvEntityNotifier::Subscribe(ZvEntity& subscriber, ZvName watched) {
    const uint32_t name = subscriber.Name32();
    if (name == 0 || watched.IsNull() || name == watched.value || IsSubscribed(subscriber.Name(), watched))
        return false;
    m_watchers[watched.value].push_back(name);
    m_watched[name].push_back(watched.value);
    subscriber.SetSubscriber(true);
    return true;
}

bool ZvEntityNotifier::Unsubscribe(ZvEntity& subscriber, ZvName watched) {
    if (!Erase(m_watchers, watched.value, subscriber.Name32()))
        return false;
    Erase(m_watched, subscriber.Name32(), watched.value);
    subscriber.SetSubscriber(m_watched.count(subscriber.Name32()) != 0);
    return true;
}

void ZvEntityNotifier::UnsubscribeAll(ZvEntity& subscriber) {
    const auto found = m_watched.find(subscriber.Name32());
    if (found != m_watched.end()) {
        for (uint32_t watched : found->second)
            Erase(m_watchers, watched, subscriber.Name32());
        m_watched.erase(found);
    }
    subscriber.SetSubscriber(false);
}

bool ZvEntityNotifier::IsSubscribed(ZvName subscriber, ZvName watched) const {
    const auto found = m_watched.find(subscriber.value);
    return found != m_watched.end() &&
           std::find(found->second.begin(), found->second.end(), watched.value) != found->second.end();
}

size_t ZvEntityNotifier::Count() const {
    size_t count = 0;
    for (const auto& [name, watched] : m_watched)
        count += watched.size();
    return count;
}

void ZvEntityNotifier::Tell(ZvName who, int what) {
    const auto found = m_watchers.find(who.value);
    if (found == m_watchers.end() ||
        std::find(m_telling.begin(), m_telling.end(), who.value) != m_telling.end())
        return;
    m_telling.push_back(who.value);
    const std::vector<uint32_t> subscribers = found->second; // they may subscribe and unsubscribe meanwhile
    for (uint32_t name : subscribers)
        if (ZvEntity* entity = m_drawing.GetEntity(ZvName(name)); entity && IsSubscribed(ZvName(name), who))
            entity->Notify(who, what);
    m_telling.pop_back();
}

void ZvEntityNotifier::Clear() {
    for (const auto& [name, watched] : m_watched)
        if (ZvEntity* entity = m_drawing.GetEntity(ZvName(name)))
            entity->SetSubscriber(false);
    m_watchers.clear();
    m_watched.clear();
}

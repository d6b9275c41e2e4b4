#pragma once
#include "Zelvan/ZvName.h"
#include "ZvCore/Api.h"
#include <cstdint>
#include <unordered_map>
#include <vector>

class ZvDrawing;
class ZvEntity;

/// What a subscriber is told about the entity it watches.
namespace ZvNotifyWhat {
enum : int {
    Changed = 1,  ///< geometry or appearance
    Erased = 2,   ///< flagged erased
    Restored = 3, ///< no longer flagged erased
    Removed = 4,  ///< leaves the drawing; its name means nothing afterwards
};
}

/// Lets entities of a drawing watch other entities of it, by name. Not locked: window thread only.
class ZV_API ZvEntityNotifier {
public:
    explicit ZvEntityNotifier(ZvDrawing& drawing) : m_drawing(drawing) {}
    ZvEntityNotifier(const ZvEntityNotifier&) = delete;
    ZvEntityNotifier& operator=(const ZvEntityNotifier&) = delete;

    /// False when either has no name, both are the same, or the subscription exists. The subscriber is
    /// flagged.
    bool Subscribe(ZvEntity& subscriber, ZvName watched);
    bool Unsubscribe(ZvEntity& subscriber, ZvName watched);
    /// Ends all subscriptions of the entity.
    void UnsubscribeAll(ZvEntity& subscriber);
    bool IsSubscribed(ZvName subscriber, ZvName watched) const;
    bool IsWatched(ZvName watched) const { return m_watchers.count(watched.value) != 0; }
    size_t Count() const;

    /// Calls `ZvEntity::Notify` of every subscriber that still exists, in the order of subscription. A change
    /// of an entity made while it is itself being told of a change (a ring of subscriptions) is not passed on
    /// again.
    void Tell(ZvName who, int what);
    void Clear();

private:
    ZvDrawing& m_drawing;
    std::unordered_map<uint32_t, std::vector<uint32_t>> m_watchers; // watched -> subscribers
    std::unordered_map<uint32_t, std::vector<uint32_t>> m_watched;  // subscriber -> watched
    std::vector<uint32_t> m_telling;
};

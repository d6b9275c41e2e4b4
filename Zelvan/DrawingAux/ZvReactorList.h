#pragma once
#include <algorithm>
#include <vector>

/// Observed listeners in order of registration. Listeners may join and leave, themselves or others, while
/// being called.
template <class Reactor>
class ZvReactorList {
public:
    /// Null and repeated registrations are ignored.
    void Add(Reactor* reactor) {
        if (reactor && !Has(reactor))
            m_list.push_back(reactor);
    }
    bool Remove(Reactor* reactor) {
        const auto found = std::find(m_list.begin(), m_list.end(), reactor);
        if (!reactor || found == m_list.end())
            return false;
        if (m_calling)
            *found = nullptr;
        else
            m_list.erase(found);
        return true;
    }
    bool Has(const Reactor* reactor) const {
        return std::find(m_list.begin(), m_list.end(), reactor) != m_list.end();
    }
    bool IsEmpty() const { return m_list.empty(); }
    void Clear() {
        if (m_calling)
            std::fill(m_list.begin(), m_list.end(), nullptr);
        else
            m_list.clear();
    }

    /// Calls `call(reactor)` for each until one answers false; false when one did. Those that join meanwhile
    /// are not called.
    template <class Call>
    bool All(Call call) {
        bool all = true;
        const size_t count = m_list.size();
        ++m_calling;
        for (size_t i = 0; all && i < count; ++i)
            if (m_list[i])
                all = call(*m_list[i]);
        if (--m_calling == 0)
            std::erase(m_list, nullptr);
        return all;
    }
    template <class Call>
    void Each(Call call) {
        All([&](Reactor& reactor) {
            call(reactor);
            return true;
        });
    }

private:
    std::vector<Reactor*> m_list;
    int m_calling = 0;
};

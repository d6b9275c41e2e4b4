#include "Zelvan/DrawingAux/ZvAnimationConductor.h"
#include <algorithm>

ZvAnimationConductor::~ZvAnimationConductor() = default;

int ZvAnimationConductor::Start(std::unique_ptr<IZvAnimation> animation, double now) {
    (m_ticking ? m_started : m_running).push_back({++m_lastId, now, std::move(animation)});
    return m_lastId;
}

bool ZvAnimationConductor::Stop(int id) {
    for (auto* list : {&m_running, &m_started}) {
        const auto found =
            std::find_if(list->begin(), list->end(), [&](const auto& r) { return r.id == id; });
        if (id == 0 || found == list->end())
            continue;
        if (m_ticking && list == &m_running)
            found->id = 0; // its Advance may be on the call stack
        else
            list->erase(found);
        return true;
    }
    return false;
}

void ZvAnimationConductor::StopAll() {
    m_started.clear();
    if (!m_ticking)
        m_running.clear();
    for (Running& running : m_running)
        running.id = 0;
}

bool ZvAnimationConductor::IsRunning(int id) const {
    const auto same = [&](const Running& running) { return running.id == id; };
    return id && (std::any_of(m_running.begin(), m_running.end(), same) ||
                  std::any_of(m_started.begin(), m_started.end(), same));
}

int ZvAnimationConductor::Count() const {
    const auto runs = [](const Running& running) { return running.id != 0; };
    return int(std::count_if(m_running.begin(), m_running.end(), runs) + ptrdiff_t(m_started.size()));
}

int ZvAnimationConductor::Tick(double now) {
    if (m_ticking)
        return Count();
    m_ticking = true;
    for (Running& running : m_running)
        if (running.id && !running.animation->Advance(now - running.start))
            running.id = 0;
    m_ticking = false;
    std::erase_if(m_running, [](const Running& running) { return running.id == 0; });
    std::move(m_started.begin(), m_started.end(), std::back_inserter(m_running));
    m_started.clear();
    return Count();
}

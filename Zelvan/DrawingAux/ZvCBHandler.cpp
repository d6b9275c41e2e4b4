#include "Zelvan/DrawingAux/ZvCBHandler.h"
#include <algorithm>

int ZvCBHandler::Register(std::string name, Callback callback) {
    if (!callback)
        return 0;
    m_callbacks[++m_lastId] = {std::move(name), std::move(callback)};
    return m_lastId;
}

bool ZvCBHandler::Unregister(int id) {
    return m_callbacks.erase(id) != 0;
}

bool ZvCBHandler::Has(std::string_view name) const {
    return std::any_of(m_callbacks.begin(), m_callbacks.end(),
                       [&](const auto& entry) { return entry.second.name == name; });
}

bool ZvCBHandler::Call(std::string_view name, const Arguments& arguments, Value* result) const {
    std::vector<int> ids;
    for (const auto& [id, entry] : m_callbacks)
        if (entry.name == name)
            ids.push_back(id);
    bool called = false;
    for (int id : ids)
        if (const auto found = m_callbacks.find(id); found != m_callbacks.end()) {
            const Callback callback = found->second.callback; // may unregister itself
            Value value = callback(arguments);
            called = true;
            if (result)
                *result = std::move(value);
        }
    return called;
}

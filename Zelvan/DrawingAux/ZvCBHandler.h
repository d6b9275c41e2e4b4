#pragma once
#include "ZvCore/Api.h"
#include "ZvCore/XString.h"
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Named callbacks of a drawing: modules that do not know each other offer and call functions by name.
class ZV_API ZvCBHandler {
public:
    using Value = std::variant<std::monostate, bool, int64_t, double, XStringW>;
    using Arguments = std::vector<Value>;
    using Callback = std::function<Value(const Arguments&)>;

    /// Several callbacks may have one name. Answers a number for Unregister, never 0 (0 for an empty
    /// callback).
    int Register(std::string name, Callback callback);
    bool Unregister(int id);
    bool Has(std::string_view name) const;
    /// Calls all of that name in order of registration; the result is the last one's. False when there is
    /// none. Callbacks may register and unregister meanwhile; new ones are not called.
    bool Call(std::string_view name, const Arguments& arguments = {}, Value* result = nullptr) const;
    int Count() const { return int(m_callbacks.size()); }

private:
    struct Entry {
        std::string name;
        Callback callback;
    };
    std::map<int, Entry> m_callbacks; // by id, which is the order of registration
    int m_lastId = 0;
};

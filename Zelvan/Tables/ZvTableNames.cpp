#include "Zelvan/Tables/ZvTable.h"
#include "ZvCore/ZvErrors.h"
#include <algorithm>
#include <array>
#include <string>

// Names of records: which are valid, automatic ones, the map from names to records.

namespace {

constexpr int kAttemptsBeforeJumps = 1000;
constexpr int kAttemptsBetweenJumps = 100;
constexpr int kMostAttempts = 10000;
/// More digits at the end of a name are not counted on: the rest belongs to the stem.
constexpr size_t kMostDigits = 15;

bool IsDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

/// A name taken apart: "Wall09" is the stem "Wall" and the number 9 in a field of 2.
struct NumberedName {
    XStringW stem;
    int64_t number = 0;
    int width = 0; ///< 0: the name does not end in digits

    explicit NumberedName(const XStringW& name) {
        size_t at = name.Length();
        while (at > 0 && IsDigit(name[at - 1]) && name.Length() - at < kMostDigits)
            --at;
        stem = name.View().substr(0, at);
        width = int(name.Length() - at);
        for (; at < name.Length(); ++at)
            number = number * 10 + (name[at] - u'0');
    }

    XStringW With(int64_t value) const {
        const std::string format = width > 0 ? "%" + std::to_string(width) + "lld" : "%lld";
        char digits[64];
        std::snprintf(digits, sizeof(digits), format.c_str(), static_cast<long long>(value));
        return stem + XStringW::FromUtf8(digits);
    }
};

} // namespace

bool ZvTable::IsFreeName(const XStringW& name) const {
    return !m_byName.count(name.ToUpper());
}

bool ZvTable::IsNewNameValid(const XStringW& name) const {
    static constexpr std::array<std::u16string_view, 4> kReserved = {u"BYLAYER", u"BYBLOCK", u"BY LAYER",
                                                                     u"BY BLOCK"};
    if (!ZvTableRecord::CheckRecordName(name) || !IsFreeName(name))
        return false;
    const XStringW upper = name.ToUpper();
    return std::find(kReserved.begin(), kReserved.end(), upper.View()) == kReserved.end();
}

bool ZvTable::GetDefaultName(XStringW& out, const XStringW& base, const ZvTableRecord* record, bool useGuid) {
    if (useGuid && record && !record->GetGuid().IsNull() && !m_byGuid.count(record->GetGuid())) {
        out = record->GetGuid().ToString();
        return true;
    }
    return FindFreeName(out, base.IsEmpty() ? DefaultNameBase() + u"1" : ZvTableRecord::WithoutInvalid(base));
}

bool ZvTable::FindFreeName(XStringW& out, const XStringW& base) {
    const NumberedName parts(base);
    const int64_t start = parts.width > 0 ? parts.number : m_lastAutoNumber;
    XStringW candidate = base;
    int64_t k = 0;
    for (int attempt = 1; !IsFreeName(candidate); ++attempt) {
        if (attempt > kMostAttempts) {
            ZvErrors::Fatal("Failed to autoname new record");
            return false;
        }
        ++k;
        if (attempt > kAttemptsBeforeJumps && attempt % kAttemptsBetweenJumps == 0 && k < INT64_MAX / 8) {
            m_random = m_random * 6364136223846793005u + 1442695040888963407u;
            k = 2 * k + int64_t((m_random >> 33) % 10002);
        }
        candidate = parts.With(start + k);
    }
    m_lastAutoNumber = start + k;
    out = candidate;
    return true;
}

bool ZvTable::AssignDefaultName(ZvTableRecord& record, const XStringW& base, bool useGuid) {
    XStringW name;
    if (!GetDefaultName(name, base, &record, useGuid))
        return false;
    if (IsRecordInTable(&record))
        return ChildChangeName(record, name);
    record.SetNameFinal(name);
    return true;
}

bool ZvTable::NameCompareFunc(const ZvTableRecord* a, const ZvTableRecord* b) {
    const std::u16string_view x = a->GetNameUpCase().View(), y = b->GetNameUpCase().View();
    size_t i = 0, j = 0;
    while (i < x.size() && j < y.size()) {
        if (!IsDigit(x[i]) || !IsDigit(y[j])) {
            if (x[i] != y[j])
                return x[i] < y[j];
            ++i, ++j;
            continue;
        }
        const auto run = [](std::u16string_view text, size_t& at) {
            while (at < text.size() && text[at] == u'0')
                ++at;
            const size_t first = at;
            while (at < text.size() && IsDigit(text[at]))
                ++at;
            return text.substr(first, at - first);
        };
        const std::u16string_view p = run(x, i), q = run(y, j);
        if (p.size() != q.size())
            return p.size() < q.size();
        if (p != q)
            return p < q;
    }
    return x.size() - i != y.size() - j ? x.size() - i < y.size() - j : x < y;
}

void ZvTable::NameSetToIdSet(const std::set<XStringW>& names, std::set<uint32_t>& ids) const {
    ids.clear();
    for (const XStringW& name : names)
        if (const ZvTableRecord* record = GetByName(name))
            ids.insert(record->GetId());
}

void ZvTable::IdSetToNameSet(const std::set<uint32_t>& ids, std::set<XStringW>& names) const {
    names.clear();
    for (const uint32_t id : ids)
        if (const ZvTableRecord* record = GetById(id))
            names.insert(record->GetName());
}

void ZvTable::RegenNameMap() {
    m_byName.clear();
    for (const auto& record : m_records)
        m_byName.emplace(record->GetNameUpCase(), record.get());
}

bool ZvTable::ChildChangeName(ZvTableRecord& record, const XStringW& name) {
    const ZvTableRecord* holder = GetByName(name);
    if (!IsRecordInTable(&record) || (holder && holder != &record))
        return false;
    m_byName.erase(record.GetNameUpCase());
    record.SetNameFinal(name);
    m_byName[record.GetNameUpCase()] = &record;
    record.IncModified();
    TellWatchers(ZvTableEvent::Renamed, record.GetTableIndex());
    return true;
}

bool ZvTable::ChildChangeGuid(ZvTableRecord& record, const Guid& guid) {
    const ZvTableRecord* holder = GetByGuid(guid);
    if (!IsRecordInTable(&record) || guid.IsNull() || (holder && holder != &record))
        return false;
    m_byGuid.erase(record.GetGuid());
    record.SetGuidFinal(guid);
    m_byGuid[guid] = &record;
    record.IncModified();
    return true;
}

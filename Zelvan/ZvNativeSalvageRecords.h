#pragma once
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvNativeSalvageModel.h"
#include "Zelvan/ZvNativeWalk.h"
#include <cstdint>
#include <map>

/// Tells entity records from other bytes, and finds them among bytes that are damaged.
class ZvNativeSalvageRecords {
public:
    /// `clients`: the ids of the file, and whether they mean the engine itself.
    ZvNativeSalvageRecords(const ZvNativeHeader& header, std::map<uint16_t, bool> clients)
        : m_header(header), m_clients(std::move(clients)) {}

    /// Whether the bytes are a sound list: a count and exactly that many records. `list` gets the records.
    bool IsList(const uint8_t* bytes, uint64_t size, ZvSalvaged::Records& list) const;
    /// What records there are among the bytes: first those that chain from the start, then, wherever the chain breaks, from the
    /// next record of a known kind on whose payload makes sense.
    ZvSalvaged::Records Search(const uint8_t* bytes, uint64_t size) const;
    /// Whether the bytes are records of a table, one behind the other exactly to the end.
    static bool IsTableGroup(const uint8_t* bytes, uint64_t size, uint64_t& count);

private:
    /// The length of the record that may begin there, or 0.
    uint64_t MayBegin(const uint8_t* at, uint64_t left, bool strict) const;
    /// `trusted`: the answer for kinds of which only the length is known.
    bool MakesSense(const uint8_t* at, uint64_t length, bool trusted) const;

    const ZvNativeHeader& m_header;
    std::map<uint16_t, bool> m_clients;
};

#pragma once
#include "Zelvan/ZvNativeHeader.h"
#include "Zelvan/ZvNativeSalvageModel.h"
#include "Zelvan/ZvNativeWalk.h"
#include <cstdint>
#include <functional>
#include <map>

/// Tells entity records from other bytes, and finds them among bytes that are damaged.
class ZvNativeSalvageRecords {
public:
    /// `clients`: the ids of the file, and whether they mean the engine itself.
    /// `areAll`: false when the file has lost its list of them.
    ZvNativeSalvageRecords(const ZvNativeHeader& header, std::map<uint16_t, bool> clients, bool areAll)
        : m_header(header), m_clients(std::move(clients)), m_clientsLost(!areAll) {}

    /// Whether the bytes are a sound list: a count and exactly that many records. `list` gets the records.
    bool IsList(const uint8_t* bytes, uint64_t size, ZvSalvaged::Records& list) const;
    struct Place {
        uint64_t at, length;
    };
    /// What records there are among the bytes: first those that chain from the start, then, wherever the chain breaks, from the
    /// next record on whose payload makes sense, or which another follows where nothing but the length is known of its kind.
    /// `goOn` is asked every 64 KiB; when it says no the search ends.
    std::vector<Place> Search(const uint8_t* bytes, uint64_t size, const std::function<bool()>& goOn);
    /// The clients of the records of a sound list, for files that lost their list of them; without effect for others.
    void LearnClients(const ZvSalvaged::Records& list);

private:
    /// The length of the record that may begin there, or 0.
    uint64_t MayBegin(const uint8_t* at, uint64_t left, bool strict) const;
    /// Where the next record begins if one that was cut shorter seems to reach into it, or 0. Records inside of a whole one end
    /// with it, those that it reaches into do not.
    uint64_t Overrun(const uint8_t* bytes, uint64_t size, uint64_t at, uint64_t length,
                     uint64_t& effort) const;
    void LearnClient(const uint8_t* record);
    /// Whether a record that ends there is followed by another or by the end (a layer's mark may stand between).
    bool IsFollowed(const uint8_t* end, uint64_t left) const;
    /// `trusted`: the answer for kinds of which only the length is known.
    bool MakesSense(const uint8_t* at, uint64_t length, bool trusted) const;

    const ZvNativeHeader& m_header;
    std::map<uint16_t, bool> m_clients;
    bool m_clientsLost;
};

#pragma once
#include "Zelvan/ZvBounds.h"
#include <cstddef>
#include <memory>
#include <vector>

/// Boost.Geometry's trees over the same boxes.
class BoostPeer {
public:
    BoostPeer();
    ~BoostPeer();
    static bool IsHere();
    /// One by one into an R*-tree with 16 entries a node.
    void InsertDynamic(const std::vector<ZvBounds2D>& boxes);
    void BuildPacked(const std::vector<ZvBounds2D>& boxes);
    size_t QueryDynamic(const std::vector<ZvBounds2D>& windows) const;
    size_t QueryPacked(const std::vector<ZvBounds2D>& windows) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

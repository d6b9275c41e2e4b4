#pragma once
#include "Zelvan/ZvBNode.h"

/// The two halves of a split node, in one allocation: an insertion looks at one of them, a query at both.
struct ZvBNodePair {
    explicit ZvBNodePair(ZvBNode& parent);
    static void* operator new(size_t bytes);
    static void operator delete(void* pair, size_t bytes);

    ZvBNode child[2];
};

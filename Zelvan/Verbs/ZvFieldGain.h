#pragma once
#include "Zelvan/DrawingAux/ZvAttributeTable.h"
#include <vector>

class ZvLayer;

/// Attribute fields that a layer gained by a verb. Undo takes them away, redo brings them back to their places, even where
/// the entity whose row needed them was deleted for good in between: later verbs may set them.
class ZvFieldGain {
public:
    /// The layer's fields from index `before` on came by the verb.
    void Note(const ZvLayer& layer, int before);
    /// Adds those that the layer lacks.
    void BringBack(ZvLayer& layer) const;
    /// Removes them, save for those in which a row still has a value: it came by something that is not undone.
    void TakeAway(ZvLayer& layer) const;
    static int FieldCount(const ZvLayer& layer);
    size_t MemUsage() const;

private:
    struct Gained {
        ZvAttributeTable::Field field;
        int index; ///< in the table
    };
    std::vector<Gained> m_fields; ///< in the order in which they came
};

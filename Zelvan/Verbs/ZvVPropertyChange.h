#pragma once
#include "Zelvan/DrawingAux/ZvAttributeColumn.h"
#include "Zelvan/Entities/ZvEntityTypes.h"
#include "Zelvan/Verbs/ZvEntityState.h"
#include "Zelvan/Verbs/ZvFieldGain.h"
#include "Zelvan/Verbs/ZvOriginals.h"
#include "Zelvan/Verbs/ZvVerb.h"
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// Sets properties of entities (those of GetProperties, and "Visible", "Selectable", "LineCap") and attributes of the
/// features that they are. What an entity does not have or refuses stays as it is there. The layer is no property in this
/// sense: ZvVMoveToLayer changes it.
class ZV_API ZvVPropertyChange : public ZvVerb {
public:
    explicit ZvVPropertyChange(const ZvSelection& entities);

    /// False for "Layer".
    bool Set(const std::string& id, ZvProperty::Value value);
    /// `field`: of the attribute table of the entities' layers, without regard to case. NULL is a value, too.
    /// A text is read as the field's type wants it (ZvAttributeText::Parse).
    /// `addMissing`: layers that lack the field get it, of the value's type (NULL has none); Undo takes it away.
    void SetAttribute(const XStringW& field, ZvAttributeColumn::Value value, bool addMissing = false);
    /// Why values were not taken by the last Do, each reason once.
    const std::set<std::string>& Refusals() const { return m_refusals; }

    Kind GetKind() const override { return Kind::PropertyChange; }
    XStringW DefaultName() const override;
    size_t MemUsage() const override;
    bool IsNullOp() const override;
    void Do() override;
    void Undo() override;
    bool Redo() override;
    void RemoveFromSet(const ZvSelection& leaving) override;

private:
    struct FormerState {
        uint32_t name;
        ZvEntityState state;
    };
    struct FormerValue {
        uint32_t name;
        size_t attribute; ///< index into m_attributes
        bool hadRow;
        ZvAttributeColumn::Value value;
    };
    struct Attribute {
        XStringW field;
        ZvAttributeColumn::Value value;
        bool addMissing;
    };
    bool TouchesStateOnly() const;
    void ApplyToAll();
    bool ApplyProperties(ZvEntity& entity);
    void ApplyFlags(ZvEntity& entity, ZvPropertySetter& setter);
    void ApplyAttribute(ZvEntity& entity, size_t attribute);
    int FieldFor(ZvLayer& layer, const Attribute& attribute);
    void UndoAttribute(const FormerValue& former);

    std::vector<std::pair<std::string, ZvProperty::Value>> m_values;
    std::vector<Attribute> m_attributes;
    std::vector<FormerState> m_states; ///< where only states change
    ZvOriginals m_originals;           ///< where geometry may change
    std::vector<FormerValue> m_formerValues;
    std::map<uint32_t, ZvFieldGain> m_fields; ///< by layer id
    std::set<std::string> m_refusals;
    bool m_changedAny = false;
};

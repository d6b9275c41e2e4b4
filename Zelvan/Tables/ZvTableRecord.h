#pragma once
#include "Zelvan/Tables/ZvTableCodes.h"
#include "ZvCore/Api.h"
#include "ZvCore/Guid.h"
#include "ZvCore/XString.h"
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

class IZvSurface;
class ZvDrawing;
class ZvNameIntake;
class ZvNativeDesc;
class ZvPropertyGatherer;
class ZvPropertySetter;
class ZvRecordFields;
class ZvTable;
class ZvUsageTable;
struct Rect2I;

/// A named, shared resource of a drawing: layer, line type, block ... Belongs to whoever made it until a
/// table takes it.
class ZV_API ZvTableRecord {
public:
    enum Flag : uint16_t {
        kErased = 1,   ///< deleted for the user, kept for undo; not saved
        kInternal = 2, ///< made by the program for itself
        kHidden = 4,   ///< not offered to the user
        kXRef = 8,     ///< comes from an external reference
    };

    /// Not in a table: index -1, id 0, no name, a new unique guid.
    ZvTableRecord();
    virtual ~ZvTableRecord();
    ZvTableRecord(const ZvTableRecord&) = delete;
    ZvTableRecord& operator=(const ZvTableRecord&) = delete;

    virtual uint16_t GetClientCode() const { return ZvTableCode::kBuiltInClient; }
    /// The code of the record's kind, which is that of its table.
    virtual uint16_t GetRecordCode() const = 0;
    /// Client code shifted left 16 OR record code.
    uint32_t GetFullCode() const { return ZvTableCode::Full(GetRecordCode(), GetClientCode()); }

    // --- identity ------------------------------------------------------------------------------------------
    ZvTable* GetTable() const { return m_table; }
    bool IsInTable() const { return m_index >= 0; }
    /// The table's drawing; null for a record that belongs to no table.
    ZvDrawing* GetParentDrawing() const;
    /// Position in the table, -1 until inserted.
    int GetTableIndex() const { return m_index; }
    void SetTableIndex(int index) { m_index = index; }
    /// Unique per table and never used again; 0 = not inserted.
    uint32_t GetId() const { return m_id; }
    void SetTableId(uint32_t id) { m_id = id; }
    /// Lends the table (and through it the drawing) without being listed there.
    void SetTable(ZvTable* table) { m_table = table; }

    const Guid& GetGuid() const { return m_guid; }
    /// Through the table when in one: false when another record there has it.
    bool SetGuid(const Guid& guid);
    void SetGuidFinal(const Guid& guid) { m_guid = guid; }

    const XStringW& GetName() const { return m_name; }
    const XStringW& GetNameUpCase() const { return m_nameUpCase; }
    /// An unchanged name succeeds. A name that cannot be a record's reports error 17 with the name; a name
    /// that another record of the table has is refused. `viaTable` false leaves the table's name map alone.
    bool SetName(const XStringW& name, bool viaTable = true);
    /// Sets name and upper-case name, checks nothing, tells nobody.
    void SetNameFinal(const XStringW& name);
    /// Not empty and without / \ " ? * |
    static bool CheckRecordName(const XStringW& name);
    /// The name with "_" for each character that a name cannot have.
    static XStringW WithoutInvalid(const XStringW& name);

    // --- flags ---------------------------------------------------------------------------------------------
    bool IsErased() const { return m_flags & kErased; }
    void SetErased(bool on) { PutFlag(kErased, on); }
    bool IsInternal() const { return m_flags & kInternal; }
    void SetInternal(bool on) { PutFlag(kInternal, on); }
    bool IsHidden() const { return m_flags & kHidden; }
    void SetHidden(bool on) { PutFlag(kHidden, on); }
    bool IsXRef() const { return m_flags & kXRef; }
    void SetXRef(bool on) { m_flags = uint16_t(on ? m_flags | kXRef : m_flags & ~kXRef); }
    /// As SetXRef, and tells the table. Returns the former state.
    bool ChangeXRef(bool on);
    uint16_t GetRecordFlags() const { return m_flags; }
    bool IsVisibleToUser() const { return !(m_flags & (kInternal | kHidden)); }

    // --- usage and modification ----------------------------------------------------------------------------
    /// References counted by the last usage pass.
    int GetUsageCount() const { return m_usageCount; }
    void SetUsageCount(int count) { m_usageCount = count; }
    void IncUsageCount() { ++m_usageCount; }
    void DecUsageCount() { m_usageCount -= m_usageCount > 0; }
    uint64_t GetModifiedStamp() const { return m_modified; }
    /// Raises the stamp and the table's; watchers hear "changed".
    void IncModified();

    // --- content -------------------------------------------------------------------------------------------
    /// Name and the kind's fields, as properties whose identifiers are the fields'.
    void GetProperties(ZvPropertyGatherer& gatherer) const;
    /// Takes the properties that it knows; refused values keep their reason in the setter. When the record cannot
    /// hold one of the values, all fields stay as they were. One IncModified when anything changed.
    void SetProperties(ZvPropertySetter& setter);
    /// Takes over the fields (not name, guid, id, flags) of a record of the same kind. False for another
    /// kind.
    bool Merge(const ZvTableRecord& from);
    /// Copies what the other record (of the same kind) owns, entities or a drawing, to what this one owns;
    /// for records in a table.
    virtual void CopyContents(const ZvTableRecord& from);
    /// Deletes what the record owns.
    virtual void DropContents();
    /// A copy of fields, flags and name, of no table, without what the record owns, with a guid of its own.
    std::unique_ptr<ZvTableRecord> Clone() const;
    /// A new empty record of the same kind.
    virtual std::unique_ptr<ZvTableRecord> NewOfKind() const = 0;

    /// A swatch of the record for lists; kinds without one draw their name.
    virtual void DrawUI(IZvSurface& surface, const Rect2I& box) const;
    /// Counts the records of tables that this one (and the entities that it owns) refers to.
    virtual void TableUsage(ZvUsageTable& usage) const;
    /// Translates indices of records in other tables (after a merge, a load or a deletion).
    virtual void TableUpdate(ZvNativeDesc& desc);
    /// Called when something that decides whether the record shows has changed; views repaint.
    virtual void NotifyVisState();
    /// Called by the table right after insertion and right before removal.
    virtual void OnInserted() {}
    virtual void OnRemoving() {}

    // --- files ---------------------------------------------------------------------------------------------
    /// The record, its length (u64) first. Both false on success, true on failure, as for entities.
    bool NativeOut(ZvNativeDesc& desc) const;
    bool NativeIn(ZvNativeDesc& desc);
    /// Index under which the file knows the record; valid between NativeIn and the end of the load.
    int FileIndex() const { return m_fileIndex; }
    /// Kinds that own entities or a drawing write them apart from the records' own fields.
    virtual bool HasContents() const { return false; }
    virtual bool ContentsOut(ZvNativeDesc& desc) const;
    /// `end`: position of the current file where the contents end.
    virtual bool ContentsIn(ZvNativeDesc& desc, uint64_t end, ZvNameIntake& names);
    /// Has the visitor see the kind's own fields, in the order of files.
    void VisitFields(ZvRecordFields& visit) { Fields(visit); }
    /// The kind's own fields in the form of files, and back (one IncModified).
    std::vector<uint8_t> FieldBytes() const { return OwnFields(); }
    void TakeFieldBytes(std::span<const uint8_t> bytes);
    /// Bytes held, the record included; entities not.
    virtual size_t MemUsage() const;

protected:
    /// The kind's own fields, see ZvRecordFields.
    virtual void Fields(ZvRecordFields& visit) = 0;
    /// After fields were read or set: clamps values and rebuilds what is derived from them.
    virtual void FieldsChanged() {}
    void PutFlag(Flag flag, bool on);

private:
    friend class ZvTable;
    std::vector<uint8_t> OwnFields() const;
    bool HoldsWhatWasAsked(ZvPropertySetter& setter) const;

    ZvTable* m_table = nullptr;
    int32_t m_index = -1;
    uint32_t m_id = 0;
    uint16_t m_flags = 0;
    int32_t m_usageCount = 0;
    int32_t m_fileIndex = -1;
    uint64_t m_modified = 0;
    Guid m_guid;
    XStringW m_name;
    XStringW m_nameUpCase;
    std::vector<uint8_t> m_unknownTail; // fields of a newer program, written back
};

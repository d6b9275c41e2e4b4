#pragma once
#include "Zelvan/ZvBounds.h"
#include "Zelvan/ZvBrush.h"
#include "Zelvan/ZvColor.h"
#include "Zelvan/ZvEntityNameTable.h"
#include "Zelvan/ZvLineType.h"
#include "Zelvan/ZvLineWidth.h"
#include "Zelvan/ZvName.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvTextProperties.h"
#include "ZvCore/Api.h"
#include "ZvCore/DateTime.h"
#include "ZvCore/Guid.h"
#include "ZvCore/Settings.h"
#include "ZvCore/Status.h"
#include "ZvCore/TrivialHeap.h"
#include "ZvCore/Vec.h"
#include "ZvCore/XString.h"
#include "ZvCore/ZvcDumbHeap.h"
#include "ZvCore/ZvcEvent.h"
#include <array>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class IZvClientDraw;
class IZvCommandRunner;
class IZvCoordSystems;
class IZvEntityOwner;
class IZvGeometryKernel;
class IZvHost;
class IZvTextMeasure;
class ZvAnimationConductor;
class ZvAuxTimer;
class ZvBNode;
class ZvBitmapTable;
class ZvBlockTable;
class ZvCBHandler;
class ZvDataTable;
class ZvDefaultProperties;
class ZvDimStyleTable;
class ZvDrawingAuxData;
class ZvDrawingDialogs;
class ZvDrawingIO;
class ZvDrawingUIReactorHandler;
class ZvDrawingUtility;
class ZvEntity;
class ZvEntityAssociator;
class ZvEntityNotifier;
class ZvEntityProperties;
class ZvEntityReactorHandler;
class ZvFileFormatServer;
class ZvHomeGrid;
class ZvLayer;
class ZvLayerTable;
class ZvLayout;
class ZvLayoutTable;
class ZvLineTypeTable;
class ZvLooseOwner;
class ZvMergeHelper;
class ZvModOps;
class ZvNativeDesc;
class ZvPageSetTable;
class ZvPaperTable;
class ZvProgramTable;
class ZvSelFilter;
class ZvSelectionVolumeTable;
class ZvServer;
class ZvSimpleUI;
class ZvSwapManager;
class ZvTable;
class ZvTableTable;
class ZvTemporaryData;
class ZvTextStyleTable;
class ZvTextureTable;
class ZvUcsTable;
class ZvUnits;
class ZvUsageTable;
class ZvVerb;
class ZvVerbStack;
class ZvView;
class ZvViewOptions;
class ZvViewTable;
class ZvXRefTable;
struct ZvScaleSetup;

/// Events that a drawing posts to its listeners.
namespace ZvDrawingEvent {
enum : int {
    Reset = 1,
    Dying = 2,   ///< first act of destruction; everything is still there
    PreSave = 3, ///< value: 1 for the native format
    Saved = 4,
    Loaded = 5,
    SelectionChanged = 6,   ///< the current selection
    ViewsChanged = 7,       ///< a view was added, removed or made current; subject: the ZvView
    CoordinatesChanged = 8, ///< the coordinate system behind MetersToWorld
    Purged = 9,
    FatalError = 10,
    ModifiedChanged = 11, ///< value: 1 dirty, 0 clean
    CurrentPropertiesChanged = 20,
};
}

/// What a drawing is given from outside. Null members have the meaning stated; the objects must outlive the
/// drawing.
struct ZvDrawingSetup {
    bool createDefaults = true;            ///< make the default records of the tables
    IZvHost* host = nullptr;               ///< null: silent; questions get their default answers
    const IZvClock* clock = nullptr;       ///< null: the system's
    ZvFileFormatServer* formats = nullptr; ///< null: the application's
    ZvCore::Settings* settings = nullptr;  ///< those of the application; null: the server's
    Guid guid;                             ///< null: a new one
};

/// One open drawing: the in-memory database of entities, tables and services.
///
/// Entities live in the trees of layers and blocks; the drawing indexes them by name. A child layout drawing
/// (paper space) belongs to a layout of its parent and may borrow the first seven tables. Used on the window
/// thread only.
///
/// Pointers to tables and services are null only while the drawing is built or torn down, or where stated.
class ZV_API ZvDrawing : public ZvcIEventSender {
public:
    /// A model-space drawing with its default records.
    ZvDrawing();
    explicit ZvDrawing(const ZvDrawingSetup& setup);
    /// A child layout drawing of `parent` (which must outlive it); host, clock and servers are the parent's.
    ZvDrawing(ZvDrawing& parent, bool useProxyTables, bool createDefaults, const Guid& guid);
    ~ZvDrawing() override;
    ZvDrawing(const ZvDrawing&) = delete;
    ZvDrawing& operator=(const ZvDrawing&) = delete;

    // --- identity and settings ----------------------------------------------------------------------------
    const Guid& GetGuid() const { return m_guid; }
    void SetGuid(const Guid& guid) { m_guid = guid; }
    /// Equality tolerance for geometry, world units.
    double Tolerance() const { return m_tolerance; }
    void SetTolerance(double tolerance) { m_tolerance = tolerance; }
    bool AllowByLayer() const { return m_allowByLayer; }
    bool AllowByBlock() const { return m_allowByBlock; }
    bool AllowTexturedBrushes() const { return m_allowTexturedBrushes; }
    bool AllowTableReferences() const { return m_allowTableReferences; }
    void SetAllowByLayer(bool on) { m_allowByLayer = on; }
    void SetAllowByBlock(bool on) { m_allowByBlock = on; }
    void SetAllowTexturedBrushes(bool on) { m_allowTexturedBrushes = on; }
    void SetAllowTableReferences(bool on) { m_allowTableReferences = on; }
    uint32_t GetDefaultDrawFilter() const { return m_defaultDrawFilter; }
    void SetDefaultDrawFilter(uint32_t filter) { m_defaultDrawFilter = filter; }
    /// Settings of this drawing; they travel in its file. Call RefreshGlobalData after changing what is
    /// cached from them.
    ZvCore::Settings& Settings() { return m_settings; }
    const ZvCore::Settings& Settings() const { return m_settings; }
    /// The application's, not the drawing's own.
    const ZvCore::Settings& ApplicationSettings() const { return *m_applicationSettings; }
    /// Vertices may be stored in steps of at most this, world units. The setting "LinearPrecision" when it is
    /// positive, else 1e-6 metres in world units.
    double LinearPrecision() const { return m_linearPrecision; }
    /// Zero or less goes back to the default.
    void SetLinearPrecision(double worldUnits);
    /// The smallest length that matters, metres.
    static double DefaultPrecisionMeters() { return 1e-6; }
    /// Whether single-precision coordinates within `bounds` would be coarser than the linear precision.
    bool RequireDoublePrecision(const ZvBounds3D& bounds) const;
    /// Renews what is cached from settings, units and coordinate system.
    void RefreshGlobalData();
    /// Everything of the drawing that its file keeps outside of tables: settings, current attributes, units,
    /// author.
    void StoreSettings(ZvCore::BinXmlNode& node) const;
    /// `afterTables`: the pass that resolves references to records; the pass before takes the rest.
    void LoadSettings(const ZvCore::BinXmlNode& node, bool afterTables);
    /// When the file that was read had been written.
    DateTime FileDate() const { return m_fileDate; }
    void SetFileDate(DateTime date) { m_fileDate = date; }

    IZvHost* Host() const { return m_host; }
    void SetHost(IZvHost* host) { m_host = host; }
    const IZvClock& Clock() const { return *m_clock; }
    ZvServer* Server() const { return m_server; }
    ZvFileFormatServer& FileFormats() const { return *m_formats; }
    /// Ports that may be missing.
    IZvCoordSystems* CoordSystems() const { return m_coordSystems; }
    void SetCoordSystems(IZvCoordSystems* port);
    IZvGeometryKernel* GeometryKernel() const { return m_geometryKernel; }
    void SetGeometryKernel(IZvGeometryKernel* port) { m_geometryKernel = port; }
    IZvTextMeasure* TextMeasure() const { return m_textMeasure; }
    void SetTextMeasure(IZvTextMeasure* port) { m_textMeasure = port; }

    // --- child layouts ------------------------------------------------------------------------------------
    bool IsChildLayout() const { return m_isChildLayout; }
    bool IsChildLayoutWithProxyTables() const { return m_hasProxyTables; }
    /// Whether the table is the parent's.
    bool IsProxyTable(const ZvTable* table) const;
    ZvDrawing* ParentLayoutDrawing() const { return m_parent; }
    /// The parent's layout record that owns this drawing; null for a model-space drawing.
    ZvLayout* ParentLayoutRecord() const { return m_parentRecord; }
    void SetParentLayoutRecord(ZvLayout* record) { m_parentRecord = record; }
    /// Points the first seven accessors at the parent's tables.
    void GetProxyTablesFromParent();

    // --- memory -------------------------------------------------------------------------------------------
    ::TrivialHeap& TrivialHeap() { return *m_heap; }
    /// Arena for the variable-size blocks of loaded entities.
    ZvcDumbHeap& EntityHeap() { return *m_entityHeap; }
    /// Bytes of the arena that entities still use.
    size_t HeapLiveBytes() const;
    /// Bytes held by entities, names, arena and undo.
    size_t MemUsage() const;

    // --- tables -------------------------------------------------------------------------------------------
    ZvBitmapTable* BitmapTable() const { return m_bitmapTable; }
    ZvLineTypeTable* LineTypeTable() const { return m_lineTypeTable; }
    ZvBlockTable* BlockTable() const { return m_blockTable; }
    ZvTextStyleTable* TextStyleTable() const { return m_textStyleTable; }
    ZvProgramTable* ProgramTable() const { return m_programTable; }
    ZvTextureTable* TextureTable() const { return m_textureTable; }
    ZvDimStyleTable* DimStyleTable() const { return m_dimStyleTable; }
    ZvLayerTable* LayerTable() const { return m_layerTable; }
    ZvPaperTable* PaperTable() const { return m_paperTable; }
    ZvUcsTable* UcsTable() const { return m_ucsTable; }
    ZvXRefTable* XRefTable() const { return m_xrefTable; }
    ZvDataTable* DataTable() const { return m_dataTable; }
    ZvLayoutTable* LayoutTable() const { return m_layoutTable; }
    ZvViewTable* ViewTable() const { return m_viewTable; }
    ZvSelectionVolumeTable* SelectionVolumeTable() const { return m_selectionVolumeTable; }
    /// The tables that this drawing owns, in registration order.
    ZvTableTable* TableTable() const { return m_tableTable.get(); }
    /// Registers a further table (a plug-in's). It is destroyed with the drawing's own.
    void AddTable(std::unique_ptr<ZvTable> table);
    /// Record numbers have changed: translates references between records, those of entities and of the current
    /// attributes. Undo information goes, since it holds the former numbers.
    void TableUpdate(ZvNativeDesc& desc);

    /// Default records of the own tables.
    void CreateDefaults();
    /// Purges everything, goes back to default attributes and records, posts Reset and repaints.
    void Reset();
    /// Empties the drawing: selection, undo, entities, records.
    void Purge();
    /// Deletes the erased entities that no verb refers to.
    void PurgeErased();
    /// Counts uses, then deletes the records without any, in all tables or (a full code) in one; answers how
    /// many went.
    int PurgeUnusedTableRecords(uint32_t tableCode = 0);
    int GetRecordUsage(uint32_t tableCode, int index);
    /// Counts the uses anew and writes them into the records.
    void RefreshRecordUsage();
    /// Zeroes the counts of all records.
    void InitUsageStructs();
    /// Uses by entities and by records (blocks, layers, styles), the current attributes included; `selection`
    /// null: all.
    void GatherUsageInfo(ZvUsageTable& usage, const ZvSelection* selection = nullptr) const;
    void PopulateRecordUsageMap(ZvUsageTable& usage);

    // --- services -----------------------------------------------------------------------------------------
    /// Null in a child layout drawing.
    ZvPageSetTable* PageSetTable() const { return m_pageSetTable.get(); }
    /// Null in a child layout drawing.
    ZvSwapManager* SwapManager() const { return m_swapManager.get(); }
    ZvVerbStack* Verbs() const { return m_verbs.get(); }
    ZvAnimationConductor* Animation() const { return m_animation.get(); }
    ZvUnits* Units() const { return m_units.get(); }
    ZvDrawingUIReactorHandler* UIReactorHandler() const { return m_uiReactorHandler.get(); }
    ZvDrawingAuxData* AuxData() const { return m_auxData.get(); }
    ZvTemporaryData* TemporaryData() const { return m_temporaryData.get(); }
    ZvEntityNotifier* EntityNotifier() const { return m_entityNotifier.get(); }
    ZvMergeHelper* MergeHelper() const { return m_mergeHelper.get(); }
    ZvSelFilter* SelectionFilter() const { return m_selectionFilter.get(); }
    ZvDrawingUtility* Utility() const { return m_utility.get(); }
    ZvDrawingDialogs* Dialogs() const { return m_dialogs.get(); }
    ZvDrawingIO* DrawingIO() const { return m_io.get(); }
    ZvSimpleUI* SimpleUI() const { return m_simpleUI.get(); }
    ZvModOps* ModOps() const { return m_modOps.get(); }
    ZvDefaultProperties* DefaultProperties() const { return m_defaultProperties.get(); }
    ZvCBHandler* CBHandler() const { return m_cbHandler.get(); }
    ZvEntityReactorHandler* EntityReactorHandler() const { return m_entityReactorHandler.get(); }
    /// Target for entities that are built before they are inserted; in no table, always there for them to ask
    /// by layer.
    ZvLayer* ScratchLayer() const { return m_scratchLayer.get(); }
    ZvHomeGrid* HomeGrid() const { return m_homeGrid.get(); }
    ZvEntityAssociator* EntityAssociator() const { return m_entityAssociator.get(); }
    ZvEntityProperties* DefaultEntityProperties() const { return m_defaultEntityProperties.get(); }
    /// An owner that only lends this drawing to an entity that is in none.
    IZvEntityOwner* LooseOwner() const;

    // --- entities -----------------------------------------------------------------------------------------
    ZvEntityNameTable& NameTable() { return m_nameTable; }
    const ZvEntityNameTable& NameTable() const { return m_nameTable; }
    /// Gives the entity to a layer, which is made when missing: the named one, else the current one, else
    /// "0". The entity belongs to the drawing afterwards. The null name (and the entity is gone) only after
    /// "No default layer" was reported.
    ZvName Insert(std::unique_ptr<ZvEntity> entity, const XStringW& layerName = {});
    /// The same for an entity whose ownership the caller has released; it stays the caller's when the name is
    /// null.
    ZvName Insert(ZvEntity* entity, const XStringW& layerName = {});
    /// Takes the entity out of the name table and the notifier; the tree does the rest. For owners of
    /// entities.
    void Remove(ZvEntity* entity);
    /// What an editor or importer does with a new entity before Insert: current attributes when
    /// `applyCurrent`, Finalize, and the check whether it may be inserted (`reason` then says why not).
    bool FinalizeNewEntity(ZvEntity& entity, bool applyCurrent = true, XStringW* reason = nullptr);
    ZvEntity* GetEntity(ZvName name) const { return m_nameTable.GetQuiet(name); }
    /// Non-erased entities of all layers, bounds of all non-erased ones.
    ZvBounds3D Bounds(bool visibleOnly = false) const;
    /// Repaints everything. `deep`: cached bounds and draw sets are computed anew from the entities, too.
    void Regenerate(bool deep = false);

    /// What a search takes. The default is what a user can pick: visible and not erased, on visible layers.
    struct Find {
        bool invisible = false;      ///< also invisible entities, and those of invisible layers
        bool internalLayers = false; ///< also the program's own layers (grid, construction)
        bool lockedLayers = true;
        bool unselectable = true;
        bool crossing = true; ///< false: only what lies within the box entirely
        bool exact = true;    ///< by geometry; false: by bounds
    };
    /// Appends entities whose bounds (or geometry) meet the box, in XY.
    void FindEntities(const ZvBounds2D& box, std::vector<ZvEntity*>& found, const Find& options) const;
    void FindEntities(const ZvBounds2D& box, std::vector<ZvEntity*>& found) const;
    void FindEntitiesOnLayers(const std::vector<ZvLayer*>& layers, const ZvBounds2D& box,
                              std::vector<ZvEntity*>& found, const Find& options) const;
    /// The entity whose geometry is closest to the point in XY, within `radius` (world units); ties go to the
    /// one drawn last. Null when there is none.
    ZvEntity* FindClosest(const Vec3d& point, double radius, double* distance = nullptr) const;

    // --- selection: the Select family adds to `selection` what the selection filter lets pass -------------
    ZvSelection& CurrentSelection() { return *m_selection; }
    const ZvSelection& CurrentSelection() const { return *m_selection; }
    bool Select(ZvEntity* entity, ZvSelection& selection) const;
    int SelectAll(ZvSelection& selection) const;
    /// `crossing` false: only what the box encloses entirely. The tests are on the geometry.
    int SelectRect(const ZvBounds2D& box, bool crossing, ZvSelection& selection) const;
    /// Entities within `pixels` of the pick ray, nearest first, in the current view.
    int SelectCylinder(const Ray3d& ray, double pixels, ZvSelection& selection) const;
    int SelectCylinderWorldRadius(const Ray3d& ray, double radius, ZvSelection& selection) const;
    int SelectInCurrentView(ZvSelection& selection) const;
    /// By a polygon (closed by itself) in XY.
    int SelectClipper(const std::vector<Vec2d>& polygon, bool crossing, ZvSelection& selection) const;
    /// Makes the members the current selection and tells listeners; false when nothing changes.
    bool ChangeSelection(const ZvSelection& selection);
    void ClearCurrentSelection();
    /// Shows the current selection in the current view, with a margin; false without view or selection.
    bool AutoZoomCurrentSelection();

    // --- verbs and modification state ---------------------------------------------------------------------
    /// The stack owns the verb; the result is its sequence number, 0 when it did not end up on the stack.
    int DoVerb(ZvVerb* verb);
    /// The verb that the stack keeps, or null.
    ZvVerb* DoVerbR(ZvVerb* verb);
    bool IsModified(bool includeParent = false) const;
    void SetModified(bool modified = true);
    void ResetModified();
    /// Prints the number of verbs and their memory to the command prompt.
    void Stats();
    int SuspendAutoCleanup() { return ++m_cleanupSuspended; }
    int ResumeAutoCleanup();
    int GetAutoCleanupSuspendCount() const { return m_cleanupSuspended; }
    /// Deletes what no longer matters (unreachable erased entities), compacts the arena when most of it is
    /// garbage, and remembers when. Does nothing while suspended unless `force`.
    void Cleanup(bool force = false);
    struct CleanupStamp {
        double time = 0; ///< seconds, the clock's monotonic time
        int verbs = 0;   ///< verbs executed by then
    };
    const CleanupStamp& LastCleanup() const { return m_cleanupStamp; }
    /// The auxiliary timer's tick; hosts and tests drive it through Tick.
    void OnZvTimer(ZvAuxTimer& timer);
    /// Lets timers and animations notice the time; a host calls it at least once a second.
    void Tick();

    // --- current attributes; setters post CurrentPropertiesChanged ----------------------------------------
    ZvLineType CurrentLineType() const { return m_currentLineType; }
    ZvLineWidth CurrentLineWidth() const { return m_currentLineWidth; }
    const ZvColor& CurrentColor() const { return m_currentColor; }
    const ZvBrush& CurrentBrush() const { return m_currentBrush; }
    const ZvTextProperties& CurrentTextProperties() const { return m_currentText; }
    void SetCurrentLineType(ZvLineType type);
    void SetCurrentLineWidth(ZvLineWidth width);
    void SetCurrentColor(const ZvColor& color);
    void SetCurrentBrush(const ZvBrush& brush);
    void SetCurrentTextProperties(const ZvTextProperties& text);
    /// Reads (posting the event once) or writes all of them; references to records go by name.
    void SerializeCurrent(ZvCore::BinXmlNode& node, bool write);

    // --- coordinates --------------------------------------------------------------------------------------
    double MetersToWorld(double meters) const;
    double WorldToMeters(double world) const;
    /// WGS 84, degrees. False without a coordinate system, or outside of it.
    bool PtWorldToLatLon(const Vec3d& world, double& latitude, double& longitude) const;
    bool LatLonToPtWorld(double latitude, double longitude, Vec3d& world) const;
    /// Centre of the current view (world units) and its level of detail: 0 shows the equator on 256 pixels,
    /// each further level doubles the scale. False without a current view.
    bool GetScreenCenterAndLevel(Vec3d& center, double& level) const;
    /// After the coordinate system of the UCS table changed: renews caches, tells entities and listeners.
    void NotifyCoordinateSystemChanged();

    // --- views and user interface -------------------------------------------------------------------------
    /// The drawing owns its views; the first becomes the current one. Answers the view.
    ZvView* AddView(std::unique_ptr<ZvView> view);
    std::unique_ptr<ZvView> RemoveView(ZvView* view);
    ZvView* GetView(int index) const;
    ZvView* GetViewById(int id) const;
    int GetViewCount() const { return int(m_views.size()); }
    ZvView* GetCurrentView() const { return m_currentView; }
    bool SetCurrentView(ZvView* view);
    ZvViewOptions& ViewOptions() { return *m_viewOptions; }
    /// Connects the command processor; the drawing owns it from then on. False when there is one already.
    bool InitUI(std::unique_ptr<IZvCommandRunner> processor);
    void ShutdownUI();
    bool HasUI() const { return m_processor != nullptr; }
    IZvCommandRunner* CmdProcessor() const { return m_processor.get(); }
    bool HasCmdProcessor() const { return m_processor != nullptr; }
    void StatusBar(const XStringW& text);
    /// Prints to the command window; PromptL adds a line end, PromptControl sets the prompt that waits for
    /// input.
    void Prompt(const XStringW& text) const;
    void PromptL(const XStringW& text) const;
    void PromptControl(const XStringW& prompt) const;
    /// Runs a command line; false without a command processor or when it refuses.
    bool Execute(const XStringW& line);
    /// Repaints what shows the box in every view, those of layouts included. Cheap without views.
    void Invalidate(const ZvBounds3D& bounds);
    /// Drawers of plug-ins, called after the entities of a view; not owned.
    void RegisterClientDraw(IZvClientDraw* drawer);
    void UnregisterClientDraw(IZvClientDraw* drawer);
    /// Those that want to draw now, or all.
    std::vector<IZvClientDraw*> GetClientDrawers() const;
    const std::vector<IZvClientDraw*>& GetClientDrawersAll() const { return m_clientDrawers; }

    // --- life ---------------------------------------------------------------------------------------------
    /// False while a command is busy (which is then told to cancel).
    bool CanDestroy();
    /// Also while Purge empties the drawing: owners then let go of their entities without telling it about
    /// each.
    bool Destroying() const { return m_destroying || m_emptying; }
    /// Makes this the application's current drawing.
    void MakeCurrentDrawing();
    static ZvDrawing* CurrentDrawing();
    /// Offers to save, then posts FatalError.
    void FatalError();
    /// The database has become inconsistent: notes it, tells the user and ends the process rather than let a
    /// corrupt drawing be saved. With a crash reporter set, reports "betacrash" to it and returns. Use
    /// through ZV_BETA_CRASH.
    void BetaCrash(const char* text, const char* file, int line);
    using TerminateHook = std::function<void()>;
    using CrashReporter = std::function<void(std::string_view kind, std::string_view text)>;
    /// Replaces how the process ends (tests); an empty hook restores std::_Exit. Answers the former one.
    static TerminateHook SetTerminateHook(TerminateHook hook);
    static CrashReporter SetCrashReporter(CrashReporter reporter);

private:
    void Construct(bool isChildLayout, bool useProxyTables, bool createDefaults, ZvDrawing* parent,
                   const Guid& guid);
    void ConstructServices();
    void ConstructTables();
    void ConstructLateServices();
    template <class T>
    T* MakeTable();
    void DestroyTables();
    void DestroyServices();
    void SetDefaultAttributes();
    void MakeHomeGrid();
    void StampCleanup();
    void CompactEntityHeap();
    ZvLayer* LayerForInsert(const XStringW& layerName);
    void CurrentPropertiesChanged();
    ZvBNode* TreeOf(ZvLayer& layer) const;
    void ForEachTree(const std::function<void(ZvBNode&)>& visit) const;
    int AddFiltered(const std::vector<ZvEntity*>& found, ZvSelection& selection) const;
    void MemberUsage(ZvUsageTable& usage, const ZvSelection& selection) const;

    // Destruction ends in the reverse of this order: name table, selection, view options, timer registration.
    std::unique_ptr<ZvAuxTimer> m_timer;
    std::unique_ptr<ZvViewOptions> m_viewOptions;
    std::unique_ptr<ZvSelection> m_selection;
    ZvEntityNameTable m_nameTable;

    Guid m_guid;
    double m_tolerance = 1e-6;
    double m_linearPrecision = 1e-6;
    uint32_t m_defaultDrawFilter = 0;
    bool m_allowByLayer = true;
    bool m_allowByBlock = true;
    bool m_allowTexturedBrushes = true;
    bool m_allowTableReferences = true;
    bool m_isChildLayout = false;
    bool m_hasProxyTables = false;
    bool m_destroying = false;
    bool m_emptying = false;
    int m_cleanupSuspended = 0;
    CleanupStamp m_cleanupStamp;
    DateTime m_fileDate;
    ZvCore::Settings m_settings;

    ZvLineType m_currentLineType;
    ZvLineWidth m_currentLineWidth;
    ZvColor m_currentColor;
    ZvBrush m_currentBrush;
    ZvTextProperties m_currentText;

    ZvDrawing* m_parent = nullptr;
    ZvLayout* m_parentRecord = nullptr;
    IZvHost* m_host = nullptr;
    const IZvClock* m_clock = nullptr;
    const ZvCore::Settings* m_applicationSettings = nullptr;
    ZvServer* m_server = nullptr;
    ZvFileFormatServer* m_formats = nullptr;
    IZvCoordSystems* m_coordSystems = nullptr;
    IZvGeometryKernel* m_geometryKernel = nullptr;
    IZvTextMeasure* m_textMeasure = nullptr;

    std::unique_ptr<IZvCommandRunner> m_processor;
    std::vector<std::unique_ptr<ZvView>> m_views;
    ZvView* m_currentView = nullptr;
    std::vector<IZvClientDraw*> m_clientDrawers;

    std::unique_ptr<::TrivialHeap> m_heap;
    std::unique_ptr<ZvcDumbHeap> m_entityHeap;
    std::unique_ptr<ZvLooseOwner> m_looseOwner;

    // In the order of construction.
    HeapPtr<ZvPageSetTable> m_pageSetTable;
    HeapPtr<ZvSwapManager> m_swapManager;
    HeapPtr<ZvVerbStack> m_verbs;
    HeapPtr<ZvAnimationConductor> m_animation;
    HeapPtr<ZvUnits> m_units;
    HeapPtr<ZvDrawingUIReactorHandler> m_uiReactorHandler;
    HeapPtr<ZvDrawingAuxData> m_auxData;
    HeapPtr<ZvTemporaryData> m_temporaryData;
    HeapPtr<ZvEntityNotifier> m_entityNotifier;
    HeapPtr<ZvMergeHelper> m_mergeHelper;
    HeapPtr<ZvSelFilter> m_selectionFilter;
    HeapPtr<ZvDrawingUtility> m_utility;
    HeapPtr<ZvDrawingDialogs> m_dialogs;
    HeapPtr<ZvDrawingIO> m_io;
    HeapPtr<ZvSimpleUI> m_simpleUI;
    HeapPtr<ZvModOps> m_modOps;
    HeapPtr<ZvTableTable> m_tableTable;
    std::vector<HeapPtr<ZvTable>> m_ownTables; // in registration order
    std::vector<std::unique_ptr<ZvTable>> m_addedTables;
    HeapPtr<ZvDefaultProperties> m_defaultProperties;
    HeapPtr<ZvCBHandler> m_cbHandler;
    HeapPtr<ZvEntityReactorHandler> m_entityReactorHandler;
    HeapPtr<ZvLayer> m_scratchLayer;
    HeapPtr<ZvHomeGrid> m_homeGrid;
    HeapPtr<ZvEntityAssociator> m_entityAssociator;
    HeapPtr<ZvEntityProperties> m_defaultEntityProperties;

    ZvBitmapTable* m_bitmapTable = nullptr;
    ZvLineTypeTable* m_lineTypeTable = nullptr;
    ZvBlockTable* m_blockTable = nullptr;
    ZvTextStyleTable* m_textStyleTable = nullptr;
    ZvProgramTable* m_programTable = nullptr;
    ZvTextureTable* m_textureTable = nullptr;
    ZvDimStyleTable* m_dimStyleTable = nullptr;
    ZvLayerTable* m_layerTable = nullptr;
    ZvPaperTable* m_paperTable = nullptr;
    ZvUcsTable* m_ucsTable = nullptr;
    ZvXRefTable* m_xrefTable = nullptr;
    ZvDataTable* m_dataTable = nullptr;
    ZvLayoutTable* m_layoutTable = nullptr;
    ZvViewTable* m_viewTable = nullptr;
    ZvSelectionVolumeTable* m_selectionVolumeTable = nullptr;
};

/// Stops on an inconsistent database; `text` may be null.
#define ZV_BETA_CRASH(drawing, text) (drawing)->BetaCrash((text), __FILE__, __LINE__)

#include "Zelvan/ZvDrawing.h"
#include "Zelvan/DrawingAux/IZvClientDraw.h"
#include "Zelvan/DrawingAux/IZvCommandRunner.h"
#include "Zelvan/DrawingAux/ZvAnimationConductor.h"
#include "Zelvan/DrawingAux/ZvAuxTimer.h"
#include "Zelvan/DrawingAux/ZvCBHandler.h"
#include "Zelvan/DrawingAux/ZvDefaultProperties.h"
#include "Zelvan/DrawingAux/ZvDrawingAuxData.h"
#include "Zelvan/DrawingAux/ZvDrawingDialogs.h"
#include "Zelvan/DrawingAux/ZvDrawingUIReactorHandler.h"
#include "Zelvan/DrawingAux/ZvDrawingUtility.h"
#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/DrawingAux/ZvEntityNotifier.h"
#include "Zelvan/DrawingAux/ZvEntityProperties.h"
#include "Zelvan/DrawingAux/ZvEntityReactorHandler.h"
#include "Zelvan/DrawingAux/ZvHomeGrid.h"
#include "Zelvan/DrawingAux/ZvLooseOwner.h"
#include "Zelvan/DrawingAux/ZvMergeHelper.h"
#include "Zelvan/DrawingAux/ZvModOps.h"
#include "Zelvan/DrawingAux/ZvPageSetTable.h"
#include "Zelvan/DrawingAux/ZvSimpleUI.h"
#include "Zelvan/DrawingAux/ZvSwapManager.h"
#include "Zelvan/DrawingAux/ZvTemporaryData.h"
#include "Zelvan/DrawingAux/ZvVerbStack.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Ports/IZvHost.h"
#include "Zelvan/Tables/ZvBitmapTable.h"
#include "Zelvan/Tables/ZvBlockTable.h"
#include "Zelvan/Tables/ZvDataTable.h"
#include "Zelvan/Tables/ZvDimStyleTable.h"
#include "Zelvan/Tables/ZvLayerTable.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvLineTypeTable.h"
#include "Zelvan/Tables/ZvPaperTable.h"
#include "Zelvan/Tables/ZvProgramTable.h"
#include "Zelvan/Tables/ZvSelectionVolumeTable.h"
#include "Zelvan/Tables/ZvTextStyleTable.h"
#include "Zelvan/Tables/ZvTextureTable.h"
#include "Zelvan/Tables/ZvUcsTable.h"
#include "Zelvan/Tables/ZvViewTable.h"
#include "Zelvan/Tables/ZvXRefTable.h"
#include "Zelvan/View/ZvView.h"
#include "Zelvan/View/ZvViewOptions.h"
#include "Zelvan/ZvDrawingIO.h"
#include "Zelvan/ZvFileFormatServer.h"
#include "Zelvan/ZvSelFilter.h"
#include "Zelvan/ZvServer.h"
#include "Zelvan/ZvTableTable.h"
#include "Zelvan/ZvUnits.h"

// Where a drawing is put together and taken apart.

namespace {

constexpr size_t kFirstBlock = 8192;
constexpr size_t kFirstBlockWithProxyTables = 5632;
constexpr int kTimerPeriodMs = 1000;

/// Makes an object whose memory belongs to the heap and which the pointer destroys.
template <class T, class... Args>
void Make(HeapPtr<T>& owner, TrivialHeap& heap, Args&&... args) {
    owner.reset(heap.New<T>(std::forward<Args>(args)...));
}

} // namespace

ZvDrawing::ZvDrawing() : ZvDrawing(ZvDrawingSetup()) {}

ZvDrawing::ZvDrawing(const ZvDrawingSetup& setup)
    : m_host(setup.host), m_clock(setup.clock ? setup.clock : &IZvClock::System()),
      m_applicationSettings(setup.settings ? setup.settings : &ZvServer::Instance().Settings()),
      m_formats(setup.formats ? setup.formats : &ZvFileFormatServer::Application()) {
    Construct(false, false, setup.createDefaults, nullptr, setup.guid);
}

ZvDrawing::ZvDrawing(ZvDrawing& parent, bool useProxyTables, bool createDefaults, const Guid& guid)
    : m_host(parent.m_host), m_clock(parent.m_clock), m_applicationSettings(parent.m_applicationSettings),
      m_formats(parent.m_formats), m_coordSystems(parent.m_coordSystems),
      m_geometryKernel(parent.m_geometryKernel), m_textMeasure(parent.m_textMeasure) {
    Construct(true, useProxyTables, createDefaults, &parent, guid);
}

void ZvDrawing::Construct(bool isChildLayout, bool useProxyTables, bool createDefaults, ZvDrawing* parent,
                          const Guid& guid) {
    m_isChildLayout = isChildLayout;
    m_hasProxyTables = isChildLayout && useProxyTables;
    m_parent = parent;
    m_guid = guid.IsNull() ? Guid::New() : guid;
    m_server = &ZvServer::Instance();
    m_server->RegisterDrawing(this);
    m_viewOptions = std::make_unique<ZvViewOptions>();
    m_selection = std::make_unique<ZvSelection>(this);
    m_selection->AssignToDrawing();
    m_heap = std::make_unique<::TrivialHeap>(m_hasProxyTables ? kFirstBlockWithProxyTables : kFirstBlock);
    m_entityHeap = std::make_unique<ZvcDumbHeap>();
    m_looseOwner = std::make_unique<ZvLooseOwner>(*this);

    ConstructServices();
    Make(m_tableTable, *m_heap, *this);
    ConstructTables();
    ConstructLateServices();

    SetDefaultAttributes();
    RefreshGlobalData();
    if (createDefaults)
        CreateDefaults();
    m_io->SetDrawingDirty(false);
    m_server->RegisterDrawingCreated(this);
}

void ZvDrawing::ConstructServices() {
    ::TrivialHeap& heap = *m_heap;
    if (!m_isChildLayout)
        Make(m_pageSetTable, heap);
    m_timer = std::make_unique<ZvAuxTimer>(kTimerPeriodMs, m_clock->MonotonicSeconds(),
                                           [this](ZvAuxTimer& timer) { OnZvTimer(timer); });
    if (!m_isChildLayout)
        Make(m_swapManager, heap, *this);
    Make(m_verbs, heap, *this);
    Make(m_animation, heap);
    Make(m_units, heap, this);
    Make(m_uiReactorHandler, heap, *this);
    Make(m_auxData, heap, m_clock->Now());
    Make(m_temporaryData, heap, *this);
    Make(m_entityNotifier, heap, *this);
    Make(m_mergeHelper, heap, *this);
    Make(m_selectionFilter, heap, this, true);
    Make(m_utility, heap, *this);
    Make(m_dialogs, heap, *this);
    Make(m_io, heap, *this);
    Make(m_simpleUI, heap, *this);
    Make(m_modOps, heap, *this);
}

template <class T>
T* ZvDrawing::MakeTable() {
    T* table = m_heap->New<T>(this);
    m_ownTables.emplace_back(table);
    (void)m_tableTable->Insert(table); // refused only for a code that is registered already
    return table;
}

void ZvDrawing::ConstructTables() {
    if (m_hasProxyTables) {
        GetProxyTablesFromParent();
    } else {
        m_bitmapTable = MakeTable<ZvBitmapTable>();
        m_lineTypeTable = MakeTable<ZvLineTypeTable>();
        m_blockTable = MakeTable<ZvBlockTable>();
        m_textStyleTable = MakeTable<ZvTextStyleTable>();
        m_programTable = MakeTable<ZvProgramTable>();
        m_textureTable = MakeTable<ZvTextureTable>();
        m_dimStyleTable = MakeTable<ZvDimStyleTable>();
    }
    m_layerTable = MakeTable<ZvLayerTable>();
    m_paperTable = MakeTable<ZvPaperTable>();
    m_ucsTable = MakeTable<ZvUcsTable>();
    m_xrefTable = MakeTable<ZvXRefTable>();
    m_dataTable = MakeTable<ZvDataTable>();
    m_layoutTable = MakeTable<ZvLayoutTable>();
    m_viewTable = MakeTable<ZvViewTable>();
    m_selectionVolumeTable = MakeTable<ZvSelectionVolumeTable>();
}

void ZvDrawing::GetProxyTablesFromParent() {
    m_bitmapTable = m_parent->m_bitmapTable;
    m_lineTypeTable = m_parent->m_lineTypeTable;
    m_blockTable = m_parent->m_blockTable;
    m_textStyleTable = m_parent->m_textStyleTable;
    m_programTable = m_parent->m_programTable;
    m_textureTable = m_parent->m_textureTable;
    m_dimStyleTable = m_parent->m_dimStyleTable;
}

void ZvDrawing::ConstructLateServices() {
    ::TrivialHeap& heap = *m_heap;
    Make(m_defaultProperties, heap);
    Make(m_cbHandler, heap);
    StampCleanup();
    Make(m_entityReactorHandler, heap, *this);
    Make(m_scratchLayer, heap);
    m_scratchLayer->SetTable(m_layerTable);
    m_scratchLayer->OnInserted();
    MakeHomeGrid();
    Make(m_entityAssociator, heap, *this);
    Make(m_defaultEntityProperties, heap);
}

/// A grid of one metre at the origin.
void ZvDrawing::MakeHomeGrid() {
    Make(m_homeGrid, *m_heap, MetersToWorld(1.0));
}

// --- taking apart -----------------------------------------------------------------------------------------

ZvDrawing::~ZvDrawing() {
    PostEvent(ZvDrawingEvent::Dying);
    ClearCurrentSelection();
    m_uiReactorHandler->DrawingDying();
    m_entityReactorHandler->DrawingDying();
    m_destroying = true;
    if (m_processor && m_processor->IsBusy())
        m_processor->CancelCommand();
    m_verbs->PurgeUndo();
    m_animation.reset();
    m_clientDrawers.clear();
    m_currentView = nullptr;
    m_views.clear();
    m_scratchLayer.reset();
    m_nameTable.Clear();
    DestroyTables();
    DestroyServices();
    m_server->Unregister(this);
    if (m_processor)
        m_processor->DrawingDestroyed();
    m_processor.reset();
    m_entityHeap.reset();
    m_heap.reset();
}

/// Last registered first: layouts, whose drawings borrow the first seven, go before those.
void ZvDrawing::DestroyTables() {
    m_tableTable->Clear();
    while (!m_addedTables.empty())
        m_addedTables.pop_back();
    m_selection->ClearFromDrawing();
    while (!m_ownTables.empty())
        m_ownTables.pop_back();
    m_bitmapTable = nullptr;
    m_lineTypeTable = nullptr;
    m_blockTable = nullptr;
    m_textStyleTable = nullptr;
    m_programTable = nullptr;
    m_textureTable = nullptr;
    m_dimStyleTable = nullptr;
    m_layerTable = nullptr;
    m_paperTable = nullptr;
    m_ucsTable = nullptr;
    m_xrefTable = nullptr;
    m_dataTable = nullptr;
    m_layoutTable = nullptr;
    m_viewTable = nullptr;
    m_selectionVolumeTable = nullptr;
}

void ZvDrawing::DestroyServices() {
    m_dialogs.reset();
    m_io.reset();
    m_modOps.reset();
    m_simpleUI.reset();
    m_utility.reset();
    m_mergeHelper.reset();
    m_selectionFilter.reset();
    m_uiReactorHandler.reset();
    m_entityReactorHandler.reset();
    m_cbHandler.reset();
    m_tableTable.reset();
    m_entityAssociator.reset();
    m_temporaryData.reset();
    m_entityNotifier.reset();
    m_auxData.reset();
    m_units.reset();
    m_verbs.reset();
    m_defaultProperties.reset();
    m_defaultEntityProperties.reset();
    m_homeGrid.reset();
    m_swapManager.reset();
    m_pageSetTable.reset();
}

IZvEntityOwner* ZvDrawing::LooseOwner() const {
    return m_looseOwner.get();
}

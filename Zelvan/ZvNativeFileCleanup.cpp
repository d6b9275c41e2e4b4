#include "Zelvan/DrawingAux/ZvEntityAssociator.h"
#include "Zelvan/Entities/ZvEntity.h"
#include "Zelvan/Tables/ZvLayoutTable.h"
#include "Zelvan/Tables/ZvPaperPage.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvNativeFile.h"
#include "Zelvan/ZvNativeFileImpl.h"
#include "Zelvan/ZvSelection.h"
#include "Zelvan/ZvServer.h"
#include "Zelvan/ZvStrings.h"

// What follows a load that touched the drawing, whether it succeeded or not.

void ZvNativeFile::Impl::FinishRead() {
    if (solidOpen && !stack.empty())
        api.EndDecompressBlock();
    while (!stack.empty()) // blocks that a failure left open
        Pop();
    if (cancelled && !options.merge) {
        drawing->Reset();
        return;
    }
    for (const auto& of : descs)
        PostLoadEntityCleanup(*of);
    if (ZvLayoutTable* layouts = drawing->LayoutTable())
        for (int i = 0; i < layouts->Count(); ++i) {
            ZvLayout* layout = layouts->Get(i);
            layout->EnsureSinglePage();
            if (ZvPaperPage* page = layout->GetPage())
                page->IncModified();
        }
    if (options.selection)
        options.selection->CropInvalidEntities();
    drawing->Regenerate();
    GenErrors();
}

void ZvNativeFile::Impl::PostLoadEntityCleanup(ZvNativeDesc& of) {
    const bool merging = options.merge != nullptr;
    ZvDrawing& into = of.Drawing();
    for (const auto& [fileName, object] : of.associations) {
        bool matches = into.GetEntity(fileName) == object;
        if (!matches && !merging)
            matches = into.GetEntity(of.TranslateName(fileName)) == object;
        if (matches)
            object->PostDrawingLoadCleanup();
    }
    into.EntityAssociator()->CommitDelayed(merging ? nullptr : &of);
}

void ZvNativeFile::Impl::GenErrors() {
    for (const auto& of : descs)
        for (const auto& [id, client] : of->clients) {
            if (!client->notLoaded)
                continue;
            const int text = client->notLoaded == 1 ? ZvStr::LoadObjectLost : ZvStr::LoadObjectsLost;
            errors.Add(0,
                       XStringA::Format(ZvStrings::Get(text), client->notLoaded, client->name.c_str()).Str());
            client->notLoaded = 0; // layouts' drawings share the clients
        }
    for (const auto& [code, damage] : damaged) {
        const ZvServer::Kind* kind = drawing->Server()->FindKind(uint16_t(code >> 16), uint16_t(code));
        const std::string inBlock = damage.block ? XStringA::Format(ZvStrings::Get(ZvStr::LoadInBlock),
                                                                    static_cast<long long>(damage.block))
                                                       .Str()
                                                 : std::string();
        errors.Add(0, XStringA::Format(ZvStrings::Get(ZvStr::LoadDamagedRecords), damage.count,
                                       kind ? kind->typeName.c_str() : "",
                                       static_cast<long long>(damage.offset), inBlock.c_str())
                          .Str());
    }
}

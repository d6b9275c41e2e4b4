#pragma once
#include "Tests/Support/SimulatedFiles.h"
#include "Zelvan/Entities/ZvPointEnt.h"
#include "Zelvan/Ports/ZvSilentHost.h"
#include "Zelvan/ZvDrawing.h"
#include "Zelvan/ZvDrawingIO.h"
#include <gtest/gtest.h>

/// A drawing that is saved to a simulated disk with the folders "/d" and "/b". Nothing expires.
class DrawingOnDisk {
public:
    static constexpr const char* kPlan = "/d/plan.zvd";

    DrawingOnDisk() {
        files.MakeFolder("/d");
        files.MakeFolder("/b");
        drawing.DrawingIO()->SetFiles(files);
        drawing.DrawingIO()->SetBackupSettings(&settings);
        drawing.SetHost(&host);
        settings.expiryHours = 0; // files here are years old
        Change();
    }
    void Change() {
        for (int i = 0; i < 100; ++i, ++m_points)
            drawing.Insert(
                std::make_unique<ZvPointEnt>(Vec3d{m_points * 0.37, m_points * m_points * 0.11, 0}));
        drawing.SetModified();
    }
    Zv::Status SaveAs(const std::filesystem::path& file, uint32_t flags = 0) {
        errors.Clear();
        return drawing.DrawingIO()->SaveFile(file, nullptr, flags, &errors);
    }
    Zv::Status Save(uint32_t flags = 0) { return SaveAs(kPlan, flags); }
    /// Saves; from then on the drawing differs from its file, and the disk forgets how that came to it.
    void SaveOld() {
        ASSERT_TRUE(Zv::Ok(Save())) << errors.ToString();
        Change();
        files.Settle();
    }
    void Backup() { EXPECT_TRUE(Zv::Ok(drawing.DrawingIO()->PeriodicBackup(true))); }
    size_t SizeWhenSaved() {
        SaveOld();
        return files.Get(kPlan).size();
    }
    SimulatedFiles files;
    ZvBackupSettings settings;
    ZvSilentHost host;
    IOErrorSet errors;
    ZvDrawing drawing;

private:
    int m_points = 0;
};

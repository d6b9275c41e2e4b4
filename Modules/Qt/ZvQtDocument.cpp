#include "Modules/Qt/ZvQtDocument.h"
#include "Modules/Qt/ZvQtSurface.h"
#include "Zelvan/RenC/ZvPixelBuffer.h"
#include "ZvCore/DiskFile.h"
#include "ZvCore/Log.h"
#include "ZvCore/Platform/Platform.h"
#include <QBuffer>
#include <QGuiApplication>
#include <QImage>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <QSvgGenerator>
#include <cmath>
#include <cstdio>

namespace {

// Fonts need a QGuiApplication. It is never taken down: Qt allows one, and doing so while statics go is not safe.
void EnsureQt() {
    if (QCoreApplication::instance())
        return;
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "zelvan";
    static char* argv[] = {name, nullptr};
    // What Qt remarks on its surroundings is for the log, not for a user's terminal.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        const bool isGrave = type == QtCriticalMsg || type == QtFatalMsg;
        ZvLog::Write(isGrave ? ZvLog::Level::Error : ZvLog::Level::Info, text.toStdString());
        if (isGrave)
            std::fprintf(stderr, "%s\n", text.toStdString().c_str());
    });
    static const auto* const app = new QGuiApplication(argc, argv);
    (void)app;
}

constexpr double kThinMm = 0.1; // thin lines on paper

} // namespace

// The painters of pages do not look whether their writes succeed: they paint into memory.
struct ZvQtDocument::Impl {
    std::unique_ptr<ZvCore::DiskFile> file;
    std::unique_ptr<QBuffer> buffer;
    std::unique_ptr<QPaintDevice> device;
    std::unique_ptr<QPainter> painter;
    std::unique_ptr<ZvQtSurface> surface;

    bool OpenFile(const std::filesystem::path& path, std::string& why) {
        EnsureQt();
        file = ZvCore::DiskFile::Open(path, ZvCore::DiskFile::Mode::Create, why);
        buffer = std::make_unique<QBuffer>();
        return file && buffer->open(QIODevice::WriteOnly);
    }
    bool Start(double width, double height, int dpi, std::string& why) {
        painter = std::make_unique<QPainter>();
        if (!painter->begin(device.get())) {
            why = "cannot start the page";
            return false;
        }
        surface = std::make_unique<ZvQtSurface>(*painter, int(std::lround(width)), int(std::lround(height)));
        if (dpi > 0)
            surface->SetThinWidth(kThinMm * dpi / 25.4);
        return true;
    }
};

ZvQtDocument::ZvQtDocument(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

ZvQtDocument::~ZvQtDocument() {
    if (m_impl->painter && m_impl->painter->isActive())
        m_impl->painter->end();
}

IZvSurface& ZvQtDocument::Surface() {
    return *m_impl->surface;
}

std::unique_ptr<ZvQtDocument> ZvQtDocument::CreatePdf(const std::filesystem::path& path, const Page& page,
                                                      std::string& why) {
    auto impl = std::make_unique<Impl>();
    if (!impl->OpenFile(path, why))
        return nullptr;
    auto writer = std::make_unique<QPdfWriter>(impl->buffer.get());
    writer->setCreator("Zelvan");
    writer->setTitle(QString::fromStdString(page.title));
    writer->setResolution(page.dotsPerInch);
    writer->setPageMargins(QMarginsF(0, 0, 0, 0));
    writer->setPageSize(
        QPageSize(QSizeF(page.widthMm, page.heightMm), QPageSize::Millimeter, {}, QPageSize::ExactMatch));
    impl->device = std::move(writer);
    const double perMm = page.dotsPerInch / 25.4;
    if (!impl->Start(page.widthMm * perMm, page.heightMm * perMm, page.dotsPerInch, why))
        return nullptr;
    return std::unique_ptr<ZvQtDocument>(new ZvQtDocument(std::move(impl)));
}

std::unique_ptr<ZvQtDocument> ZvQtDocument::CreateSvg(const std::filesystem::path& path, const Page& page,
                                                      std::string& why) {
    auto impl = std::make_unique<Impl>();
    if (!impl->OpenFile(path, why))
        return nullptr;
    const double perMm = page.dotsPerInch / 25.4;
    auto svg = std::make_unique<QSvgGenerator>();
    svg->setOutputDevice(impl->buffer.get());
    svg->setResolution(page.dotsPerInch);
    const QSize size(int(std::lround(page.widthMm * perMm)), int(std::lround(page.heightMm * perMm)));
    svg->setSize(size);
    svg->setViewBox(QRect(QPoint(0, 0), size));
    svg->setTitle(QString::fromStdString(page.title));
    impl->device = std::move(svg);
    if (!impl->Start(size.width(), size.height(), page.dotsPerInch, why))
        return nullptr;
    return std::unique_ptr<ZvQtDocument>(new ZvQtDocument(std::move(impl)));
}

std::unique_ptr<ZvQtDocument> ZvQtDocument::Over(ZvPixelBuffer& picture) {
    EnsureQt();
    auto impl = std::make_unique<Impl>();
    impl->device =
        std::make_unique<QImage>(reinterpret_cast<uchar*>(picture.Row(0)), picture.Width(), picture.Height(),
                                 picture.Width() * 4, QImage::Format_ARGB32_Premultiplied);
    std::string why;
    if (!impl->Start(picture.Width(), picture.Height(), 0, why))
        return nullptr;
    return std::unique_ptr<ZvQtDocument>(new ZvQtDocument(std::move(impl)));
}

bool ZvQtDocument::Finish(std::string& why) {
    const bool painted = m_impl->painter->end();
    if (!m_impl->file)
        return painted;
    const QByteArray& bytes = m_impl->buffer->data();
    if (painted && m_impl->file->Write(bytes.constData(), size_t(bytes.size())) && m_impl->file->Flush())
        return true;
    why = painted ? m_impl->file->ErrorText() : "the page could not be finished";
    return false;
}

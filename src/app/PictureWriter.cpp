#include "app/PictureWriter.h"

#include "settings/FileReplacement.h"
#include "settings/PostedCall.h"
#include "settings/XmlText.h"

#include <QFile>
#include <QPainter>
#include <QSvgGenerator>
#include <QThread>

#include <utility>

namespace {

/// The file beside the target. What it does not take is passed over, since Qt's writer of PNG would tell the terminal.
class PartFile final : public QFile {
public:
    PartFile(const QString &path, const std::function<bool()> &mayGoOn) : QFile(path), m_mayGoOn(mayGoOn) {}
    [[nodiscard]] bool isGood() const { return m_good; }
    [[nodiscard]] bool isEnded() const { return m_isEnded; }

protected:
    qint64 writeData(const char *bytes, qint64 size) override
    {
        m_isEnded = m_isEnded || (m_mayGoOn && !m_mayGoOn());
        m_good = m_good && !m_isEnded && writeAll(bytes, size);
        return m_isEnded ? -1 : size;
    }

private:
    /// A disk takes what it has room for, and tells with the rest that it is full.
    bool writeAll(const char *bytes, qint64 size)
    {
        while (size > 0) {
            const qint64 taken = QFile::writeData(bytes, size);
            if (taken <= 0) {
                return false;
            }
            bytes += taken;
            size -= taken;
        }
        return true;
    }

    const std::function<bool()> &m_mayGoOn;
    bool m_good = true; ///< all was taken
    bool m_isEnded = false;
};

FileOutcome written(const QString &path, const std::function<bool(QFile &)> &put, const std::function<bool()> &mayGoOn)
{
    FileReplacement target(path);
    const WriteFault begun = target.begin();
    if (begun != WriteFault::None) {
        return {fileResultOf(begun)};
    }
    PartFile file(target.partPath(), mayGoOn);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        return {fileResultOf(writeFaultOf(file))};
    }
    const bool isWhole = put(file) && file.isGood() && file.flush() && file.error() == QFileDevice::NoError;
    if (file.isEnded()) {
        return {FileResult::Cancelled};
    }
    const WriteFault fault = isWhole ? WriteFault::None : writeFaultOf(file);
    file.close();
    return {fileResultOf(isWhole ? target.finish() : fault)};
}

} // namespace

PictureWriter::PictureWriter(QObject *parent) : QObject(parent) {}

PictureWriter::~PictureWriter()
{
    for (auto &[number, thread] : m_threads) {
        thread->wait();
    }
}

void PictureWriter::writePng(const QString &path, const QImage &image)
{
    start(path, [image](QFile &file) { return image.save(&file, "PNG"); });
}

void PictureWriter::writeSvg(const QString &path, const Drawing &drawing)
{
    start(path, [drawing](QFile &file) {
        QSvgGenerator svg;
        svg.setOutputDevice(&file);
        svg.setSize(drawing.size);
        svg.setViewBox(QRect(QPoint(), drawing.size));
        svg.setResolution(drawing.dpi);
        svg.setTitle(xmlAllowed(drawing.title).toHtmlEscaped()); // which goes into the file as it is
        QPainter painter(&svg);
        QPicture shapes(drawing.shapes); // to play is no const operation
        return painter.isActive() && shapes.play(&painter) && painter.end();
    });
}

void PictureWriter::start(const QString &path, std::function<bool(QFile &)> put)
{
    const int number = ++m_number;
    std::unique_ptr<QThread> &thread = m_threads[number];
    thread.reset(QThread::create([this, number, path, writes = std::move(put)] {
        const FileOutcome outcome = written(path, writes, mayGoOn);
        postCall(this, [this, number, path, outcome] { ended(number, path, outcome); });
    }));
    thread->start();
}

void PictureWriter::ended(int number, const QString &path, const FileOutcome &outcome)
{
    m_threads.at(number)->wait();
    m_threads.erase(number);
    emit sigWritten(path, outcome);
}

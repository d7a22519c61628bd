#pragma once

#include "files/CaptureFile.h"

#include <QImage>
#include <QObject>
#include <QPicture>
#include <QSize>
#include <QString>

#include <functional>
#include <map>
#include <memory>

class QFile;
class QThread;

/// Writes pictures, each on a thread of its own: what a window has painted takes much longer to be packed.
///
/// The file gets its name when it is whole and on the disk; an earlier one of that name stays until then. Main thread;
/// the destructor waits for what is under way.
class PictureWriter : public QObject {
    Q_OBJECT
public:
    explicit PictureWriter(QObject *parent = nullptr);
    ~PictureWriter() override;

    /// Asked again and again on the threads that write; false ends what is under way as cancelled. May be empty; not to
    /// be changed while something is.
    std::function<bool()> mayGoOn;

    /// A drawing of vectors.
    struct Drawing {
        QPicture shapes;
        QSize size;    ///< pixels
        int dpi = 96;  ///< of the screen that its fonts are meant for
        QString title; ///< what a viewer shows as its name
    };
    void writePng(const QString &path, const QImage &image);
    void writeSvg(const QString &path, const Drawing &drawing);

signals:
    /// On the main thread.
    void sigWritten(const QString &path, const FileOutcome &outcome);

private:
    /// `put` writes into the open file, on the thread. @return false if the picture cannot be packed
    void start(const QString &path, std::function<bool(QFile &)> put);
    void ended(int number, const QString &path, const FileOutcome &outcome);

    int m_number = 0;
    /// Threads of Qt's: it keeps fonts for each thread that writes text, and frees those of others at some time after
    /// the thread's end, when the application may have gone.
    std::map<int, std::unique_ptr<QThread>> m_threads;
};

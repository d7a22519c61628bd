#include "cli/PictureProgram.h"

#include "cli/Terminal.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

namespace PictureProgram {

namespace {

/// Asks it to end, and makes it.
void end(QProcess &process)
{
    constexpr int patienceMs = 5000;
    process.terminate();
    if (!process.waitForFinished(patienceMs)) {
        process.kill();
        process.waitForFinished(patienceMs);
    }
}

} // namespace

QString path()
{
#ifdef Q_OS_WIN
    const QString name = QStringLiteral("corvanlux.exe");
#else
    const QString name = QStringLiteral("corvanlux");
#endif
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

int run(const QStringList &arguments)
{
    constexpr int lookMs = 100;
    constexpr qint64 mostMs = qint64(10) * 60 * 1000;
    const QString program = path();
    if (!QFileInfo(program).isExecutable()) {
        Terminal::say(QStringLiteral("pictures are made by the program with the window, and %1 is missing")
                          .arg(QDir::toNativeSeparators(program)));
        return Terminal::badInput;
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.start(program, QStringList{QLatin1String(option)} + arguments);
    QElapsedTimer timer;
    timer.start();
    while (process.state() != QProcess::NotRunning && !process.waitForFinished(lookMs)) {
        if (Terminal::wasInterrupted() || timer.elapsed() > mostMs) {
            end(process);
        }
    }
    if (Terminal::wasInterrupted()) {
        return Terminal::interrupted;
    }
    if (process.error() == QProcess::FailedToStart || process.exitStatus() != QProcess::NormalExit ||
        timer.elapsed() > mostMs) {
        Terminal::say(timer.elapsed() > mostMs
                          ? QStringLiteral("the picture was not made within ten minutes")
                          : QStringLiteral("the picture could not be made: %1").arg(process.errorString()));
        return Terminal::badInput;
    }
    return process.exitCode();
}

} // namespace PictureProgram

#pragma once

#include "cli/Arguments.h"
#include "cli/CaptureChoice.h"
#include "cli/DevicesCommand.h"

#include <QString>
#include <QVector>

#include <functional>
#include <optional>

class Session;

/// "luxcli capture" taken apart, so that a test can run it on instruments of its own. Main thread.
namespace CaptureCommand {

/// What the command needs of the process.
struct Host {
    PlatformFactory platform;            ///< makeUsbPlatform()
    std::function<void(Session &)> made; ///< a test's look at the session before it is used; may be empty
    std::function<bool()> takeInterrupt; ///< Terminal::takeInterrupt()
};

/// What the arguments ask for.
struct Job {
    CaptureChoice choice;
    QString path;                         ///< of the data file; empty for none
    QVector<Arguments::Request> requests; ///< decoders
    QString format = QStringLiteral("jsonl");
    std::optional<int> timeoutMs; ///< for the trigger
    int repeat = 1;
    std::optional<QString> model; ///< a name or a code
    bool simulates = false;
};

/// @return why the arguments make no sense, for the user; empty if they do
[[nodiscard]] QString read(const Arguments::Parsed &parsed, Job &job);
/// The path of capture `number` of so many, from 1: "out.cxdat", or "out-07.cxdat" of 12. Pure.
[[nodiscard]] QString numberedPath(const QString &path, int number, int count);
/// Whether a model is the one that a user names: by its name, in either case, or its code. Pure.
[[nodiscard]] bool isModel(const QString &named, const QString &name, int code);

/// The whole command. @return the exit code
[[nodiscard]] int run(const QStringList &arguments, const Host &host);

} // namespace CaptureCommand

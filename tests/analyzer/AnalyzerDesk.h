#pragma once

#include "analyzer/AnalyzerManager.h"
#include "store/SmpData.h"
#include "support/CaptureBuilder.h"

#include <QDir>
#include <QLibrary>
#include <QStringList>
#include <QtTest>

#include <corvanlux/analyzer/AnalyzerResults.h>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <memory>

/// A manager over some of the tests' plug-ins, with a capture of eight channels. What it stores is kept here.
class AnalyzerDesk {
public:
    explicit AnalyzerDesk(const QStringList &plugins)
    {
        AnalyzerHost host;
        host.model = [this] { return model; };
        host.channelCount = [this] { return capture.chnCount; };
        host.isChannelEnabled = [this](int channel) { return channel != disabledChannel; };
        host.stored = [this] {
            QString all;
            for (const QStringList &values : stored) {
                for (const QString &value : values) {
                    all += value + QLatin1Char(';');
                }
            }
            return all;
        };
        host.store = [this](const QList<QStringList> &values) {
            stored = values;
            ++saves;
        };
        QStringList folders;
        for (const QString &plugin : plugins) {
            folders.append(folderOf(plugin));
        }
        manager = std::make_unique<AnalyzerManager>(host, folders, QString());
        QObject::connect(
            manager.get(), &AnalyzerManager::analyzerFailed,
            [this](const QString &name, const QString &what) { told.append(name + QStringLiteral(": ") + what); });
        CaptureBuilder{}.fill(capture);
        manager->setCapture(&capture, 0);
    }

    /// @param plugin  its name, or a folder's absolute path
    [[nodiscard]] static QString folderOf(const QString &plugin)
    {
        return QDir(QStringLiteral(LUX_TEST_PLUGINS)).absoluteFilePath(plugin);
    }

    /// Adds an analyzer of a library on a channel. @return whether there is one more
    bool add(int channel = 0, int library = 0)
    {
        const int before = manager->count();
        Analyzer *analyzer = manager->createAnalyzer(library);
        if (analyzer == nullptr) {
            return false;
        }
        lineOf(*analyzer)->SetChannel(Channel(0, std::uint32_t(channel)));
        manager->addLibIndex = library;
        manager->addAnalyzer(analyzer);
        return manager->count() == before + 1;
    }

    [[nodiscard]] static AnalyzerSettingInterfaceChannel *lineOf(const Analyzer &analyzer)
    {
        return dynamic_cast<AnalyzerSettingInterfaceChannel *>(analyzer.GetAnalyzerSettings()->GetSettingsInterface(0));
    }

    /// Waits until no worker is left.
    [[nodiscard]] bool waitForWorkers() const
    {
        return QTest::qWaitFor(
            [this] {
                for (int i = 0; i < manager->count(); ++i) {
                    if (manager->isWorkerRunning(i)) {
                        return false;
                    }
                }
                return true;
            },
            30000);
    }

    [[nodiscard]] AnalyzerResults *results(int index = 0) const
    {
        AnalyzerResults *found = nullptr;
        manager->analyzerAt(index)->GetAnalyzerResults(&found);
        return found;
    }
    [[nodiscard]] std::uint64_t frames(int index = 0) const
    {
        return results(index) != nullptr ? results(index)->GetNumFrames() : 0;
    }

    /// What a plug-in of the tests counts. @param counter  its function of that name
    [[nodiscard]] int counted(const char *counter, int library = 0) const
    {
        QLibrary file(manager->foundLibraries().at(library).path);
        return reinterpret_cast<int (*)()>(file.resolve(counter))();
    }

    SmpData capture{8, 0};
    int model = 8;
    int disabledChannel = -1;
    QList<QStringList> stored;
    int saves = 0;
    QStringList told;
    std::unique_ptr<AnalyzerManager> manager; ///< goes before the capture
};

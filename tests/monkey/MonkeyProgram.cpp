#include "monkey/MonkeyProgram.h"

#include "FaultScript.h"
#include "WaveSignal.h"
#include "analyzer/AnalyzerManager.h"
#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "app/RecentMenu.h"
#include "device/DevBase.h"
#include "device/DevControlUsb.h"
#include "device/DevInit.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "files/CaptureFile.h"
#include "files/CaptureHistory.h"
#include "files/SrWriter.h"
#include "files/VcdWriter.h"
#include "session/HistoryKeeper.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/ConfigDocument.h"
#include "settings/Globals.h"
#include "settings/HistoryOptions.h"
#include "support/CaptureBuilder.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QMimeData>
#include <QUrl>

#include <algorithm>
#include <array>
#include <corvanlux/analyzer/AnalyzerSettingInterface.h>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <vector>

namespace {

constexpr int analogModel = 97;

/// One that streams bytes, one that streams slices, one with memory, the one with analog channels and one with two
/// groups of thresholds.
constexpr std::array models{1, 5, 8, analogModel, 9};

emulator::InstrumentOptions optionsOf(int model)
{
    emulator::InstrumentOptions options;
    options.model = model;
    options.product = emulator::findModel(model)->product;
    options.pace = 0; // as fast as it is asked
    return options;
}

} // namespace

MonkeyProgram::MonkeyProgram(Chance &chance) : m_chance(chance)
{
    for (const int model : models) {
        std::vector<emulator::WaveSignal::Wave> waves;
        for (std::uint32_t chn = 0; chn < 32; ++chn) {
            waves.push_back(emulator::WaveSignal::Wave::noise(chn + 1, 20, 4000));
        }
        m_bus.add(optionsOf(model), std::make_shared<emulator::WaveSignal>(100'000'000, waves));
        ++m_instruments;
    }
    start();
    makeFiles();
}

MonkeyProgram::~MonkeyProgram()
{
    end();
}

void MonkeyProgram::start()
{
    configLoad();
    globalSet(QStringLiteral("lastPath"), m_dir.path());
    HistoryOptions{KeepCaptures::All, 5, 1}.store();
    gOpenFile.clear();
    m_history = std::make_unique<CaptureHistory>(HistoryFolder(m_dir.filePath(QStringLiteral("history"))));
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformEmulated>(m_bus));
    m_session->control().sleep = [](int) {};
    constexpr int returnStep = 200; // ms: the only pause in which the instrument does something
    m_session->bringUp().skipPause = [](int ms) { return ms != returnStep; };
    m_keeper = std::make_unique<HistoryKeeper>(*m_session, *m_history);
    m_window = std::make_unique<MainWindow>(*m_session);
    m_window->setHistory(m_history.get());
    m_window->resize(1200, 700);
    m_window->show();
    m_window->findChild<MainMenu *>()->startProgram = [](const QString &) { return true; };
    m_analyzers = m_window->findChild<AnalyzerManager *>();
}

void MonkeyProgram::end()
{
    m_window.reset();
    m_keeper.reset();
    m_session.reset();
    m_history.reset();
    configSave(configPath());
}

void MonkeyProgram::restart()
{
    end();
    start();
}

QString MonkeyProgram::runOrStop()
{
    const bool ends = gDev->isCapturing() && !m_chance.oneIn(4);
    if (ends) {
        m_session->stopCapture();
        return QStringLiteral("stop");
    }
    return m_session->startCapture() ? QStringLiteral("start") : QStringLiteral("start, refused");
}

// ---- instruments ---------------------------------------------------------------------------------------------------

std::string MonkeyProgram::anyFault()
{
    static const std::vector<std::string> actions{"stall", "fail", "silence", "unplug", "shorten=3", "delay=40"};
    static const std::vector<std::string> requests{"fpga-start", "fpga-done", "status",     "run",        "window",
                                                   "info",       "samples",   "threshold1", "bulk-start", "bulk-stop",
                                                   "uid-ask",    "uid-read",  "pwm0",       "trigger",    "ram-read"};
    switch (m_chance.below(4)) {
    case 0:
        return m_chance.of(actions) + "@transfer:" + std::to_string(m_chance.below(60));
    case 1:
        return m_chance.of(std::vector<std::string>{"stall", "fail", "silence", "unplug", "end"}) +
               "@read:" + std::to_string(m_chance.below(1'000'000));
    case 2:
        return m_chance.of(std::vector<std::string>{"status=0", "status=0xFFFF", "never-return", "zero-count=17",
                                                    "wrong-check=5", "byte=100:255", "info=0:0:0", "info=9:99:999"});
    default:
        return m_chance.of(actions) + '@' + m_chance.of(requests) + (m_chance.oneIn(2) ? "+" : "");
    }
}

QString MonkeyProgram::touchInstrument()
{
    const int index = m_chance.below(m_instruments);
    switch (m_chance.below(5)) {
    case 0:
    case 1:
        for (int other = 0; other < m_instruments; ++other) {
            if (other != index && !m_chance.oneIn(8)) {
                m_bus.unplug(other);
            }
        }
        m_bus.plug(index);
        return QStringLiteral("plug %1").arg(index);
    case 2:
        m_bus.unplug(index);
        return QStringLiteral("unplug %1").arg(index);
    case 3: {
        const std::string fault = anyFault();
        const std::string refused =
            m_bus.with(index, [&](emulator::Instrument &device) { return emulator::addFault(device, fault); });
        return QStringLiteral("fault %1 at %2 %3").arg(QString::fromStdString(fault)).arg(index).arg(!refused.empty());
    }
    default:
        for (int each = 0; each < m_instruments; ++each) {
            m_bus.with(each, [](emulator::Instrument &device) { device.faults().clear(); });
        }
        return QStringLiteral("no faults");
    }
}

QString MonkeyProgram::chooseModel()
{
    const int model = m_chance.oneIn(2) ? analogModel : m_chance.of(models);
    if (gDev->connected) {
        return QStringLiteral("model, refused"); // its menu is greyed out
    }
    return QStringLiteral("model %1 %2").arg(model).arg(m_session->chooseModel(model));
}

// ---- analyzers -----------------------------------------------------------------------------------------------------

QString MonkeyProgram::touchAnalyzer()
{
    constexpr int most = 6;
    const int count = m_analyzers->count();
    const int index = m_chance.below(count);
    if (count == 0 || (count < most && m_chance.oneIn(3))) {
        const int library = m_chance.below(int(m_analyzers->foundLibraries().size()));
        if (library >= m_analyzers->foundLibraries().size()) {
            return QStringLiteral("no decoders");
        }
        Analyzer *analyzer = m_analyzers->createAnalyzer(library);
        if (analyzer == nullptr) {
            return QStringLiteral("decoder refused");
        }
        const AnalyzerSettings *settings = analyzer->GetAnalyzerSettings();
        for (std::uint32_t i = 0; i < settings->GetSettingsInterfacesCount(); ++i) {
            auto *line = dynamic_cast<AnalyzerSettingInterfaceChannel *>(settings->GetSettingsInterface(i));
            if (line != nullptr) {
                line->SetChannel(Channel(0, std::uint32_t(m_chance.below(16))));
            }
        }
        m_analyzers->addLibIndex = library;
        m_analyzers->addAnalyzer(analyzer);
        return QStringLiteral("add analyzer");
    }
    switch (m_chance.below(6)) {
    case 0:
        m_analyzers->removeAnalyzer(index);
        return QStringLiteral("remove analyzer %1").arg(index);
    case 1:
        m_analyzers->setShown(index, m_chance.oneIn(2));
        return QStringLiteral("show analyzer %1").arg(index);
    case 2:
        m_analyzers->setDisplayFormat(index, m_chance.below(5));
        return QStringLiteral("format of analyzer %1").arg(index);
    case 3:
        m_analyzers->stopWorker(index);
        return QStringLiteral("stop analyzer %1").arg(index);
    default:
        m_analyzers->restartAnalyzer(index);
        return QStringLiteral("run analyzer %1").arg(index);
    }
}

// ---- files ---------------------------------------------------------------------------------------------------------

void MonkeyProgram::makeFiles()
{
    const ConfigDocument settings = configCopy();
    CaptureBuilder{200000}.fill(*gDev->smpData);
    SmpData &data = *gDev->smpData;
    const CapturePart whole{std::vector<std::uint8_t>(std::size_t(data.chnCount), 1), 0, double(data.smpCount())};
    (void)CaptureFile(digitalChannelsOf).save(m_dir.filePath(QStringLiteral("good.cxdat")), data, whole, settings);
    makeForeignFiles(data, {whole.channels.data(), 0, data.smpCount() - 1});
    for (const int model : models) {
        globalSet(QStringLiteral("devModel"), QString::number(model));
        (void)CaptureFile::saveSettings(m_dir.filePath(QStringLiteral("model%1.cxset").arg(model)), configCopy());
    }
    configTake(settings);
}

void MonkeyProgram::makeForeignFiles(const SmpData &data, const DataSelection &all)
{
    QStringList names;
    for (int channel = 0; channel < data.chnCount; ++channel) {
        names.append(QStringLiteral("Channel %1").arg(channel));
    }
    const SmpReadLock lock(&data);
    QFile dump(m_dir.filePath(QStringLiteral("good.vcd")));
    if (dump.open(QIODevice::WriteOnly)) {
        (void)writeVcd(dump, data, all, names);
    }
    QFile archive(m_dir.filePath(QStringLiteral("good.sr"))); // is there when it is written
    if (archive.open(QIODevice::WriteOnly)) {
        archive.close();
        (void)writeSr(archive.fileName(), data, all, names);
    }
}

QString MonkeyProgram::damaged(const QString &path)
{
    QFile file(path);
    QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.read(4 << 20) : QByteArray();
    for (int i = m_chance.below(4); i >= 0 && !bytes.isEmpty(); --i) {
        const int at = m_chance.below(bytes.size());
        switch (m_chance.below(4)) {
        case 0:
            bytes.truncate(at);
            break;
        case 1:
            bytes.insert(at, bytes.mid(m_chance.below(bytes.size()), 64));
            break;
        default:
            bytes[at] = char(m_chance.below(256));
        }
    }
    const QString to = m_dir.filePath(QStringLiteral("damaged.") + path.section(QLatin1Char('.'), -1));
    QFile out(to);
    if (out.open(QIODevice::WriteOnly)) {
        out.write(bytes);
    }
    return to;
}

QString MonkeyProgram::fileToOpen()
{
    const QStringList there = QDir(m_dir.path()).entryList(QDir::Files, QDir::Name);
    const QString path = m_dir.filePath(there.isEmpty() ? QStringLiteral("nothing.cxdat") : m_chance.of(there));
    return m_chance.oneIn(2) ? path : damaged(path);
}

QString MonkeyProgram::fileToSave()
{
    static const QStringList suffixes{QStringLiteral("cxdat"), QStringLiteral("cxset"), QStringLiteral("txt"),
                                      QStringLiteral("csv"),   QStringLiteral("bin"),   QStringLiteral("sr"),
                                      QStringLiteral("vcd")};
    return m_dir.filePath(QStringLiteral("saved%1.%2").arg(m_chance.below(3)).arg(m_chance.of(suffixes)));
}

QString MonkeyProgram::dropFile()
{
    QMimeData mime;
    const QString path = fileToOpen();
    mime.setUrls({QUrl::fromLocalFile(path)});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_window.get(), &enter); // who takes the drag gets the drop
    QDropEvent event(QPointF(50, 50), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(m_window.get(), &event);
    return QStringLiteral("dropped ") + path.section(QLatin1Char('/'), -1);
}

QString MonkeyProgram::openRecent()
{
    if (QApplication::activeModalWidget() != nullptr) {
        return QStringLiteral("recent, refused");
    }
    auto *menu = m_window->findChild<MainMenu *>();
    auto *recent = menu->findChild<RecentMenu *>();
    if (recent == nullptr) {
        menu->slotMainMenuPopup();
        return QStringLiteral("main menu");
    }
    recent->look();
    const QList<QAction *> entries = recent->actions();
    if (entries.isEmpty()) {
        return QStringLiteral("recent, none");
    }
    QAction *entry = m_chance.of(entries);
    const QString text = entry->text();
    entry->trigger(); // not if it is greyed out
    return QStringLiteral("recent ") + text;
}

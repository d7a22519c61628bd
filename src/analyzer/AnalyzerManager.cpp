#include "analyzer/AnalyzerManager.h"

#include "analyzer/AbsentAnalyzer.h"
#include "analyzer/AnalyzerProgMng.h"
#include "analyzer/LingeringWorker.h"
#include "analyzer/PluginCall.h"
#include "settings/Language.h"
#include "settings/PostedCall.h"
#include "store/SmpData.h"
#include "store/SmpLease.h"

#include <QDeadlineTimer>
#include <QThread>

#include <algorithm>
#include <corvanlux/analyzer/AnalyzerSettings.h>
#include <iterator>
#include <utility>

namespace {

constexpr int patience = 50;           // ms, that the main thread waits for a worker
constexpr unsigned long lastStep = 10; // ms, the same when there is no event loop any more
constexpr int lingerStep = 50;         // ms, between two looks at those that did not leave
constexpr int watchStep = 500;         // ms, between two looks at the readers of results
constexpr int defaultFormat = 2;       // hexadecimal
constexpr int mostRestarts = 100;      // that a decoder may ask for; one that never has enough would run for ever

} // namespace

AnalyzerManager::AnalyzerManager(AnalyzerHost host, const QStringList &folders, const QString &guardFolder,
                                 QObject *parent)
    : QObject(parent),
      m_host(std::move(host)),
      m_guard(guardFolder),
      m_simulation([this](const QString &name, const QString &what) {
          postCall(this, [this, name, what] { tell(name, what); });
      })
{
    PluginFolder::Scan scan = PluginFolder::scan(folders, m_guard);
    libraries = std::move(scan.libraries);
    m_refusals = std::move(scan.refusals);
    m_lingerTimer.setInterval(lingerStep);
    qRegisterMetaType<AnalyzerProgMng *>();
    qRegisterMetaType<Analyzer *>();
    connect(&m_lingerTimer, &QTimer::timeout, this, &AnalyzerManager::lookAfterLingering);
    m_watchTimer.setInterval(watchStep);
    connect(&m_watchTimer, &QTimer::timeout, this, &AnalyzerManager::lookAfterReaders);
}

AnalyzerManager::~AnalyzerManager()
{
    if (exportThread) {
        exportThread->cancel();
        const ResultsChange change(m_gate); // takes its pass if it must
        exportThread.reset();
    }
    for (AnalyzerItem &item : items) {
        item.progMng->askToStop(); // all at once
    }
    const QDeadlineTimer until(patience); // of all
    for (AnalyzerItem &item : items) {
        if (item.progMng->waitParked(int(until.remainingTime()))) {
            dropItem(item);
        } else {
            m_lingering.push_back(std::make_unique<LingeringWorker>(QString(), std::move(item)));
        }
    }
    for (lookAfterLingering(); !m_lingering.empty(); lookAfterLingering()) {
        QThread::msleep(lastStep);
    }
    leaveCapture();
    for (AnalyzerItem &item : m_read) {
        if (item.isRead()) {
            keepForEver(std::move(item));
        }
    }
}

void AnalyzerManager::leaveCapture()
{
    if (m_capture == nullptr || (m_lingering.empty() && m_heldForEver.empty())) {
        return;
    }
    m_capture->leaveBehind();
    m_heldForEver.clear();
    for (const auto &worker : m_lingering) {
        worker->item.capture.reset();
    }
}

// ---- the capture

void AnalyzerManager::setCapture(SmpData *capture, std::uint32_t deviceCode)
{
    stopAllWorkers();
    if (capture != m_capture) {
        leaveCapture();
    }
    m_capture = capture;
    deviceView = std::make_shared<CaptureView>();
    DeviceCollection &device = deviceView->device;
    device.deviceCode = deviceCode;
    const SmpReadLock lock(capture);
    if (lock) {
        const std::span<const SmpEdgeRoot *const> roots = capture->chnRoots();
        deviceView->roots.assign(roots.begin(), roots.end());
        device.chnRoots = deviceView->roots.data();
        device.smpCount = capture->smpCount();
        device.smpFrequ = capture->smpFrequ();
        device.trgPos = capture->trgPos();
        device.chnCount = capture->chnCount;
    }
}

void AnalyzerManager::captureReady()
{
    setCapture(m_capture, deviceView->device.deviceCode);
    const ResultsChange change = prepareModify();
    for (AnalyzerItem &item : items) {
        if (item.fault.isEmpty()) {
            run(item, false);
        }
    }
}

void AnalyzerManager::captureStarts()
{
    stopAllWorkers();
    leaveCapture();
    const ResultsChange change = prepareModify();
    for (AnalyzerItem &item : items) {
        (void)leaveResults(item);
        const QString fault = pluginFault([&item] { item.analyzer->SetupResults(); });
        if (!fault.isEmpty()) {
            fail(item, fault);
        }
    }
    tellSimulation();
}

// ---- runs

ResultsChange AnalyzerManager::prepareModify()
{
    emit modifyPrepared();
    return ResultsChange(m_gate);
}

void AnalyzerManager::run(AnalyzerItem &item, bool again)
{
    if (!item.progMng->isIdle() && !endWorker(item)) {
        return;
    }
    const bool isOther = leaveResults(item);
    item.restarts = again ? item.restarts + 1 : 0;
    // A writer of whom nobody told this manager: its thread waits until the workers have left.
    const auto writerCame = [this] { QMetaObject::invokeMethod(this, "leaveToWriter", Qt::QueuedConnection); };
    item.capture = std::make_unique<SmpLease>(m_capture, writerCame);
    if (!*item.capture) {
        item.capture.reset();
        return;
    }
    m_watchTimer.start();
    item.view = deviceView;
    const QString fault = pluginFault([&] {
        if (!again || isOther) {
            item.analyzer->Init(&item.view->device, nullptr, item.progMng.get());
        }
        item.analyzer->SetupResults();
        item.analyzer->InitialWorkerThread();
        item.analyzer->StartProcessing();
    });
    if (!fault.isEmpty()) {
        fail(item, fault);
    }
    if (item.progMng->isIdle()) {
        letGo(item); // it started no worker
        return;
    }
    emit analyzerStarted();
}

void AnalyzerManager::letGo(AnalyzerItem &item)
{
    item.progMng->letGo();
    item.capture.reset();
    item.view.reset();
}

void AnalyzerManager::startAnalyzer(int index)
{
    AnalyzerItem &item = items[std::size_t(index)];
    item.fault.clear();
    run(item, false);
}

void AnalyzerManager::restartAnalyzer(int index)
{
    saveToConfig();
    const QString head = nameOf(items[std::size_t(index)]) + QLatin1Char('\n');
    for (auto words = m_told.begin(); words != m_told.end();) {
        words = words->startsWith(head) ? m_told.erase(words) : std::next(words); // a new try may fail anew
    }
    const ResultsChange change = prepareModify();
    startAnalyzer(index);
}

bool AnalyzerManager::endWorker(AnalyzerItem &item)
{
    return endWorker(item, QDeadlineTimer(patience));
}

bool AnalyzerManager::endWorker(AnalyzerItem &item, const QDeadlineTimer &until)
{
    item.progMng->askToStop();
    if (!item.progMng->waitParked(int(until.remainingTime()))) {
        takeOut(item);
        return false;
    }
    letGo(item);
    return true;
}

AnalyzerItem AnalyzerManager::exchange(AnalyzerItem &item)
{
    const QByteArray settings = settingsText(item).toLatin1();
    const QString name = nameOf(item);
    const AnalyzerLib lib = item;
    std::unique_ptr<Analyzer> analyzer = newAnalyzer(lib);
    if (!analyzer) {
        analyzer = std::make_unique<AbsentAnalyzer>(name.toUtf8(), settings);
    }
    AnalyzerItem fresh = makeItem(lib, std::move(analyzer));
    fresh.format = item.format;
    fresh.showInList = item.showInList;
    fresh.fault = item.fault;
    fresh.readers = item.readers;
    (void)pluginFault([&] { fresh.analyzer->GetAnalyzerSettings()->LoadText(settings.constData()); });
    return std::exchange(item, std::move(fresh));
}

void AnalyzerManager::takeOut(AnalyzerItem &item)
{
    const ResultsChange change = prepareModify(); // its results go some time after the item has others
    const QString name = nameOf(item);
    m_lingering.push_back(std::make_unique<LingeringWorker>(name, exchange(item)));
    m_lingerTimer.start();
    fail(item, ::tr("The decoder does not stop. It is out of use until it is started again."));
}

void AnalyzerManager::lookAfterLingering()
{
    for (auto worker = m_lingering.begin(); worker != m_lingering.end();) {
        const LingeringWorker::State state = (*worker)->look();
        if (state == LingeringWorker::State::Waiting) {
            ++worker;
            continue;
        }
        if (state == LingeringWorker::State::LeftBehind) {
            if ((*worker)->item.capture) {
                m_heldForEver.push_back(std::move((*worker)->item.capture));
            }
            tell((*worker)->name, ::tr("The decoder could not be ended. It is left running until the program ends."));
        }
        worker = m_lingering.erase(worker);
    }
    if (m_lingering.empty()) {
        m_lingerTimer.stop();
    }
}

void AnalyzerManager::stopWorker(int index)
{
    endWorker(items[std::size_t(index)]);
}

void AnalyzerManager::stopAllWorkers()
{
    for (AnalyzerItem &item : items) {
        if (!item.progMng->isIdle()) {
            item.progMng->askToStop(); // all at once
        }
    }
    const QDeadlineTimer until(patience); // of all
    for (AnalyzerItem &item : items) {
        endWorker(item, until);
    }
}

void AnalyzerManager::leaveToWriter()
{
    const QDeadlineTimer until(patience); // of all
    for (AnalyzerItem &item : items) {
        if (item.capture && item.capture->writerWaits()) {
            endWorker(item, until);
        }
    }
}

bool AnalyzerManager::isWorkerRunning(int index) const
{
    return !items[std::size_t(index)].progMng->isIdle();
}

AnalyzerItem *AnalyzerManager::itemOf(const AnalyzerProgMng *progMng)
{
    const auto same = [progMng](const AnalyzerItem &item) { return item.progMng.get() == progMng; };
    const auto found = std::find_if(items.begin(), items.end(), same);
    return found != items.end() ? &*found : nullptr;
}

void AnalyzerManager::slotStopWorkThread(AnalyzerProgMng *progMng, Analyzer *anly)
{
    AnalyzerItem *item = itemOf(progMng);
    if (item == nullptr || item->analyzer.get() != anly || !progMng->isParked()) {
        return; // stopped, replaced or run anew since it was sent
    }
    letGo(*item);
    if (anly->GetDecodeStatus() == DecodeStatus::Failed) {
        tell(nameOf(*item), message(int(item - items.data()))); // the next capture may be to its liking
    }
    bool again = false;
    const QString fault = pluginFault([&] { again = anly->NeedsRestart(); });
    if (!fault.isEmpty()) {
        fail(*item, fault);
    } else if (again && item->restarts >= mostRestarts) {
        fail(*item, ::tr("The decoder does not stop. It is out of use until it is started again."));
    } else if (again) {
        const ResultsChange change = prepareModify();
        run(*item, true);
    }
    emit analyzerDecodedChanged();
}

void AnalyzerManager::fail(AnalyzerItem &item, const QString &what)
{
    item.fault = what;
    tell(nameOf(item), what);
}

void AnalyzerManager::tell(const QString &name, const QString &what)
{
    const QString key = name + QLatin1Char('\n') + what;
    if (m_told.contains(key)) {
        return;
    }
    m_told.insert(key);
    postCall(this, [this, name, what] { emit analyzerFailed(name, what); });
}

// ---- the list

std::unique_ptr<Analyzer> AnalyzerManager::newAnalyzer(const AnalyzerLib &lib)
{
    const PluginTrial trial(m_guard, lib.fileName, lib.path);
    Analyzer *made = nullptr;
    QString fault = pluginFault([&] { made = lib.createAnalyzer(); });
    if (fault.isEmpty() && (made == nullptr || made->GetAnalyzerSettings() == nullptr)) {
        fault = ::tr("The decoder could not be made.");
    }
    if (fault.isEmpty()) {
        return std::unique_ptr<Analyzer>(made);
    }
    if (made != nullptr) {
        (void)pluginFault([&] { lib.destroyAnalyzer(made); });
    }
    tell(lib.displayName, fault);
    return nullptr;
}

Analyzer *AnalyzerManager::createAnalyzer(int library)
{
    return library >= 0 && library < libraries.size() ? newAnalyzer(libraries.at(library)).release() : nullptr;
}

void AnalyzerManager::destroyAnalyzer(int library, Analyzer *analyzer)
{
    if (analyzer != nullptr && library >= 0 && library < libraries.size()) {
        (void)pluginFault([&] { libraries.at(library).destroyAnalyzer(analyzer); });
    }
}

AnalyzerItem AnalyzerManager::makeItem(const AnalyzerLib &lib, std::unique_ptr<Analyzer> analyzer)
{
    AnalyzerItem item;
    static_cast<AnalyzerLib &>(item) = lib;
    item.format = QString::number(defaultFormat);
    item.analyzer = std::move(analyzer);
    item.progMng = std::make_unique<AnalyzerProgMng>(item.analyzer.get());
    connect(item.progMng.get(), &AnalyzerProgMng::sigStopWorkThread, this, &AnalyzerManager::slotStopWorkThread,
            Qt::QueuedConnection);
    return item;
}

void AnalyzerManager::dropItem(AnalyzerItem &item)
{
    if (!endWorker(item)) {
        return; // what is in the item now was never used
    }
    if (item.isRead()) {
        m_read.push_back(std::move(item));
        return;
    }
    item.progMng.reset();
    (void)pluginFault([&item] { item.analyzer.reset(); });
}

void AnalyzerManager::loadFromConfig()
{
    const ResultsChange change = prepareModify();
    stopAllWorkers();
    for (AnalyzerItem &item : items) {
        dropItem(item);
    }
    items.clear();
    const QStringList values = m_host.stored().split(QLatin1Char(';'));
    for (int i = 0; i + 2 < values.size(); i += 3) {
        const QString fileName = values.at(i).trimmed();
        const auto named = [&fileName](const AnalyzerLib &lib) { return lib.fileName == fileName; };
        const auto lib = std::find_if(libraries.cbegin(), libraries.cend(), named);
        std::unique_ptr<Analyzer> analyzer = lib != libraries.cend() ? newAnalyzer(*lib) : nullptr;
        if (!analyzer) {
            continue;
        }
        const QByteArray settings = values.at(i + 1).trimmed().toLatin1();
        AnalyzerItem item = makeItem(*lib, std::move(analyzer));
        item.format = values.at(i + 2).trimmed();
        const QString fault =
            pluginFault([&] { item.analyzer->GetAnalyzerSettings()->LoadText(settings.constData()); });
        items.push_back(std::move(item));
        if (!fault.isEmpty()) {
            fail(items.back(), fault);
        }
    }
    tellSimulation();
    emit analyzerItemChanged();
}

QString AnalyzerManager::settingsText(const AnalyzerItem &item)
{
    QString text;
    QString fault = pluginFault([&] {
        const char *saved = item.analyzer->GetAnalyzerSettings()->SaveText();
        text = QString::fromLatin1(saved != nullptr ? saved : "");
    });
    if (fault.isEmpty() && text.contains(QLatin1Char(';'))) {
        fault = ::tr("The settings hold a \";\" and cannot be stored.");
    }
    if (!fault.isEmpty()) {
        tell(nameOf(item), fault);
        text.clear();
    }
    return text;
}

void AnalyzerManager::saveToConfig()
{
    QList<QStringList> list;
    for (const AnalyzerItem &item : items) {
        list.append({item.fileName, settingsText(item), item.format});
    }
    m_host.store(list);
    tellSimulation();
    emit analyzerItemChanged();
}

void AnalyzerManager::addAnalyzer(Analyzer *analyzer)
{
    std::unique_ptr<Analyzer> taken(analyzer);
    if (!taken || addLibIndex < 0 || addLibIndex >= libraries.size()) {
        return;
    }
    {
        const ResultsChange change = prepareModify();
        items.push_back(makeItem(libraries.at(addLibIndex), std::move(taken)));
    }
    saveToConfig();
    const ResultsChange change = prepareModify();
    startAnalyzer(count() - 1);
}

void AnalyzerManager::removeAnalyzer(int index)
{
    const ResultsChange change = prepareModify();
    dropItem(items[std::size_t(index)]);
    items.erase(items.begin() + index);
    saveToConfig();
}

void AnalyzerManager::tellSimulation()
{
    std::vector<AnalyzerSimulation::Model> models;
    for (const AnalyzerItem &item : items) {
        if (item.fault.isEmpty()) {
            QByteArray settings;
            (void)pluginFault([&] { settings = item.analyzer->GetAnalyzerSettings()->SaveText(); });
            models.push_back({item, settings});
        }
    }
    m_simulation.setModels(std::move(models));
}

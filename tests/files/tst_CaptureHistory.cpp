#include "files/CaptureHistory.h"
#include "files/DataFileBytes.h"
#include "files/FileSizeLimit.h"
#include "settings/Config.h"
#include "store/MemBudget.h"
#include "support/Tokens.h"

#include <QDir>
#include <QStandardPaths>
#include <QTest>
#include <QThread>

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t plenty = std::int64_t(1) << 40;

ConfigDocument settings(const QByteArray &name = "SCL")
{
    return ConfigDocument::parse("<settings><global><devModel>1</devModel><chnShowName2>" + name +
                                 "</chnShowName2></global><devices/><analyzers/></settings>")
        .value();
}

QDateTime timeOf(int second)
{
    return {QDate(2026, 3, 9), QTime(7, 5, second, 120), Qt::UTC};
}

CaptureHistory::Capture captureOf(const SmpData &data, int second = 1, const HistoryLimits &limits = {})
{
    return {&data, QStringLiteral("RV2420"), timeOf(second), limits};
}

std::unique_ptr<SmpData> smallCapture()
{
    return CaptureBuilder(8).samples(1000).trigger(7).channel(2, 1, {10, 20}).channel(5, 0, {999}).build();
}

} // namespace

/// Captures in a folder of their own, on a disk whose room is given.
class TstCaptureHistory : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanup();

    void aCaptureIsKeptAndOpensWithItsSettings();
    void theEndIsToldOnTheMainThread();
    void theOldestIsRemovedFirst();
    void withoutSamplesNothingIsKept();
    void aCaptureThatGivesWayLeavesNothing();
    void aCaptureWhoseOwnerGoesIsKept();
    void onlyTheStoreThatGoesStays();
    void aFullDiskIsToldAndLeavesNoPart();
    void aWriteThatFailsIsTold();
    void aCaptureBeyondTheLimitIsTold();
    void aFolderThatCannotBeMadeIsTold();
    void settingsThatAreTooLongAreTold();
    void theNextCaptureThatIsKeptEndsTheTelling();
    void whatBecameOfAnEarlierCaptureIsNotToldBehindThatOfALaterOne();
    void anotherProgramsCapturesAreListedAfterALook();
    void theEndLeavesNoPartAndNoLease();

private:
    void finish() { QVERIFY(m_history->finish(10s)); }
    [[nodiscard]] QStringList files() const { return QDir(m_path).entryList(QDir::Files); }
    /// Holds the thread where it asks for the room on the disk.
    void hold()
    {
        m_history->roomLeft = [this](const QString &) {
            m_asked.release();
            m_mayGo.acquire();
            return m_room;
        };
    }

    std::unique_ptr<FileFolder> m_folder;
    QString m_path;
    std::unique_ptr<CaptureHistory> m_history;
    std::int64_t m_room = plenty;
    Tokens m_asked;
    Tokens m_mayGo;
};

void TstCaptureHistory::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    configLoad();
}

void TstCaptureHistory::init()
{
    memBudget = std::int64_t(1) << 30;
    m_folder = std::make_unique<FileFolder>();
    m_path = m_folder->path(QStringLiteral("history"));
    m_history = std::make_unique<CaptureHistory>(HistoryFolder(m_path));
    m_room = plenty;
    m_history->roomLeft = [this](const QString &) { return m_room; };
}

void TstCaptureHistory::cleanup()
{
    m_history.reset();
}

void TstCaptureHistory::aCaptureIsKeptAndOpensWithItsSettings()
{
    const auto data = smallCapture();
    m_history->keep(captureOf(*data), settings());
    finish();
    QCOMPARE(m_history->last().state, KeptState::Kept);
    const QVector<HistoryEntry> entries = m_history->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.constFirst().model, QStringLiteral("RV2420"));
    QCOMPARE(entries.constFirst().time, timeOf(1));
    QCOMPARE(entries.constFirst().picture.size(), 2);
    const OpenedCapture opened = CaptureFile([](const ConfigDocument &) { return 8; }).open(entries.constFirst().path);
    QVERIFY(opened.outcome.isDone() && opened.capture);
    QCOMPARE(opened.settings->global(QStringLiteral("chnShowName2")), QStringLiteral("SCL"));
    QCOMPARE(opened.capture->trgPos(), 7);
    QCOMPARE(opened.capture->smpCount(), 1000);
    QCOMPARE(entriesOf(*opened.capture, 2), entriesOf(*data, 2));
    QCOMPARE(entriesOf(*opened.capture, 5), entriesOf(*data, 5));
    QCOMPARE(data->leaseCount(), 0);
    QCOMPARE(files().size(), 2);
}

void TstCaptureHistory::theEndIsToldOnTheMainThread()
{
    const auto data = smallCapture();
    int told = 0;
    connect(m_history.get(), &CaptureHistory::sigChanged, this, [&] {
        QCOMPARE(QThread::currentThread(), qApp->thread());
        ++told;
    });
    m_history->keep(captureOf(*data), settings());
    QTRY_COMPARE(told, 1);
}

void TstCaptureHistory::theOldestIsRemovedFirst()
{
    const auto data = smallCapture();
    for (const int second : {1, 2, 3}) {
        m_history->keep(captureOf(*data, second, {2, plenty}), settings());
    }
    finish();
    const QVector<HistoryEntry> entries = m_history->entries();
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries.at(0).time, timeOf(3));
    QCOMPARE(entries.at(1).time, timeOf(2));
}

void TstCaptureHistory::withoutSamplesNothingIsKept()
{
    SmpData empty(8, 0);
    m_history->keep(captureOf(empty), settings());
    m_history->keep({}, settings());
    finish();
    QVERIFY(!QDir(m_path).exists());
}

void TstCaptureHistory::aCaptureThatGivesWayLeavesNothing()
{
    const auto data = smallCapture();
    hold();
    m_history->keep(captureOf(*data), settings());
    m_asked.acquire();
    QVERIFY(data->open(0ms)); // as the next capture does, while this one is written
    data->clear();
    m_mayGo.release();
    finish();
    QCOMPARE(m_history->last().state, KeptState::GaveWay);
    QVERIFY(m_history->entries().isEmpty() && files().isEmpty());
}

void TstCaptureHistory::aCaptureWhoseOwnerGoesIsKept()
{
    auto data = smallCapture();
    hold();
    m_history->keep(captureOf(*data), settings());
    m_asked.acquire();
    m_history->stayWith(data.get());
    SmpData::retire(std::move(data));
    m_mayGo.release();
    finish();
    QCOMPARE(m_history->last().state, KeptState::Kept);
    QCOMPARE(m_history->entries().size(), 1);
}

void TstCaptureHistory::onlyTheStoreThatGoesStays()
{
    const auto data = smallCapture();
    const auto other = smallCapture();
    hold();
    m_history->keep(captureOf(*data, 1), settings());
    m_history->keep(captureOf(*other, 2), settings());
    m_asked.acquire();
    m_history->stayWith(data.get());
    QVERIFY(!data->open(0ms));
    QVERIFY(other->open(0ms));
    data->readmit();
    m_mayGo.release(2);
    finish();
    QCOMPARE(m_history->entries().size(), 1);
    QCOMPARE(m_history->entries().constFirst().time, timeOf(1));
    other->readmit();
}

void TstCaptureHistory::aFullDiskIsToldAndLeavesNoPart()
{
    const auto data = smallCapture();
    m_room = 1000;
    m_history->keep(captureOf(*data), settings());
    finish();
    QCOMPARE(m_history->last().state, KeptState::Failed);
    QCOMPARE(m_history->last().result, FileResult::DiskFull);
    QVERIFY(!historyReason(m_history->last()).isEmpty());
    QVERIFY(files().isEmpty());
    QCOMPARE(data->leaseCount(), 0);
}

void TstCaptureHistory::aWriteThatFailsIsTold()
{
#ifdef Q_OS_UNIX
    const auto data = CaptureBuilder(8).samples(1'000'000).channel(2, 1, stairs(1, 2, 100'000)).build();
    const FileSizeLimit full(300'000); // within the blocks
    m_history->keep(captureOf(*data), settings());
    finish();
    QCOMPARE(m_history->last().state, KeptState::Failed);
    QVERIFY(files().isEmpty());
    QCOMPARE(data->leaseCount(), 0);
#else
    QSKIP("needs a limit of files");
#endif
}

void TstCaptureHistory::aCaptureBeyondTheLimitIsTold()
{
    const auto data = smallCapture();
    m_history->keep(captureOf(*data, 1, {20, 50}), settings());
    finish();
    QCOMPARE(m_history->last().state, KeptState::TooLarge);
    QVERIFY(files().isEmpty());
}

void TstCaptureHistory::aFolderThatCannotBeMadeIsTold()
{
    const auto data = smallCapture();
    const QString file = m_folder->write("x", QStringLiteral("file"));
    CaptureHistory history(HistoryFolder(file + QStringLiteral("/history")));
    history.keep(captureOf(*data), settings());
    QVERIFY(history.finish(10s));
    QCOMPARE(history.last().state, KeptState::Failed);
    QCOMPARE(data->leaseCount(), 0);
}

void TstCaptureHistory::settingsThatAreTooLongAreTold()
{
    const auto data = smallCapture();
    m_history->keep(captureOf(*data), settings(QByteArray(40'000, 'n')));
    QCOMPARE(m_history->last().result, FileResult::SettingsTooLong);
    QVERIFY(m_history->finish(0ms));
}

void TstCaptureHistory::theNextCaptureThatIsKeptEndsTheTelling()
{
    const auto data = smallCapture();
    m_room = 0;
    m_history->keep(captureOf(*data, 1), settings());
    finish();
    QCOMPARE(m_history->last().state, KeptState::Failed);
    m_room = plenty;
    m_history->refresh();
    finish();
    QCOMPARE(m_history->last().state, KeptState::Failed);
    m_history->keep(captureOf(*data, 2), settings());
    finish();
    QCOMPARE(m_history->last().state, KeptState::Kept);
    QVERIFY(historyReason(m_history->last()).isEmpty());
}

void TstCaptureHistory::whatBecameOfAnEarlierCaptureIsNotToldBehindThatOfALaterOne()
{
    const auto data = smallCapture();
    hold();
    m_history->keep(captureOf(*data, 1), settings());
    m_asked.acquire();
    m_history->refresh();
    m_history->keep(captureOf(*data, 2), settings(QByteArray(40'000, 'n')));
    m_mayGo.release();
    finish();
    QCOMPARE(m_history->entries().size(), 1);
    QCOMPARE(m_history->last().result, FileResult::SettingsTooLong);
}

void TstCaptureHistory::anotherProgramsCapturesAreListedAfterALook()
{
    const auto data = smallCapture();
    CaptureHistory other{HistoryFolder(m_path)};
    other.keep(captureOf(*data), settings());
    QVERIFY(other.finish(10s));
    QVERIFY(m_history->entries().isEmpty());
    m_history->refresh();
    finish();
    QCOMPARE(m_history->entries().size(), 1);
    QVERIFY(QFile::remove(m_history->entries().constFirst().path));
    m_history->refresh();
    finish();
    QVERIFY(m_history->entries().isEmpty());
}

void TstCaptureHistory::theEndLeavesNoPartAndNoLease()
{
    const auto data = smallCapture();
    hold();
    m_history->keep(captureOf(*data, 1), settings());
    m_history->keep(captureOf(*data, 2), settings());
    m_asked.acquire();
    QVERIFY(!m_history->finish(0ms));
    m_mayGo.release(2);
    m_history.reset(); // anywhere in the writing
    QCOMPARE(data->leaseCount(), 0);
    QVERIFY(files().filter(QStringLiteral(".part")).isEmpty());
}

QTEST_GUILESS_MAIN(TstCaptureHistory)
#include "tst_CaptureHistory.moc"

#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "device/BringUpDesk.h"
#include "device/DeviceGlobals.h"
#include "files/DataBlocks.h"
#include "files/DataFile.h"
#include "panels/DevSetting.h"
#include "panels/MenuDevSettings.h"
#include "settings/Globals.h"
#include "support/BoxCloser.h"
#include "support/MenuDriver.h"

#include <QPointer>
#include <QRadioButton>
#include <QTemporaryDir>

#include <functional>

/// Does something as soon as the progress dialog of a load is shown: the load is under way then, and the window gets
/// events behind its back.
class DuringLoad : public QObject {
public:
    explicit DuringLoad(std::function<void()> act) : m_act(std::move(act)) { qApp->installEventFilter(this); }
    int dialogs = 0;

    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *dialog = qobject_cast<MyProgressDlg *>(object);
        if (dialog != nullptr && event->type() == QEvent::Show &&
            dialog->windowTitle() == QStringLiteral("Open File")) {
            ++dialogs;
            m_act();
        }
        return false;
    }

private:
    std::function<void()> m_act;
};

/// What reaches the window while a file loads that is big enough for the progress dialog.
class TstMainWindowLoad : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void initTestCase();
    void init() { setUp(1); }
    void cleanup() { tearDown(); }

    void aBigFileOpensBehindTheProgressDialog();
    void aFileDroppedWhileAnotherLoadsIsIgnored();
    void anotherModelWhileAFileLoadsIsIgnored();
    void aModelChosenByHandWhileAFileLoadsIsIgnored();
    void aReplacedConfigurationWhileAFileLoadsIsIgnored();
    void theWindowMayCloseWhileAFileLoads();
    void anInstrumentThatIsPluggedInWhileAFileLoadsIsBroughtUpAfterwards();
    void aFileOfTheCommandLineThatStillLoadsIsNotOvertakenByADrop();

private:
    void open(const QString &path) { m_window->findChild<MainMenu *>()->openFile(path); }

    static constexpr std::int64_t entries = DataFile::backgroundLoadSize / dataEntrySize + 100;
    QTemporaryDir m_dir;
    QString m_big;   ///< a data file of model 0 with `entries` samples
    QString m_other; ///< a settings file of model 9
};

void TstMainWindowLoad::initTestCase()
{
    m_other = m_dir.filePath(QStringLiteral("other.cxset"));
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    QVERIFY(configSave(m_other));
    m_big = m_dir.filePath(QStringLiteral("big.cxdat"));
    globalSet(QStringLiteral("devModel"), QStringLiteral("0"));
    QVERIFY(configSave(m_big));

    QByteArray bytes(int(entries * dataEntrySize), '\0');
    for (std::int64_t i = 0; i < entries; ++i) {
        const std::int64_t pos = i + 1;
        for (int byte = 0; byte < dataEntrySize; ++byte) {
            bytes[int(i * dataEntrySize + byte)] = char(pos >> (8 * byte) & 0xff);
        }
    }
    const auto head = encodeFileHead({entries, 1000000, 0, 16});
    const auto block = encodeBlockHead({3, 0, entries});
    QFile file(m_big);
    QVERIFY(file.open(QIODevice::Append));
    file.write(reinterpret_cast<const char *>(head.data()), DataFileHead::size);
    file.write(reinterpret_cast<const char *>(block.data()), DataBlockHead::size);
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

void TstMainWindowLoad::aBigFileOpensBehindTheProgressDialog()
{
    BoxCloser closer;
    const QString title = m_window->windowTitle();
    DuringLoad load([&] { QCOMPARE(m_window->windowTitle(), title); }); // nothing changes before all is read
    open(m_big);
    QCOMPARE(m_window->windowTitle(), m_big + QStringLiteral(" - CorvanLUX"));
    QCOMPARE(load.dialogs, 1);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(gDev->smpData->sampleCount(), entries);
    QVERIFY(!m_window->findChild<WaveDataGen *>()->digLine(3).empty());
}

void TstMainWindowLoad::aFileDroppedWhileAnotherLoadsIsIgnored()
{
    BoxCloser closer;
    DuringLoad load([this] {
        drop(m_other);
        drop(m_big);
        drop(m_dir.filePath(QStringLiteral("nothing.cxdat")));
    });
    open(m_big);
    QCOMPARE(load.dialogs, 1);
    QCOMPARE(closer.seen.count, 0);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(gDev->smpData->sampleCount(), entries);
    drop(m_other); // and is taken again once the load is done
    QCOMPARE(gDev->model, 9);
}

void TstMainWindowLoad::anotherModelWhileAFileLoadsIsIgnored()
{
    DuringLoad load([this] { m_window->slotDevPreConnect(9); });
    open(m_big);
    QCOMPARE(load.dialogs, 1);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("0"));
    QCOMPARE(gDev->smpData->sampleCount(), entries);
    m_window->slotDevPreConnect(9);
    QCOMPARE(gDev->model, 9);
}

void TstMainWindowLoad::aModelChosenByHandWhileAFileLoadsIsIgnored()
{
    const MenuDriver<MenuDevSettings> driver([](MenuDevSettings &menu) {
        QRadioButton *last = menu.findChildren<QRadioButton *>().constLast();
        QTest::mouseClick(last, Qt::LeftButton, {}, QPoint(8, last->height() / 2));
    });
    DuringLoad load([this] { m_window->findChild<DevSetting *>()->choiceDeviceClickedSlot(); });
    open(m_big);
    QCOMPARE(load.dialogs, 1);
    QCOMPARE(driver.count, 1);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(gDev->smpData->sampleCount(), entries);
}

void TstMainWindowLoad::aReplacedConfigurationWhileAFileLoadsIsIgnored()
{
    bool stays = false;
    DuringLoad load([&] {
        const QPointer<DevBase> before = gDev;
        m_window->slotReplaceConfig();
        stays = before == gDev;
    });
    open(m_big);
    QVERIFY(stays);
    QCOMPARE(load.dialogs, 1);
    QCOMPARE(gDev->smpData->sampleCount(), entries);
}

void TstMainWindowLoad::anInstrumentThatIsPluggedInWhileAFileLoadsIsBroughtUpAfterwards()
{
    tearDown();
    BringUpDesk desk(1, BringUpDesk::WithWindow);
    makeWindow(*desk.session);
    desk.add(runningInstrument(9));
    BoxCloser closer;
    bool told = false; // the bus has told the window, which has not looked
    DuringLoad load([&] {
        desk.bus->plug();
        desk.session->lookForDevice();
        told = desk.reports.isEmpty();
    });
    open(m_big);
    QVERIFY(told);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(gDev->smpData->sampleCount(), entries);
    QTRY_VERIFY(desk.has(6));
    QCOMPARE(desk.firstError(), (Report{0, 0}));
    QCOMPARE(gDev->model, 9);
    QCOMPARE(closer.seen.count, 0);
    m_window.reset();
}

void TstMainWindowLoad::theWindowMayCloseWhileAFileLoads()
{
    QApplication::setQuitOnLastWindowClosed(false);
    DuringLoad load([this] { QVERIFY(m_window->close()); });
    open(m_big);
    QApplication::setQuitOnLastWindowClosed(true);
    QCOMPARE(load.dialogs, 1);
    QCOMPARE(gDev->smpData->sampleCount(), entries);
}

void TstMainWindowLoad::aFileOfTheCommandLineThatStillLoadsIsNotOvertakenByADrop()
{
    tearDown();
    m_session = makeSession();
    gOpenFile = m_big;
    DuringLoad load([this] { drop(m_other); });
    m_window = std::make_unique<MainWindow>(*m_session);
    QTRY_COMPARE(load.dialogs, 1);
    QTRY_COMPARE(gDev->smpData->sampleCount(), entries);
    QCOMPARE(gDev->model, 0);
    QCOMPARE(gOpenFile, m_big);
}

LUX_GUI_TEST(TstMainWindowLoad)
#include "tst_MainWindowLoad.moc"

#include "app/StartUp.h"
#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DeviceGlobals.h"
#include "device/UsbPlatformNone.h"
#include "files/DataBlocks.h"
#include "session/Session.h"
#include "settings/Config.h"
#include "settings/Globals.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TstStartUp : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void withoutAFileTheConfigurationIsThatOfTheLastRun();
    void aSettingsFileGivesTheConfigurationAndIsNotOpenedAsData();
    void aDataFileGivesTheConfigurationAndIsLeftForTheWindow();
    void aDataFileThatCannotBeLoadedKeepsTheConfiguration();
    void anotherProgramsCaptureKeepsTheConfigurationAndIsLeftForTheWindow();
    void onlyTheFirstSuitableFileCounts();
    void aFileWithoutSettingsIsForgotten_data();
    void aFileWithoutSettingsIsForgotten();
    void theViewOptionsAreThoseOfTheFile();
    void aNegativeModelGivesTheDeviceWithoutHardware();
    void anUnreadableModelGivesTheDeviceWithoutHardware();
    void theLookTakesTheProgramsFontAndStyle();

private:
    QString write(const QString &name, const QByteArray &bytes);
    static QByteArray settings(const QByteArray &global)
    {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><settings><global>" + global +
               "</global><devices/><analyzers/></settings>\n";
    }
    /// A capture without channels, of a model with so many.
    static QByteArray head(int chnCount)
    {
        const auto bytes = encodeFileHead({1000, 1000000, 0, chnCount});
        return QByteArray(reinterpret_cast<const char *>(bytes.data()), DataFileHead::size);
    }
    QTemporaryDir m_dir;
    std::unique_ptr<Session> m_session;
};

void TstStartUp::init()
{
    QFile::remove(configPath());
    gOpenFile.clear();
}

void TstStartUp::cleanup()
{
    m_session.reset();
}

QString TstStartUp::write(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? path : QString();
}

void TstStartUp::withoutAFileTheConfigurationIsThatOfTheLastRun()
{
    StartUp::initGlobals({});
    globalSet(QStringLiteral("devModel"), QStringLiteral("9"));
    QVERIFY(configSave(configPath()));
    StartUp::initGlobals({QStringLiteral("--nothing"), QStringLiteral("/no/such.cxdat")});
    QVERIFY(gOpenFile.isEmpty());
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 9);
}

void TstStartUp::aSettingsFileGivesTheConfigurationAndIsNotOpenedAsData()
{
    const QString path = write(QStringLiteral("a.cxset"), settings("<devModel>5</devModel>"));
    StartUp::initGlobals({path});
    QVERIFY(gOpenFile.isEmpty());
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 5);
}

void TstStartUp::aDataFileGivesTheConfigurationAndIsLeftForTheWindow()
{
    const QString path = write(QStringLiteral("a.cxdat"), settings("<devModel>1</devModel>") + head(8));
    StartUp::initGlobals({path});
    QCOMPARE(gOpenFile, path);
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 1);
}

void TstStartUp::aDataFileThatCannotBeLoadedKeepsTheConfiguration()
{
    StartUp::initGlobals({});
    globalSet(QStringLiteral("devModel"), QStringLiteral("7"));
    globalSet(QStringLiteral("windowPosition"), QStringLiteral("10,20,800,600"));
    QVERIFY(configSave(configPath()));
    const QByteArray theirs = settings("<devModel>1</devModel><windowPosition>0,0,9,9</windowPosition>");
    for (const QByteArray &data : {QByteArray(), head(8).chopped(1), head(16), head(8) + "##"}) {
        const QString path = write(QStringLiteral("bad.cxdat"), theirs + data);
        StartUp::initGlobals({path});
        QCOMPARE(gOpenFile, path); // for the window to tell
        QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("7"));
    }
    StartUp::initGlobals({write(QStringLiteral("good.cxdat"), theirs + head(8))});
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("1"));
    QCOMPARE(globalGet(QStringLiteral("windowPosition")), QStringLiteral("10,20,800,600"));
}

void TstStartUp::anotherProgramsCaptureKeepsTheConfigurationAndIsLeftForTheWindow()
{
    StartUp::initGlobals({});
    globalSet(QStringLiteral("devModel"), QStringLiteral("7"));
    QVERIFY(configSave(configPath()));
    const QString path = write(QStringLiteral("a.vcd"), "no dump: the window tells");
    StartUp::initGlobals({path});
    QCOMPARE(gOpenFile, path);
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("7"));
}

void TstStartUp::onlyTheFirstSuitableFileCounts()
{
    const QString set = write(QStringLiteral("first.cxset"), settings("<devModel>5</devModel>"));
    const QString data = write(QStringLiteral("second.cxdat"), settings("<devModel>1</devModel>"));
    StartUp::initGlobals({QStringLiteral("/etc/hostname"), set, data});
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("5"));
}

void TstStartUp::aFileWithoutSettingsIsForgotten_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("malformed") << QByteArray("<settings><global></settings>\n");
    QTest::newRow("settings beyond the head")
        << QByteArray("<settings>") + QByteArray(40000, ' ') + QByteArray("</settings>\n");
}

void TstStartUp::aFileWithoutSettingsIsForgotten()
{
    QFETCH(QByteArray, bytes);
    StartUp::initGlobals({});
    globalSet(QStringLiteral("devModel"), QStringLiteral("7"));
    QVERIFY(configSave(configPath()));
    StartUp::initGlobals({write(QStringLiteral("bad.cxdat"), bytes)});
    QVERIFY(gOpenFile.isEmpty());
    QCOMPARE(globalGet(QStringLiteral("devModel")), QStringLiteral("7"));
}

void TstStartUp::theViewOptionsAreThoseOfTheFile()
{
    StartUp::initGlobals({});
    QCOMPARE(viewState, 0);
    StartUp::initGlobals(
        {write(QStringLiteral("v.cxset"), settings("<viewState>2</viewState><disAnimateZoom>1</disAnimateZoom>"
                                                   "<colorWaveform>1</colorWaveform>"))});
    QCOMPARE(viewState, 2);
    QVERIFY(disAnimateZoom);
    QVERIFY(colorWaveform);
}

void TstStartUp::aNegativeModelGivesTheDeviceWithoutHardware()
{
    StartUp::initGlobals({write(QStringLiteral("n.cxset"), settings("<devModel>-3</devModel>"))});
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 0);
}

void TstStartUp::anUnreadableModelGivesTheDeviceWithoutHardware()
{
    StartUp::initGlobals({write(QStringLiteral("x.cxset"), settings("<devModel>RV2540</devModel>"))});
    m_session = std::make_unique<Session>(std::make_unique<UsbPlatformNone>());
    QCOMPARE(gDev->model, 0);
}

void TstStartUp::theLookTakesTheProgramsFontAndStyle()
{
    StartUp::initGlobals({});
    StartUp::initLook();
    QCOMPARE(QApplication::font(), gFontMain);
    QVERIFY(!qApp->styleSheet().isEmpty());
}

QTEST_MAIN(TstStartUp)
#include "tst_StartUp.moc"

#include "app/AboutLUX.h"
#include "controls/Contrast.h"
#include "controls/Look.h"
#include "device/DevBase.h"
#include "device/DevModels.h"
#include "device/DeviceGlobals.h"
#include "device/UsbTransport.h"
#include "settings/HostSystem.h"
#include "support/FakeUsb.h"
#include "support/GuiTestMain.h"

#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

#include <memory>

class TstAboutLUX : public QObject {
    Q_OBJECT
private slots:
    void init() { gDev = createDevice(0).release(); }
    void cleanup();

    void theSystemsStateIsToldOneItemALine();
    void memoryIsToldInWholeMebibytes();
    void theScreensResolutionIsToldWithSixDigits();
    void withoutAnInstrumentItsNumbersAreZero();
    void theConnectionsLevelIsThatOfTheTransport();
    void theProgramsNameAndVersionStandAboveIt();
    void theSystemsStateCanBeSelectedAndCopiedByKeys();
    void theCloseButtonEndsTheDialog();

private:
    static QStringList lines(const SystemInfo &info) { return systemInfoText(info).split(QLatin1Char('\n')); }
};

void TstAboutLUX::cleanup()
{
    delete gDev;
    gDev = nullptr;
}

void TstAboutLUX::theSystemsStateIsToldOneItemALine()
{
    SystemInfo info;
    info.os = QStringLiteral("Some OS");
    info.dotsPerInch = 96;
    info.memoryTotal = std::int64_t(24105) << 20;
    info.memoryUsable = std::int64_t(16873) << 20;
    info.memoryUsed = std::int64_t(5) << 20;
    info.bcdUsb = 0x0210;
    info.devUid = QByteArrayLiteral("\x01\x22\x33\x44\x55\x66\x77\xfe");
    info.hardwareVersion = 0x01a;
    QCOMPARE(lines(info),
             QStringList({QStringLiteral("OS: Some OS"), QStringLiteral("Screen DPI: 96"),
                          QStringLiteral("Total Memory: 24105MB"), QStringLiteral("Usable Memory: 16873MB"),
                          QStringLiteral("Used Memory: 5MB"), QStringLiteral("USB Level: 210"),
                          QStringLiteral("Device ID: 01223344556677fe001a")}));
}

void TstAboutLUX::memoryIsToldInWholeMebibytes()
{
    SystemInfo info;
    info.memoryTotal = (std::int64_t(2) << 20) - 1;
    info.memoryUsable = std::int64_t(1) << 40;
    QCOMPARE(lines(info).at(2), QStringLiteral("Total Memory: 1MB"));
    QCOMPARE(lines(info).at(3), QStringLiteral("Usable Memory: 1048576MB"));
}

void TstAboutLUX::theScreensResolutionIsToldWithSixDigits()
{
    SystemInfo info;
    info.dotsPerInch = 96.0631234;
    QCOMPARE(lines(info).at(1), QStringLiteral("Screen DPI: 96.0631"));
}

void TstAboutLUX::withoutAnInstrumentItsNumbersAreZero()
{
    void *block = takeBlock(3 << 20);
    const SystemInfo info = systemInfoNow();
    giveBlock(block, 3 << 20);
    QCOMPARE(info.os, osName());
    QCOMPARE(info.memoryUsable, memBudgetStart);
    QCOMPARE(info.memoryUsed, std::int64_t(3 << 20));
    QCOMPARE(lines(info).at(5), QStringLiteral("USB Level: 0"));
    QCOMPARE(lines(info).at(6), QStringLiteral("Device ID: 00000000000000000000"));
}

void TstAboutLUX::theConnectionsLevelIsThatOfTheTransport()
{
    auto usb = std::make_unique<FakeUsb>();
    FakeUsbDevice slow;
    slow.pipes = {{0x86, 64}};
    usb->devices = {slow};
    UsbTransport transport(std::move(usb));
    gUsb = &transport;
    QCOMPARE(systemInfoNow().bcdUsb, std::uint16_t(0));
    QCOMPARE(transport.refresh(), 1);
    QCOMPARE(lines(systemInfoNow()).at(5), QStringLiteral("USB Level: 110"));
    gUsb = nullptr;
}

void TstAboutLUX::theProgramsNameAndVersionStandAboveIt()
{
    const AboutLUX dialog;
    QStringList texts;
    QString nameStyle;
    QString logoStyle;
    for (const QLabel *label : dialog.findChildren<QLabel *>()) {
        texts += label->text();
        if (label->text() == QStringLiteral("CorvanLUX")) {
            nameStyle = label->styleSheet();
        } else if (label->text().isEmpty()) {
            logoStyle = label->styleSheet();
        }
    }
    QVERIFY2(nameStyle.startsWith(QStringLiteral("color:#ff4500;background-color:#070707;")), qPrintable(nameStyle));
    QVERIFY(contrastRatio(QColor(QStringLiteral("#ff4500")), gGreys[9]) >= leastTextContrast);
    QCOMPARE(logoStyle, QStringLiteral("border-image:url(:/res/imgLogo);"));
    const QString version = QStringLiteral("Version: ") + QStringLiteral(LUX_VERSION) +
                            QStringLiteral(" (%1-bit)").arg(int(QSysInfo::WordSize));
    QVERIFY2(texts.contains(version), qPrintable(texts.join(QLatin1Char('\n'))));
    QCOMPARE(dialog.findChild<QGroupBox *>()->title(), QStringLiteral("System Information"));
}

void TstAboutLUX::theSystemsStateCanBeSelectedAndCopiedByKeys()
{
    AboutLUX dialog;
    dialog.show();
    auto *info = dialog.findChild<QLabel *>(QStringLiteral("systemInfo"));
    QVERIFY(info->focusPolicy() & Qt::TabFocus);
    QVERIFY(!info->accessibleName().isEmpty());
    info->setFocus();
    QTest::keyClick(info, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(info, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), info->text());
    QTest::keyClick(info, Qt::Key_X);
    QCOMPARE(info->text(), systemInfoText(systemInfoNow()));
}

void TstAboutLUX::theCloseButtonEndsTheDialog()
{
    AboutLUX dialog;
    dialog.show();
    auto *close = dialog.findChild<QPushButton *>();
    QCOMPARE(close->text(), QStringLiteral("Close"));
    QTest::mouseClick(close, Qt::LeftButton);
    QVERIFY(!dialog.isVisible());
}

LUX_GUI_TEST(TstAboutLUX)
#include "tst_AboutLUX.moc"

#include "panels/DevSetting.h"
#include "panels/PanelDevice.h"

#include <QLabel>
#include <QTest>

class TstDevSetting : public QObject {
    Q_OBJECT
private slots:
    void itShowsTheModelsName();
    void theNameFollowsTheDevice();
    void itHasThePlaceOfTheSidebarColumnAndTheRuler_data();
    void itHasThePlaceOfTheSidebarColumnAndTheRuler();
    void theNameIsNotClipped_data();
    void theNameIsNotClipped();
    void theLabelsHaveTheirStyles();
    void thePanelIsRounded();
};

namespace {
QLabel *nameLabel(const DevSetting &setting)
{
    return setting.findChild<QLabel *>(QStringLiteral("modelName"));
}

void scales()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144") << 144;
    QTest::newRow("192") << 192;
}
} // namespace

void TstDevSetting::itShowsTheModelsName()
{
    const PanelDevice device(storage16Model);
    const DevSetting setting;
    QVERIFY(!gDev->name.isEmpty());
    QCOMPARE(nameLabel(setting)->text(), gDev->name);
}

void TstDevSetting::theNameFollowsTheDevice()
{
    PanelDevice device(storage16Model);
    DevSetting setting;
    const QString before = nameLabel(setting)->text();
    device.replace(analogModel);
    QCOMPARE(nameLabel(setting)->text(), before); // it holds no device
    setting.reload();
    QVERIFY(gDev->name != before);
    QCOMPARE(nameLabel(setting)->text(), gDev->name);
}

void TstDevSetting::itHasThePlaceOfTheSidebarColumnAndTheRuler_data()
{
    scales();
}

void TstDevSetting::itHasThePlaceOfTheSidebarColumnAndTheRuler()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    const DevSetting setting;
    QCOMPARE(setting.minimumSize(), QSize(dp(190), dp(36)));
    QCOMPARE(setting.maximumSize(), QSize(dp(190), dp(36)));
    globalsSetDpi(96);
}

void TstDevSetting::theNameIsNotClipped_data()
{
    scales();
}

void TstDevSetting::theNameIsNotClipped()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage16Model);
    globalsSetDpi(dpi);
    DevSetting setting;
    QFont font = setting.font();
    font.setPixelSize(dp(13));
    setting.setFont(font);
    setting.show();
    QCoreApplication::processEvents();
    const QLabel *label = nameLabel(setting);
    QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
    QVERIFY(label->height() >= label->fontMetrics().height());
    globalsSetDpi(96);
}

void TstDevSetting::theLabelsHaveTheirStyles()
{
    const PanelDevice device(storage16Model);
    const DevSetting setting;
    QStringList styles;
    for (const QLabel *label : setting.findChildren<QLabel *>()) {
        styles.append(label->styleSheet());
    }
    QCOMPARE(styles, QStringList({QStringLiteral("QLabel{border:0;border-image:url(:/res/icoDeviceLA);}"),
                                  QStringLiteral("QLabel{border:0;color:#dfdfdf;}")}));
}

void TstDevSetting::thePanelIsRounded()
{
    const PanelDevice device(storage16Model);
    DevSetting setting;
    QImage image(setting.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    setting.render(&image, {}, {}, {});
    QCOMPARE(image.pixelColor(0, 18).alpha(), 0);
    QCOMPARE(image.pixelColor(2, 2).alpha(), 0); // outside the corner
    QCOMPARE(image.pixelColor(2, 18), gGreys[4]);
    QVERIFY(image.pixelColor(5, 18).lightness() < gGreys[5].lightness());
}

QTEST_MAIN(TstDevSetting)
#include "tst_DevSetting.moc"

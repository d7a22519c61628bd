#include "controls/Look.h"
#include "device/DeviceGlobals.h"
#include "panels/ExportDesk.h"

using namespace ExportDesk;

/// The dialog of channels and range: its channels, and how it is used as a whole.
class TstExportDataSet : public QObject {
    Q_OBJECT
private slots:
    void everyChannelHasABox_data();
    void everyChannelHasABox();
    void theBoxesBeginAsTheDevicesChannels();
    void theGroupsFollowTheModel();
    void theAnalogBoxesChangeNothing();
    void aClickOnABoxChoosesItsChannel();
    void allChannelsCanBeUnchecked();
    void theDeviceMayChangeMeanwhile_data();
    void theDeviceMayChangeMeanwhile();
    void okAcceptsAndCancelRejects();
    void enterAcceptsFromEveryControl();
    void escapeRejectsFromEveryControl();
    void tabReachesEveryControlInOrder();
    void everyControlHasAnAccessibleName();
    void theWindowHasACloseButtonOnly();
    void noTextIsClipped_data();
    void noTextIsClipped();
};

void TstExportDataSet::everyChannelHasABox_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("count");
    QTest::newRow("8") << streaming8Model << 8;
    QTest::newRow("16") << storage16Model << 16;
    QTest::newRow("32") << storage32Model << 32;
}

void TstExportDataSet::everyChannelHasABox()
{
    QFETCH(int, model);
    QFETCH(int, count);
    const PanelDevice device(model);
    const Desk desk;
    const auto boxes = desk.boxes("Channel Select");
    QCOMPARE(boxes.size(), count);
    for (int chn = 0; chn < count; ++chn) {
        QCOMPARE(boxes[chn]->text(), QStringLiteral("CH%1").arg(chn));
        // Rows of eight, none over another.
        QCOMPARE(boxes[chn]->y(), boxes[chn / 8 * 8]->y());
        QVERIFY(chn % 8 == 0 || boxes[chn]->x() >= boxes[chn - 1]->geometry().right());
        QVERIFY(chn < 8 || boxes[chn]->y() >= boxes[chn - 8]->geometry().bottom());
    }
    QCOMPARE(Selection(desk.dialog).channels.size(), std::size_t(count));
}

void TstExportDataSet::theBoxesBeginAsTheDevicesChannels()
{
    const PanelDevice device(storage16Model);
    QVector<bool> enabled(16, false);
    enabled[0] = enabled[7] = enabled[15] = true;
    gDev->setChnEnable(enabled);
    const Desk desk;
    const auto boxes = desk.boxes("Channel Select");
    for (int chn = 0; chn < 16; ++chn) {
        QCOMPARE(boxes[chn]->isChecked(), enabled[chn]);
    }
    QCOMPARE(Selection(desk.dialog).channels, channels(16, {0, 7, 15}));
}

void TstExportDataSet::theGroupsFollowTheModel()
{
    PanelDevice device(storage16Model);
    {
        const Desk desk;
        QCOMPARE(desk.groups(), QStringList({QStringLiteral("Channel Select"), QStringLiteral("Time Select")}));
    }
    device.replace(analogModel);
    gDev->setAChnEnable({true, false});
    const Desk desk;
    QCOMPARE(desk.groups(), QStringList({QStringLiteral("Digital Channel Select"),
                                         QStringLiteral("Analog Channel Select"), QStringLiteral("Time Select")}));
    const auto boxes = desk.boxes("Analog Channel Select");
    QCOMPARE(boxes.size(), 2);
    QCOMPARE(boxes[0]->text(), QStringLiteral("CH1"));
    QCOMPARE(boxes[1]->text(), QStringLiteral("CH2"));
    QVERIFY(boxes[0]->isChecked());
    QVERIFY(!boxes[1]->isChecked());
}

void TstExportDataSet::theAnalogBoxesChangeNothing()
{
    const PanelDevice device(analogModel);
    CaptureBuilder{8000}.fill(*gDev->smpData);
    const Desk desk;
    const Selection before(desk.dialog);
    const bool checked = desk.boxes("Analog Channel Select")[0]->isChecked();
    Desk::click(desk.boxes("Analog Channel Select")[0]);
    QCOMPARE(desk.boxes("Analog Channel Select")[0]->isChecked(), !checked);
    const QWidget *group = desk.boxes("Analog Channel Select")[0]->parentWidget();
    QCOMPARE(group->toolTip(), QStringLiteral("Files and exports hold the digital channels only."));
    QCOMPARE(group->accessibleDescription(), group->toolTip());
    const Selection after(desk.dialog);
    QCOMPARE(after.channels, before.channels);
    QCOMPARE(after.channels.size(), std::size_t(16));
    QCOMPARE(after.start, before.start);
    QCOMPARE(after.end, before.end);
}

void TstExportDataSet::aClickOnABoxChoosesItsChannel()
{
    const PanelDevice device(streaming8Model);
    QVector<bool> enabled(8, false);
    enabled[3] = true;
    gDev->setChnEnable(enabled);
    const Desk desk;
    Desk::click(desk.boxes("Channel Select")[5]);
    QCOMPARE(Selection(desk.dialog).channels, channels(8, {3, 5}));
    desk.boxes("Channel Select")[3]->setFocus();
    QTest::keyClick(desk.boxes("Channel Select")[3], Qt::Key_Space);
    QCOMPARE(Selection(desk.dialog).channels, channels(8, {5}));
    QCOMPARE(gDev->chnEnable, enabled); // the device keeps its own choice
}

void TstExportDataSet::allChannelsCanBeUnchecked()
{
    const PanelDevice device(streaming8Model);
    const Desk desk;
    for (QCheckBox *box : desk.boxes("Channel Select")) {
        box->setChecked(false);
    }
    QCOMPARE(Selection(desk.dialog).channels, channels(8, {}));
}

void TstExportDataSet::theDeviceMayChangeMeanwhile_data()
{
    QTest::addColumn<int>("model");
    QTest::addColumn<int>("count");
    QTest::newRow("to fewer channels") << streaming8Model << 8;
    QTest::newRow("to more channels") << storage32Model << 32;
}

void TstExportDataSet::theDeviceMayChangeMeanwhile()
{
    QFETCH(int, model);
    QFETCH(int, count);
    PanelDevice device(storage16Model);
    CaptureBuilder{1000}.fill(*gDev->smpData);
    const Desk desk;
    device.replace(model);
    const Selection selection(desk.dialog);
    QCOMPARE(selection.channels.size(), std::size_t(count));
    for (std::size_t chn = 0; chn < selection.channels.size(); ++chn) {
        QCOMPARE(int(selection.channels[chn]), chn < 16 ? 1 : 0);
    }
    QCOMPARE(selection.end, 0.0);
}

void TstExportDataSet::okAcceptsAndCancelRejects()
{
    const PanelDevice device(storage16Model);
    {
        const Desk desk;
        QSignalSpy accepted(&desk.dialog, &QDialog::accepted);
        Desk::click(desk.button<QPushButton>("OK"));
        QCOMPARE(accepted.size(), 1);
        QVERIFY(!desk.dialog.isVisible());
    }
    const Desk desk;
    QSignalSpy rejected(&desk.dialog, &QDialog::rejected);
    Desk::click(desk.button<QPushButton>("Cancel"));
    QCOMPARE(rejected.size(), 1);
}

void TstExportDataSet::enterAcceptsFromEveryControl()
{
    const PanelDevice device(storage16Model);
    for (const auto key : {Qt::Key_Return, Qt::Key_Enter}) {
        Desk desk(twoPairs());
        Desk::click(desk.radio("Specify time interval"));
        for (QWidget *control : QVector<QWidget *>{desk.boxes("Channel Select")[3], desk.radio("Specify time interval"),
                                                   desk.start(), desk.end()}) {
            desk.dialog.setResult(-1);
            desk.dialog.show();
            control->setFocus();
            QTest::keyClick(control, key);
            QCOMPARE(desk.dialog.result(), int(QDialog::Accepted));
        }
    }
}

void TstExportDataSet::escapeRejectsFromEveryControl()
{
    const PanelDevice device(storage16Model);
    Desk desk(twoPairs());
    Desk::click(desk.radio("Timing markers"));
    for (QWidget *control : QVector<QWidget *>{desk.boxes("Channel Select")[3], desk.radio("Timing markers"),
                                               desk.pairs(), desk.button<QPushButton>("OK")}) {
        desk.dialog.setResult(-1);
        desk.dialog.show();
        control->setFocus();
        QTest::keyClick(control, Qt::Key_Escape);
        QCOMPARE(desk.dialog.result(), int(QDialog::Rejected));
    }
}

void TstExportDataSet::tabReachesEveryControlInOrder()
{
    const PanelDevice device(analogModel);
    Desk desk(twoPairs());
    Desk::click(desk.radio("Specify time interval"));
    QVector<QWidget *> order;
    for (QCheckBox *box : desk.boxes("Digital Channel Select") + desk.boxes("Analog Channel Select")) {
        order.append(box);
    }
    order.append({desk.radio("Specify time interval"), desk.start(), desk.end(), desk.button<QPushButton>("OK"),
                  desk.button<QPushButton>("Cancel")});
    order.first()->setFocus();
    for (QWidget *control : order) {
        QVERIFY2(control->hasFocus(), qPrintable(QString::fromLatin1(control->metaObject()->className())));
        QTest::keyClick(control, Qt::Key_Tab);
    }
    QVERIFY(order.first()->hasFocus());

    // The arrows go from choice to choice, and Tab from the markers to their pairs.
    QRadioButton *interval = desk.radio("Specify time interval");
    interval->setFocus();
    QTest::keyClick(interval, Qt::Key_Up);
    QVERIFY(desk.radio("Timing markers")->isChecked());
    QVERIFY(desk.radio("Timing markers")->hasFocus());
    QTest::keyClick(desk.radio("Timing markers"), Qt::Key_Tab);
    QVERIFY(desk.pairs()->hasFocus());
}

void TstExportDataSet::everyControlHasAnAccessibleName()
{
    const PanelDevice device(analogModel);
    const Desk desk(twoPairs());
    int controls = 0;
    for (const QWidget *widget : desk.dialog.findChildren<QWidget *>()) {
        if (widget->focusPolicy() == Qt::NoFocus || widget->inherits("QAbstractItemView")) {
            continue;
        }
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        QVERIFY2(!widget->accessibleName().isEmpty() || (button != nullptr && !button->text().isEmpty()),
                 widget->metaObject()->className());
        ++controls;
    }
    QVERIFY(controls >= 16 + 2 + 3 + 1 + 2 + 2);
}

void TstExportDataSet::theWindowHasACloseButtonOnly()
{
    const PanelDevice device(storage16Model);
    const Desk desk;
    const Qt::WindowFlags flags = desk.dialog.windowFlags();
    QCOMPARE(int(flags & Qt::WindowType_Mask), int(Qt::Dialog));
    QVERIFY(flags & Qt::WindowCloseButtonHint);
    QVERIFY(!(flags & (Qt::WindowMinMaxButtonsHint | Qt::WindowContextHelpButtonHint)));
    QVERIFY(desk.dialog.isModal());
    QCOMPARE(desk.dialog.windowTitle(), QStringLiteral("Export Data"));
}

void TstExportDataSet::noTextIsClipped_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("144") << 144;
    QTest::newRow("192") << 192;
}

void TstExportDataSet::noTextIsClipped()
{
    QFETCH(int, dpi);
    const PanelDevice device(storage32Model);
    globalsSetDpi(dpi);
    {
        QFont font = QApplication::font();
        font.setPixelSize(dp(13));
        ExportDataSet dialog(twoPairs());
        dialog.setFont(font);
        dialog.show();
        QCoreApplication::processEvents();
        for (const QWidget *widget : dialog.findChildren<QWidget *>()) {
            if (widget->isVisible() && widget->inherits("QAbstractButton")) {
                QVERIFY(widget->width() >= widget->sizeHint().width());
                QVERIFY(widget->height() >= widget->sizeHint().height());
            }
        }
        for (const QLabel *label : dialog.findChildren<QLabel *>()) {
            QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
        }
    }
    globalsSetDpi(96);
}

LUX_GUI_TEST(TstExportDataSet)
#include "tst_ExportDataSet.moc"

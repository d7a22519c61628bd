#include "panels/ExportDataSet.h"
#include "panels/PanelDevice.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"
#include "wave/MainView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

namespace {

constexpr int streaming8Model = 1;
constexpr int storage32Model = 9;

QVector<ShownPair> twoPairs()
{
    return {{0, QStringLiteral("A1"), QStringLiteral("A2"), 100, 2000},
            {2, QStringLiteral("C1"), QStringLiteral("C2"), 3000, 400}};
}

/// What getSelection() gives.
struct Selection {
    explicit Selection(const ExportDataSet &dialog) { dialog.getSelection(channels, start, end); }
    std::vector<std::uint8_t> channels;
    double start = -1;
    double end = -1;
};

std::vector<std::uint8_t> channels(int count, const std::vector<int> &chosen)
{
    std::vector<std::uint8_t> flags(std::size_t(count), 0);
    for (const int chn : chosen) {
        flags[std::size_t(chn)] = 1;
    }
    return flags;
}

/// A dialog on the screen, and its parts as a user tells them apart.
class Desk {
public:
    explicit Desk(const QVector<ShownPair> &pairs = {}) : dialog(pairs)
    {
        dialog.show();
        dialog.activateWindow();
        shown = QTest::qWaitForWindowActive(&dialog);
    }

    template<class Button>
    [[nodiscard]] Button *button(const char *text) const
    {
        for (auto *one : dialog.findChildren<Button *>()) {
            if (one->text() == QLatin1String(text)) {
                return one;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QRadioButton *radio(const char *text) const { return button<QRadioButton>(text); }
    [[nodiscard]] QComboBox *pairs() const { return dialog.findChild<QComboBox *>(); }
    [[nodiscard]] QLabel *label(const char *text) const
    {
        for (auto *one : dialog.findChildren<QLabel *>()) {
            if (one->text() == QLatin1String(text)) {
                return one;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QLineEdit *start() const { return qobject_cast<QLineEdit *>(label("Starting Time[s]")->buddy()); }
    [[nodiscard]] QLineEdit *end() const { return qobject_cast<QLineEdit *>(label("Ending Time[s]")->buddy()); }
    [[nodiscard]] QStringList groups() const
    {
        QStringList titles;
        for (const auto *group : dialog.findChildren<QGroupBox *>()) {
            titles.append(group->title());
        }
        return titles;
    }
    /// The check boxes of one group.
    [[nodiscard]] QList<QCheckBox *> boxes(const char *title) const
    {
        for (const auto *group : dialog.findChildren<QGroupBox *>()) {
            if (group->title() == QLatin1String(title)) {
                return group->findChildren<QCheckBox *>();
            }
        }
        return {};
    }

    static void click(QWidget *widget, QPoint at = QPoint(8, 8))
    {
        QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, at);
    }
    /// Chooses the interval and types both of its ends.
    void typeInterval(const char *from, const char *to) const
    {
        click(radio("Specify time interval"));
        type(start(), from);
        type(end(), to);
    }
    static void type(QLineEdit *field, const char *text)
    {
        field->setFocus();
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, QLatin1String(text));
    }

    ExportDataSet dialog;
    bool shown = false;
};

} // namespace

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

    void allTimeIsChosenAtFirst();
    void allTimeIsNothingWhileTheCaptureIsNotComplete();
    void markersCanOnlyBeChosenWhenThereIsAPair();
    void thePairsAreListedOnlyForMarkers();
    void theFieldsAreEnabledOnlyForTheInterval();
    void theChosenPairIsTheRange();
    void aPairRemovedMeanwhileStaysChosen();

    void theIntervalBeginsAsTheWholeCapture();
    void theIntervalIsReadFromTheTrigger();
    void aReversedIntervalComesAsItIs();
    void anEmptyFieldIsTheTrigger();
    void theFieldsTakeDigitsPointsSignsAndBars_data();
    void theFieldsTakeDigitsPointsSignsAndBars();
    void aFieldThatBeganWithAnExponentCanBeTypedOver();

    void aCaptureOfOneSampleAndTheLongestOneAreWhole_data();
    void aCaptureOfOneSampleAndTheLongestOneAreWhole();
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

void TstExportDataSet::allTimeIsChosenAtFirst()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{12345}.fill(*gDev->smpData);
    const Desk desk(twoPairs());
    QVERIFY(desk.radio("All time")->isChecked());
    const Selection selection(desk.dialog);
    QCOMPARE(selection.start, 0.0);
    QCOMPARE(selection.end, 12345.0);
}

void TstExportDataSet::allTimeIsNothingWhileTheCaptureIsNotComplete()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{12345}.fill(*gDev->smpData);
    gDev->smpData->complete = false;
    const Desk desk;
    QCOMPARE(desk.start()->text(), QStringLiteral("0"));
    QCOMPARE(desk.end()->text(), QStringLiteral("0"));
    const Selection selection(desk.dialog);
    QCOMPARE(selection.start, 0.0);
    QCOMPARE(selection.end, 0.0);
    gDev->smpData->complete = true;
}

void TstExportDataSet::markersCanOnlyBeChosenWhenThereIsAPair()
{
    const PanelDevice device(storage16Model);
    {
        const Desk desk;
        QVERIFY(!desk.radio("Timing markers")->isEnabled());
        QVERIFY(desk.radio("Specify time interval")->isEnabled());
        QCOMPARE(desk.pairs()->count(), 0);
        Desk::click(desk.radio("Timing markers"));
        QVERIFY(desk.radio("All time")->isChecked());
    }
    const Desk desk(twoPairs());
    QVERIFY(desk.radio("Timing markers")->isEnabled());
    QVERIFY(!desk.radio("Timing markers")->isChecked());
    QCOMPARE(desk.pairs()->count(), 2);
    QCOMPARE(desk.pairs()->itemText(0), QStringLiteral("A1 - A2"));
    QCOMPARE(desk.pairs()->itemText(1), QStringLiteral("C1 - C2"));
    QCOMPARE(desk.pairs()->minimumContentsLength(), 10);
}

void TstExportDataSet::thePairsAreListedOnlyForMarkers()
{
    const PanelDevice device(storage16Model);
    const Desk desk(twoPairs());
    QVERIFY(!desk.pairs()->isEnabled());
    Desk::click(desk.radio("Timing markers"));
    QVERIFY(desk.pairs()->isEnabled());
    QVERIFY(!desk.start()->isEnabled());
    Desk::click(desk.radio("All time"));
    QVERIFY(!desk.pairs()->isEnabled());
}

void TstExportDataSet::theFieldsAreEnabledOnlyForTheInterval()
{
    const PanelDevice device(storage16Model);
    const Desk desk(twoPairs());
    const QVector<QWidget *> fields{desk.start(), desk.end(), desk.label("Starting Time[s]"),
                                    desk.label("Ending Time[s]")};
    for (const QWidget *field : fields) {
        QVERIFY(!field->isEnabled());
    }
    Desk::click(desk.radio("Specify time interval"));
    for (const QWidget *field : fields) {
        QVERIFY(field->isEnabled());
    }
    QVERIFY(!desk.pairs()->isEnabled());
    Desk::click(desk.radio("Timing markers"));
    for (const QWidget *field : fields) {
        QVERIFY(!field->isEnabled());
    }
}

void TstExportDataSet::theChosenPairIsTheRange()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{5000}.fill(*gDev->smpData);
    const Desk desk(twoPairs());
    Desk::click(desk.radio("Timing markers"));
    QCOMPARE(Selection(desk.dialog).start, 100.0);
    QCOMPARE(Selection(desk.dialog).end, 2000.0);
    desk.pairs()->setFocus();
    QTest::keyClick(desk.pairs(), Qt::Key_Down);
    QCOMPARE(Selection(desk.dialog).start, 400.0); // the second marker of this pair is the earlier one
    QCOMPARE(Selection(desk.dialog).end, 3000.0);
}

void TstExportDataSet::aPairRemovedMeanwhileStaysChosen()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{5000}.fill(*gDev->smpData);
    QVector<ShownPair> pairs = twoPairs();
    const Desk desk(pairs);
    Desk::click(desk.radio("Timing markers"));
    desk.pairs()->setCurrentIndex(1);
    pairs[1].firstSample = 4999;
    pairs.clear();
    QCOMPARE(desk.pairs()->count(), 2);
    QCOMPARE(Selection(desk.dialog).start, 400.0);
    QCOMPARE(Selection(desk.dialog).end, 3000.0);
}

void TstExportDataSet::theIntervalBeginsAsTheWholeCapture()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    QCOMPARE(desk.start()->text(), QStringLiteral("-0.25"));
    QCOMPARE(desk.end()->text(), QStringLiteral("0.75"));
    Desk::click(desk.radio("Specify time interval"));
    QCOMPARE(Selection(desk.dialog).start, 0.0);
    QCOMPARE(Selection(desk.dialog).end, 1000.0);
}

void TstExportDataSet::theIntervalIsReadFromTheTrigger()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval("-0.1", "12.5");
    QCOMPARE(Selection(desk.dialog).start, 150.0);
    QCOMPARE(Selection(desk.dialog).end, 12750.0); // limited where it is used
}

void TstExportDataSet::aReversedIntervalComesAsItIs()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval("0.5", "-0.1");
    QCOMPARE(Selection(desk.dialog).start, 750.0);
    QCOMPARE(Selection(desk.dialog).end, 150.0);
}

void TstExportDataSet::anEmptyFieldIsTheTrigger()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval("", "");
    QCOMPARE(desk.start()->text(), QString());
    QCOMPARE(Selection(desk.dialog).start, 250.0);
    QCOMPARE(Selection(desk.dialog).end, 250.0);
    QTest::keyClick(desk.end(), Qt::Key_Return);
    QCOMPARE(desk.dialog.result(), int(QDialog::Accepted));
}

void TstExportDataSet::theFieldsTakeDigitsPointsSignsAndBars_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a number") << QByteArray("-12.75") << QStringLiteral("-12.75");
    QTest::newRow("letters") << QByteArray("1a2b") << QStringLiteral("12");
    QTest::newRow("an exponent") << QByteArray("1e-3") << QStringLiteral("1-3");
    QTest::newRow("a plus and blanks") << QByteArray("+1 2") << QStringLiteral("12");
    QTest::newRow("a comma") << QByteArray("1,5") << QStringLiteral("15");
    QTest::newRow("bars") << QByteArray("1|2") << QStringLiteral("1|2");
    QTest::newRow("signs") << QByteArray("--1-") << QStringLiteral("--1-");
    QTest::newRow("points") << QByteArray("1.2.3") << QStringLiteral("1.2.3");
}

void TstExportDataSet::theFieldsTakeDigitsPointsSignsAndBars()
{
    QFETCH(QByteArray, typed);
    QFETCH(QString, shown);
    const PanelDevice device(storage16Model);
    CaptureBuilder{1000, 1000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    desk.typeInterval(typed.constData(), typed.constData());
    QCOMPARE(desk.start()->text(), shown);
    QCOMPARE(desk.end()->text(), shown);
    const double position = shown.toDouble() * 1000 + 250; // what is no number is 0
    QCOMPARE(Selection(desk.dialog).start, position);
    QCOMPARE(Selection(desk.dialog).end, position);
    QTest::keyClick(desk.end(), Qt::Key_Return);
    QCOMPARE(desk.dialog.result(), int(QDialog::Accepted));
}

void TstExportDataSet::aFieldThatBeganWithAnExponentCanBeTypedOver()
{
    const PanelDevice device(storage16Model);
    CaptureBuilder{5000, 500'000'000, 10, 250}.fill(*gDev->smpData);
    const Desk desk;
    QCOMPARE(desk.start()->text(), QStringLiteral("-5e-07"));
    Desk::click(desk.radio("Specify time interval"));
    QCOMPARE(Selection(desk.dialog).start, 0.0);
    desk.radio("Specify time interval")->setFocus();
    QTest::keyClick(desk.radio("Specify time interval"), Qt::Key_Tab); // selects the field's text
    QVERIFY(desk.start()->hasFocus());
    QTest::keyClicks(desk.start(), QStringLiteral("0"));
    QCOMPARE(desk.start()->text(), QStringLiteral("0"));
    QCOMPARE(Selection(desk.dialog).start, 250.0);
}

void TstExportDataSet::aCaptureOfOneSampleAndTheLongestOneAreWhole_data()
{
    QTest::addColumn<qint64>("samples");
    QTest::newRow("one sample") << qint64(1);
    QTest::newRow("longest") << (qint64(1) << 40) - 1;
}

void TstExportDataSet::aCaptureOfOneSampleAndTheLongestOneAreWhole()
{
    QFETCH(qint64, samples);
    const PanelDevice device(storage32Model);
    CaptureBuilder{samples, 100'000'000, 2'000'000'000}.fill(*gDev->smpData);
    const Desk desk;
    QCOMPARE(Selection(desk.dialog).start, 0.0);
    QCOMPARE(Selection(desk.dialog).end, double(samples));
    QCOMPARE(Selection(desk.dialog).channels, std::vector<std::uint8_t>(32, 1));
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

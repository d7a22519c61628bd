// Every shipped language has room in the window and in the dialogs.

#include "analyzer/AnalyzerHost.h"
#include "analyzer/AnalyzerManager.h"
#include "app/AboutLUX.h"
#include "app/WindowDesk.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "device/DeviceGlobals.h"
#include "measure/AChnMeasureDialog.h"
#include "measure/AChnMeasureSet.h"
#include "panels/ExportDataSet.h"
#include "panels/MenuChnSettings.h"
#include "panels/MenuDevSettings.h"
#include "panels/Options.h"
#include "panels/Toolbar.h"
#include "panels/VthSetting.h"
#include "protocol/AllAnalyzers.h"
#include "protocol/ExportDialog.h"
#include "protocol/ExportOptions.h"
#include "protocol/ProtocolEdit.h"
#include "protocol/SupportTable.h"
#include "session/RunStatus.h"
#include "support/DialogDriver.h"
#include "update/UpdateDialog.h"
#include "wave/MainView.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>

namespace {

/// The width that the text of a widget needs within it, pixels; 0 for a widget that shows none.
int neededWidth(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        if (label->textFormat() == Qt::RichText) {
            // The text holds marks of its own; a frame is part of the hint.
            return label->sizeHint().width() - (label->width() - label->contentsRect().width());
        }
        return label->wordWrap() ? 0 : label->fontMetrics().size(0, label->text()).width();
    }
    if (const auto *edit = qobject_cast<const QLineEdit *>(widget)) {
        return edit->fontMetrics().horizontalAdvance(edit->text());
    }
    if (const auto *group = qobject_cast<const QGroupBox *>(widget)) {
        return group->fontMetrics().horizontalAdvance(group->title()) + dp(16);
    }
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
        return button->text().isEmpty() ? 0 : button->minimumSizeHint().width();
    }
    return qobject_cast<const QComboBox *>(widget) != nullptr ? widget->minimumSizeHint().width() : 0;
}

QString textOf(const QWidget *widget)
{
    const QVariant title = widget->property("title");
    return title.isValid() ? title.toString() : widget->property("text").toString();
}

/// The texts of `window` that are cut off, or that a widget has shortened.
QStringList cutTexts(const QWidget &window)
{
    QStringList cut;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        const int needed = neededWidth(widget);
        const bool shortened = textOf(widget).contains(QChar(0x2026));
        if (widget->isVisibleTo(&window) && (needed > widget->contentsRect().width() || shortened)) {
            cut += QStringLiteral("%1 \"%2\": %3 of %4")
                       .arg(QLatin1String(widget->metaObject()->className()), textOf(widget))
                       .arg(widget->contentsRect().width())
                       .arg(needed);
        }
    }
    return cut;
}

/// The dialog as the user gets it, under the style of the main window.
QStringList cutTextsOfDialog(QWidget &dialog)
{
    dialog.show();
    return QTest::qWaitForWindowExposed(&dialog) ? cutTexts(dialog) : QStringList{QStringLiteral("not shown")};
}

} // namespace

class TstLanguageLayout : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void initTestCase() { m_system = QApplication::font(); }
    void cleanup();

    void theSmallestWindowShowsEveryText_data();
    void theSmallestWindowShowsEveryText();
    void theSamplingBarFitsAWindowOf1024_data();
    void theSamplingBarFitsAWindowOf1024();
    void aThresholdThatIsRefusedIsToldWhole_data() { theSmallestWindowShowsEveryText_data(); }
    void aThresholdThatIsRefusedIsToldWhole();
    void theDialogsShowEveryText_data() { theSmallestWindowShowsEveryText_data(); }
    void theDialogsShowEveryText();
    void theChannelMenuShowsEveryText_data() { theSmallestWindowShowsEveryText_data(); }
    void theChannelMenuShowsEveryText();
    void theMenuAndTheDialogOfAnalogParametersShowEveryText_data() { theSmallestWindowShowsEveryText_data(); }
    void theMenuAndTheDialogOfAnalogParametersShowEveryText();
    void theProgressDialogShowsEveryState_data() { theSmallestWindowShowsEveryText_data(); }
    void theProgressDialogShowsEveryState();
    void theUpdateDialogShowsEveryState_data() { theSmallestWindowShowsEveryText_data(); }
    void theUpdateDialogShowsEveryState();
    void theDialogsOfDecodersShowEveryText_data();
    void theDialogsOfDecodersShowEveryText();
    void aTextThatIsCutOffIsFound();

private:
    void speak(const QString &code, int dpi);

    QFont m_system;
};

/// What a start in the language `code` on a screen of `dpi` sets up.
void TstLanguageLayout::speak(const QString &code, int dpi)
{
    m_session = makeSession(97); // the model with the most buttons in its bar
    globalSet(QStringLiteral("userLang"), code);
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
    globalsSetDpi(dpi);
    QFont system(QStringLiteral("Sans Serif"));
    system.setPointSizeF(9.0 * dpi / 96.0); // the screen of the tests has 96
    globalsLoadFonts(system, languageHead(QStringLiteral("font")));
    QApplication::setFont(gFontMain);
    qApp->setStyleSheet(programStyle());
}

void TstLanguageLayout::cleanup()
{
    tearDown();
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US"));
    languageLoadFrom(QStringLiteral(LUX_LANGUAGE_DIR), QLocale::c());
    globalsSetDpi(96);
    qApp->setStyleSheet(QString());
    QApplication::setFont(m_system);
}

void TstLanguageLayout::theSmallestWindowShowsEveryText_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("dpi");
    for (const char *code : {"en-US", "de", "ja", "zh-CN", "zh-TW"}) {
        for (const int dpi : {96, 192}) {
            QTest::addRow("%s, %d dpi", code, dpi) << QString::fromLatin1(code) << dpi;
        }
    }
}

void TstLanguageLayout::theSmallestWindowShowsEveryText()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    makeWindow();
    m_window->resize(m_window->minimumSize());
    QCoreApplication::processEvents();
    const QStringList cut = cutTexts(*m_window);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
}

void TstLanguageLayout::theSamplingBarFitsAWindowOf1024_data()
{
    theSmallestWindowShowsEveryText_data();
}

void TstLanguageLayout::theSamplingBarFitsAWindowOf1024()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    for (const int model : {97, 9}) { // three buttons, or thresholds of two rows
        m_session->chooseModel(model);
        Toolbar toolbar;
        const int menu = dp(48); // its button stands at the right of the bar
        toolbar.resize(dp(1024) - menu, toolbar.height());
        toolbar.show();
        QCoreApplication::processEvents();
        QVERIFY(toolbar.minimumSizeHint().width() <= dp(1024) - menu);
        const QStringList cut = cutTexts(toolbar);
        QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
    }
}

void TstLanguageLayout::aThresholdThatIsRefusedIsToldWhole()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    const VthSetting thresholds;
    QStringList cut{QStringLiteral("not told")};
    const DialogDriver<QMessageBox> driver([&cut](QMessageBox &box) { cut = cutTexts(box); });
    thresholds.levelBoxes.at(0)->setCurrentIndex(thresholds.presets.size() - 1);
    thresholds.vthEdits.at(0)->setText(QStringLiteral("5"));
    QTest::keyClick(thresholds.vthEdits.at(0), Qt::Key_Return);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
}

void TstLanguageLayout::theDialogsShowEveryText()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    Options options;
    AboutLUX about;
    ExportDataSet exports({});
    MenuDevSettings models;
    QStringList cut;
    for (QWidget *dialog : {static_cast<QWidget *>(&options), static_cast<QWidget *>(&about),
                            static_cast<QWidget *>(&exports), static_cast<QWidget *>(&models)}) {
        cut += cutTextsOfDialog(*dialog);
    }
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
}

void TstLanguageLayout::theChannelMenuShowsEveryText()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    for (const int model : {1, 5, 9, 97}) {
        m_session->chooseModel(model);
        MenuChnSettings menu;
        const QStringList cut = cutTextsOfDialog(menu);
        QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
        // A screen of 1366 x 768 has the room, bars of the system taken off.
        QVERIFY(menu.sizeHint().width() <= 1366 * dpi / 96);
        QVERIFY(menu.sizeHint().height() <= 700 * dpi / 96);
    }
}

void TstLanguageLayout::theMenuAndTheDialogOfAnalogParametersShowEveryText()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    AChnMeasureSet menu({0, 1, 2, 3, 4, 5, 6});
    AChnMeasureDialog dialog(0, QString());
    const QStringList cut = cutTextsOfDialog(menu) + cutTextsOfDialog(dialog);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
    for (const QWidget *window : {static_cast<QWidget *>(&menu), static_cast<QWidget *>(&dialog)}) {
        QVERIFY(window->sizeHint().width() <= 640 * dpi / 96); // a screen of 1280 x 720, also of fine pixels
        QVERIFY(window->sizeHint().height() <= 360 * dpi / 96);
    }
}

void TstLanguageLayout::theProgressDialogShowsEveryState()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    QStringList texts{RunStatus::errorText(0, 4, 0).text,
                      RunStatus::dialogErrorText(14, RunStatus::errorText(2, 14, 0))};
    for (int sta = 0; sta < 5; ++sta) {
        texts += RunStatus::stateText(sta);
    }
    for (const QString &text : texts) {
        MyProgressDlg dialog(::tr("Sampling"), text, ::tr("Close"));
        const QStringList cut = cutTextsOfDialog(dialog);
        QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
    }
}

void TstLanguageLayout::theUpdateDialogShowsEveryState()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    UpdateDialog dialog;
    dialog.startUpdater = [](const QString &, const QStringList &) { return false; };
    const QUrl link(QStringLiteral("https://www.example.org/corvanlux/download"));
    const QString version = QStringLiteral("10.12.100");
    const QMap<QString, std::function<void()>> states{
        {QStringLiteral("waiting"), [&] { dialog.showWaiting(); }},
        {QStringLiteral("automatic"), [&] { dialog.showAutomatic(version, link, link); }},
        {QStringLiteral("manual"), [&] { dialog.showManual(version, link); }},
        {QStringLiteral("latest"), [&] { dialog.showLatest(); }},
        {QStringLiteral("failed"), [&] { dialog.showFailed(); }},
        {QStringLiteral("no updater"), [&] {
             dialog.showAutomatic(version, link, link);
             dialog.accept();
         }}};
    for (auto state = states.cbegin(); state != states.cend(); ++state) {
        state.value()();
        const QStringList cut = cutTextsOfDialog(dialog);
        QVERIFY2(cut.isEmpty(), qPrintable(state.key() + QLatin1Char('\n') + cut.join(QLatin1Char('\n'))));
        QVERIFY(dialog.width() <= 640 * dpi / 96);
        const QString pictures = qEnvironmentVariable("LUX_TEST_PICTURES"); // to look at them
        if (!pictures.isEmpty()) {
            QVERIFY(dialog.grab().save(QStringLiteral("%1/%2-%3-%4.png")
                                           .arg(pictures, code)
                                           .arg(dpi)
                                           .arg(state.key())
                                           .replace(QLatin1Char(' '), QLatin1Char('-'))));
        }
    }
}

void TstLanguageLayout::theDialogsOfDecodersShowEveryText_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<int>("dpi");
    for (const char *code : {"en-US", "de", "ja", "zh-CN", "zh-TW"}) {
        QTest::addRow("%s, 96 dpi", code) << QString::fromLatin1(code) << 96;
    }
    QTest::addRow("de, 192 dpi") << QStringLiteral("de") << 192; // with the longest words
}

void TstLanguageLayout::theDialogsOfDecodersShowEveryText()
{
    QFETCH(QString, code);
    QFETCH(int, dpi);
    speak(code, dpi);
    AnalyzerHost host;
    host.channelCount = [] { return 16; };
    host.isChannelEnabled = [](int) { return true; };
    AnalyzerManager manager(host, {QStringLiteral(LUX_PLUGINS)}, QString());
    AllAnalyzers all;
    all.setNames(manager.libraryDisplayNames());
    SupportTable table;
    QStringList cut = cutTextsOfDialog(all) + cutTextsOfDialog(table);
    QVERIFY(!manager.foundLibraries().isEmpty());
    for (int library = 0; library < manager.foundLibraries().size(); ++library) {
        ProtocolEdit settings(false, &manager, library);
        QVERIFY(settings.isUsable());
        cut += cutTextsOfDialog(settings);
        QVERIFY(settings.width() <= 640 * dpi / 96);
        Analyzer *analyzer = manager.createAnalyzer(library);
        ExportDialog exports(exportOptionsOf(*analyzer));
        cut += cutTextsOfDialog(exports);
        manager.destroyAnalyzer(library, analyzer);
    }
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(QLatin1Char('\n'))));
}

void TstLanguageLayout::aTextThatIsCutOffIsFound()
{
    QWidget window;
    QLabel label(QStringLiteral("Zeitmarkenpaare"), &window);
    label.resize(200, 20);
    QVERIFY(cutTexts(window).isEmpty());
    label.resize(20, 20);
    QCOMPARE(cutTexts(window).size(), 1);
    label.resize(200, 20);
    label.setText(QStringLiteral("Zeitm\u2026"));
    QCOMPARE(cutTexts(window).size(), 1);
}

LUX_GUI_TEST(TstLanguageLayout)
#include "tst_LanguageLayout.moc"

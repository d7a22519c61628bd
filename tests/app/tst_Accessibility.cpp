#include "app/AboutLUX.h"
#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "controls/MyScrollbar.h"
#include "device/DeviceGlobals.h"
#include "measure/AChnMeasureDialog.h"
#include "measure/AChnMeasureSet.h"
#include "measure/AnalyzerView.h"
#include "measure/PulseMeasure.h"
#include "panels/DevSetting.h"
#include "panels/ExportDataSet.h"
#include "panels/MenuChnSettings.h"
#include "panels/MenuDevSettings.h"
#include "panels/Options.h"
#include "panels/Toolbar.h"
#include "panels/VthSetting.h"
#include "protocol/AllAnalyzers.h"
#include "protocol/ExportDialog.h"
#include "protocol/SupportTable.h"
#include "update/UpdateDialog.h"
#include "wave/AChnTAG.h"
#include "wave/CursorHandle.h"
#include "wave/ItemChnSidebar.h"
#include "wave/LabelMove.h"
#include "wave/MainView.h"
#include "wave/PosiView.h"
#include "wave/SensitivityMenu.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QTextEdit>

#include <algorithm>

namespace {

/// What a fault report calls a widget: its class, its name and its place.
QString culprit(const QWidget *widget)
{
    QStringList path;
    for (const QWidget *w = widget; w != nullptr && path.size() < 5; w = w->parentWidget()) {
        path.prepend(QLatin1String(w->metaObject()->className()) +
                     (w->objectName().isEmpty() ? QString() : QLatin1Char('#') + w->objectName()));
    }
    return path.join(QStringLiteral(" > "));
}

template<typename... Kinds>
bool isOneOf(const QWidget *widget)
{
    return ((qobject_cast<const Kinds *>(widget) != nullptr) || ...);
}

/// Parts that belong to a widget of Qt and are reached through it: scroll bars of an area, the list of a combo box.
bool isInner(const QWidget *widget)
{
    for (const QWidget *w = widget->parentWidget(); w != nullptr; w = w->parentWidget()) {
        if (isOneOf<QComboBox, QAbstractSpinBox>(w) || w->objectName() == QLatin1String("qt_scrollarea_hcontainer") ||
            w->objectName() == QLatin1String("qt_scrollarea_vcontainer")) {
            return true;
        }
    }
    return widget->objectName().startsWith(QLatin1String("qt_")) || widget->inherits("QTableCornerButton");
}

/// What can be operated by hand, or takes the focus of the keyboard.
bool isInteractive(const QWidget *widget)
{
    const auto *edit = qobject_cast<const QLineEdit *>(widget);
    if (isInner(widget) || qobject_cast<const QMenu *>(widget) != nullptr || widget->isWindow()) {
        return false;
    }
    if (edit != nullptr && (edit->isReadOnly() || !edit->isEnabled()) && edit->focusPolicy() == Qt::NoFocus) {
        return false; // it only shows
    }
    if (widget->testAttribute(Qt::WA_TransparentForMouseEvents) && widget->focusPolicy() == Qt::NoFocus) {
        return false; // likewise, such as the letter of the analog area
    }
    return isOneOf<QAbstractButton, QLineEdit, QComboBox, QAbstractSlider, QAbstractSpinBox, QTextEdit, QPlainTextEdit,
                   LabelMove, MyScrollbar, CursorHandle>(widget) ||
           (widget->focusPolicy() & Qt::TabFocus) != 0;
}

/// A flag is moved by keys of its own: the digits pick it up wherever the focus is. Of a group of radio buttons Tab
/// reaches one, and the arrows the others.
bool hasOwnKeys(const QWidget *widget)
{
    const auto *radio = qobject_cast<const QRadioButton *>(widget);
    if (radio != nullptr && radio->group() != nullptr) {
        const auto isReached = [](const QAbstractButton *one) { return (one->focusPolicy() & Qt::TabFocus) != 0; };
        const auto buttons = radio->group()->buttons();
        return std::any_of(buttons.cbegin(), buttons.cend(), isReached);
    }
    return qobject_cast<const CursorHandle *>(widget) != nullptr;
}

/// What a screen reader would say. The text that a field holds is its value and no name.
QString spokenName(const QWidget *widget)
{
    if (!widget->accessibleName().isEmpty()) {
        return widget->accessibleName();
    }
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
        return button->text();
    }
    const auto *link = qobject_cast<const QLabel *>(widget);
    if (link != nullptr && link->textInteractionFlags().testFlag(Qt::LinksAccessibleByKeyboard)) {
        return link->text();
    }
    for (const QLabel *label : widget->window()->findChildren<QLabel *>()) {
        if (label->buddy() == widget) {
            return label->text();
        }
    }
    return {};
}

QVector<QWidget *> interactiveOf(const QWidget &window)
{
    QVector<QWidget *> found;
    for (QWidget *widget : window.findChildren<QWidget *>()) {
        if (widget->window() == &window && isInteractive(widget)) {
            found.append(widget);
        }
    }
    return found;
}

QString namelessOf(const QWidget &window)
{
    QStringList faults;
    for (const QWidget *widget : interactiveOf(window)) {
        if (spokenName(widget).trimmed().isEmpty()) {
            faults.append(culprit(widget));
        }
    }
    return faults.join(QLatin1Char('\n'));
}

QString unreachableOf(const QWidget &window)
{
    QStringList faults;
    for (const QWidget *widget : interactiveOf(window)) {
        if ((widget->focusPolicy() & Qt::TabFocus) == 0 && !hasOwnKeys(widget)) {
            faults.append(culprit(widget));
        }
    }
    return faults.join(QLatin1Char('\n'));
}

/// Entries without a text, of all menus that have been made.
QString namelessEntriesOf(const QWidget &window)
{
    QStringList faults;
    for (const QMenu *menu : window.findChildren<QMenu *>()) {
        for (const QAction *action : menu->actions()) {
            if (!action->isSeparator() && action->text().isEmpty()) {
                faults.append(culprit(menu));
            }
        }
    }
    return faults.join(QLatin1Char('\n'));
}

/// The widgets that the key brings the focus to, until it comes back to the first or has gone round too often.
QVector<QWidget *> walkBy(QWidget &window, Qt::Key key)
{
    QVector<QWidget *> walked;
    QWidget *start = window.focusWidget();
    for (int i = 0; i < 1000; ++i) {
        walked.append(window.focusWidget());
        QTest::keyClick(window.focusWidget(), key);
        if (window.focusWidget() == nullptr || window.focusWidget() == start) {
            break;
        }
    }
    return walked;
}

} // namespace

/// Who sees nothing is told what each control is; who has no mouse comes to each of them.
class TstAccessibility : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void cleanup() { tearDown(); }

    void everyControlOfTheWindowHasAName_data() { models(); }
    void everyControlOfTheWindowHasAName();
    void everyControlOfTheWindowIsReachedByTab_data() { models(); }
    void everyControlOfTheWindowIsReachedByTab();
    void noTwoControlsOfARowHaveTheSameName();
    void everyControlOfADialogHasANameAndIsReachedByTab_data();
    void everyControlOfADialogHasANameAndIsReachedByTab();
    void everyEntryOfAMenuHasAText();

    void tabWalksThroughAllPanelsInReadingOrderAndComesBack_data() { models(); }
    void tabWalksThroughAllPanelsInReadingOrderAndComesBack();
    void tabKeepsTheOrderAfterAnotherModel();
    void shiftTabWalksBack();
    void theWalkSkipsChannelsThatAreOff();
    void theTestItselfFindsWhatIsWrong();

private:
    static void models()
    {
        QTest::addColumn<int>("model");
        QTest::newRow("8 channels") << 1;
        QTest::newRow("16 channels") << 0;
        QTest::newRow("32 channels") << 9;
        QTest::newRow("analog") << 97;
    }
    /// The window at work: a capture, two pairs of markers, measurements of several kinds.
    void setUpAtWork(int model)
    {
        setUp(model);
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        typeThresholds();
        capture();
        for (const Qt::Key key : {Qt::Key_1, Qt::Key_2, Qt::Key_3}) {
            QTest::keyClick(m_window.get(), key);
        }
        for (int i = 0; i < 3; ++i) {
            m_window->findChild<PulseMeasure *>()->slotBtnAddClicked();
        }
        QCoreApplication::processEvents();
    }
    [[nodiscard]] std::unique_ptr<QWidget> dialogOfDecoders(const QString &dialog) const
    {
        if (dialog == QLatin1String("all decoders")) {
            auto all = std::make_unique<AllAnalyzers>(m_window.get());
            all->setNames({QStringLiteral("UART"), QStringLiteral("SPI")});
            return all;
        }
        if (dialog == QLatin1String("models of decoders")) {
            return std::make_unique<SupportTable>(m_window.get());
        }
        if (dialog == QLatin1String("kinds of a decoder's file")) {
            const ExportChoice csv{0, QStringLiteral("csv"), QStringLiteral("CSV file (*.csv)")};
            const ExportChoice txt{1, QStringLiteral("txt"), QStringLiteral("Text file (*.txt)")};
            return std::make_unique<ExportDialog>(
                QVector<ExportOption>{{QStringLiteral("Frames"), {csv, txt}}, {QStringLiteral("Bytes"), {csv}}},
                m_window.get());
        }
        return nullptr;
    }
    /// Makes room for a voltage in each row of thresholds.
    void typeThresholds() const
    {
        if (const auto *thresholds = m_window->findChild<VthSetting *>()) {
            for (QComboBox *box : thresholds->levelBoxes) {
                box->setCurrentIndex(box->count() - 1);
            }
        }
    }
    [[nodiscard]] QVector<QWidget *> panels() const
    {
        return {m_window->findChild<Toolbar *>(),    m_window->findChild<MainMenu *>(),
                m_window->findChild<DevSetting *>(), m_window->findChild<MainView *>(),
                m_window->findChild<PosiView *>(),   m_window->findChild<AnalyzerView *>()};
    }
    [[nodiscard]] int panelOf(QWidget *widget) const
    {
        const QVector<QWidget *> all = panels();
        for (int i = 0; i < all.size(); ++i) {
            if (all[i] == widget || all[i]->isAncestorOf(widget)) {
                return i;
            }
        }
        return -1;
    }
    [[nodiscard]] QVector<QWidget *> shownStops() const
    {
        QVector<QWidget *> stops;
        for (QWidget *widget : interactiveOf(*m_window)) {
            if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus) != 0) {
                stops.append(widget);
            }
        }
        return stops;
    }
    /// Walks once round from the first control of the toolbar.
    [[nodiscard]] QVector<QWidget *> walk(Qt::Key key = Qt::Key_Tab) const
    {
        m_window->findChild<Toolbar *>()->findChild<QComboBox *>()->setFocus(Qt::TabFocusReason);
        return walkBy(*m_window, key);
    }
    void compareWithReadingOrder(const QVector<QWidget *> &walked) const
    {
        const QVector<QWidget *> stops = shownStops();
        for (QWidget *stop : stops) {
            QVERIFY2(walked.contains(stop), qPrintable(QStringLiteral("never reached: ") + culprit(stop)));
        }
        QCOMPARE(walked.size(), stops.size());
        for (int i = 1; i < walked.size(); ++i) {
            QWidget *before = walked[i - 1];
            QWidget *here = walked[i];
            QVERIFY2(panelOf(here) >= panelOf(before),
                     qPrintable(culprit(before) + QStringLiteral(" -> ") + culprit(here)));
            if (panelOf(here) == panelOf(before)) {
                compareInPanel(before, here);
            }
        }
    }
    /// Downward, or to the right on the same line. The flags of the analog area stand where their levels are.
    void compareInPanel(QWidget *before, QWidget *here) const
    {
        const QRect a(before->mapTo(m_window.get(), QPoint()), before->size());
        const QRect b(here->mapTo(m_window.get(), QPoint()), here->size());
        const bool below = b.center().y() > a.bottom();
        const bool right = b.left() >= a.right() && b.bottom() >= a.top();
        const bool isFree = isOneOf<MyScrollbar, AChnTAG>(here) || qobject_cast<AChnTAG *>(before) != nullptr;
        QVERIFY2(below || right || isFree, qPrintable(culprit(before) + QStringLiteral(" -> ") + culprit(here)));
    }
};

void TstAccessibility::everyControlOfTheWindowHasAName()
{
    QFETCH(int, model);
    setUpAtWork(model);
    QVERIFY(interactiveOf(*m_window).size() > 60);
    QCOMPARE(namelessOf(*m_window), QString());
}

void TstAccessibility::everyControlOfTheWindowIsReachedByTab()
{
    QFETCH(int, model);
    setUpAtWork(model);
    QCOMPARE(unreachableOf(*m_window), QString());
}

void TstAccessibility::noTwoControlsOfARowHaveTheSameName()
{
    setUpAtWork(0);
    QMap<QString, QWidget *> names;
    for (const ItemChnSidebar *sidebar : m_window->findChildren<ItemChnSidebar *>()) {
        for (QWidget *stop : sidebar->tabStops()) {
            QVERIFY2(!names.contains(stop->accessibleName()), qPrintable(culprit(stop)));
            names.insert(stop->accessibleName(), stop);
        }
    }
    QCOMPARE(names.size(), 16 * 7);
}

void TstAccessibility::everyControlOfADialogHasANameAndIsReachedByTab_data()
{
    QTest::addColumn<QString>("dialog");
    for (const char *name : {"options", "export", "about", "progress", "models", "channels", "analog parameters",
                             "values of an analog channel", "all decoders", "models of decoders",
                             "kinds of a decoder's file", "update", "sensitivity"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void TstAccessibility::everyControlOfADialogHasANameAndIsReachedByTab()
{
    QFETCH(QString, dialog);
    setUpAtWork(97);
    std::unique_ptr<QWidget> made = dialogOfDecoders(dialog);
    if (made != nullptr) {
        QVERIFY(!made->isVisible());
    } else if (dialog == QLatin1String("update")) {
        auto update = std::make_unique<UpdateDialog>(m_window.get());
        update->showManual(QStringLiteral("9.9"), QUrl(QStringLiteral("https://example.org/")));
        made = std::move(update);
    } else if (dialog == QLatin1String("sensitivity")) {
        auto menu = std::make_unique<SensitivityMenu>(m_window.get());
        menu->ask(QStringLiteral("0.5"), m_window->geometry().center()); // with the focus in its only field
        made = std::move(menu);
    } else if (dialog == QLatin1String("options")) {
        made = std::make_unique<Options>(m_window.get());
    } else if (dialog == QLatin1String("export")) {
        made = std::make_unique<ExportDataSet>(
            QVector<ShownPair>{{0, QStringLiteral("A1"), QStringLiteral("A2"), 10, 20}}, m_window.get());
    } else if (dialog == QLatin1String("about")) {
        made = std::make_unique<AboutLUX>(m_window.get());
    } else if (dialog == QLatin1String("models")) {
        made = std::make_unique<MenuDevSettings>(m_window.get());
    } else if (dialog == QLatin1String("channels")) {
        m_window->slotDevPreConnect(9); // with all groups
        made = std::make_unique<MenuChnSettings>(m_window.get());
    } else if (dialog == QLatin1String("analog parameters")) {
        made = std::make_unique<AChnMeasureSet>(QVector<int>(7, -1), m_window.get());
    } else if (dialog == QLatin1String("values of an analog channel")) {
        made = std::make_unique<AChnMeasureDialog>(0, QString(), m_window.get());
    } else {
        made =
            std::make_unique<MyProgressDlg>(QStringLiteral("Work"), QString(), QStringLiteral("Stop"), m_window.get());
    }
    made->show();
    made->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(made.get()));
    QCOMPARE(namelessOf(*made), QString());
    QCOMPARE(unreachableOf(*made), QString());
    QVERIFY(!interactiveOf(*made).isEmpty());
    if (made->focusWidget() == nullptr) {
        QTest::keyClick(made.get(), Qt::Key_Tab);
    }
    const QVector<QWidget *> walked = walkBy(*made, Qt::Key_Tab);
    for (QWidget *widget : interactiveOf(*made)) {
        // Of a group of radio buttons Tab reaches one, and the arrows the others.
        const bool byArrows = widget->inherits("QRadioButton");
        if (widget->isVisible() && widget->isEnabled() && !byArrows) {
            QVERIFY2(walked.contains(widget), qPrintable(culprit(widget)));
        }
    }
    QVERIFY(walked.size() < 1000);
}

void TstAccessibility::everyEntryOfAMenuHasAText()
{
    setUpAtWork(0);
    m_window->findChild<ItemChnSidebar *>()->createMenu();
    QVERIFY(!m_window->findChildren<QMenu *>().isEmpty());
    QMetaObject::invokeMethod(m_window->findChild<MainMenu *>(), "slotMainMenuPopup");
    for (const QMenu *menu : m_window->findChild<MainMenu *>()->findChildren<QMenu *>()) {
        QVERIFY2(!menu->accessibleName().isEmpty(), qPrintable(culprit(menu)));
    }
    QCOMPARE(namelessEntriesOf(*m_window), QString());
}

void TstAccessibility::tabWalksThroughAllPanelsInReadingOrderAndComesBack()
{
    QFETCH(int, model);
    setUpAtWork(model);
    compareWithReadingOrder(walk());
}

void TstAccessibility::tabKeepsTheOrderAfterAnotherModel()
{
    setUpAtWork(0);
    for (const int model : {97, 1, 9}) {
        m_window->slotDevPreConnect(model);
        typeThresholds();
        QCoreApplication::processEvents();
        compareWithReadingOrder(walk());
    }
}

void TstAccessibility::shiftTabWalksBack()
{
    setUpAtWork(1);
    QVector<QWidget *> forward = walk();
    QVector<QWidget *> back = walk(Qt::Key_Backtab);
    std::reverse(forward.begin() + 1, forward.end());
    QCOMPARE(back, forward);
}

void TstAccessibility::theWalkSkipsChannelsThatAreOff()
{
    setUpAtWork(1);
    gDev->setChnEnable({true, false, false, true, false, true, true, false});
    const QVector<QWidget *> walked = walk();
    for (const ItemChnSidebar *sidebar : m_window->findChildren<ItemChnSidebar *>()) {
        for (QWidget *stop : sidebar->tabStops()) {
            QCOMPARE(walked.contains(stop), gDev->chnEnable.at(sidebar->channel()));
        }
    }
    compareWithReadingOrder(walked);
}

void TstAccessibility::theTestItselfFindsWhatIsWrong()
{
    setUp(1);
    auto *nameless = new QLineEdit(QStringLiteral("a text is no name"), m_window.get());
    nameless->setObjectName(QStringLiteral("culprit"));
    QVERIFY(namelessOf(*m_window).endsWith(QStringLiteral("QLineEdit#culprit")));
    nameless->setAccessibleName(QStringLiteral("name"));
    QCOMPARE(namelessOf(*m_window), QString());
    nameless->setFocusPolicy(Qt::ClickFocus);
    QVERIFY(unreachableOf(*m_window).endsWith(QStringLiteral("QLineEdit#culprit")));
}

LUX_GUI_TEST(TstAccessibility)
#include "tst_Accessibility.moc"

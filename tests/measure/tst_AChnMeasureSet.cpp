#include "measure/AChnMeasureSet.h"
#include "panels/PanelDevice.h"
#include "support/GuiTestMain.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSignalSpy>

/// The menu in which the parameters of the section "Measure" are chosen.
class TstAChnMeasureSet : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_menu.reset(); }

    void theBoxesStandFourToARowInTheOrderOfTheNames();
    void theBoxesOfTheShownParametersAreChecked();
    void anEighthParameterTakesTheCheckOfTheOldest();
    void aFreeRowIsTakenBeforeAnyIsDropped();
    void anUncheckedParameterLeavesNoGap();
    void removeAllUnchecksEverythingAndTells();
    void removeAllStaysCheckedWhenItIsClickedAgain();
    void aChosenParameterClearsRemoveAll();
    void offShowsNothing();
    void aChannelIsToldOnceAndTheGroupGoesBackToOff();
    void tabReachesEveryPartAndSpaceChooses();
    void theArrowsGoFromChannelToChannelAndShowNone();
    void theMenuFitsALowScreen_data();
    void theMenuFitsALowScreen();

private:
    static void click(QAbstractButton *button)
    {
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    [[nodiscard]] QVector<int> checked() const
    {
        QVector<int> ids;
        for (const QCheckBox *box : m_menu->boxes) {
            if (box->isChecked()) {
                ids.append(box->objectName().toInt());
            }
        }
        return ids;
    }
    void open(const QVector<int> &ids)
    {
        m_menu = std::make_unique<AChnMeasureSet>(ids);
        m_told.clear();
        connect(m_menu.get(), &AChnMeasureSet::showMeasureChanged, this,
                [this](const qint32 *index, int count) { m_told.append(QVector<int>(index, index + count)); });
        m_menu->popup(QPoint(10, 10));
        QVERIFY(QTest::qWaitForWindowExposed(m_menu.get()));
    }

    std::unique_ptr<AChnMeasureSet> m_menu;
    QVector<QVector<int>> m_told; ///< what was to be shown
};

void TstAChnMeasureSet::init()
{
    open({0, 1, 2, 3, 4, 5, 6});
}

void TstAChnMeasureSet::theBoxesStandFourToARowInTheOrderOfTheNames()
{
    const auto *group = qobject_cast<QGroupBox *>(m_menu->boxes.first()->parentWidget());
    QCOMPARE(group->title(), QStringLiteral("Measure Select"));
    const auto *grid = qobject_cast<QGridLayout *>(group->layout());
    QCOMPARE(m_menu->boxes.size(), 17);
    for (int id = 0; id < 17; ++id) {
        QCOMPARE(m_menu->boxes.at(id)->text(), gMeasureNames.at(id));
        QCOMPARE(m_menu->boxes.at(id)->objectName(), QString::number(id));
        QCOMPARE(grid->itemAtPosition(id / 4, id % 4)->widget(), m_menu->boxes.at(id));
    }
    QStringList choices;
    for (const QAbstractButton *button : m_menu->showAllGroup->buttons()) {
        choices.append(button->text());
    }
    QCOMPARE(choices, (QStringList{QStringLiteral("OFF"), QStringLiteral("CH1"), QStringLiteral("CH2")}));
    QVERIFY(m_menu->showAllGroup->buttons().first()->isChecked());
    QVERIFY(!m_menu->removeAllBox->isChecked());
}

void TstAChnMeasureSet::theBoxesOfTheShownParametersAreChecked()
{
    open({16, 3, -1, -1, -1, -1, -1});
    QCOMPARE(checked(), (QVector<int>{3, 16}));
}

void TstAChnMeasureSet::anEighthParameterTakesTheCheckOfTheOldest()
{
    click(m_menu->boxes.at(10));
    QCOMPARE(checked(), (QVector<int>{0, 1, 2, 3, 4, 5, 10}));
    click(m_menu->boxes.at(6));
    QCOMPARE(checked(), (QVector<int>{0, 1, 2, 3, 4, 6, 10}));
    QCOMPARE(m_told, (QVector<QVector<int>>{{10, 0, 1, 2, 3, 4, 5}, {6, 10, 0, 1, 2, 3, 4}}));
}

void TstAChnMeasureSet::aFreeRowIsTakenBeforeAnyIsDropped()
{
    open({8, 9, -1, -1, -1, -1, -1});
    click(m_menu->boxes.at(0));
    QCOMPARE(checked(), (QVector<int>{0, 8, 9}));
    QCOMPARE(m_told, (QVector<QVector<int>>{{0, 8, 9, -1, -1, -1, -1}}));
}

void TstAChnMeasureSet::anUncheckedParameterLeavesNoGap()
{
    click(m_menu->boxes.at(2));
    click(m_menu->boxes.at(6));
    QCOMPARE(m_told, (QVector<QVector<int>>{{0, 1, 3, 4, 5, 6, -1}, {0, 1, 3, 4, 5, -1, -1}}));
}

void TstAChnMeasureSet::removeAllUnchecksEverythingAndTells()
{
    QSignalSpy removed(m_menu.get(), &AChnMeasureSet::removeAllClicked);
    click(m_menu->removeAllBox);
    QCOMPARE(removed.count(), 1);
    QVERIFY(checked().isEmpty());
    QCOMPARE(m_menu->shownIds, (QVector<int>(7, -1)));
    QVERIFY(m_told.isEmpty());
}

void TstAChnMeasureSet::removeAllStaysCheckedWhenItIsClickedAgain()
{
    click(m_menu->removeAllBox);
    QVERIFY(m_menu->removeAllBox->isChecked());
    click(m_menu->removeAllBox);
    QVERIFY(m_menu->removeAllBox->isChecked());
    QTest::keyClick(m_menu->removeAllBox, Qt::Key_Space);
    QVERIFY(m_menu->removeAllBox->isChecked());
}

void TstAChnMeasureSet::aChosenParameterClearsRemoveAll()
{
    click(m_menu->removeAllBox);
    click(m_menu->boxes.at(16));
    QVERIFY(!m_menu->removeAllBox->isChecked());
    QCOMPARE(m_told, (QVector<QVector<int>>{{16, -1, -1, -1, -1, -1, -1}}));
}

void TstAChnMeasureSet::offShowsNothing()
{
    QSignalSpy shown(m_menu.get(), &AChnMeasureSet::showAllMeasureClicked);
    click(m_menu->showAllGroup->buttons().first());
    QCOMPARE(shown.count(), 0);
    QVERIFY(m_menu->isVisible());
}

void TstAChnMeasureSet::aChannelIsToldOnceAndTheGroupGoesBackToOff()
{
    QSignalSpy shown(m_menu.get(), &AChnMeasureSet::showAllMeasureClicked);
    bool wasAside = false;
    connect(m_menu.get(), &AChnMeasureSet::showAllMeasureClicked, this, [&] { wasAside = !m_menu->isVisible(); });
    for (const int chn : {1, 0}) {
        click(m_menu->showAllGroup->buttons().at(chn + 1));
        QVERIFY(m_menu->showAllGroup->buttons().first()->isChecked());
        QVERIFY(wasAside && m_menu->isVisible()); // a dialog above a menu could not be answered
    }
    QCOMPARE(QList<QVariantList>(shown), (QList<QVariantList>{{1}, {0}}));
}

void TstAChnMeasureSet::tabReachesEveryPartAndSpaceChooses()
{
    QCOMPARE(m_menu->focusWidget(), m_menu->boxes.first());
    QSet<QWidget *> reached;
    for (int i = 0; i < 19; ++i) {
        reached.insert(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    for (QCheckBox *box : m_menu->boxes + QVector<QCheckBox *>{m_menu->removeAllBox}) {
        QVERIFY(reached.contains(box));
    }
    QVERIFY(reached.contains(m_menu->showAllGroup->buttons().first())); // the arrows reach the others
    QTest::keyClick(m_menu->boxes.at(0), Qt::Key_Space);
    QCOMPARE(m_told, (QVector<QVector<int>>{{1, 2, 3, 4, 5, 6, -1}}));
    QTest::keyClick(m_menu.get(), Qt::Key_Escape);
    QVERIFY(!m_menu->isVisible());
}

void TstAChnMeasureSet::theArrowsGoFromChannelToChannelAndShowNone()
{
    QSignalSpy shown(m_menu.get(), &AChnMeasureSet::showAllMeasureClicked);
    const auto choices = m_menu->showAllGroup->buttons();
    choices.first()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Right);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Down);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Down); // there is none beyond
    QCOMPARE(m_menu->focusWidget(), choices.last());
    QCOMPARE(shown.count(), 0);
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Space);
    QCOMPARE(QList<QVariantList>(shown), (QList<QVariantList>{{1}}));
    QCOMPARE(m_menu->focusWidget(), choices.last()); // the menu has come back as it was
    QTest::keyClick(m_menu->focusWidget(), Qt::Key_Left);
    QCOMPARE(m_menu->focusWidget(), choices.at(1));
}

void TstAChnMeasureSet::theMenuFitsALowScreen_data()
{
    QTest::addColumn<int>("dpi");
    QTest::newRow("96") << 96;
    QTest::newRow("192") << 192;
}

void TstAChnMeasureSet::theMenuFitsALowScreen()
{
    QFETCH(int, dpi);
    m_menu.reset();
    globalsSetDpi(dpi);
    const QFont before = QApplication::font();
    QFont font = before;
    font.setPointSizeF(font.pointSizeF() * dpi / 96);
    QApplication::setFont(font);
    open({0, 1, 2, 3, 4, 5, 6});
    const QSize size = m_menu->sizeHint();
    m_menu.reset();
    QApplication::setFont(before);
    globalsSetDpi(96);
    QVERIFY(size.width() <= 1280 && size.height() <= 720);
}

LUX_GUI_TEST(TstAChnMeasureSet)
#include "tst_AChnMeasureSet.moc"

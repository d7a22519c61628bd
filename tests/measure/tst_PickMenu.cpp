#include "controls/Look.h"
#include "measure/PickMenu.h"
#include "support/GuiTestMain.h"

#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QWidgetAction>

#include <memory>

/// The menu that drops down under a button of a row.
class TstPickMenu : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void itDropsDownUnderTheButtonAndIsAsWide_data();
    void itDropsDownUnderTheButtonAndIsAsWide();
    void theCurrentChoiceIsActiveAtFirst();
    void theArrowsMoveTheVisibleChoice();
    void returnTakesTheActiveEntry();
    void escapeTakesNone();
    void thePointerMakesAnEntryActive();
    void aClickTakesTheEntry();
    void aDisabledEntryIsNotTakenByClick();
    void thirtyTwoEntriesFitOnTheScreen();
    void moreEntriesThanTheScreenHoldsAreReachedByKey();
    void shorteningClosesTheMenuAndTakesTheLastEntries();
    void anIconIsShownInsteadOfTheText();

private:
    void fill(int count)
    {
        for (int i = 0; i < count; ++i) {
            m_menu->addEntry(QStringLiteral("CH%1").arg(i));
        }
    }
    QPoint middleOf(int entry) const { return m_menu->actionGeometry(m_menu->actions().at(entry)).center(); }
    /// The ground of an entry, near its left edge.
    QColor groundOf(int entry) const
    {
        const QRect place = m_menu->actionGeometry(m_menu->actions().at(entry));
        return m_menu->grab().toImage().pixelColor(place.left() + 3, place.center().y());
    }

    std::unique_ptr<QPushButton> m_button;
    std::unique_ptr<PickMenu> m_menu;
};

void TstPickMenu::init()
{
    QCursor::setPos(0, 0);
    m_button = std::make_unique<QPushButton>(QStringLiteral("CH0"));
    m_button->setGeometry(100, 40, 60, 20);
    m_button->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_button.get()));
    m_menu = std::make_unique<PickMenu>();
}

void TstPickMenu::cleanup()
{
    m_menu.reset();
    m_button.reset();
}

void TstPickMenu::itDropsDownUnderTheButtonAndIsAsWide_data()
{
    QTest::addColumn<int>("width");
    QTest::newRow("narrower than the texts") << 18;
    QTest::newRow("usual") << 60;
    QTest::newRow("wider than the texts") << 300;
}

void TstPickMenu::itDropsDownUnderTheButtonAndIsAsWide()
{
    QFETCH(int, width);
    m_button->resize(width, 20);
    fill(5);
    m_menu->dropUnder(*m_button, 0);
    QCOMPARE(m_menu->width(), m_button->width());
    QCOMPARE(m_menu->pos(), m_button->mapToGlobal(QPoint(0, m_button->height())));
    for (QAction *action : m_menu->actions()) {
        QCOMPARE(m_menu->actionGeometry(action).width(), m_menu->width());
    }
}

void TstPickMenu::theCurrentChoiceIsActiveAtFirst()
{
    fill(5);
    m_menu->dropUnder(*m_button, 3);
    QCOMPARE(m_menu->activeAction(), m_menu->actions().at(3));
    QCOMPARE(groundOf(3), gGreys[5]);
    QCOMPARE(groundOf(2), QColor(0x1f, 0x1f, 0x23));
}

void TstPickMenu::theArrowsMoveTheVisibleChoice()
{
    fill(5);
    m_menu->dropUnder(*m_button, 1);
    QTest::keyClick(m_menu.get(), Qt::Key_Down);
    QCOMPARE(groundOf(2), gGreys[5]);
    QCOMPARE(groundOf(1), gGreys[8]);
    QTest::keyClick(m_menu.get(), Qt::Key_Up);
    QTest::keyClick(m_menu.get(), Qt::Key_Up);
    QCOMPARE(groundOf(0), gGreys[5]);
    QCOMPARE(groundOf(2), gGreys[8]);
}

void TstPickMenu::returnTakesTheActiveEntry()
{
    fill(5);
    QSignalSpy taken(m_menu.get(), &QMenu::triggered);
    m_menu->dropUnder(*m_button, 1);
    QTest::keyClick(m_menu.get(), Qt::Key_Down);
    QTest::keyClick(m_menu.get(), Qt::Key_Return);
    QCOMPARE(taken.count(), 1);
    QCOMPARE(taken.first().first().value<QAction *>()->data().toInt(), 2);
    QVERIFY(!m_menu->isVisible());
}

void TstPickMenu::escapeTakesNone()
{
    fill(5);
    QSignalSpy taken(m_menu.get(), &QMenu::triggered);
    m_menu->dropUnder(*m_button, 1);
    QTest::keyClick(m_menu.get(), Qt::Key_Escape);
    QCOMPARE(taken.count(), 0);
    QVERIFY(!m_menu->isVisible());
}

void TstPickMenu::thePointerMakesAnEntryActive()
{
    fill(5);
    m_menu->dropUnder(*m_button, 0);
    QTest::mouseMove(m_menu->windowHandle(), middleOf(3));
    QTest::mouseMove(m_menu->windowHandle(), middleOf(4));
    QTRY_COMPARE(m_menu->activeAction(), m_menu->actions().at(4));
    QCOMPARE(groundOf(4), gGreys[5]);
    QCOMPARE(groundOf(0), gGreys[8]);
}

void TstPickMenu::aClickTakesTheEntry()
{
    fill(5);
    QSignalSpy taken(m_menu.get(), &QMenu::triggered);
    m_menu->dropUnder(*m_button, 0);
    QTest::mouseMove(m_menu->windowHandle(), middleOf(2));
    QTest::mouseClick(m_menu->windowHandle(), Qt::LeftButton, {}, middleOf(3));
    QTRY_COMPARE(taken.count(), 1);
    QCOMPARE(taken.first().first().value<QAction *>()->data().toInt(), 3);
}

void TstPickMenu::aDisabledEntryIsNotTakenByClick()
{
    fill(5);
    m_menu->actions().at(3)->setEnabled(false);
    QSignalSpy taken(m_menu.get(), &QMenu::triggered);
    m_menu->dropUnder(*m_button, 0);
    QTest::mouseMove(m_menu->windowHandle(), middleOf(2));
    QTest::mouseClick(m_menu->windowHandle(), Qt::LeftButton, {}, middleOf(3));
    QCOMPARE(taken.count(), 0);
    QTest::keyClick(m_menu.get(), Qt::Key_Down);
    QTest::keyClick(m_menu.get(), Qt::Key_Return);
    QCOMPARE(taken.count() == 0 || taken.first().first().value<QAction *>()->data().toInt() != 3, true);
}

void TstPickMenu::thirtyTwoEntriesFitOnTheScreen()
{
    fill(32);
    m_menu->dropUnder(*m_button, 0);
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QVERIFY(screen.contains(m_menu->geometry()));
    QVERIFY(m_menu->rect().contains(m_menu->actionGeometry(m_menu->actions().at(31))));
    QVERIFY(m_menu->actionGeometry(m_menu->actions().at(31)).height() > m_menu->fontMetrics().capHeight());
}

void TstPickMenu::moreEntriesThanTheScreenHoldsAreReachedByKey()
{
    fill(100);
    QSignalSpy taken(m_menu.get(), &QMenu::triggered);
    m_menu->dropUnder(*m_button, 0);
    QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().contains(m_menu->geometry()));
    QTest::keyClick(m_menu.get(), Qt::Key_Up); // round to the last
    QVERIFY(m_menu->rect().contains(middleOf(99)));
    QTest::keyClick(m_menu.get(), Qt::Key_Return);
    QCOMPARE(taken.first().first().value<QAction *>()->data().toInt(), 99);
}

void TstPickMenu::shorteningClosesTheMenuAndTakesTheLastEntries()
{
    fill(5);
    m_menu->dropUnder(*m_button, 4);
    m_menu->shorten(2);
    QVERIFY(!m_menu->isVisible());
    QCOMPARE(m_menu->actions().size(), 2);
    QCOMPARE(m_menu->actions().last()->text(), QStringLiteral("CH1"));
    m_menu->shorten(2);
    m_menu->shorten(0);
    QVERIFY(m_menu->actions().isEmpty());
    m_menu->dropUnder(*m_button, 0); // nothing to show, and nothing to crash on
    QVERIFY(m_menu->activeAction() == nullptr);
}

void TstPickMenu::anIconIsShownInsteadOfTheText()
{
    m_menu->addEntry(QStringLiteral("Rising edges"), QStringLiteral(":/res/btnPosEdge"));
    m_menu->dropUnder(*m_button, -1);
    const QImage image = m_menu->grab().toImage();
    int light = 0;
    for (int y = 2; y < image.height() - 2; ++y) {
        for (int x = 2; x < image.width() - 2; ++x) {
            light += image.pixelColor(x, y).lightness() > 128 ? 1 : 0;
            if (std::abs(x - image.width() / 2) > 9) {
                QCOMPARE(image.pixelColor(x, y), gGreys[8]);
            }
        }
    }
    QVERIFY(light > 10);
    QCOMPARE(m_menu->actions().first()->text(), QStringLiteral("Rising edges"));
}

LUX_GUI_TEST(TstPickMenu)
#include "tst_PickMenu.moc"

// The recent files and the kept captures in the menu, by mouse and by key.

#include "app/MenuDesk.h"
#include "app/RecentMenu.h"
#include "controls/MyButton.h"
#include "files/CaptureHistory.h"
#include "files/FilesThere.h"
#include "settings/ConfigDocument.h"
#include "settings/HistoryOptions.h"

#include <QMenu>
#include <QSemaphore>

using namespace std::chrono_literals;

class TstRecentMenu : public QObject, private MenuDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void withoutAnyFileTheEntryIsDisabled();
    void aFileThatWasOpenedOrSavedComesFirst();
    void aFileThatFailedIsNotRemembered();
    void aFileIsOpenedByKeysAlone();
    void aFileThatIsGoneIsGreyed();
    void aDiskThatDoesNotAnswerHoldsUpNobody();
    void aKeptCaptureShowsTimeModelLengthAndPicture();
    void aKeptCaptureIsOpenedAndNamedInTheTitle();
    void aKeptCaptureIsNoRecentFile();
    void theOpenMenuFollowsTheHistory();
    void aCaptureThatWasNotKeptIsTold();
    void thePictureHasTheColoursOfTheWaves();

private:
    QMenu *openMenu();
    /// The menu "Recent", open.
    RecentMenu *openRecent();
    [[nodiscard]] QStringList texts();
    [[nodiscard]] QString saved(const char *name);
    void keep(int second);
    void chooseEntry(int index)
    {
        auto *menu = openRecent();
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(menu->actions().at(index)).center());
        QCoreApplication::processEvents();
    }

    std::unique_ptr<CaptureHistory> m_history;
};

void TstRecentMenu::init()
{
    setUpMenu(8);
    m_history = std::make_unique<CaptureHistory>(HistoryFolder(path("history")));
    m_window->setHistory(m_history.get());
    QVERIFY(m_history->finish(10s));
}

void TstRecentMenu::cleanup()
{
    tearDownMenu();
    m_history.reset();
}

QMenu *TstRecentMenu::openMenu()
{
    QTest::mouseClick(m_menu->findChild<MyButton *>(), Qt::LeftButton);
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

RecentMenu *TstRecentMenu::openRecent()
{
    QMenu *menu = openMenu();
    auto *recent = menu->findChild<RecentMenu *>();
    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(recent->menuAction()).center());
    return QTest::qWaitFor([recent] { return recent->isVisible(); }) ? recent : nullptr; // it opens after a moment
}

QStringList TstRecentMenu::texts()
{
    QStringList list;
    openMenu();
    for (const QAction *action : m_menu->findChild<RecentMenu *>()->actions()) {
        list += action->isSeparator() ? QStringLiteral("-") : action->text();
    }
    QApplication::activePopupWidget()->close();
    return list;
}

QString TstRecentMenu::saved(const char *name)
{
    capture();
    m_path = path(name);
    m_menu->actSaveData();
    return m_path;
}

void TstRecentMenu::keep(int second)
{
    CaptureBuilder{100000}.fill(*gDev->smpData);
    const QDateTime time(QDate(2026, 3, 9), QTime(7, 5, second), Qt::LocalTime);
    m_history->keep({gDev->smpData.get(), gDev->name, time}, configCopy());
    QVERIFY(m_history->finish(10s));
}

void TstRecentMenu::withoutAnyFileTheEntryIsDisabled()
{
    QMenu *menu = openMenu();
    QVERIFY(!menu->findChild<RecentMenu *>()->menuAction()->isEnabled());
}

void TstRecentMenu::aFileThatWasOpenedOrSavedComesFirst()
{
    const QString first = saved("first & one.cxdat");
    (void)saved("second.cxdat");
    QCOMPARE(texts(), QStringList({QStringLiteral("second.cxdat"), QStringLiteral("first && one.cxdat")}));
    m_menu->openFile(first);
    QCOMPARE(texts(), QStringList({QStringLiteral("first && one.cxdat"), QStringLiteral("second.cxdat")}));
    m_path = path("settings.cxset");
    m_menu->actSaveSettings();
    QCOMPARE(texts().constFirst(), QStringLiteral("settings.cxset"));
}

void TstRecentMenu::aFileThatFailedIsNotRemembered()
{
    m_menu->openFile(path("none.cxdat"));
    QCOMPARE(m_boxes->seen.count, 1);
    QVERIFY(texts().isEmpty());
}

void TstRecentMenu::aFileIsOpenedByKeysAlone()
{
    (void)saved("older.cxdat");
    const QString newer = saved("newer.cxdat");
    const QString older = path("older.cxdat");
    auto *button = m_menu->findChild<MyButton *>();
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Space);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Down);
    QCOMPARE(menu->activeAction()->text(), QStringLiteral("Recent"));
    QTest::keyClick(menu, Qt::Key_Right);
    auto *recent = qobject_cast<RecentMenu *>(QApplication::activePopupWidget());
    QVERIFY(recent != nullptr);
    QCOMPARE(recent->activeAction()->data().toString(), newer);
    QTest::keyClick(recent, Qt::Key_Down);
    QCOMPARE(recent->activeAction()->data().toString(), older);
    QTest::keyClick(recent, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCOMPARE(gOpenFile, older);
    QVERIFY(QApplication::activePopupWidget() == nullptr);
}

void TstRecentMenu::aFileThatIsGoneIsGreyed()
{
    const QString gone = saved("gone.cxdat");
    (void)saved("there.cxdat");
    QVERIFY(QFile::remove(gone));
    const RecentMenu *recent = openRecent();
    QVERIFY(recent != nullptr);
    QTRY_VERIFY(!recent->actions().at(1)->isEnabled());
    QVERIFY(recent->actions().at(0)->isEnabled());
}

void TstRecentMenu::aDiskThatDoesNotAnswerHoldsUpNobody()
{
    (void)saved("slow.cxdat");
    openMenu()->close();
    QSemaphore answers;
    auto *recent = m_menu->findChild<RecentMenu *>();
    QSignalSpy answered(&recent->files(), &FilesThere::sigAnswered);
    QVERIFY(answered.wait());
    recent->files().exists = [&answers](const QString &) {
        answers.acquire();
        return false;
    };
    QCOMPARE(openRecent(), recent); // and the question is under way
    QVERIFY(recent->actions().constFirst()->isEnabled());
    recent->look(); // no second one
    answers.release();
    QVERIFY(answered.wait());
    QVERIFY(!recent->actions().constFirst()->isEnabled());
    QCOMPARE(answers.available(), 0);
}

void TstRecentMenu::aKeptCaptureShowsTimeModelLengthAndPicture()
{
    keep(1);
    (void)saved("file.cxdat");
    const RecentMenu *recent = openRecent();
    const auto actions = recent->actions();
    QCOMPARE(actions.size(), 3);
    QCOMPARE(actions.at(0)->text(), QStringLiteral("file.cxdat"));
    QVERIFY(actions.at(1)->isSeparator());
    QCOMPARE(actions.at(2)->text(), QStringLiteral("2026-03-09 07:05:01   RV2520   1ms"));
    const QRect line = recent->actionGeometry(actions.at(2));
    const QImage shown = m_menu->findChild<RecentMenu *>()->grab(line).toImage();
    QVERIFY(line.height() >= dp(24)); // of the picture
    const QRect picture(dp(10), (line.height() - dp(24)) / 2, dp(pictureColumns), dp(24));
    QVERIFY(shown.pixel(picture.left() - dp(4), line.height() / 2) != gGreys.at(8).rgb());
    int coloured = 0;
    for (int x = picture.left(); x <= picture.right(); ++x) {
        coloured += int(shown.pixel(x, picture.top() + dp(2)) != gGreys.at(8).rgb());
    }
    QVERIFY(coloured > picture.width() / 2); // channel 0 changes in each column
}

void TstRecentMenu::aKeptCaptureIsOpenedAndNamedInTheTitle()
{
    keep(1);
    gDev->smpData->clear();
    chooseEntry(0);
    QCOMPARE(gDev->smpData->sampleCount(), 100000);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("2026-03-09 07:05:01   RV2520   1ms - CorvanLUX"));
}

void TstRecentMenu::aKeptCaptureIsNoRecentFile()
{
    keep(1);
    chooseEntry(0);
    QVERIFY(!gOpenFile.isEmpty());
    QVERIFY(RecentFiles::paths().isEmpty());
}

void TstRecentMenu::theOpenMenuFollowsTheHistory()
{
    keep(1);
    RecentMenu *recent = openRecent();
    QTest::keyClick(recent, Qt::Key_Down);
    QCOMPARE(recent->activeAction(), recent->actions().at(0));
    const QString chosen = recent->activeAction()->data().toString();
    keep(2);
    QTRY_COMPARE(recent->actions().size(), 2);
    QCOMPARE(recent->activeAction(), recent->actions().at(1)); // the one that was chosen
    QCOMPARE(recent->activeAction()->data().toString(), chosen);
}

void TstRecentMenu::aCaptureThatWasNotKeptIsTold()
{
    m_history->roomLeft = [](const QString &) { return std::int64_t(0); };
    keep(1);
    const RecentMenu *recent = openRecent();
    QVERIFY(recent != nullptr);
    QTRY_COMPARE(recent->actions().size(), 1);
    QCOMPARE(recent->actions().at(0)->text(), QStringLiteral("The last capture was not kept. The disk is full."));
    QVERIFY(!recent->actions().at(0)->isEnabled());
    QCOMPARE(m_boxes->seen.count, 0);
}

void TstRecentMenu::thePictureHasTheColoursOfTheWaves()
{
    QVERIFY(capturePixmap({}).isNull());
    const PictureRow half = PictureRow(pictureColumns / 2, '1') + PictureRow(pictureColumns / 2, '0');
    const QImage picture = capturePixmap({half, PictureRow(pictureColumns, 'x')}).toImage();
    const int middle = picture.height() / 2;
    const QRgb first = gChnColors.at(0).lighter(120).rgb();
    const QRgb second = gChnColors.at(1).lighter(120).rgb();
    const QRgb ground = gGreys.at(8).rgb();
    QCOMPARE(picture.pixel(dp(10), dp(1)), first);
    QCOMPARE(picture.pixel(dp(50), dp(1)), ground);
    QCOMPARE(picture.pixel(dp(10), middle - dp(2)), ground);
    QCOMPARE(picture.pixel(dp(50), middle - dp(2)), first);
    QCOMPARE(picture.pixel(dp(32), middle - dp(5)), first); // the edge between them
    QCOMPARE(picture.pixel(dp(3), middle + dp(5)), second);
    QCOMPARE(picture.pixel(dp(60), picture.height() - dp(2)), second);
}

LUX_GUI_TEST(TstRecentMenu)
#include "tst_RecentMenu.moc"

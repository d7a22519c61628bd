#include "protocol/AllAnalyzers.h"
#include "protocol/SearchEdit.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"

#include <QListWidget>

namespace {

const QStringList &names()
{
    static const QStringList list{QStringLiteral("1-Wire"), QStringLiteral("CAN"), QStringLiteral("I2C"),
                                  QStringLiteral("CAN"), QStringLiteral("QSPI (Not Supported)")};
    return list;
}

QStringList shown(const AllAnalyzers &dialog)
{
    QStringList texts;
    const auto *list = dialog.findChild<QListWidget *>();
    for (int row = 0; row < list->count(); ++row) {
        texts.append(list->item(row)->text());
    }
    return texts;
}

QPushButton *okOf(const AllAnalyzers &dialog)
{
    for (auto *button : dialog.findChildren<QPushButton *>()) {
        if (button->text() == QLatin1String("OK")) {
            return button;
        }
    }
    return nullptr;
}

void clickRow(const AllAnalyzers &dialog, int row, bool twice = false)
{
    auto *list = dialog.findChild<QListWidget *>();
    const QPoint place = list->visualItemRect(list->item(row)).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
    if (twice) {
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
    }
}

} // namespace

class TstAllAnalyzers : public QObject {
    Q_OBJECT
private slots:
    void itListsAllAndTheSearchNarrowsIt();
    void aClickAllowsOk();
    void aDoubleClickChoosesEvenWhatTheModelDoesNotSupport();
    void ofTwoOfOneNameTheClickedOneIsChosen();
    void whatWasChosenIsSelectedAtTheNextTime();
    void aSearchWithoutMatchKeepsTheButton();
    void aSearchThatHidesTheChosenOneChoosesTheFirstThatItShows();
    void itIsUsedByKeysAlone();
    void aNameThatIsTypedIsTakenByEnter();
    void enterTakesNothingThatIsNotSeen();
    void upAndDownChooseWhileTheSearchKeepsTheFocus();
    void upAndDownInAnEmptyListChooseNothing();
    void theFirstIsChosenWhenAKeyLeadsToTheList();
    void theTableOfModelsIsAskedFor();
};

void TstAllAnalyzers::itListsAllAndTheSearchNarrowsIt()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("All Protocol Analyzers"));
    QCOMPARE(shown(dialog), names());
    auto *search = dialog.findChild<SearchEdit *>();
    search->setText(QStringLiteral("sp"));
    QCOMPARE(shown(dialog), QStringList{names().last()});
    search->clear();
    QCOMPARE(shown(dialog), names());
}

void TstAllAnalyzers::aClickAllowsOk()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QVERIFY(!okOf(open)->isEnabled());
        clickRow(open, 2);
        QVERIFY(okOf(open)->isEnabled());
        okOf(open)->click();
    });
    QCOMPARE(dialog.choose(), 2);
}

void TstAllAnalyzers::aDoubleClickChoosesEvenWhatTheModelDoesNotSupport()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) { clickRow(open, 4, true); });
    QCOMPARE(dialog.choose(), 4); // it is not for this model
}

void TstAllAnalyzers::ofTwoOfOneNameTheClickedOneIsChosen()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        open.findChild<SearchEdit *>()->setText(QStringLiteral("can"));
        clickRow(open, 1, true);
    });
    QCOMPARE(dialog.choose(), 3);
    QVERIFY(dialog.findChild<SearchEdit *>()->text().isEmpty());
}

void TstAllAnalyzers::whatWasChosenIsSelectedAtTheNextTime()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    bool first = true;
    const DialogDriver<AllAnalyzers> driver([&first](AllAnalyzers &open) {
        if (first) {
            clickRow(open, 1);
            pressButton(open, QStringLiteral("Cancel"));
        } else {
            QCOMPARE(open.findChild<QListWidget *>()->currentRow(), 1);
            okOf(open)->click();
        }
        first = false;
    });
    QCOMPARE(dialog.choose(), -1);
    dialog.setNames(names());
    QCOMPARE(dialog.choose(), 1);
}

void TstAllAnalyzers::aSearchWithoutMatchKeepsTheButton()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    auto *search = dialog.findChild<SearchEdit *>();
    search->setText(QStringLiteral("no such"));
    QVERIFY(shown(dialog).isEmpty());
    QVERIFY(!okOf(dialog)->isEnabled());
    search->clear();
    dialog.findChild<QListWidget *>()->setCurrentRow(0);
    search->setText(QStringLiteral("no such"));
    QVERIFY(okOf(dialog)->isEnabled());
}

void TstAllAnalyzers::aSearchThatHidesTheChosenOneChoosesTheFirstThatItShows()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        auto *search = open.findChild<SearchEdit *>();
        search->setText(QStringLiteral("i"));
        clickRow(open, 0);
        search->setText(QStringLiteral("re"));
        QCOMPARE(open.findChild<QListWidget *>()->currentRow(), 0); // still the same, 1-Wire
        search->setText(QStringLiteral("c"));
        QCOMPARE(open.findChild<QListWidget *>()->currentRow(), 0);
        okOf(open)->click();
    });
    QCOMPARE(dialog.choose(), 1);
}

void TstAllAnalyzers::itIsUsedByKeysAlone()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QVERIFY(QTest::qWaitForWindowActive(&open));
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("i2"));
        while (QApplication::focusWidget() != open.findChild<QListWidget *>()) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    QCOMPARE(dialog.choose(), 2);
}

void TstAllAnalyzers::aNameThatIsTypedIsTakenByEnter()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QVERIFY(QTest::qWaitForWindowActive(&open));
        QVERIFY(!okOf(open)->isEnabled());
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("i2"));
        QCOMPARE(open.findChild<QListWidget *>()->selectedItems().size(), 1);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    QCOMPARE(dialog.choose(), 2);
}

void TstAllAnalyzers::enterTakesNothingThatIsNotSeen()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QVERIFY(QTest::qWaitForWindowActive(&open));
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("i2x"));
        QVERIFY(shown(open).isEmpty());
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
            QTest::keyClick(QApplication::focusWidget(), key);
            QVERIFY(open.isVisible());
        }
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backspace);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QVERIFY(!open.isVisible());
    });
    QCOMPARE(dialog.choose(), 2);
}

void TstAllAnalyzers::upAndDownChooseWhileTheSearchKeepsTheFocus()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QVERIFY(QTest::qWaitForWindowActive(&open));
        const auto *list = open.findChild<QListWidget *>();
        QWidget *search = QApplication::focusWidget();
        QTest::keyClicks(search, QStringLiteral("can"));
        for (const auto &[key, row] :
             {std::pair{Qt::Key_Down, 1}, {Qt::Key_Down, 1}, {Qt::Key_Up, 0}, {Qt::Key_Up, 0}}) {
            QTest::keyClick(search, key);
            QCOMPARE(list->currentRow(), row);
            QVERIFY(list->currentItem()->isSelected());
        }
        QTest::keyClick(search, Qt::Key_Down);
        QVERIFY(search->hasFocus());
        QTest::keyClick(search, Qt::Key_Return);
    });
    QCOMPARE(dialog.choose(), 3);
}

void TstAllAnalyzers::upAndDownInAnEmptyListChooseNothing()
{
    AllAnalyzers dialog;
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QTest::keyClick(open.findChild<SearchEdit *>(), Qt::Key_Down);
        QTest::keyClick(&open, Qt::Key_Escape);
    });
    QCOMPARE(dialog.choose(), -1);
}

void TstAllAnalyzers::theFirstIsChosenWhenAKeyLeadsToTheList()
{
    AllAnalyzers dialog;
    dialog.setNames(names());
    const DialogDriver<AllAnalyzers> driver([](AllAnalyzers &open) {
        QVERIFY(QTest::qWaitForWindowActive(&open));
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("can"));
        while (QApplication::focusWidget() != open.findChild<QListWidget *>()) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QVERIFY(okOf(open)->isEnabled());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    QCOMPARE(dialog.choose(), 1);
}

void TstAllAnalyzers::theTableOfModelsIsAskedFor()
{
    AllAnalyzers dialog;
    QSignalSpy asked(&dialog, &AllAnalyzers::supportWanted);
    pressButton(dialog, QStringLiteral("Device Supported List"));
    QCOMPARE(asked.count(), 1);
}

LUX_GUI_TEST(TstAllAnalyzers)
#include "tst_AllAnalyzers.moc"

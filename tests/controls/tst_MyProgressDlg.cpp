#include "controls/Look.h"
#include "controls/MyProgressDlg.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

class TstMyProgressDlg : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void itShowsTitleLabelBarAndButton();
    void itIsModalAndWithoutHelp();
    void progressBelowZeroCountsAsZero();
    void aFullBarStaysUnlessTheDialogAcceptsByItself();
    void aFullBarAcceptsWhenAskedTo();
    void acceptanceIsToldAlsoAfterTheDialogWasClosed();
    void theButtonClosesTheDialogAtFirst();
    void theButtonOnlyTellsWhileAJobMustNotBeLeft_data();
    void theButtonOnlyTellsWhileAJobMustNotBeLeft();
    void nothingIsToldWhileTheButtonIsHidden();
    void aHiddenButtonKeepsItsPlace();
    void theSizeStaysFromStateToState();
    void aLongTextMakesRoomForItself();
    void execEndsAsAcceptedByProgress();
    void execEndsAsRejectedByTheButton();
};

namespace {
enum class By { Button, Escape, CloseBox };

struct Dialog : MyProgressDlg {
    Dialog() : MyProgressDlg(QStringLiteral("Sampling"), QStringLiteral("Sample start..."), QStringLiteral("Stop")) {}
    QPushButton *button() { return findChild<QPushButton *>(); }
    void leave(By way)
    {
        switch (way) {
        case By::Button:
            QTest::mouseClick(button(), Qt::LeftButton);
            break;
        case By::Escape:
            QTest::keyClick(this, Qt::Key_Escape);
            break;
        case By::CloseBox:
            close();
            break;
        }
    }
};
} // namespace
Q_DECLARE_METATYPE(By)

void TstMyProgressDlg::initTestCase()
{
    globalsFillTables();
    gDpi = 96;
}

void TstMyProgressDlg::itShowsTitleLabelBarAndButton()
{
    Dialog dialog;
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Sampling"));
    QCOMPARE(dialog.labelText(), QStringLiteral("Sample start..."));
    QCOMPARE(dialog.button()->text(), QStringLiteral("Stop"));
    dialog.setLabelText(QStringLiteral("Data reading..."));
    QCOMPARE(dialog.findChild<QLabel *>()->text(), QStringLiteral("Data reading..."));
    dialog.setProgress(42);
    QCOMPARE(dialog.findChild<QProgressBar *>()->value(), 42);
    QCOMPARE(dialog.progress(), 42);
}

void TstMyProgressDlg::itIsModalAndWithoutHelp()
{
    Dialog dialog;
    QVERIFY(dialog.isModal());
    QVERIFY(!dialog.windowFlags().testFlag(Qt::WindowContextHelpButtonHint));
    QVERIFY(dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
}

void TstMyProgressDlg::progressBelowZeroCountsAsZero()
{
    Dialog dialog;
    dialog.setProgress(50);
    dialog.setProgress(-1);
    QCOMPARE(dialog.progress(), 0);
}

void TstMyProgressDlg::aFullBarStaysUnlessTheDialogAcceptsByItself()
{
    Dialog dialog;
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    dialog.show();
    dialog.setProgress(250);
    QCOMPARE(dialog.progress(), 100);
    QVERIFY(dialog.isVisible());
    QCOMPARE(accepted.size(), 0);
}

void TstMyProgressDlg::aFullBarAcceptsWhenAskedTo()
{
    Dialog dialog;
    dialog.autoAccept = true;
    dialog.closeOnButton = false;
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    dialog.setProgress(99);
    QVERIFY(dialog.isVisible());
    dialog.setProgress(100);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(accepted.size(), 1);
    QCOMPARE(rejected.size(), 0);
}

void TstMyProgressDlg::acceptanceIsToldAlsoAfterTheDialogWasClosed()
{
    // Whoever polls a job stops polling by this signal, also when the user has closed the dialog before.
    Dialog dialog;
    dialog.autoAccept = true;
    dialog.show();
    dialog.leave(By::Button);
    QVERIFY(!dialog.isVisible());
    QSignalSpy accepted(&dialog, &QDialog::accepted);
    dialog.setProgress(100);
    QCOMPARE(accepted.size(), 1);
}

void TstMyProgressDlg::theButtonClosesTheDialogAtFirst()
{
    for (const By way : {By::Button, By::Escape, By::CloseBox}) {
        Dialog dialog;
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.show();
        dialog.leave(way);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(rejected.size(), 1);
    }
}

void TstMyProgressDlg::theButtonOnlyTellsWhileAJobMustNotBeLeft_data()
{
    QTest::addColumn<By>("way");
    QTest::newRow("button") << By::Button;
    QTest::newRow("Escape") << By::Escape;
    QTest::newRow("close box") << By::CloseBox;
}

void TstMyProgressDlg::theButtonOnlyTellsWhileAJobMustNotBeLeft()
{
    QFETCH(By, way);
    Dialog dialog;
    dialog.closeOnButton = false;
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    dialog.leave(way);
    dialog.leave(way);
    QVERIFY(dialog.isVisible());
    QCOMPARE(rejected.size(), 2);
    dialog.setProgress(77);
    QCOMPARE(dialog.progress(), 77);
    dialog.closeOnButton = true;
    dialog.leave(way);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(rejected.size(), 3);
}

void TstMyProgressDlg::nothingIsToldWhileTheButtonIsHidden()
{
    Dialog dialog;
    dialog.closeOnButton = false;
    dialog.setButtonVisible(false);
    QSignalSpy rejected(&dialog, &QDialog::rejected);
    dialog.show();
    QVERIFY(!dialog.button()->isVisible());
    dialog.leave(By::Escape);
    dialog.leave(By::CloseBox);
    QVERIFY(dialog.isVisible());
    QCOMPARE(rejected.size(), 0);
    dialog.setButtonVisible(true);
    dialog.leave(By::Escape);
    QCOMPARE(rejected.size(), 1);
}

void TstMyProgressDlg::aHiddenButtonKeepsItsPlace()
{
    Dialog dialog;
    dialog.show();
    const QRect bar = dialog.findChild<QProgressBar *>()->geometry();
    const QSize size = dialog.size();
    dialog.setButtonVisible(false);
    QCoreApplication::processEvents();
    QCOMPARE(dialog.findChild<QProgressBar *>()->geometry(), bar);
    QCOMPARE(dialog.size(), size);
}

void TstMyProgressDlg::theSizeStaysFromStateToState()
{
    Dialog dialog;
    dialog.show();
    const QSize size = dialog.size();
    for (const char *text : {"Pre-sampling...", "Waiting for trigger...", "Data reading...", "",
                             "Out of memory, Sample abort.\nSome second line."}) {
        dialog.setLabelText(QString::fromLatin1(text));
        QCoreApplication::processEvents();
        QCOMPARE(dialog.size(), size);
    }
}

void TstMyProgressDlg::aLongTextMakesRoomForItself()
{
    Dialog dialog;
    dialog.show();
    const QSize size = dialog.size();
    dialog.setLabelText(QStringLiteral("An error that takes many words to tell. ").repeated(10));
    QCoreApplication::processEvents();
    auto *label = dialog.findChild<QLabel *>();
    QCOMPARE(dialog.width(), size.width());
    QVERIFY(dialog.height() > size.height());
    QVERIFY(label->height() >= label->heightForWidth(label->width()));
}

void TstMyProgressDlg::execEndsAsAcceptedByProgress()
{
    Dialog dialog;
    dialog.autoAccept = true;
    QTimer::singleShot(0, &dialog, [&dialog] { dialog.setProgress(100); });
    QCOMPARE(dialog.exec(), int(QDialog::Accepted));
}

void TstMyProgressDlg::execEndsAsRejectedByTheButton()
{
    Dialog dialog;
    dialog.autoAccept = true;
    QTimer::singleShot(0, &dialog, [&dialog] { dialog.leave(By::Button); });
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
}

QTEST_MAIN(TstMyProgressDlg)
#include "tst_MyProgressDlg.moc"

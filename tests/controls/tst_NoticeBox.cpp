#include "controls/Look.h"
#include "controls/NoticeBox.h"
#include "support/BoxCloser.h"
#include "support/DialogDriver.h"
#include "support/GuiTestMain.h"

#include <QLabel>

namespace {

QString lines(int words, const QString &word = QStringLiteral("Zeitmarkenpaare "))
{
    return word.repeated(words).trimmed();
}

/// The text's label in a box that is on the screen.
QLabel *textOf(const QMessageBox &box)
{
    return box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label"));
}

} // namespace

/// The boxes that tell something, and the room that they give their text.
class TstNoticeBox : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { globalsSetDpi(96); }

    void theNoticeShowsItsTextsBehindOneButton();
    void markupInAPathIsShownAsItStands();
    void aLineStaysWholeAtEveryScale_data();
    void aLineStaysWholeAtEveryScale();
    void aLongTextWraps_data() { aLineStaysWholeAtEveryScale_data(); }
    void aLongTextWraps();
    void aShortTextMakesASmallBox();

private:
    /// How many lines high `text` is shown at `dpi`, in letters that are as large as the screen is fine; 0 if cut off.
    static int linesShown(const QString &text, int dpi, int *width = nullptr);
};

int TstNoticeBox::linesShown(const QString &text, int dpi, int *width)
{
    globalsSetDpi(dpi);
    QMessageBox box(QMessageBox::Information, QString(), text, QMessageBox::Close);
    QFont font = box.font();
    font.setPixelSize(dp(12));
    box.setFont(font);
    fitNotice(box);
    box.show();
    const QLabel *label = textOf(box);
    const QRect room = label->contentsRect();
    if (width != nullptr) {
        *width = room.width();
    }
    const int wrap = label->wordWrap() ? int(Qt::TextWordWrap) : 0;
    const QRect shown = label->fontMetrics().boundingRect(room, wrap, text);
    if (shown.width() > room.width() || shown.height() > room.height()) {
        return 0; // cut off
    }
    return qRound(double(shown.height()) / label->fontMetrics().lineSpacing());
}

void TstNoticeBox::theNoticeShowsItsTextsBehindOneButton()
{
    const BoxCloser closer;
    showNotice(nullptr, QMessageBox::Warning, QStringLiteral("An error occurred"), QStringLiteral("File open failed."));
    QCOMPARE(closer.seen.count, 1);
    QCOMPARE(closer.seen.title, QStringLiteral("An error occurred"));
    QCOMPARE(closer.seen.text, QStringLiteral("File open failed."));
    QCOMPARE(closer.seen.button, QStringLiteral("Close"));
    QCOMPARE(closer.seen.icon, QMessageBox::Warning);
}

void TstNoticeBox::markupInAPathIsShownAsItStands()
{
    int width = 0;
    const QString path = QStringLiteral("/tmp/<b>a</b>.cxdat");
    DialogDriver<QMessageBox> driver([&width](QMessageBox &box) {
        QCOMPARE(box.textFormat(), Qt::PlainText);
        width = textOf(box)->contentsRect().width();
        QVERIFY(width >= textOf(box)->fontMetrics().horizontalAdvance(box.text()));
    });
    showNotice(nullptr, QMessageBox::Warning, QString(), path);
    QVERIFY(width > 0);
}

void TstNoticeBox::aLineStaysWholeAtEveryScale_data()
{
    QTest::addColumn<int>("dpi");
    for (const int dpi : {96, 120, 144}) { // the screen of the tests is 800 pixels wide
        QTest::addRow("%d dpi", dpi) << dpi;
    }
}

void TstNoticeBox::aLineStaysWholeAtEveryScale()
{
    QFETCH(int, dpi);
    QCOMPARE(linesShown(lines(3), dpi), 1);
    QCOMPARE(linesShown(lines(3) + QStringLiteral("\r\n") + lines(3), dpi), 2);
}

void TstNoticeBox::aLongTextWraps()
{
    QFETCH(int, dpi);
    int width = 0;
    QVERIFY(linesShown(lines(5), dpi, &width) >= 2);
    QVERIFY2(width >= dp(400) && width < dp(500), qPrintable(QString::number(width)));
    QVERIFY(linesShown(lines(20), dpi, &width) >= 3);
    QVERIFY2(width >= dp(400) && width < dp(500), qPrintable(QString::number(width)));
}

void TstNoticeBox::aShortTextMakesASmallBox()
{
    int width = 0;
    QCOMPARE(linesShown(QStringLiteral("File"), 144, &width), 1);
    QVERIFY2(width < dp(200), qPrintable(QString::number(width)));
}

LUX_GUI_TEST(TstNoticeBox)
#include "tst_NoticeBox.moc"

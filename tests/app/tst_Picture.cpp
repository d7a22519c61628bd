// The view as a picture: in a file, as PNG and SVG, and in the clipboard.

#include "app/MenuDesk.h"
#include "app/PictureWriter.h"
#include "app/ViewPicture.h"
#include "wave/MainView.h"
#include "wave/TimeView.h"
#include "wave/WaveView.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QSvgRenderer>
#include <QXmlStreamReader>

#include <atomic>

namespace {

/// By how much two pictures of one size differ at most in a colour: gradients are rounded by their place.
int differenceOf(const QImage &a, const QImage &b)
{
    int most = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            most = std::max(
                {most, std::abs(qRed(p) - qRed(q)), std::abs(qGreen(p) - qGreen(q)), std::abs(qBlue(p) - qBlue(q))});
        }
    }
    return most;
}

} // namespace

class TstPicture : public QObject, private MenuDesk {
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void thePictureIsWhatTheWindowShows();
    void theEntryWritesThePictureAndTellsIt_data();
    void theEntryWritesThePictureAndTellsIt();
    void theFilterOfTheDialogGivesTheSuffix();
    void aDrawingHoldsTheNamesAndTimesAsText();
    void aDrawingLooksAsTheViewDoes();
    void aDenseViewStaysASmallDrawing();
    void rowsThatAreScrolledUpDoNotCoverTheRuler();
    void anEarlierPictureStaysIfANewOneFails();
    void aPictureThatFailedIsTold();
    void theEndWaitsForAPicture();
    void aPictureThatIsEndedLeavesNothing();
    void aKeyCopiesThePicture();
    void aFieldKeepsTheKeyForItsText();

private:
    [[nodiscard]] ViewPicture view() const { return m_menu->viewPicture(); }
    /// Writes the view and waits for it.
    FileOutcome write(const QString &path, bool asShapes);
    [[nodiscard]] QStringList textsOf(const QString &svg) const;
    /// Where the waves begin in the picture.
    [[nodiscard]] QPoint waves() const
    {
        auto *rows = m_window->findChild<WaveView *>();
        const QWidget *ruler = m_window->findChild<TimeView *>();
        return rows->mapTo(m_window.get(), QPoint()) - QPoint(m_window->findChild<MainView *>()->x(), ruler->y());
    }
};

void TstPicture::init()
{
    setUpMenu(8);
    capture();
    m_window->slotToolbarZoomChanged(QStringLiteral("All"));
    QTRY_VERIFY(!m_gen->digLine(0).empty());
}

void TstPicture::cleanup()
{
    tearDownMenu();
}

FileOutcome TstPicture::write(const QString &path, bool asShapes)
{
    PictureWriter writer;
    FileOutcome ended{FileResult::Cancelled};
    bool done = false;
    connect(&writer, &PictureWriter::sigWritten, this, [&](const QString &, const FileOutcome &outcome) {
        ended = outcome;
        done = true;
    });
    if (asShapes) {
        writer.writeSvg(path, {view().shapes(), view().size(), m_window->logicalDpiX(), QStringLiteral("a <title>")});
    } else {
        writer.writePng(path, view().image());
    }
    return QTest::qWaitFor([&done] { return done; }, 30000) ? ended : FileOutcome{FileResult::Failed};
}

QStringList TstPicture::textsOf(const QString &svg) const
{
    QStringList texts;
    QXmlStreamReader xml(bytesOf(svg));
    while (!xml.atEnd()) {
        if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("text")) {
            texts += xml.readElementText().trimmed();
        }
    }
    return xml.hasError() ? QStringList() : texts;
}

void TstPicture::thePictureIsWhatTheWindowShows()
{
    const QImage picture = view().image();
    const auto *ruler = m_window->findChild<TimeView *>();
    const auto *rows = m_window->findChild<MainView *>();
    const QRect place = ruler->geometry().united(rows->geometry());
    QCOMPARE(picture.size(), place.size());
    const QImage shown = m_window->grab().toImage().convertToFormat(picture.format());
    for (const QWidget *widget : {static_cast<const QWidget *>(ruler), static_cast<const QWidget *>(rows)}) {
        const QPoint moved = widget->pos() - place.topLeft();
        QVERIFY(differenceOf(picture.copy(QRect(moved, widget->size())), shown.copy(widget->geometry())) <= 1);
    }
}

void TstPicture::theEntryWritesThePictureAndTellsIt_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("begin");
    QTest::newRow("png") << QStringLiteral("view.png") << QByteArray("\x89PNG");
    QTest::newRow("svg") << QStringLiteral("view.svg") << QByteArray("<?xml");
    QTest::newRow("svg in capitals") << QStringLiteral("view.SVG") << QByteArray("<?xml");
    QTest::newRow("no suffix") << QStringLiteral("view") << QByteArray("\x89PNG");
}

void TstPicture::theEntryWritesThePictureAndTellsIt()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, begin);
    m_path = m_dir->filePath(name);
    QString told;
    connect(m_menu, &MainMenu::fileTold, this, [&told](const QString &text) { told = text; });
    m_menu->actSavePicture();
    QTRY_VERIFY(!told.isEmpty());
    const QString written = name.contains(QLatin1Char('.')) ? name : name + QStringLiteral(".png");
    QCOMPARE(told, QStringLiteral("Saved: ") + written);
    QVERIFY(bytesOf(m_dir->filePath(written)).startsWith(begin));
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList(written)); // no part is left
}

void TstPicture::theFilterOfTheDialogGivesTheSuffix()
{
    m_files = std::make_unique<DialogDriver<QFileDialog>>([](QFileDialog &dialog) {
        QCOMPARE(dialog.nameFilters(),
                 QStringList({QStringLiteral("PNG picture (*.png)"), QStringLiteral("SVG drawing (*.svg)")}));
        dialog.selectNameFilter(dialog.nameFilters().at(1));
        emit dialog.filterSelected(dialog.nameFilters().at(1)); // as the list does when it is used
        chooseFile(dialog, QString());
    });
    QCOMPARE(m_menu->saveFileDialog(5), m_dir->filePath(QStringLiteral("2026-03-09_07-05-01.svg")));
}

void TstPicture::aDrawingHoldsTheNamesAndTimesAsText()
{
    const QString file = path("view.svg");
    QVERIFY(write(file, true).isDone());
    const QStringList texts = textsOf(file);
    for (const char *text : {"Channel 0", "Channel 7", "0", "+100us", "+900us"}) {
        QVERIFY2(texts.contains(QLatin1String(text)), text);
    }
    QVERIFY(bytesOf(file).contains("<title>a &lt;title&gt;</title>"));
}

void TstPicture::aDrawingLooksAsTheViewDoes()
{
    const QString file = path("view.svg");
    QVERIFY(write(file, true).isDone());
    QSvgRenderer renderer(file);
    QVERIFY(renderer.isValid());
    QCOMPARE(renderer.viewBox(), QRect(QPoint(), view().size()));
    QImage drawn(view().size(), QImage::Format_RGB32);
    drawn.fill(Qt::white);
    QPainter painter(&drawn);
    renderer.render(&painter);
    painter.end();
    const QImage picture = view().image();
    int same = 0;
    int all = 0;
    // The waves alone: texts may differ by what a renderer does at their borders.
    for (int y = waves().y(); y < picture.height(); ++y) {
        for (int x = waves().x(); x < picture.width() - dp(12); ++x) {
            same += int(qAbs(qGray(drawn.pixel(x, y)) - qGray(picture.pixel(x, y))) < 8);
            ++all;
        }
    }
    QVERIFY2(same > all * 0.995, qPrintable(QStringLiteral("%1 of %2").arg(same).arg(all)));
}

void TstPicture::aDenseViewStaysASmallDrawing()
{
    CaptureBuilder{1000000, 100000000, 3}.fill(*gDev->smpData);
    emit gDev->sigSmpDataReady();
    m_window->slotToolbarZoomChanged(QStringLiteral("All"));
    const QString file = path("dense.svg");
    QVERIFY(write(file, true).isDone());
    QVERIFY(QFileInfo(file).size() < 2'000'000);
    QVERIFY(!bytesOf(file).contains("<pattern"));
}

void TstPicture::rowsThatAreScrolledUpDoNotCoverTheRuler()
{
    auto *bar = m_window->findChild<WaveView *>()->verticalScrollBar();
    bar->setValue(bar->maximum());
    QVERIFY(bar->value() > 0);
    const QString file = path("scrolled.svg");
    QVERIFY(write(file, true).isDone());
    QImage drawn(view().size(), QImage::Format_RGB32);
    QPainter painter(&drawn);
    QSvgRenderer(file).render(&painter);
    painter.end();
    const int middle = drawn.width() / 2;
    const int ruler = m_window->findChild<TimeView *>()->height();
    QCOMPARE(drawn.pixel(middle, ruler - dp(3)), view().image().pixel(middle, ruler - dp(3)));
    QCOMPARE(drawn.pixel(dp(5), ruler / 2), gGreys.at(5).rgb());
}

void TstPicture::anEarlierPictureStaysIfANewOneFails()
{
    const QString file = path("view.png");
    QVERIFY(write(file, false).isDone());
    const QByteArray before = bytesOf(file);
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
    const FileOutcome outcome = write(file, false);
    QVERIFY(QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(outcome.result == FileResult::NoRights || outcome.isDone()); // root may write all the same
    QCOMPARE(bytesOf(file), before);
    QCOMPARE(write(path("none/view.png"), true).result, FileResult::NoFolder);
}

void TstPicture::aPictureThatFailedIsTold()
{
    m_path = path("view.png");
    QVERIFY(QDir().mkpath(m_path + QStringLiteral("/folder")));
    m_files = std::make_unique<DialogDriver<QFileDialog>>([](QFileDialog &dialog) { dialog.reject(); });
    m_menu->actSavePicture(); // cancelled: nothing is written, and nothing told
    QCOMPARE(m_boxes->seen.count, 0);
    QCOMPARE(write(m_path, false).result, FileResult::NotPlain);
    auto *writer = m_menu->findChild<PictureWriter *>();
    writer->writePng(m_path, view().image());
    QTRY_COMPARE(m_boxes->seen.count, 1);
    QVERIFY(m_boxes->seen.text.startsWith(QStringLiteral("File save failed.")));
}

void TstPicture::theEndWaitsForAPicture()
{
    const QString file = path("last.svg");
    {
        PictureWriter writer;
        writer.writeSvg(file, {view().shapes(), view().size(), 96, QString()});
    }
    QVERIFY(bytesOf(file).trimmed().endsWith("</svg>"));
}

void TstPicture::aPictureThatIsEndedLeavesNothing()
{
    const QString file = path("ended.png");
    FileOutcome ended;
    PictureWriter writer;
    std::atomic<int> pieces{0};
    writer.mayGoOn = [&pieces] { return ++pieces < 3; };
    connect(&writer, &PictureWriter::sigWritten, this, [&](const QString &, const FileOutcome &o) { ended = o; });
    QImage noise(1000, 1000, QImage::Format_RGB32);
    std::uint32_t random = 1;
    for (int y = 0; y < noise.height(); ++y) {
        for (int x = 0; x < noise.width(); ++x) {
            random = random * 1664525 + 1013904223;
            noise.setPixel(x, y, random >> 8);
        }
    }
    writer.writePng(file, noise);
    QTRY_COMPARE_WITH_TIMEOUT(ended.result, FileResult::Cancelled, 30000);
    const QFileInfo info(file);
    QCOMPARE(info.dir().entryList({info.fileName() + QLatin1Char('*')}, QDir::Files), QStringList());
}

void TstPicture::aKeyCopiesThePicture()
{
    QApplication::clipboard()->clear();
    QString told;
    connect(m_menu, &MainMenu::fileTold, this, [&told](const QString &text) { told = text; });
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    auto *waves = m_window->findChild<WaveView *>();
    waves->setFocus();
    QTest::keyClick(waves, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->image().size(), view().size());
    QCOMPARE(told, QStringLiteral("The picture has been copied."));
}

void TstPicture::aFieldKeepsTheKeyForItsText()
{
    QApplication::clipboard()->clear();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    auto *name = m_window->findChild<MainView *>()->findChild<QLineEdit *>();
    name->setFocus();
    name->selectAll();
    QTest::keyClick(name, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), name->text());
    QVERIFY(QApplication::clipboard()->image().isNull());
}

LUX_GUI_TEST(TstPicture)
#include "tst_Picture.moc"

// The files that a desktop and a package manager read: whether they agree with the code, with each other and with the
// program's version.

#include "device/UsbIds.h"

#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QImage>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

namespace {

QString textOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString packagingText(const char *name)
{
    return textOf(QStringLiteral(LUX_PACKAGING_DIR "/") + QLatin1String(name));
}

QString builtText(const char *name)
{
    return textOf(QStringLiteral(LUX_PACKAGING_BUILD_DIR "/") + QLatin1String(name));
}

QDomElement metainfo()
{
    QDomDocument document;
    return document.setContent(builtText("org.corvanlux.corvanlux.metainfo.xml")) ? document.documentElement()
                                                                                  : QDomElement();
}

/// The texts of the children `tag` of `parent`.
QSet<QString> textsOf(const QDomElement &parent, const QString &tag)
{
    QSet<QString> texts;
    for (QDomElement e = parent.firstChildElement(tag); !e.isNull(); e = e.nextSiblingElement(tag)) {
        texts.insert(e.text());
    }
    return texts;
}

QSet<QString> capturesIn(const QString &text, const QString &pattern)
{
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    QSet<QString> found;
    for (auto match = expression.globalMatch(text); match.hasNext();) {
        found.insert(match.next().captured(1));
    }
    return found;
}

QString firstCapture(const QString &text, const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::MultilineOption).match(text).captured(1);
}

QSet<QString> describedTypes()
{
    return capturesIn(packagingText("corvanlux.xml"), QStringLiteral("<mime-type type=\"([^\"]+)\""));
}

} // namespace

class TstPackaging : public QObject {
    Q_OBJECT
private slots:
    void theMetadataNameEveryProductOfTheTable();
    void whoStartsTheProgramFromTheSourcesHasItsDecoders();
    void menuEntryAndMetadataNameTheDescribedFileTypes();
    void theDescribedSuffixesAreThoseOfThePrograms();
    void theVersionIsThatOfTheProgramEverywhere();
    void theReleaseHasOneDate();
    void noPlaceholderIsLeft();
    void everyIconHasTheSizeOfItsFolderAndAHeartAndClearCorners_data();
    void everyIconHasTheSizeOfItsFolderAndAHeartAndClearCorners();
    void everyIconHasADrawingForLargerSizes();
    void theManualTellsEveryOptionOfTheEmulator();
    void theLinksOfTheInstalledDocumentsLeadToInstalledOnes();
};

void TstPackaging::theMetadataNameEveryProductOfTheTable()
{
    QSet<QString> expected;
    for (const std::uint16_t product : usbProductIds) {
        expected.insert(QStringLiteral("usb:v%1p%2d*")
                            .arg(usbVendorId, 4, 16, QLatin1Char('0'))
                            .arg(product, 4, 16, QLatin1Char('0'))
                            .toUpper()
                            .replace(QStringLiteral("USB:V"), QStringLiteral("usb:v"))
                            .replace(QLatin1Char('P'), QLatin1Char('p'))
                            .replace(QStringLiteral("D*"), QStringLiteral("d*")));
    }
    QCOMPARE(textsOf(metainfo().firstChildElement(QStringLiteral("provides")), QStringLiteral("modalias")), expected);
}

void TstPackaging::whoStartsTheProgramFromTheSourcesHasItsDecoders()
{
    const QString targets =
        firstCapture(textOf(QStringLiteral(LUX_ROOT_DIR "/scripts/run")), QStringLiteral("^build .*--target (.*)$"));
    for (const char *target : {"corvanlux", "decoders", "luxcli"}) {
        QVERIFY2(targets.split(QLatin1Char(' ')).contains(QLatin1String(target)), target);
    }
}

void TstPackaging::menuEntryAndMetadataNameTheDescribedFileTypes()
{
    QCOMPARE(describedTypes().size(), 2);
    const QStringList ofEntry = firstCapture(packagingText("corvanlux.desktop"), QStringLiteral("^MimeType=(.*)$"))
                                    .split(QLatin1Char(';'), Qt::SkipEmptyParts);
    QCOMPARE(QSet<QString>(ofEntry.cbegin(), ofEntry.cend()), describedTypes());
    QCOMPARE(textsOf(metainfo().firstChildElement(QStringLiteral("provides")), QStringLiteral("mediatype")),
             describedTypes());
}

void TstPackaging::theDescribedSuffixesAreThoseOfThePrograms()
{
    const QString code = textOf(QStringLiteral(LUX_ROOT_DIR "/src/settings/Globals.cpp"));
    const QSet<QString> opened = capturesIn(code, QStringLiteral("suffix == QLatin1String\\(\"(\\w+)\"\\)"));
    QCOMPARE(opened.size(), 2);
    QCOMPARE(capturesIn(packagingText("corvanlux.xml"), QStringLiteral("<glob pattern=\"\\*\\.(\\w+)\"")), opened);
}

void TstPackaging::theVersionIsThatOfTheProgramEverywhere()
{
    const QString version = QStringLiteral(LUX_VERSION);
    QCOMPARE(firstCapture(builtText("debian/changelog"), QStringLiteral("^corvanlux \\(([\\d.]+)-")), version);
    const QDomElement release =
        metainfo().firstChildElement(QStringLiteral("releases")).firstChildElement(QStringLiteral("release"));
    QCOMPARE(release.attribute(QStringLiteral("version")), version);
    for (const char *page : {"man/corvanlux.1", "man/corvanlux-emulator.1"}) {
        QCOMPARE(firstCapture(builtText(page), QStringLiteral("^\\.TH .*\"CorvanLUX ([\\d.]+)\"")), version);
    }
}

void TstPackaging::theReleaseHasOneDate()
{
    const QDomElement release =
        metainfo().firstChildElement(QStringLiteral("releases")).firstChildElement(QStringLiteral("release"));
    const QDate date = QDate::fromString(release.attribute(QStringLiteral("date")), Qt::ISODate);
    QVERIFY(date.isValid());
    const QString line = firstCapture(builtText("debian/changelog"), QStringLiteral("^ -- .*>  (.*)$"));
    // With the right day of the week, which Qt compares.
    const QDate ofPackage = QLocale::c().toDateTime(line.left(25), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss")).date();
    QCOMPARE(ofPackage, date);
    for (const char *page : {"man/corvanlux.1", "man/corvanlux-emulator.1"}) {
        QCOMPARE(firstCapture(builtText(page), QStringLiteral("^\\.TH \\S+ 1 \"([^\"]*)\"")),
                 date.toString(Qt::ISODate));
    }
}

void TstPackaging::noPlaceholderIsLeft()
{
    for (const char *name :
         {"man/corvanlux.1", "man/corvanlux-emulator.1", "debian/changelog", "org.corvanlux.corvanlux.metainfo.xml"}) {
        const QString text = builtText(name);
        QVERIFY2(!text.isEmpty(), name);
        QVERIFY2(capturesIn(text, QStringLiteral("(@[A-Z_]+@)")).isEmpty(), name);
    }
}

void TstPackaging::everyIconHasTheSizeOfItsFolderAndAHeartAndClearCorners_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("size");
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        for (const char *name : {"apps/corvanlux", "mimetypes/application-x-corvanlux-data",
                                 "mimetypes/application-x-corvanlux-settings"}) {
            const QString path = QStringLiteral("%1x%1/%2.png").arg(size).arg(QLatin1String(name));
            QTest::newRow(qPrintable(path)) << path << size;
        }
    }
}

void TstPackaging::everyIconHasTheSizeOfItsFolderAndAHeartAndClearCorners()
{
    QFETCH(QString, path);
    QFETCH(int, size);
    const QImage image(QStringLiteral(LUX_PACKAGING_DIR "/icons/hicolor/") + path);
    QCOMPARE(image.size(), QSize(size, size));
    QVERIFY(qAlpha(image.pixel(0, 0)) < 128 && qAlpha(image.pixel(size - 1, size - 1)) < 128);
    QVERIFY(qAlpha(image.pixel(size / 2, size / 2)) == 255);
    // The orange of the trigger line is what the three have in common.
    int orange = 0;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const QColor colour = image.pixelColor(x, y);
            orange += colour.alpha() == 255 && colour.red() > 200 && colour.green() < 120 && colour.blue() < 80 ? 1 : 0;
        }
    }
    QVERIFY2(orange * 100 >= size * size, qPrintable(QString::number(orange)));
}

void TstPackaging::everyIconHasADrawingForLargerSizes()
{
    for (const char *drawing : {"/src/res/images/logo.svg", "/packaging/icons/application-x-corvanlux-data.svg",
                                "/packaging/icons/application-x-corvanlux-settings.svg"}) {
        QDomDocument document;
        QVERIFY2(document.setContent(textOf(QStringLiteral(LUX_ROOT_DIR) + QLatin1String(drawing))), drawing);
        QCOMPARE(document.documentElement().tagName(), QStringLiteral("svg"));
    }
}

void TstPackaging::theManualTellsEveryOptionOfTheEmulator()
{
    QSet<QString> options;
    const QDir folder(QStringLiteral(LUX_ROOT_DIR "/emulator/usbip"));
    for (const QString &name : folder.entryList({QStringLiteral("*.cpp")})) {
        options.unite(capturesIn(textOf(folder.filePath(name)), QStringLiteral("\"(--[a-z-]+)\"")));
    }
    QVERIFY(options.size() >= 8);
    const QString page = builtText("man/corvanlux-emulator.1").remove(QLatin1Char('\\'));
    const QSet<QString> told = capturesIn(page, QStringLiteral("^\\.BI? (--[a-z-]+)"));
    QCOMPARE(told, options);
}

void TstPackaging::theLinksOfTheInstalledDocumentsLeadToInstalledOnes()
{
    const QDir docs(QStringLiteral(LUX_ROOT_DIR "/docs"));
    const QStringList installed{QStringLiteral("emulator.md"), QStringLiteral("formats.md"), QStringLiteral("guide.md"),
                                QStringLiteral("luxcli.md")};
    for (const QString &name : installed) {
        const QSet<QString> links = capturesIn(textOf(docs.filePath(name)), QStringLiteral("\\]\\(([^)\\s#]+)"));
        for (const QString &link : links) {
            const bool isInstalled = installed.contains(link) || link.startsWith(QStringLiteral("decoders/")) ||
                                     link.startsWith(QStringLiteral("pictures/"));
            QVERIFY2(isInstalled || link.contains(QStringLiteral("://")),
                     qPrintable(name + QStringLiteral(": ") + link));
        }
    }
}

QTEST_GUILESS_MAIN(TstPackaging)
#include "tst_Packaging.moc"

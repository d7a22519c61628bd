// The types of the program's files, as a desktop reads them: from the package's own description, beside the system's.

#include "files/DataFile.h"
#include "settings/Config.h"
#include "store/SmpData.h"
#include "support/CaptureBuilder.h"

#include <QDir>
#include <QMimeDatabase>
#include <QTemporaryDir>
#include <QtTest>

#include <vector>

namespace {

const QString dataType = QStringLiteral("application/x-corvanlux-data");
const QString settingsType = QStringLiteral("application/x-corvanlux-settings");

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString typeOfBytes(const QByteArray &bytes)
{
    return QMimeDatabase().mimeTypeForData(bytes).name();
}

} // namespace

class TstMimeTypes : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void aSavedCaptureIsRecognisedByItsNameAndByItsContent();
    void aSavedCaptureIsRecognisedWithTheLineEndsOfOtherSystems();
    void aCaptureIsRecognisedAsFarAsItsSettingsMayReach();
    void savedSettingsAreRecognisedByTheirNameAlone();
    void neitherTypeClaimsWhatOnlyLooksLikeIt_data();
    void neitherTypeClaimsWhatOnlyLooksLikeIt();
    void bothTypesHaveACommentAndAnIconOfTheirOwn();

private:
    QTemporaryDir m_system; ///< data folder of a desktop on which only this package is installed
    QTemporaryDir m_folder;
    QByteArray m_capture; ///< a data file as the program writes it
};

void TstMimeTypes::initTestCase()
{
    const QDir system(m_system.path());
    QVERIFY(system.mkpath(QStringLiteral("mime/packages")));
    QVERIFY(QFile::copy(QStringLiteral(LUX_PACKAGING_DIR "/corvanlux.xml"),
                        system.filePath(QStringLiteral("mime/packages/corvanlux.xml"))));
    // Before the first look-up, after which the database is read.
    qputenv("XDG_DATA_DIRS", m_system.path().toUtf8());
    qputenv("XDG_DATA_HOME", m_folder.filePath(QStringLiteral("home")).toUtf8());
}

void TstMimeTypes::init()
{
    const QString path = m_folder.filePath(QStringLiteral("capture.cxdat"));
    configLoad();
    QVERIFY(configSave(path));
    SmpData data(16, 0);
    CaptureBuilder().fill(data);
    const std::vector<std::uint8_t> select(16, 1);
    DataFile file(&data);
    file.chnSelect = select.data();
    file.setRange(0, double(data.smpCount()));
    file.file.setFileName(path);
    QVERIFY(file.file.open(QIODevice::Append) && file.saveData());
    file.file.close();
    m_capture = contentOf(path);
    QVERIFY(m_capture.contains("cxdat"));
}

void TstMimeTypes::aSavedCaptureIsRecognisedByItsNameAndByItsContent()
{
    const QString path = m_folder.filePath(QStringLiteral("capture.cxdat"));
    QCOMPARE(QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchExtension).name(), dataType);
    QCOMPARE(typeOfBytes(m_capture), dataType);
    const QString bare = m_folder.filePath(QStringLiteral("without-a-suffix"));
    QVERIFY(QFile::rename(path, bare));
    QCOMPARE(QMimeDatabase().mimeTypeForFile(bare).name(), dataType);
    QVERIFY(QFile::remove(bare));
}

void TstMimeTypes::aSavedCaptureIsRecognisedWithTheLineEndsOfOtherSystems()
{
    const int head = m_capture.indexOf("</settings>") + int(strlen("</settings>"));
    const int behind = m_capture.indexOf("cxdat", head);
    const QByteArray settings = m_capture.left(behind).replace("\r\n", "\n");
    const QByteArray rest = m_capture.mid(behind);
    QCOMPARE(typeOfBytes(settings + rest), dataType);
    QCOMPARE(typeOfBytes(QByteArray(settings).replace("\n", "\r\n") + rest), dataType);
}

void TstMimeTypes::aCaptureIsRecognisedAsFarAsItsSettingsMayReach()
{
    // The settings end within the first 32,768 bytes, or the program does not open the file.
    const int end = m_capture.indexOf("</settings>");
    const int longest = 32768 - int(strlen("</settings>"));
    QVERIFY(end > 0 && end < longest);
    const auto padded = [&](int length) {
        return m_capture.left(end) + QByteArray(length - end, ' ') + m_capture.mid(end);
    };
    QCOMPARE(typeOfBytes(padded(longest)), dataType);
    QVERIFY(typeOfBytes(padded(longest + 1)) != dataType);
}

void TstMimeTypes::savedSettingsAreRecognisedByTheirNameAlone()
{
    const QString path = m_folder.filePath(QStringLiteral("mine.cxset"));
    QVERIFY(configSave(path));
    QCOMPARE(QMimeDatabase().mimeTypeForFile(path).name(), settingsType);
    QVERIFY(QMimeDatabase().mimeTypeForFile(path).inherits(QStringLiteral("application/xml")));
    QVERIFY(typeOfBytes(contentOf(path)) != settingsType);
}

void TstMimeTypes::neitherTypeClaimsWhatOnlyLooksLikeIt_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("settings of others") << QByteArray("<?xml version=\"1.0\"?>\n<settings>\n<mirrors/></settings>\n");
    QTest::newRow("the head alone") << QByteArray("cxdat\0\0\0", 8);
    QTest::newRow("the word in a text") << QByteArray("<?xml version=\"1.0\"?>\n<a>cxdat</a>\n");
    QTest::newRow("no XML before it") << QByteArray("</settings>\ncxdat\0\0\0", 20);
}

void TstMimeTypes::neitherTypeClaimsWhatOnlyLooksLikeIt()
{
    QFETCH(QByteArray, bytes);
    const QString type = typeOfBytes(bytes);
    QVERIFY2(type != dataType && type != settingsType, qPrintable(type));
}

void TstMimeTypes::bothTypesHaveACommentAndAnIconOfTheirOwn()
{
    for (const QString &name : {dataType, settingsType}) {
        const QMimeType type = QMimeDatabase().mimeTypeForName(name);
        QVERIFY2(type.isValid(), qPrintable(name));
        QVERIFY(type.comment().startsWith(QStringLiteral("CorvanLUX")));
        QCOMPARE(type.iconName(), QString(name).replace(QLatin1Char('/'), QLatin1Char('-')));
        const QString icon =
            QStringLiteral(LUX_PACKAGING_DIR "/icons/hicolor/48x48/mimetypes/%1.png").arg(type.iconName());
        QVERIFY2(QFileInfo::exists(icon), qPrintable(icon));
    }
}

QTEST_GUILESS_MAIN(TstMimeTypes)
#include "tst_MimeTypes.moc"

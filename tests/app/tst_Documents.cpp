// What the documents for users and developers promise and no compiler checks: their links, their pictures, and the
// messages that they quote.

#include "support/SourceText.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>
#include <QStringList>
#include <QtTest>

namespace {

constexpr qint64 pictureLimit = 100'000; // bytes: they are part of every checkout

QString rootPath(const QString &path)
{
    return QStringLiteral(LUX_ROOT_DIR "/") + path;
}

QString textOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QStringList documents()
{
    QStringList paths;
    for (const QString &folder :
         {QStringLiteral("."), QStringLiteral("docs"), QStringLiteral("docs/adr"), QStringLiteral("docs/decoders")}) {
        const QFileInfoList files =
            QDir(rootPath(folder)).entryInfoList({QStringLiteral("*.md")}, QDir::Files, QDir::Name);
        for (const QFileInfo &file : files) {
            paths.append(file.absoluteFilePath());
        }
    }
    return paths;
}

/// The targets of a document's links and pictures, without those of the net.
QStringList targetsIn(const QString &text)
{
    static const QRegularExpression link(QStringLiteral("\\]\\(([^)\\s]+)\\)"));
    QStringList targets;
    for (auto match = link.globalMatch(text); match.hasNext();) {
        const QString target = match.next().captured(1);
        if (!target.contains(QStringLiteral("://"))) {
            targets.append(target);
        }
    }
    return targets;
}

/// The anchors of a document's headings, as the usual viewers make them.
QSet<QString> anchorsOf(const QString &text)
{
    static const QRegularExpression heading(QStringLiteral("^#+ (.+)$"), QRegularExpression::MultilineOption);
    static const QRegularExpression dropped(QStringLiteral("[^\\w\\- ]"),
                                            QRegularExpression::UseUnicodePropertiesOption);
    QSet<QString> anchors;
    for (auto match = heading.globalMatch(text); match.hasNext();) {
        QString anchor = match.next().captured(1).trimmed().toLower().remove(dropped);
        anchors.insert(anchor.replace(QLatin1Char(' '), QLatin1Char('-')));
    }
    return anchors;
}

} // namespace

class TstDocuments : public QObject {
    Q_OBJECT
private slots:
    void everyLinkLeadsToAFileAndToAHeadingInIt();
    void aLinkToAHeadingThatIsMissingIsFound();
    void everyPictureIsShownSomewhereAndIsSmall();
    void everyDecoderHasAPageThatTheGuideLeadsTo();
    void everyMessageThatTheGuideExplainsIsOneOfTheProgram();
};

void TstDocuments::everyLinkLeadsToAFileAndToAHeadingInIt()
{
    QVERIFY(documents().size() > 5);
    QStringList broken;
    for (const QString &path : documents()) {
        for (const QString &target : targetsIn(textOf(path))) {
            const QString file = target.section(QLatin1Char('#'), 0, 0);
            const QString anchor = target.section(QLatin1Char('#'), 1);
            const QString to = file.isEmpty() ? path : QFileInfo(path).dir().filePath(file);
            if (!QFileInfo::exists(to) || (!anchor.isEmpty() && !anchorsOf(textOf(to)).contains(anchor))) {
                broken.append(path + QStringLiteral(": ") + target);
            }
        }
    }
    QVERIFY2(broken.isEmpty(), qPrintable(broken.join(QLatin1Char('\n'))));
}

void TstDocuments::aLinkToAHeadingThatIsMissingIsFound()
{
    const QSet<QString> anchors = anchorsOf(QStringLiteral("# One\ntext\n## Data files (.cxdat)\n"));
    QCOMPARE(anchors, (QSet<QString>{QStringLiteral("one"), QStringLiteral("data-files-cxdat")}));
    QCOMPARE(targetsIn(QStringLiteral("[a](b.md#c), ![d](e.png), [f](https://g)")),
             (QStringList{QStringLiteral("b.md#c"), QStringLiteral("e.png")}));
}

void TstDocuments::everyPictureIsShownSomewhereAndIsSmall()
{
    QSet<QString> shown;
    for (const QString &path : documents()) {
        for (const QString &target : targetsIn(textOf(path))) {
            shown.insert(QFileInfo(QFileInfo(path).dir().filePath(target)).canonicalFilePath());
        }
    }
    const QFileInfoList pictures = QDir(rootPath(QStringLiteral("docs/pictures"))).entryInfoList(QDir::Files);
    QVERIFY(!pictures.isEmpty());
    for (const QFileInfo &picture : pictures) {
        QVERIFY2(shown.contains(picture.canonicalFilePath()), qPrintable(picture.fileName()));
        QVERIFY2(picture.size() < pictureLimit, qPrintable(picture.fileName()));
    }
}

void TstDocuments::everyDecoderHasAPageThatTheGuideLeadsTo()
{
    const QFileInfoList pages =
        QDir(rootPath(QStringLiteral("docs/decoders"))).entryInfoList({QStringLiteral("*.md")}, QDir::Files);
    const QStringList targets = targetsIn(textOf(rootPath(QStringLiteral("docs/guide.md"))));
    QString told;
    for (const QFileInfo &page : pages) {
        QVERIFY2(targets.contains(QStringLiteral("decoders/") + page.fileName()), qPrintable(page.fileName()));
        told += textOf(page.absoluteFilePath());
    }
    int decoders = 0;
    const QFileInfoList folders =
        QDir(rootPath(QStringLiteral("decoders"))).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QFileInfo &folder : folders) {
        if (QFileInfo::exists(folder.absoluteFilePath() + QStringLiteral("/README.md"))) {
            const QString readme = QStringLiteral("`decoders/%1/README.md`").arg(folder.fileName());
            QVERIFY2(told.contains(readme), qPrintable(readme));
            ++decoders;
        }
    }
    QCOMPARE(pages.size(), decoders);
}

void TstDocuments::everyMessageThatTheGuideExplainsIsOneOfTheProgram()
{
    QString code;
    const Sources sources = readSources(rootPath(QStringLiteral("src")));
    for (const QString &text : sources) {
        code += text;
    }
    static const QRegularExpression row(QStringLiteral("^\\| (\"[^\"]+\") \\|"), QRegularExpression::MultilineOption);
    const QString guide = textOf(rootPath(QStringLiteral("docs/guide.md")));
    int found = 0;
    for (auto match = row.globalMatch(guide.mid(guide.indexOf(QStringLiteral("| Message |")))); match.hasNext();) {
        const QString message = match.next().captured(1);
        QVERIFY2(code.contains(QStringLiteral("tr(") + message), qPrintable(message));
        ++found;
    }
    QVERIFY(found >= 5);
}

QTEST_GUILESS_MAIN(TstDocuments)
#include "tst_Documents.moc"

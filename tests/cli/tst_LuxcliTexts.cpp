// The program's own help against what is told of it elsewhere: the manual page, the page of the documents and bash's
// completion.

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

namespace {

QString textOf(const char *path)
{
    QFile file(QString::fromLatin1(path));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString answer(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(30000) && process.exitCode() == 0
               ? QString::fromUtf8(process.readAllStandardOutput())
               : QString();
}

QStringList commands()
{
    static const QRegularExpression line(QStringLiteral("^  ([a-z]+) +[a-z]"), QRegularExpression::MultilineOption);
    QStringList found;
    for (auto match = line.globalMatch(answer(QStringLiteral(LUXCLI), {QStringLiteral("--help")})); match.hasNext();)
        found.append(match.next().captured(1));
    return found;
}

QSet<QString> optionsIn(const QString &text)
{
    static const QRegularExpression word(QStringLiteral("--[a-z][a-z-]*"));
    QSet<QString> found;
    for (auto match = word.globalMatch(text); match.hasNext();)
        found.insert(match.next().captured());
    return found;
}

} // namespace

class TstLuxcliTexts : public QObject {
    Q_OBJECT
private slots:
    void theManualAndTheDocumentNameEachCommand();
    void theManualNamesEachOption();
    void theCompletionOffersEachCommandAndOption();
};

void TstLuxcliTexts::theManualAndTheDocumentNameEachCommand()
{
    const QStringList all = commands();
    QVERIFY(all.size() >= 9);
    const QString manual = textOf(LUX_ROOT_DIR "/packaging/man/luxcli.1.in");
    const QString document = textOf(LUX_ROOT_DIR "/docs/luxcli.md");
    for (const QString &command : all) {
        QVERIFY2(manual.contains(QStringLiteral(".SS luxcli ") + command), qPrintable(command));
        QVERIFY2(document.contains(QStringLiteral("luxcli ") + command), qPrintable(command));
    }
}

void TstLuxcliTexts::theManualNamesEachOption()
{
    QString manual = textOf(LUX_ROOT_DIR "/packaging/man/luxcli.1.in");
    manual.replace(QStringLiteral("\\-"), QStringLiteral("-"));
    const QSet<QString> told = optionsIn(manual);
    for (const QString &command : commands()) {
        const QSet<QString> known = optionsIn(answer(QStringLiteral(LUXCLI), {command, QStringLiteral("--help")}));
        QVERIFY(known.contains(QStringLiteral("--help")));
        for (const QString &option : known)
            QVERIFY2(told.contains(option), qPrintable(command + QLatin1Char(' ') + option));
    }
}

void TstLuxcliTexts::theCompletionOffersEachCommandAndOption()
{
    const QString bash = QStandardPaths::findExecutable(QStringLiteral("bash"));
    if (bash.isEmpty())
        QSKIP("needs bash");
    const auto offered = [&bash](const QString &typed) {
        const QString script =
            QStringLiteral("source " LUX_ROOT_DIR "/packaging/bash/luxcli; COMP_WORDS=(luxcli %1); "
                           "COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _luxcli; echo \"${COMPREPLY[@]}\"")
                .arg(typed);
        const QStringList words =
            answer(bash, {QStringLiteral("-c"), script}).trimmed().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        return QSet<QString>(words.cbegin(), words.cend());
    };
    const QSet<QString> all = offered(QStringLiteral("''"));
    QCOMPARE(offered(QStringLiteral("de")), (QSet<QString>{QStringLiteral("decode"), QStringLiteral("devices")}));
    for (const QString &command : commands()) {
        QVERIFY2(all.contains(command), qPrintable(command));
        const QString help = answer(QStringLiteral(LUXCLI), {command, QStringLiteral("--help")});
        QCOMPARE(offered(command + QStringLiteral(" --")), optionsIn(help));
    }
    QCOMPARE(offered(QStringLiteral("capture -t 2 : r")), QSet<QString>{QStringLiteral("rising")});
}

QTEST_GUILESS_MAIN(TstLuxcliTexts)
#include "tst_LuxcliTexts.moc"

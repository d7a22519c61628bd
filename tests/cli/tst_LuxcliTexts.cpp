// The program's own help against what is told of it elsewhere: the manual page, the page of the documents and bash's
// completion.

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
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
    void theJobThatChecksABusFailsWhereItShould_data();
    void theJobThatChecksABusFailsWhereItShould();
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

void TstLuxcliTexts::theJobThatChecksABusFailsWhereItShould_data()
{
    QTest::addColumn<int>("captured"); // exit codes of the commands
    QTest::addColumn<int>("measured");
    QTest::addColumn<int>("acknowledged");
    QTest::addColumn<int>("compared");
    QTest::addColumn<int>("code"); // of the job
    QTest::newRow("all is well") << 0 << 0 << 1 << 0 << 0;
    QTest::newRow("no capture") << 1 << 0 << 1 << 0 << 1;
    QTest::newRow("another clock") << 0 << 3 << 1 << 0 << 3;
    QTest::newRow("nobody answers") << 0 << 0 << 0 << 0 << 1;
    QTest::newRow("other traffic") << 0 << 0 << 1 << 1 << 0;
}

/// The recipe of the document as it stands, with a program in luxcli's place that answers at once.
void TstLuxcliTexts::theJobThatChecksABusFailsWhereItShould()
{
#ifdef Q_OS_UNIX
    QFETCH(int, captured);
    QFETCH(int, measured);
    QFETCH(int, acknowledged);
    QFETCH(int, compared);
    const QTemporaryDir folder;
    const auto make = [&folder](const char *name, const QString &text) {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) == text.size() &&
               file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    };
    const QString document = textOf(LUX_ROOT_DIR "/docs/luxcli.md");
    const QString job = document.section(QStringLiteral("### A job of a CI"), 1).section(QStringLiteral("```\n"), 1, 1);
    QVERIFY(job.startsWith(QStringLiteral("#!/bin/sh -e\n")));
    const QString line = QStringLiteral(R"({"s":650,"e":1499,"k":"address","v":80,"rw":0,"ack":%1,"t":0.00006})");
    QVERIFY(make("job", job) && make("reset-board", QStringLiteral("#!/bin/sh\n")));
    QVERIFY(make("luxcli", QStringLiteral("#!/bin/sh\ncase $1 in\ncapture) exit %1;;\nmeasure) exit %2;;\n"
                                          "decode) echo '%3' >boot.jsonl;;\ndiff) exit %4;;\nesac\n")
                               .arg(captured)
                               .arg(measured)
                               .arg(line.arg(acknowledged))
                               .arg(compared)));
    QProcess process;
    process.setWorkingDirectory(folder.path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), folder.path() + QLatin1Char(':') + qEnvironmentVariable("PATH"));
    process.setProcessEnvironment(environment);
    process.start(folder.filePath(QStringLiteral("job")), QStringList());
    QVERIFY(process.waitForFinished(30000));
    QTEST(process.exitCode(), "code");
#else
    QSKIP("needs a shell");
#endif
}

QTEST_GUILESS_MAIN(TstLuxcliTexts)
#include "tst_LuxcliTexts.moc"

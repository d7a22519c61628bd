// What the program tells of decoders that do what they must not, and its exit code.

#include "cli/LuxcliRun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using luxcliRun::luxcli;
using luxcliRun::Outcome;

namespace {

const QByteArray doesNotStop = "luxcli: Lie: The decoder does not stop. It is out of use until it is started again.\n";

} // namespace

class TstLuxcliFaults : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void aStoredDecoderThatCannotBeMadeIsTold();
    void aStoredDecoderThatIsNotThereIsTold();
    void aDecoderThatCannotBeMadeIsNamedWithItsReason();
    void whatADecoderThrowsBehindItsRunIsToldOnceAndIsNoSuccess();
    void settingsThatThrowAreTold();
    void settingsThatAreRefusedWithoutAWordAreTold();
    void onlyADecoderThatIsPassedOverIsTriedAgain();
    void allTellsWhichFilesAreNoneAndWhy();
    void aDecoderDuringWhichTheProgramDiedIsPassedOverUntilItIsTriedAgain();
    void textsThatThrowAreToldAndAreNoSuccess();
    void aTextThatNeverEndsIsToldAndLeavesTheEarlierFile();
    void valuesThatNeverEndAreToldBehindTheLinesThatAreWhole();
    void anInterruptEndsTheProgramDuringATextThatNeverEnds();
    void theProgramEndsWithoutADecoderThatNeverLeaves();

private:
    void offer(const QStringList &plugins);
    [[nodiscard]] QString saved(const char *file, const QStringList &plugins) const;

    QTemporaryDir m_data; ///< the user's data folder
    FileFolder m_folder;
};

void TstLuxcliFaults::initTestCase()
{
#ifndef Q_OS_LINUX
    QSKIP("needs a data folder that the environment names");
#endif
    QVERIFY(m_data.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_data.path()));
}

/// Puts these of the tests' plug-ins, and no others, into the user's folder.
void TstLuxcliFaults::offer(const QStringList &plugins)
{
    QDir folder(m_data.filePath(QStringLiteral("corvan/Analyzer")));
    folder.removeRecursively();
    QVERIFY(folder.mkpath(QStringLiteral(".")));
    for (const QString &plugin : plugins) {
        const QString from = QStringLiteral(LUX_TEST_PLUGINS "/%1/%1.so").arg(plugin);
        QVERIFY(QFile::copy(from, folder.filePath(plugin + QStringLiteral(".so"))));
    }
}

/// A capture in which these decoders are stored. @return its path
QString TstLuxcliFaults::saved(const char *file, const QStringList &plugins) const
{
    QByteArray analyzers;
    for (int i = 0; i < plugins.size(); ++i) {
        const QByteArray item = "item" + QByteArray::number(i);
        analyzers += "<" + item + "><fileName>" + plugins.at(i).toLatin1() +
                     ".dll</fileName><parameters>0</parameters><format>2</format></" + item + ">";
    }
    CaptureBuilder builder(16);
    builder.samples(1000).channel(0, 0, {100, 300, 700});
    return luxcliRun::save(m_folder, QString::fromLatin1(file), builder, analyzers);
}

void TstLuxcliFaults::aStoredDecoderThatCannotBeMadeIsTold()
{
    offer({QStringLiteral("create-throws"), QStringLiteral("sound")});
    const QString both = saved("both.cxdat", {QStringLiteral("create-throws"), QStringLiteral("sound")});
    const Outcome outcome = luxcli("decode %1", both);
    QCOMPARE(outcome.err, QByteArray("luxcli: Lie: the plug-in threw\n"));
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.out.count('\n'), 4); // a head, and the frames of the other

    const Outcome alone = luxcli("decode %1", saved("alone.cxdat", {QStringLiteral("create-throws")}));
    QVERIFY2(alone.err.startsWith("luxcli: Lie: the plug-in threw\nluxcli: "), alone.err);
    QCOMPARE(alone.code, 1);
}

void TstLuxcliFaults::aStoredDecoderThatIsNotThereIsTold()
{
    offer({QStringLiteral("sound")});
    const QString gone = QStringLiteral("gone");
    const QString both = saved("both.cxdat", {gone, QStringLiteral("sound"), gone});
    const QByteArray told = "luxcli: " + both.toUtf8() + ": the decoder \"gone\" that is stored was not found\n";
    const Outcome outcome = luxcli("decode %1", both);
    QCOMPARE(outcome.err, told);
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.out.count('\n'), 4); // a head, and the frames of the other

    const Outcome named = luxcli("decode %1 -a sound:line=0", both);
    QCOMPARE(named.err, QByteArray());
    QCOMPARE(named.code, 0);

    const QString lonely = saved("alone.cxdat", {gone});
    const Outcome alone = luxcli("decode %1", lonely);
    QVERIFY2(alone.err.startsWith("luxcli: " + lonely.toUtf8() + ": the decoder \"gone\" that is stored"), alone.err);
    QCOMPARE(alone.code, 1);
}

void TstLuxcliFaults::aDecoderThatCannotBeMadeIsNamedWithItsReason()
{
    offer({QStringLiteral("create-throws")});
    const Outcome decoded = luxcli("decode %1 -a create-throws:line=0", saved("none.cxdat", {}));
    QVERIFY2(decoded.err.startsWith("luxcli: Lie: the plug-in threw\nluxcli: "), decoded.err);
    QCOMPARE(decoded.code, 1);
    const Outcome listed = luxcli("analyzers create-throws");
    QCOMPARE(listed.err, QByteArray("luxcli: Lie: the plug-in threw\n"));
    QCOMPARE(listed.code, 1);
}

void TstLuxcliFaults::whatADecoderThrowsBehindItsRunIsToldOnceAndIsNoSuccess()
{
    offer({QStringLiteral("restart-throws")});
    const Outcome outcome = luxcli("decode %1", saved("restart.cxdat", {QStringLiteral("restart-throws")}));
    QCOMPARE(outcome.err, QByteArray("luxcli: Lie: the plug-in threw\n"));
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.out.count('\n'), 4);
}

void TstLuxcliFaults::settingsThatThrowAreTold()
{
    offer({QStringLiteral("settings-throw")});
    const Outcome outcome = luxcli("decode %1 -a settings-throw:line=0", saved("settings.cxdat", {}));
    QCOMPARE(outcome.err, QByteArray("luxcli: settings-throw: the plug-in threw\n"));
    QCOMPARE(outcome.code, 1);
}

void TstLuxcliFaults::settingsThatAreRefusedWithoutAWordAreTold()
{
    offer({QStringLiteral("null-texts")});
    const Outcome outcome = luxcli("decode %1 -a null-texts", saved("settings.cxdat", {}));
    QCOMPARE(outcome.err, QByteArray("luxcli: null-texts does not take these settings\n"));
    QCOMPARE(outcome.code, 2);
}

void TstLuxcliFaults::onlyADecoderThatIsPassedOverIsTriedAgain()
{
    offer({QStringLiteral("sound")});
    const Outcome outcome = luxcli("analyzers --retry sound.dll");
    QCOMPARE(outcome.err, QByteArray("luxcli: sound.dll is not passed over; these are: none\n"));
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.out, QByteArray());
}

void TstLuxcliFaults::allTellsWhichFilesAreNoneAndWhy()
{
    offer({QStringLiteral("bare"), QStringLiteral("sound")});
    const Outcome outcome = luxcli("analyzers --all");
    QCOMPARE(outcome.code, 0);
    QVERIFY2(outcome.out.contains("sound\tLie\n"), outcome.out);
    QVERIFY2(outcome.out.contains("bare.dll\tnot loaded: it lacks an entry point of a decoder\n"), outcome.out);
    QVERIFY(!luxcli("analyzers").out.contains("bare"));
}

void TstLuxcliFaults::aDecoderDuringWhichTheProgramDiedIsPassedOverUntilItIsTriedAgain()
{
    offer({QStringLiteral("dies"), QStringLiteral("sound")});
    qputenv("LUX_TEST_DIE", "1");
    QCOMPARE(luxcli("analyzers").code, 66);
    const QByteArray message = "luxcli: dies.dll is passed over, since a program ended while it was tried; \"luxcli "
                               "analyzers --retry dies.dll\" tries it again\n";
    const Outcome listed = luxcli("analyzers");
    QCOMPARE(listed.code, 0);
    QCOMPARE(listed.err, message);
    QVERIFY2(listed.out.contains("sound\tLie\n") && !listed.out.contains("dies"), listed.out);
    QVERIFY(luxcli("analyzers --all").out.contains("dies.dll\tnot loaded: the program ended while it was tried\n"));
    const Outcome decoded = luxcli("decode %1 -a sound:line=0", saved("passed.cxdat", {}));
    QCOMPARE(decoded.err, message);
    QCOMPARE(decoded.code, 0);

    QCOMPARE(luxcli("analyzers --retry dies.dll").code, 66); // and dies again
    QCOMPARE(luxcli("analyzers").err, message);
    qunsetenv("LUX_TEST_DIE");
    QCOMPARE(luxcli("analyzers").err, message); // no try without being asked
    for (const char *command : {"analyzers --retry dies.dll", "analyzers"}) {
        const Outcome again = luxcli(command);
        QCOMPARE(again.err, QByteArray());
        QVERIFY2(again.out.contains("dies\tLie\n"), again.out);
    }
}

void TstLuxcliFaults::textsThatThrowAreToldAndAreNoSuccess()
{
    for (const char *plugin : {"text-throws", "values-throw"}) {
        const QString name = QString::fromLatin1(plugin);
        offer({name});
        const Outcome outcome = luxcli("decode %1", saved("texts.cxdat", {name}));
        QCOMPARE(outcome.err, QByteArray("luxcli: Lie: the plug-in threw\n"));
        QCOMPARE(outcome.code, 1);
        QCOMPARE(outcome.out.count('\n'), 4);
    }
}

void TstLuxcliFaults::aTextThatNeverEndsIsToldAndLeavesTheEarlierFile()
{
    offer({QStringLiteral("text-spins")});
    const QString capture = saved("endless.cxdat", {QStringLiteral("text-spins")});
    const QTemporaryDir folder;
    const QString out = folder.filePath(QStringLiteral("frames.txt"));
    QFile earlier(out);
    QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("earlier\n") > 0);
    earlier.close();
    const Outcome outcome = luxcli("decode %1 %1 --format text -o %2", capture, out);
    QCOMPARE(outcome.err, doesNotStop);
    QCOMPARE(outcome.code, 1);
    QVERIFY(earlier.open(QIODevice::ReadOnly));
    QCOMPARE(earlier.readAll(), QByteArray("earlier\n"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{QStringLiteral("frames.txt")});
}

void TstLuxcliFaults::valuesThatNeverEndAreToldBehindTheLinesThatAreWhole()
{
    offer({QStringLiteral("sound"), QStringLiteral("values-spin")});
    const QString capture = saved("endless.cxdat", {QStringLiteral("sound"), QStringLiteral("values-spin")});
    const Outcome outcome = luxcli("decode %1 --format csv", capture);
    QCOMPARE(outcome.err, doesNotStop);
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.out, QByteArray("time,first,last,analyzer,kind,values,text\n"
                                     "0.000100,100,100,Lie,edge,,edge 100\n"
                                     "0.000100,100,100,Lie,edge,,edge 100\n"
                                     "0.000300,300,300,Lie,edge,,edge 300\n"));
}

/// The decoder has the program interrupted as soon as it is in there.
void TstLuxcliFaults::anInterruptEndsTheProgramDuringATextThatNeverEnds()
{
    offer({QStringLiteral("sound"), QStringLiteral("text-spins")});
    const QString capture = saved("endless.cxdat", {QStringLiteral("sound"), QStringLiteral("text-spins")});
    const QTemporaryDir folder;
    qputenv("LUX_TEST_INTERRUPT", "1");
    const Outcome outcome = luxcli("decode %1 -o %2", capture, folder.filePath(QStringLiteral("frames.jsonl")));
    qunsetenv("LUX_TEST_INTERRUPT");
    QCOMPARE(outcome.err, QByteArray());
    QCOMPARE(outcome.code, 130);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList());
}

/// The decoder has the program interrupted as soon as it runs.
void TstLuxcliFaults::theProgramEndsWithoutADecoderThatNeverLeaves()
{
    offer({QStringLiteral("spins")});
    qputenv("LUX_TEST_INTERRUPT", "1");
    const Outcome outcome = luxcli("decode %1", saved("spins.cxdat", {QStringLiteral("spins")}));
    qunsetenv("LUX_TEST_INTERRUPT");
    QCOMPARE(outcome.code, 130);
}

QTEST_GUILESS_MAIN(TstLuxcliFaults)
#include "tst_LuxcliFaults.moc"

// The emulated instrument proves the program only as long as neither is built from the other.

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// Each include line of the C++ files of the folder, "file: line", with what it includes.
QList<QPair<QString, QString>> includesOf(const QString &folder)
{
    static const QRegularExpression line(QStringLiteral("^[ \\t]*#[ \\t]*include[ \\t]*[\"<]([^\">\\n]+)[\">]"),
                                         QRegularExpression::MultilineOption);
    QList<QPair<QString, QString>> includes;
    QDirIterator files(folder, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.open(QIODevice::ReadOnly)) {
            qFatal("a source cannot be read");
        }
        for (auto match = line.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext();) {
            includes.append({file.fileName(), match.next().captured(1)});
        }
    }
    return includes;
}

const QString root = QStringLiteral(LUX_ROOT_DIR);

} // namespace

class TstEmulatorSources : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theCoreIncludesOnlyItselfAndTheStandardLibrary();
    void theProgramIncludesNothingOfTheEmulator();
};

void TstEmulatorSources::theCoreIncludesOnlyItselfAndTheStandardLibrary()
{
    static const QRegularExpression standard(QStringLiteral("^[a-z_]+$"));
    const QDir emulator(root + QStringLiteral("/emulator"));
    int seen = 0;
    for (const auto &[file, include] : includesOf(emulator.path())) {
        if (QFileInfo(file).dir() != emulator) {
            continue; // the faces stand in folders of their own, and speak to the system
        }
        ++seen;
        const bool known = standard.match(include).hasMatch() || emulator.exists(include);
        QVERIFY2(known, qPrintable(file + QStringLiteral(" includes ") + include));
    }
    QVERIFY(seen > 50);
}

void TstEmulatorSources::theProgramIncludesNothingOfTheEmulator()
{
    const QDir emulator(root + QStringLiteral("/emulator"));
    int seen = 0;
    for (const auto &[file, include] : includesOf(root + QStringLiteral("/src"))) {
        ++seen;
        const bool foreign = include.contains(QStringLiteral("emulator")) || emulator.exists(include);
        QVERIFY2(!foreign, qPrintable(file + QStringLiteral(" includes ") + include));
    }
    QVERIFY(seen > 200);
}

QTEST_GUILESS_MAIN(TstEmulatorSources)
#include "tst_EmulatorSources.moc"

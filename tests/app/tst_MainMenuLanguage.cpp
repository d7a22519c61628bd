#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "support/BoxCloser.h"
#include "support/DialogDriver.h"

#include <QAction>
#include <QMenu>
#include <QTemporaryDir>

/// The choice of a language and the restart that makes it take effect.
class TstMainMenuLanguage : public QObject, private WindowDesk {
    Q_OBJECT
private slots:
    void initTestCase() { QApplication::setQuitOnLastWindowClosed(false); }
    void init();
    void cleanup() { tearDown(); }

    void theMarkStandsAtTheLanguageInUse();
    void theLanguageInUseGivesNoNotice();
    void cancelKeepsTheChoiceForTheNextStart();
    void theNoticeSpeaksTheChosenLanguageAlone();
    void okClosesTheWindowAndStartsTheProgramAnew();
    void theSettingsAreWrittenBeforeTheNewProgramStarts();
    void noSecondProgramStartsWhenAWindowRefusesToClose();
    void malformedAndMisnamedFilesAreNotOffered();
    void aLanguageThatIsRemovedMeanwhileCanStillBeChosen();
    void aStoredPathIsNoLanguage();
    void aNameWithAnAmpersandIsShownWhole();

private:
    QList<QAction *> entries();
    void choose(int place) { entries().at(place)->trigger(); }
    void writeLanguage(const QString &file, const QByteArray &content);

    MainMenu *m_menu = nullptr;
    QStringList m_started;
    std::unique_ptr<QTemporaryDir> m_dir;
};

void TstMainMenuLanguage::init()
{
    setUp();
    m_dir = std::make_unique<QTemporaryDir>();
    m_started.clear();
    m_menu = m_window->findChild<MainMenu *>();
    m_menu->languages = [] {
        return QVector<LanguageInfo>{
            {QStringLiteral("en-US"), QStringLiteral("English"), QStringLiteral("Restart!")},
            {QStringLiteral("de"), QStringLiteral("Deutsch"), QStringLiteral("<b>Neu</b> starten!\r\nvon X")}};
    };
    m_menu->startProgram = [this](const QString &program) {
        m_started += program;
        return true;
    };
    globalSet(QStringLiteral("userLang"), QStringLiteral("en-US"));
}

QList<QAction *> TstMainMenuLanguage::entries()
{
    m_menu->slotMainMenuPopup();
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QList<QAction *> found;
    for (const QAction *action : menu->actions()) {
        if (action->text() == QStringLiteral("Language...")) {
            found = action->menu()->actions();
        }
    }
    menu->close();
    return found;
}

void TstMainMenuLanguage::writeLanguage(const QString &file, const QByteArray &content)
{
    QFile out(m_dir->filePath(file));
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(content);
}

void TstMainMenuLanguage::theMarkStandsAtTheLanguageInUse()
{
    const QList<QAction *> actions = entries();
    QCOMPARE(actions.size(), 2);
    QVERIFY(actions.at(0)->isCheckable() && actions.at(1)->isCheckable());
    QVERIFY(actions.at(0)->isChecked());
    QVERIFY(!actions.at(1)->isChecked());
    QCOMPARE(actions.at(1)->data().toInt(), 1);
}

void TstMainMenuLanguage::theLanguageInUseGivesNoNotice()
{
    BoxCloser boxes;
    choose(0);
    QCOMPARE(boxes.seen.count, 0);
    QVERIFY(m_started.isEmpty());
    QVERIFY(entries().at(0)->isChecked());
}

void TstMainMenuLanguage::cancelKeepsTheChoiceForTheNextStart()
{
    DialogDriver<QMessageBox> box([](QMessageBox &notice) { pressButton(notice, QStringLiteral("Cancel")); });
    choose(1);
    QCOMPARE(box.count, 1);
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("de"));
    QVERIFY(entries().at(1)->isChecked());
    QVERIFY(!entries().at(0)->isChecked());
    QVERIFY(m_window->isVisible());
    QVERIFY(m_started.isEmpty());
    choose(1); // which is the stored one now
    QCOMPARE(box.count, 1);
}

void TstMainMenuLanguage::theNoticeSpeaksTheChosenLanguageAlone()
{
    QString title(QStringLiteral("none"));
    QString text;
    QStringList buttons;
    auto icon = QMessageBox::NoIcon;
    auto format = Qt::RichText;
    DialogDriver<QMessageBox> box([&](QMessageBox &notice) {
        title = notice.windowTitle();
        text = notice.text();
        icon = notice.icon();
        format = notice.textFormat();
        for (const QAbstractButton *button : notice.buttons()) {
            buttons += button->text();
        }
        notice.reject();
    });
    m_menu->languages = [] {
        return QVector<LanguageInfo>{{QStringLiteral("en-US"), QStringLiteral("English"), QStringLiteral("Restart!")},
                                     {QStringLiteral("de"), QStringLiteral("Deutsch"),
                                      QStringLiteral("<b>Neu</b> starten!\r\nvon X"), QStringLiteral("Sprache"),
                                      QStringLiteral("Ja"), QStringLiteral("Abbrechen")}};
    };
    choose(1);
    QCOMPARE(title, QStringLiteral("Sprache"));
    QCOMPARE(text, QStringLiteral("<b>Neu</b> starten!\r\nvon X"));
    QCOMPARE(format, Qt::PlainText);
    QCOMPARE(icon, QMessageBox::Information);
    buttons.sort();
    QCOMPARE(buttons, QStringList({QStringLiteral("Abbrechen"), QStringLiteral("Ja")}));
    QVERIFY(m_started.isEmpty()); // Escape is no OK
}

void TstMainMenuLanguage::okClosesTheWindowAndStartsTheProgramAnew()
{
    bool closed = false;
    m_menu->startProgram = [&](const QString &program) {
        closed = !m_window->isVisible();
        m_started += program;
        return true;
    };
    DialogDriver<QMessageBox> box([](QMessageBox &notice) { pressButton(notice, QStringLiteral("OK")); });
    choose(1);
    QCOMPARE(m_started, QStringList(QCoreApplication::applicationFilePath()));
    QVERIFY(closed);
    QVERIFY(!m_window->isVisible());
}

void TstMainMenuLanguage::theSettingsAreWrittenBeforeTheNewProgramStarts()
{
    QString found;
    m_menu->startProgram = [&](const QString &) {
        QFile file(configPath());
        found = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
        return false; // and a program that does not start leaves nothing behind
    };
    m_window->setGeometry(40, 50, 900, 500);
    DialogDriver<QMessageBox> box([](QMessageBox &notice) { pressButton(notice, QStringLiteral("OK")); });
    choose(1);
    QVERIFY(found.contains(QStringLiteral("<userLang>de</userLang>")));
    QVERIFY(found.contains(QStringLiteral("<windowPosition>40,50,900,500</windowPosition>")));
}

void TstMainMenuLanguage::noSecondProgramStartsWhenAWindowRefusesToClose()
{
    struct Refusal : QObject {
        bool eventFilter(QObject *, QEvent *event) override
        {
            if (event->type() != QEvent::Close) {
                return false;
            }
            event->ignore();
            return true;
        }
    } refusal;
    m_window->installEventFilter(&refusal);
    DialogDriver<QMessageBox> box([](QMessageBox &notice) { pressButton(notice, QStringLiteral("OK")); });
    choose(1);
    QVERIFY(m_window->isVisible());
    QVERIFY(m_started.isEmpty());
    m_window->removeEventFilter(&refusal);
}

void TstMainMenuLanguage::malformedAndMisnamedFilesAreNotOffered()
{
    const QByteArray good = "<language><head><code>ja</code><name>Nihongo</name></head><lux/><analyzers/></language>";
    writeLanguage(QStringLiteral("ja.xml"), good);
    writeLanguage(QStringLiteral("fr.xml"), good);
    writeLanguage(QStringLiteral("it.xml"), "<language><head><code>it</co");
    writeLanguage(QStringLiteral("es.xml"), QByteArray());
    writeLanguage(QStringLiteral("..xml"), "<language/>");
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("pt.xml")));
    m_menu->languages = [this] { return languageListFrom(m_dir->path()); };
    QStringList names;
    for (const QAction *action : entries()) {
        names += action->text();
    }
    QCOMPARE(names, QStringList({QStringLiteral("English"), QStringLiteral("Nihongo")}));
}

void TstMainMenuLanguage::aLanguageThatIsRemovedMeanwhileCanStillBeChosen()
{
    writeLanguage(QStringLiteral("ja.xml"),
                  "<language><head><code>ja</code><name>Nihongo</name></head><lux/><analyzers/></language>");
    m_menu->languages = [this] { return languageListFrom(m_dir->path()); };
    const QList<QAction *> actions = entries();
    QVERIFY(QFile::remove(m_dir->filePath(QStringLiteral("ja.xml"))));
    BoxCloser boxes; // presses the first button, which restarts
    actions.at(1)->trigger();
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("ja"));
    languageLoadFrom(m_dir->path(), QLocale::c());
    QCOMPARE(::tr("Open"), QStringLiteral("Open"));
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("ja"));
}

void TstMainMenuLanguage::aStoredPathIsNoLanguage()
{
    globalSet(QStringLiteral("userLang"), QStringLiteral("../../x"));
    for (const QAction *action : entries()) {
        QVERIFY(!action->isChecked());
    }
    DialogDriver<QMessageBox> box([](QMessageBox &notice) { notice.reject(); });
    choose(0);
    QCOMPARE(globalGet(QStringLiteral("userLang")), QStringLiteral("en-US"));
}

void TstMainMenuLanguage::aNameWithAnAmpersandIsShownWhole()
{
    m_menu->languages = [] { return QVector<LanguageInfo>{{QStringLiteral("x"), QStringLiteral("A & B"), QString()}}; };
    QCOMPARE(entries().at(0)->text(), QStringLiteral("A && B"));
}

LUX_GUI_TEST(TstMainMenuLanguage)
#include "tst_MainMenuLanguage.moc"

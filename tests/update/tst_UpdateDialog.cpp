#include "controls/Look.h"
#include "update/UpdateDesk.h"

#include <QProxyStyle>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace {

const QUrl download(QStringLiteral("https://example.org/d?a=1&b=2"));
const QUrl update(QStringLiteral("https://example.org/u"));

/// As desktops have it that draw icons beside the texts of standard buttons, and partly over them.
class IconStyle : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *result) const override
    {
        return hint == SH_DialogButtonBox_ButtonsHaveIcons ? 1 : QProxyStyle::styleHint(hint, option, widget, result);
    }
};

} // namespace

class TstUpdateDialog : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_dialog.reset(); }

    void theDialogHasItsTitleThreeLabelsAndTwoButtons();
    void eachStateHasItsTexts();
    void whatTheServiceSaysIsShownAsItIs();
    void aLongLinkShowsItsHostAndIsWholeInItsToolTip();
    void theLinkOpensInTheBrowserByMouseAndByKeys();
    void okStartsTheUpdaterWithItsFourArgumentsAndClosesAllWindows();
    void theUpdaterIsStartedAsAProcessOfItsOwn();
    void anUpdaterThatIsAbsentOffersTheDownloadAndTheDialogStays();
    void theUpdaterStandsBesideTheProgram();
    void nothingIsStartedInAStateWithoutAnUpdate();
    void theDialogIsAnsweredByKeysAlone();
    void theLinkShowsThatItHasTheFocus();
    void theButtonsAreLikeThoseOfAllDialogs();
    void theDialogKeepsItsSizeFromWaitingToItsEnd();

private:
    std::unique_ptr<UpdateDialog> m_dialog;
    QStringList m_started; ///< program and arguments
};

void TstUpdateDialog::init()
{
    m_dialog = std::make_unique<UpdateDialog>();
    m_started.clear();
    m_dialog->startUpdater = [this](const QString &program, const QStringList &arguments) {
        m_started = QStringList{program} + arguments;
        return true;
    };
    globalSet(QStringLiteral("userLang"), QStringLiteral("de"));
}

void TstUpdateDialog::theDialogHasItsTitleThreeLabelsAndTwoButtons()
{
    QCOMPARE(m_dialog->windowTitle(), QStringLiteral("Check for updates"));
    m_dialog->show();
    const auto labels = m_dialog->findChildren<QLabel *>();
    QCOMPARE(labels.size(), 3);
    QVERIFY(labels.at(0)->geometry().bottom() < labels.at(1)->geometry().top());
    QVERIFY(labels.at(1)->geometry().bottom() < labels.at(2)->geometry().top());
    QCOMPARE(m_dialog->findChildren<QAbstractButton *>().size(), 2);
    QVERIFY(buttonOf(*m_dialog, "Cancel")->isEnabled());
}

void TstUpdateDialog::eachStateHasItsTexts()
{
    const QString none;
    QCOMPARE(stateOf(*m_dialog), waiting); // at first
    m_dialog->showAutomatic(QStringLiteral("4.0.1"), download, update);
    QCOMPARE(stateOf(*m_dialog),
             (ShownState{{none, QStringLiteral("Find a new version: 4.0.1, Update now?"), none}, true}));
    m_dialog->showManual(QStringLiteral("4.0.2"), update);
    QCOMPARE(stateOf(*m_dialog), (ShownState{{QStringLiteral("Find a new version: 4.0.2"),
                                              QStringLiteral("Please click the link below to download."),
                                              linkMarkup("https://example.org/u")},
                                             false}));
    m_dialog->showLatest();
    QCOMPARE(stateOf(*m_dialog), latest);
    m_dialog->showFailed();
    QCOMPARE(stateOf(*m_dialog), failed);
    m_dialog->showWaiting();
    QCOMPARE(stateOf(*m_dialog), waiting);
}

void TstUpdateDialog::whatTheServiceSaysIsShownAsItIs()
{
    m_dialog->showManual(QStringLiteral("<b>4</b>"), QUrl(QStringLiteral("https://example.org/?a=1&b='2'\"")));
    const auto labels = m_dialog->findChildren<QLabel *>();
    QCOMPARE(labels.at(0)->textFormat(), Qt::PlainText);
    QCOMPARE(labels.at(1)->textFormat(), Qt::PlainText);
    QCOMPARE(labels.at(2)->text(), linkMarkup("https://example.org/?a=1&amp;b='2'%22"));
}

void TstUpdateDialog::aLongLinkShowsItsHostAndIsWholeInItsToolTip()
{
    const QString address = QStringLiteral("https://example.org/") + QString(1500, QLatin1Char('a'));
    m_dialog->showManual(QStringLiteral("4"), QUrl(address));
    m_dialog->show();
    QVERIFY(m_dialog->width() < 600);
    const QLabel *link = m_dialog->findChildren<QLabel *>().at(2);
    QVERIFY(link->text().contains(QStringLiteral(">https://example.org/a")));
    QCOMPARE(link->toolTip(), address);
    m_dialog->showManual(QStringLiteral("4"), update);
    QCOMPARE(link->toolTip(), QString());
}

void TstUpdateDialog::theLinkOpensInTheBrowserByMouseAndByKeys()
{
    QList<QUrl> opened;
    m_dialog->openLink = [&opened](const QUrl &url) { opened += url; };
    m_dialog->showManual(QStringLiteral("4.0.1"), download);
    m_dialog->show();
    m_dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
    QLabel *link = m_dialog->findChildren<QLabel *>().at(2);
    QTest::mouseClick(link, Qt::LeftButton, {}, QPoint(20, link->height() / 2));
    QCOMPARE(opened, QList<QUrl>{download});
    link->setFocus(Qt::TabFocusReason);
    QTest::keyClick(link, Qt::Key_Return);
    QCOMPARE(opened, (QList<QUrl>{download, download}));
    QVERIFY(m_dialog->isVisible());
}

void TstUpdateDialog::okStartsTheUpdaterWithItsFourArgumentsAndClosesAllWindows()
{
    QWidget program;
    program.show();
    m_dialog->updaterPath = QStringLiteral("/somewhere/Updater.exe");
    m_dialog->showAutomatic(QStringLiteral("4.0.1"), download, update);
    m_dialog->show();
    buttonOf(*m_dialog, "OK")->click();
    QCOMPARE(m_started, (QStringList{QStringLiteral("/somewhere/Updater.exe"), QStringLiteral("https://example.org/u"),
                                     QStringLiteral(LUX_VERSION), QStringLiteral("4.0.1"), QStringLiteral("de")}));
    QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
    QVERIFY(!m_dialog->isVisible());
    QVERIFY(!program.isVisible());
}

void TstUpdateDialog::theUpdaterIsStartedAsAProcessOfItsOwn()
{
#ifdef Q_OS_UNIX
    // A stand-in that leaves what it was called with.
    const QTemporaryDir folder;
    QFile updater(folder.filePath(QStringLiteral("Updater.exe")));
    QVERIFY(updater.open(QIODevice::WriteOnly));
    updater.write("#!/bin/sh\nprintf '%s\\n' \"$@\" >\"$0.part\" && mv \"$0.part\" \"$0.told\"\n");
    updater.close();
    QVERIFY(updater.setPermissions(updater.permissions() | QFile::ExeOwner));
    UpdateDialog dialog;
    dialog.updaterPath = updater.fileName();
    dialog.showAutomatic(QStringLiteral("4.0.1"), download, QUrl(QStringLiteral("https://example.org/u?a=1&b=$(id)")));
    dialog.show();
    buttonOf(dialog, "OK")->click();
    QVERIFY(!dialog.isVisible());
    QFile told(updater.fileName() + QStringLiteral(".told"));
    QTRY_VERIFY(told.exists());
    QVERIFY(told.open(QIODevice::ReadOnly));
    QCOMPARE(told.readAll(), QByteArray("https://example.org/u?a=1&b=$(id)\n" LUX_VERSION "\n4.0.1\nde\n"));
#else
    QSKIP("the stand-in is a script");
#endif
}

void TstUpdateDialog::anUpdaterThatIsAbsentOffersTheDownloadAndTheDialogStays()
{
    QWidget program;
    program.show();
    const QTemporaryDir folder;
    UpdateDialog dialog;
    dialog.updaterPath = folder.filePath(QStringLiteral("Updater.exe"));
    dialog.showAutomatic(QStringLiteral("4.0.1"), download, update);
    dialog.show();
    buttonOf(dialog, "OK")->click();
    QVERIFY(dialog.isVisible());
    QVERIFY(program.isVisible());
    const QString link = QStringLiteral("https://example.org/d?a=1&amp;b=2");
    QCOMPARE(stateOf(dialog),
             (ShownState{{QStringLiteral("Automatic update failed."),
                          QStringLiteral("Please click the link below to download."), linkMarkup(qPrintable(link))},
                         false}));
}

void TstUpdateDialog::theUpdaterStandsBesideTheProgram()
{
    QCOMPARE(m_dialog->updaterPath, QCoreApplication::applicationDirPath() + QStringLiteral("/Updater.exe"));
}

void TstUpdateDialog::nothingIsStartedInAStateWithoutAnUpdate()
{
    m_dialog->showAutomatic(QStringLiteral("4.0.1"), download, update);
    m_dialog->showLatest();
    m_dialog->show();
    m_dialog->accept();
    QVERIFY(m_started.isEmpty());
    QVERIFY(m_dialog->isVisible());
}

void TstUpdateDialog::theDialogIsAnsweredByKeysAlone()
{
    const QSignalSpy rejected(m_dialog.get(), &QDialog::rejected);
    m_dialog->showLatest();
    m_dialog->show();
    QTest::keyClick(m_dialog.get(), Qt::Key_Return); // the only button that can be pressed
    QVERIFY(!m_dialog->isVisible());
    m_dialog->show();
    QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
    QVERIFY(!m_dialog->isVisible());
    QCOMPARE(rejected.count(), 2);
    m_dialog->showAutomatic(QStringLiteral("4.0.1"), download, update);
    m_dialog->show();
    QTest::keyClick(m_dialog.get(), Qt::Key_Return);
    QCOMPARE(m_started.size(), 5);
}

void TstUpdateDialog::theLinkShowsThatItHasTheFocus()
{
    m_dialog->showManual(QStringLiteral("4.0.1"), download);
    m_dialog->show();
    m_dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
    QLabel *link = m_dialog->findChildren<QLabel *>().at(2);
    const auto frame = [link] { return link->grab().toImage().pixelColor(link->width() / 2, 0); };
    QVERIFY(!link->hasFocus());
    QVERIFY(frame() != gGreys[0]);
    QTest::keyClick(m_dialog.get(), Qt::Key_Tab);
    QVERIFY(link->hasFocus());
    QCOMPARE(frame(), gGreys[0]);
}

void TstUpdateDialog::theButtonsAreLikeThoseOfAllDialogs()
{
    const QString style = QApplication::style()->objectName();
    QApplication::setStyle(new IconStyle);
    const UpdateDialog dialog;
    QApplication::setStyle(style);
    for (const char *text : {"OK", "Cancel"}) {
        QVERIFY(buttonOf(dialog, text)->icon().isNull());
    }
}

void TstUpdateDialog::theDialogKeepsItsSizeFromWaitingToItsEnd()
{
    m_dialog->show();
    QCoreApplication::processEvents();
    const QSize size = m_dialog->size();
    m_dialog->showLatest();
    QCoreApplication::processEvents();
    QCOMPARE(m_dialog->size(), size);
    m_dialog->showManual(QStringLiteral("4.0.1"), download);
    QCoreApplication::processEvents();
    QCOMPARE(m_dialog->size(), size);
}

LUX_GUI_TEST(TstUpdateDialog)
#include "tst_UpdateDialog.moc"

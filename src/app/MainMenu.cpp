#include "app/MainMenu.h"

#include "app/AboutLUX.h"
#include "app/FileDialogs.h"
#include "app/MenuText.h"
#include "app/PictureWriter.h"
#include "app/RecentMenu.h"
#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/NoticeBox.h"
#include "files/ForeignFile.h"
#include "panels/Options.h"
#include "settings/Config.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QProcess>
#include <QPushButton>

namespace {

QString dotted(const QString &text)
{
    return text + QStringLiteral("...");
}

} // namespace

MainMenu::MainMenu(Session &session, QWidget *parent)
    : QWidget(parent),
      now([] { return QDateTime::currentDateTime(); }),
      languages([] { return languageList(); }),
      startProgram([](const QString &program) { return QProcess::startDetached(program, {}); }),
      m_session(session),
      m_button(new MyButton(sharedIcon(QStringLiteral(":/res/btnMenu")), ::tr("Main menu"), this)),
      m_pictures(new PictureWriter(this))
{
    m_button->setIconSize(QSize(dp(24), dp(24)));
    m_button->setFixedSize(dp(36), dp(36));
    m_button->setRadius(dp(4));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(dp(4), dp(2), dp(2), dp(2));
    row->addWidget(m_button);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(m_button, &QPushButton::clicked, this, &MainMenu::slotMainMenuPopup);
    connect(m_pictures, &PictureWriter::sigWritten, this, &MainMenu::tellWritten);
}

void MainMenu::slotMainMenuPopup()
{
    if (m_menu == nullptr) {
        buildMenu();
    }
    m_recent->look();
    // The press that closes the menu is not also one on what lies below it, such as the button that opens it again. Qt
    // takes this back whenever the menu closes.
    m_menu->setAttribute(Qt::WA_NoMouseReplay);
    m_menu->popup(m_button->mapToGlobal(QPoint(m_button->width() - m_menu->sizeHint().width(), m_button->height())));
}

void MainMenu::buildMenu()
{
    m_menu = new QMenu(this);
    m_menu->setAccessibleName(m_button->accessibleName());
    addEntry(dotted(::tr("Open")), &MainMenu::actOpenFile, int(Qt::CTRL) | Qt::Key_O);
    addRecentMenu();
    addEntry(dotted(::tr("Save Settings")), &MainMenu::actSaveSettings);
    addEntry(dotted(::tr("Save Data")), &MainMenu::actSaveData, int(Qt::CTRL) | Qt::Key_S);
    m_menu->addSeparator();
    addExportMenu();
    addEntry(dotted(::tr("Save Picture")), &MainMenu::actSavePicture);
    m_menu->addSeparator();
    addLanguageMenu();
    m_menu->addSeparator();
    addEntry(dotted(::tr("Options")), &MainMenu::actOpenOptions);
    m_menu->addSeparator();
    addEntry(dotted(::tr("Check for updates")), &MainMenu::actCheckUpdate);
    addEntry(::tr("About") + QStringLiteral(" CorvanLUX..."), &MainMenu::actAboutLUX);
    m_menu->addSeparator();
    emit shortcutsTaken();
}

void MainMenu::addEntry(const QString &text, void (MainMenu::*slot)(), int key)
{
    QAction *action = m_menu->addAction(text, this, slot);
    if (key == 0) {
        return;
    }
    action->setShortcut(QKeySequence(key));
    action->setShortcutVisibleInContextMenu(true);
    action->setAutoRepeat(false);
    // The keys of a menu that hangs from no menu bar reach nobody, so the action belongs to the window as well.
    window()->addAction(action);
}

void MainMenu::addRecentMenu()
{
    m_recent = new RecentMenu(m_menu);
    m_recent->setHistory(m_history);
    m_menu->addMenu(m_recent);
    // When the menu has let go of its entry: a long load lets events by, which may make the entries anew.
    connect(m_recent, &RecentMenu::fileChosen, this, &MainMenu::openFile, Qt::QueuedConnection);
}

void MainMenu::addExportMenu()
{
    QMenu *menu = m_menu->addMenu(::tr("Export Data"));
    menu->setAccessibleName(menu->title());
    menu->addAction(::tr("Text file") + QStringLiteral(" (*.txt)"))->setData(2);
    menu->addAction(::tr("CSV file") + QStringLiteral(" (*.csv)"))->setData(3);
    menu->addAction(::tr("Binary file") + QStringLiteral(" (*.bin)"))->setData(4);
    menu->addAction(FileDialogs::saveKind(FileDialogs::vcd).filter)->setData(FileDialogs::vcd);
    if (foreignKindIsBuilt(ForeignKind::Sr)) {
        menu->addAction(FileDialogs::saveKind(FileDialogs::sr).filter)->setData(FileDialogs::sr);
    }
    connect(menu, &QMenu::triggered, this, &MainMenu::slotExportMenuTrig);
}

void MainMenu::addLanguageMenu()
{
    QMenu *menu = m_menu->addMenu(dotted(::tr("Language")));
    menu->setAccessibleName(::tr("Language"));
    auto *group = new QActionGroup(menu);
    group->setExclusive(true);
    m_languages = languages();
    const QString chosen = globalGet(QStringLiteral("userLang"));
    for (int i = 0; i < m_languages.size(); ++i) {
        QAction *action = menu->addAction(plainEntry(m_languages.at(i).name));
        action->setData(i);
        action->setCheckable(true);
        group->addAction(action);
        action->setChecked(m_languages.at(i).code == chosen);
    }
    connect(menu, &QMenu::triggered, this, &MainMenu::slotLangMenuTrig);
}

void MainMenu::slotLangMenuTrig(QAction *action)
{
    const LanguageInfo language = m_languages.value(action->data().toInt());
    const QString key = QStringLiteral("userLang");
    if (language.code == globalGet(key)) {
        return;
    }
    globalSet(key, language.code);
    if (askRestart(language)) {
        restart();
    }
}

bool MainMenu::askRestart(const LanguageInfo &language)
{
    QMessageBox box(QMessageBox::Information, language.title, language.info, QMessageBox::NoButton, window());
    box.setTextFormat(Qt::PlainText); // it comes from a file
    const QPushButton *restarts = box.addButton(plainEntry(language.accept), QMessageBox::AcceptRole);
    box.addButton(plainEntry(language.reject), QMessageBox::RejectRole);
    fitNotice(box);
    box.exec();
    return box.clickedButton() == restarts;
}

void MainMenu::restart()
{
    QApplication::closeAllWindows();
    if (window()->isVisible()) {
        return; // a window has refused to close: two programs would run
    }
    // The settings are written once more when this program ends, which may be after the new one has read them.
    configSave(configPath());
    startProgram(QCoreApplication::applicationFilePath());
}

void MainMenu::actOpenOptions()
{
    Options(window(), checksAtStart).exec();
}

void MainMenu::actCheckUpdate()
{
    emit checkUpdateWanted();
}

void MainMenu::actAboutLUX()
{
    AboutLUX(window()).exec();
}

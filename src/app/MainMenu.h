#pragma once

#include "files/CaptureFile.h"
#include "settings/Language.h"

#include <QDateTime>
#include <QMessageBox>
#include <QVector>
#include <QWidget>

#include <functional>

class CaptureHistory;
class MyButton;
class QAction;
class PictureWriter;
class QMenu;
class RecentMenu;
class Session;
class ViewPicture;
struct ShownPair;

/// The menu button with the program's only menu, and the file actions: where the file formats meet the user.
///
/// Failures are told in a modal box titled "An error occurred"; the program goes on with what it has. Dialogs are modal
/// and return to the event loop: a slot that shows one looks at `gDev` anew afterwards. Main thread.
class MainMenu : public QWidget {
    Q_OBJECT
public:
    /// @param session  not owned, outlives this
    explicit MainMenu(Session &session, QWidget *parent = nullptr);

    /// What the menu asks of the world; a test answers instead.
    std::function<QDateTime()> now;
    std::function<QVector<LanguageInfo>()> languages; ///< asked once, when the menu is built
    /// Starts another program and does not wait for it. @return false if it did not start
    std::function<bool(const QString &program)> startProgram;

    /// This build looks for newer versions at its start, unless the user says no: told in the options.
    bool checksAtStart = false;

    /// The pairs of timing markers that an export may lie between, asked whenever one begins. Null for none.
    std::function<QVector<ShownPair>()> shownPairs;

    /// The view as it is seen; to be set before a picture is asked for.
    std::function<ViewPicture()> viewPicture;

    /// Asks for the path of a file to write. `kind`: 0 data, 1 settings, 2 text, 3 CSV, 4 binary, 5 picture,
    /// 6 VCD, 7 session archive.
    /// @return empty on cancel, and at once for another kind
    [[nodiscard]] QString saveFileDialog(int kind);
    /// Asks for the path of an existing file. @return empty on cancel
    [[nodiscard]] QString openFileDialog();

    /// Opens a data file (.cxdat), a settings file (.cxset) or another program's capture (.sr, .vcd); the common way of
    /// all sources after the start. The file is read whole first; then its settings replace the running ones, so that
    /// the device object is remade, and its capture goes into that one's store. A failure or a cancel leaves settings
    /// and capture as they were, but for a capture that memory has room for only in place of the former one, and that
    /// cannot be read a second time. Ignored while isBusy().
    void openFile(const QString &path);

    /// Opens the data file that was named at the start, whose settings are the running ones already. If it fails those
    /// of "lux.config" come back.
    void openStartFile(const QString &path);

    /// The captures that are kept, for the entries behind "Open". Not owned, outlives this; null for none.
    void setHistory(CaptureHistory *history);
    /// What the user reads of an opened file: its path, or time, model and length of a kept capture.
    [[nodiscard]] QString shownName(const QString &path) const;

    /// True while a file is read or written. Events are processed behind the progress dialog, and some pass the modal
    /// dialog by, such as a drop or an instrument that is plugged in: `gDev` must stay, and no second job may begin.
    [[nodiscard]] bool isBusy() const;

public slots:
    void actOpenFile();
    void actSaveSettings();
    /// Asks for channels, range and path, and writes a data file. Without a complete capture it only says so.
    void actSaveData();
    /// Asks for a path and writes the view there: as shapes for the suffix .svg, else as PNG. How it ends is told when
    /// it does; the picture is that of the moment in which the dialog ended.
    void actSavePicture();
    /// Puts the view into the clipboard, as pixels.
    void copyPicture();
    /// The action's data is the kind of file: 2 text, 3 CSV, 4 binary, 6 VCD, 7 session archive.
    void slotExportMenuTrig(QAction *action);
    /// The action's data is the language's place in the list. Takes effect at the next start, which it offers.
    void slotLangMenuTrig(QAction *action);
    void actOpenOptions();
    void actCheckUpdate();
    void actAboutLUX();
    /// Pops up the menu, which the first call builds.
    void slotMainMenuPopup();

signals:
    /// The config document has been replaced.
    void openSettingFile();
    /// The file that the title names shows no data.
    void openFileGone();
    /// How a save or an export ended, for the status line.
    void fileTold(const QString &text);
    /// The menu's actions have their keys from now on: whoever answered them until then lets go, since a key with two
    /// owners reaches neither.
    void shortcutsTaken();
    /// The user asks for a newer version.
    void checkUpdateWanted();

private:
    void buildMenu();
    void addEntry(const QString &text, void (MainMenu::*slot)(), int key = 0);
    void addRecentMenu();
    void addExportMenu();
    void addLanguageMenu();
    [[nodiscard]] bool askRestart(const LanguageInfo &language);
    void restart();

    /// Brings a file that was opened or saved to the front of the recent ones, unless it is a kept capture.
    void remember(const QString &path);
    [[nodiscard]] CaptureFile captureFile() const;
    /// Reads a file; isBusy() meanwhile.
    [[nodiscard]] OpenedCapture read(const QString &path, const SmpData *former);
    /// The same for another program's capture, which comes with settings made for it.
    [[nodiscard]] OpenedCapture readForeignFile(const QString &path);
    /// Writes a kind of other programs, 6 or 7; isBusy() is the caller's.
    [[nodiscard]] FileOutcome exportForeign(const QString &path, int kind, const CapturePart &part);
    /// Brings the capture of a file that was read into the current device's store, and tells what it lacks, or that it
    /// failed.
    void takeCapture(const QString &path, const OpenedCapture &opened, QMessageBox::Icon kind);
    void tellFailed(const QString &what, const QString &path, QMessageBox::Icon kind, const FileOutcome &outcome);
    /// Forgets `gOpenFile` if its data did not load, and tells so: "File open failed.", the path and the reason, in a
    /// modal box.
    void tellOpenFailed(const QString &path, QMessageBox::Icon kind, const FileOutcome &outcome);
    void tellWritten(const QString &path, const FileOutcome &outcome);
    /// Asks what to write and where. @return the path; empty if cancelled, or without a capture, which `noData` tells
    [[nodiscard]] QString askTarget(int kind, const QString &noData, CapturePart &part);

    Session &m_session;
    MyButton *m_button;
    QMenu *m_menu = nullptr;
    CaptureHistory *m_history = nullptr;
    PictureWriter *m_pictures;
    RecentMenu *m_recent = nullptr; ///< there once the menu is
    QVector<LanguageInfo> m_languages;
};

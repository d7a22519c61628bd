#pragma once

#include "monkey/Chance.h"
#include "platform/UsbPlatformEmulated.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class AnalyzerManager;
class CaptureHistory;
class HistoryKeeper;
class MainWindow;
class Session;
class SmpData;
struct DataSelection;

/// The whole program in this process: window and session over a bus with emulated instruments, with files to open in a
/// folder of its own. Main thread.
class MonkeyProgram {
public:
    explicit MonkeyProgram(Chance &chance);
    ~MonkeyProgram();
    MonkeyProgram(const MonkeyProgram &) = delete;
    MonkeyProgram &operator=(const MonkeyProgram &) = delete;

    /// Ends the program, window first, and begins anew. Not within one of its dialogs.
    void restart();

    [[nodiscard]] Session &session() const { return *m_session; }
    [[nodiscard]] MainWindow &window() const { return *m_window; }
    [[nodiscard]] AnalyzerManager &analyzers() const { return *m_analyzers; }

    /// A capture starts, or is asked to end.
    [[nodiscard]] QString runOrStop();
    /// An instrument comes or goes, or something goes wrong with it from now on.
    [[nodiscard]] QString touchInstrument();
    /// A model is chosen, if no instrument is connected; the one with analog channels in half of the cases.
    [[nodiscard]] QString chooseModel();
    /// An analyzer is added, removed, run again or shown otherwise.
    [[nodiscard]] QString touchAnalyzer();
    /// A file is dropped on the window.
    [[nodiscard]] QString dropFile();
    /// An entry of the menu "Recent" is chosen, a file or a kept capture, if no dialog is in front.
    [[nodiscard]] QString openRecent();

    /// The path of a file to open: whole ones, damaged ones, and what the monkey has saved before.
    [[nodiscard]] QString fileToOpen();
    /// The path of a file to save, with a suffix that fits or not.
    [[nodiscard]] QString fileToSave();

private:
    void start();
    void end();
    void plugInstruments();
    [[nodiscard]] std::string anyFault();
    /// Writes data files of all kinds that can be opened, and a settings file of each model.
    void makeFiles();
    void makeForeignFiles(const SmpData &data, const DataSelection &all);
    /// Writes a damaged copy of `path`. @return its path
    [[nodiscard]] QString damaged(const QString &path);

    Chance &m_chance;
    QTemporaryDir m_dir;
    EmulatedBus m_bus;
    int m_instruments = 0;
    std::unique_ptr<CaptureHistory> m_history;
    std::unique_ptr<Session> m_session;
    std::unique_ptr<HistoryKeeper> m_keeper;
    std::unique_ptr<MainWindow> m_window;
    AnalyzerManager *m_analyzers = nullptr; ///< the window's
};

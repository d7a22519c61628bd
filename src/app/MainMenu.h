#pragma once

#include <QMessageBox>
#include <QWidget>

/// The file actions: where the file formats meet the user. Main thread.
///
/// Failures are told in a modal box titled "An error occurred"; the program goes on with what it has.
class MainMenu : public QWidget {
    Q_OBJECT
public:
    explicit MainMenu(QWidget *parent = nullptr);

    /// Opens a data file (.cxdat) or a settings file (.cxset); the common way of all sources after the start.
    /// Its settings replace the running ones first, so that the device object is remade before the data load into it.
    /// Ignored while isLoading().
    void openFile(const QString &path);

    /// Loads the binary part of `path`, which begins at `headSize`, into the current device's store, behind a progress
    /// dialog when the file is big. On success the device tells that its data is ready.
    [[nodiscard]] bool loadData(const QString &path, qint64 headSize);

    /// True while a file's data load. Events are processed behind the progress dialog, and some pass the modal dialog
    /// by, such as a drop or an instrument that is plugged in: `gDev` must stay, and no second load may begin.
    [[nodiscard]] bool isLoading() const { return m_loading; }

    /// Forgets `gOpenFile` if its data did not load, and tells so: "File open failed." and the path, in a modal box.
    void tellOpenFailed(const QString &path, QMessageBox::Icon kind);

signals:
    /// The config document has been replaced.
    void openSettingFile();
    /// The file that the title names shows no data.
    void openFileGone();

private:
    bool m_loading = false;
};

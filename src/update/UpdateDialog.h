#pragma once

#include <QDialog>
#include <QUrl>

#include <functional>

class QDialogButtonBox;
class QLabel;
class QPushButton;
class QStringList;

/// Shows the outcome of a check for a newer version, and hands over to the updater, a program of its own beside this
/// one. Knows neither the network nor when to appear: CheckUpdate shows it. Main thread.
class UpdateDialog : public QDialog {
    Q_OBJECT
public:
    explicit UpdateDialog(QWidget *parent = nullptr);

    /// What the dialog asks of the system; a test answers instead.
    std::function<bool(const QString &program, const QStringList &arguments)> startUpdater; ///< false: did not start
    std::function<void(const QUrl &url)> openLink;                                          ///< in the browser
    QString updaterPath; ///< "Updater.exe" in the application's folder

    // The states. All but showWaiting() may be set while the dialog is hidden.
    void showWaiting();
    /// @param version  what is shown of it is short and plain, see shownVersion()
    /// Links are addresses of the web, or empty.
    void showAutomatic(const QString &version, const QUrl &download, const QUrl &update);
    void showManual(const QString &version, const QUrl &download);
    void showLatest();
    void showFailed();

public slots:
    /// Starts the updater with four arguments: its link, this version, the new one, the language. Then all windows
    /// close, so that it can replace the program's files. If it does not start, offers the download instead and stays.
    /// Does nothing in the states that offer no automatic update.
    void accept() override;

protected:
    void showEvent(QShowEvent *event) override;

private:
    void buildLook();
    void setState(const QString &first, const QString &second, const QUrl &link, bool canUpdate);

    QString newVersion;
    QUrl downloadLink;
    QUrl updateLink;
    QLabel *m_first;
    QLabel *m_second;
    QLabel *m_link;
    QDialogButtonBox *m_buttons;
    QPushButton *m_ok;
    QPushButton *m_cancel;
};

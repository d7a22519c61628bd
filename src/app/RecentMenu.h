#pragma once

#include "files/HistoryFolder.h"

#include <QMenu>
#include <QPixmap>
#include <QStringList>

class CaptureHistory;
class FilesThere;

/// The line of a kept capture in the menu: local time, model and length. Pure but for the time zone.
[[nodiscard]] QString captureText(const HistoryEntry &entry);
/// A kept capture's small picture in the colours of the waves; null without rows.
[[nodiscard]] QPixmap capturePixmap(const QVector<PictureRow> &rows);

/// The menu "Recent": the files that were opened or saved last, and the captures of the history, each with its time,
/// model, length and a small picture. A file that is gone stays, greyed, until it is pushed out.
///
/// It shows what is known when it opens, looks anew, and follows what changes while it is open. Nothing here waits for
/// a disk. Main thread.
class RecentMenu : public QMenu {
    Q_OBJECT
public:
    explicit RecentMenu(QWidget *parent = nullptr);

    /// @param history  not owned, outlives this; null for none
    void setHistory(CaptureHistory *history);
    /// Looks anew at the files and the history; shows at once what is known.
    void look();

    /// The question for files; a test answers it.
    [[nodiscard]] FilesThere &files() { return *m_there; }

signals:
    void fileChosen(const QString &path);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void fill();
    void addFiles(const QStringList &paths);
    void addCaptures(const QVector<HistoryEntry> &entries);

    CaptureHistory *m_history = nullptr;
    FilesThere *m_there;
};

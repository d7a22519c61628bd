#pragma once

#include "app/MainMenu.h"
#include "app/WindowDesk.h"
#include "panels/ExportDataSet.h"
#include "support/BoxCloser.h"
#include "support/DialogDriver.h"

#include <QAction>
#include <QTemporaryDir>

/// A window whose dialogs are answered: that of channels and range by `m_select`, that of files by `m_path`, in a
/// folder of its own. Base of test classes of the file actions.
class MenuDesk : protected WindowDesk {
protected:
    void setUpMenu(int model = 0)
    {
        setUp(model);
        m_dir = std::make_unique<QTemporaryDir>();
        globalSet(QStringLiteral("lastPath"), m_dir->path());
        m_menu = m_window->findChild<MainMenu *>();
        m_menu->now = [] { return QDateTime(QDate(2026, 3, 9), QTime(7, 5, 1)); };
        m_path.clear();
        m_select = [](ExportDataSet &) {};
        m_cancelSelection = false;
        m_selections = std::make_unique<DialogDriver<ExportDataSet>>([this](ExportDataSet &dialog) {
            m_select(dialog);
            pressButton(dialog, m_cancelSelection ? QStringLiteral("Cancel") : QStringLiteral("OK"));
        });
        m_files = std::make_unique<DialogDriver<QFileDialog>>([this](QFileDialog &dialog) {
            if (m_cancelFile) {
                dialog.reject();
            } else {
                chooseFile(dialog, m_path);
            }
        });
        m_cancelFile = false;
        m_boxes = std::make_unique<BoxCloser>();
    }

    void tearDownMenu()
    {
        m_boxes.reset();
        m_files.reset();
        m_selections.reset();
        tearDown();
    }

    [[nodiscard]] QString path(const char *name) const { return m_dir->filePath(QLatin1String(name)); }

    [[nodiscard]] static QByteArray bytesOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// `kind`: 2 text, 3 CSV, 4 binary.
    void exportAs(int kind)
    {
        QAction format(nullptr);
        format.setData(kind);
        m_menu->slotExportMenuTrig(&format);
    }

    MainMenu *m_menu = nullptr;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<DialogDriver<ExportDataSet>> m_selections;
    std::unique_ptr<DialogDriver<QFileDialog>> m_files;
    std::unique_ptr<BoxCloser> m_boxes;
    std::function<void(ExportDataSet &)> m_select; ///< what is changed before OK is pressed
    bool m_cancelSelection = false;
    QString m_path; ///< what is typed into the file dialog; empty leaves the proposal
    bool m_cancelFile = false;
};

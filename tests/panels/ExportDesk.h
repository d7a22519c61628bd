#pragma once

#include "panels/ExportDataSet.h"
#include "panels/PanelDevice.h"
#include "support/CaptureBuilder.h"
#include "support/GuiTestMain.h"
#include "wave/MainView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

/// The dialog of channels and range on the screen, as its tests handle it.
namespace ExportDesk {

inline constexpr int streaming8Model = 1;
inline constexpr int storage32Model = 9;

inline QVector<ShownPair> twoPairs()
{
    return {{0, QStringLiteral("A1"), QStringLiteral("A2"), 100, 2000},
            {2, QStringLiteral("C1"), QStringLiteral("C2"), 3000, 400}};
}

/// What getSelection() gives.
struct Selection {
    explicit Selection(const ExportDataSet &dialog) { dialog.getSelection(channels, start, end); }
    std::vector<std::uint8_t> channels;
    double start = -1;
    double end = -1;
};

inline std::vector<std::uint8_t> channels(int count, const std::vector<int> &chosen)
{
    std::vector<std::uint8_t> flags(std::size_t(count), 0);
    for (const int chn : chosen) {
        flags[std::size_t(chn)] = 1;
    }
    return flags;
}

/// A dialog on the screen, and its parts as a user tells them apart.
class Desk {
public:
    explicit Desk(const QVector<ShownPair> &pairs = {}) : dialog(pairs)
    {
        dialog.show();
        dialog.activateWindow();
        shown = QTest::qWaitForWindowActive(&dialog);
    }

    template<class Button>
    [[nodiscard]] Button *button(const char *text) const
    {
        for (auto *one : dialog.findChildren<Button *>()) {
            if (one->text() == QLatin1String(text)) {
                return one;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QRadioButton *radio(const char *text) const { return button<QRadioButton>(text); }
    [[nodiscard]] QComboBox *pairs() const { return dialog.findChild<QComboBox *>(); }
    [[nodiscard]] QLabel *label(const char *text) const
    {
        for (auto *one : dialog.findChildren<QLabel *>()) {
            if (one->text() == QLatin1String(text)) {
                return one;
            }
        }
        return nullptr;
    }
    [[nodiscard]] QLineEdit *start() const { return qobject_cast<QLineEdit *>(label("Starting Time[s]")->buddy()); }
    [[nodiscard]] QLineEdit *end() const { return qobject_cast<QLineEdit *>(label("Ending Time[s]")->buddy()); }
    [[nodiscard]] QStringList groups() const
    {
        QStringList titles;
        for (const auto *group : dialog.findChildren<QGroupBox *>()) {
            titles.append(group->title());
        }
        return titles;
    }
    /// The check boxes of one group.
    [[nodiscard]] QList<QCheckBox *> boxes(const char *title) const
    {
        for (const auto *group : dialog.findChildren<QGroupBox *>()) {
            if (group->title() == QLatin1String(title)) {
                return group->findChildren<QCheckBox *>();
            }
        }
        return {};
    }

    static void click(QWidget *widget, QPoint at = QPoint(8, 8))
    {
        QTest::mouseClick(widget, Qt::LeftButton, Qt::NoModifier, at);
    }
    /// Chooses the interval and types both of its ends.
    void typeInterval(const char *from, const char *to) const
    {
        click(radio("Specify time interval"));
        type(start(), from);
        type(end(), to);
    }
    static void type(QLineEdit *field, const char *text)
    {
        field->setFocus();
        field->selectAll();
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, QLatin1String(text));
    }

    ExportDataSet dialog;
    bool shown = false;
};

} // namespace ExportDesk

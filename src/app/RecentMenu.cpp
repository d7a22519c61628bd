#include "app/RecentMenu.h"

#include "analysis/PulseTimes.h"
#include "app/MenuText.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "files/CaptureHistory.h"
#include "files/FilesThere.h"
#include "settings/HistoryOptions.h"
#include "settings/Language.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int pictureWidth = pictureColumns;
constexpr int pictureHeight = 24;
constexpr int lighterPercent = 120; // as the waves

constexpr const char *pictureProperty = "picture";

/// Where pictures begin in the menu.
int pictureLeft()
{
    return dp(10);
}

/// Paints one line of `row` between two heights.
void paintRow(QPainter &painter, const PictureRow &row, int top, int height, int pen)
{
    const auto left = [](int column) { return dp(column); };
    for (int x = 0; x < row.size(); ++x) {
        const int width = left(x + 1) - left(x);
        if (row.at(x) == 'x') {
            painter.drawRect(left(x), top, width, height);
            continue;
        }
        const bool isHigh = row.at(x) == '1';
        painter.drawRect(left(x), isHigh ? top : top + height - pen, width, pen);
        if (x > 0 && row.at(x - 1) != 'x' && row.at(x - 1) != row.at(x)) {
            painter.drawRect(left(x), top, pen, height);
        }
    }
}

} // namespace

QString captureText(const HistoryEntry &entry)
{
    constexpr double picoseconds = 1e12;
    const QStringList units{QStringLiteral("ps"), QStringLiteral("ns"), QStringLiteral("us"), QStringLiteral("ms"),
                            QStringLiteral("s")};
    const QStringList parts{entry.time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")), entry.model,
                            unitText(entry.seconds() * picoseconds, units)};
    return parts.join(QStringLiteral("   "));
}

QPixmap capturePixmap(const QVector<PictureRow> &rows)
{
    if (rows.isEmpty()) {
        return {};
    }
    QPixmap picture(dp(pictureWidth), dp(pictureHeight));
    picture.fill(gGreys[8]);
    QPainter painter(&picture);
    painter.setPen(Qt::NoPen);
    const int count = int(rows.size());
    const int gap = dp(1);
    for (int i = 0; i < count; ++i) {
        const int top = picture.height() * i / count + gap;
        const int height = picture.height() * (i + 1) / count - gap - top;
        painter.setBrush(gChnColors[i % gChnColors.size()].lighter(lighterPercent));
        paintRow(painter, rows.at(i), top, height, dp(1));
    }
    return picture;
}

RecentMenu::RecentMenu(QWidget *parent) : QMenu(::tr("Recent"), parent), m_there(new FilesThere(this))
{
    setAccessibleName(title());
    setToolTipsVisible(true);
    // Room for the pictures, which are painted here: a style makes room for square ones alone.
    const int above = std::max((dp(pictureHeight) + dp(4) - fontMetrics().height() + 1) / 2, dp(4));
    setStyleSheet(menuStyle() + QStringLiteral("QMenu::item{padding:%1px %2px %1px %3px;}")
                                    .arg(above)
                                    .arg(dp(26))
                                    .arg(pictureLeft() + dp(pictureWidth) + dp(10)));
    connect(m_there, &FilesThere::sigAnswered, this, &RecentMenu::fill);
    fill();
}

void RecentMenu::setHistory(CaptureHistory *history)
{
    m_history = history;
    if (history != nullptr) {
        connect(history, &CaptureHistory::sigChanged, this, &RecentMenu::fill);
    }
    look();
}

void RecentMenu::look()
{
    fill();
    m_there->ask(RecentFiles::paths());
    if (m_history != nullptr) {
        m_history->refresh();
    }
}

void RecentMenu::fill()
{
    const QString chosen = activeAction() == nullptr ? QString() : activeAction()->data().toString();
    clear();
    addFiles(RecentFiles::paths());
    if (m_history != nullptr) {
        addCaptures(m_history->entries());
    }
    menuAction()->setEnabled(!isEmpty());
    for (QAction *action : actions()) {
        if (!chosen.isEmpty() && action->data().toString() == chosen) {
            setActiveAction(action);
        }
    }
}

void RecentMenu::addFiles(const QStringList &paths)
{
    for (const QString &path : paths) {
        const QFileInfo file(path);
        QAction *action = addAction(plainEntry(file.fileName()), this, [this, path] { emit fileChosen(path); });
        action->setData(path);
        action->setToolTip(QDir::toNativeSeparators(path));
        action->setEnabled(!m_there->isGone(path));
    }
}

void RecentMenu::addCaptures(const QVector<HistoryEntry> &entries)
{
    if (!isEmpty() && !entries.isEmpty()) {
        addSeparator();
    }
    for (const HistoryEntry &entry : entries) {
        QAction *action =
            addAction(plainEntry(captureText(entry)), this, [this, path = entry.path] { emit fileChosen(path); });
        action->setData(entry.path);
        action->setToolTip(action->text());
        action->setProperty(pictureProperty, capturePixmap(entry.picture));
    }
    const QString reason = historyReason(m_history->last());
    if (!reason.isEmpty() && !isEmpty()) {
        addSeparator();
    }
    if (!reason.isEmpty()) {
        addAction(plainEntry(::tr("The last capture was not kept.") + QLatin1Char(' ') + reason))->setEnabled(false);
    }
}

void RecentMenu::paintEvent(QPaintEvent *event)
{
    QMenu::paintEvent(event);
    QPainter painter(this);
    for (QAction *action : actions()) {
        const auto picture = action->property(pictureProperty).value<QPixmap>();
        if (!picture.isNull()) {
            const QRect line = actionGeometry(action);
            painter.drawPixmap(line.left() + pictureLeft(), line.center().y() - picture.height() / 2, picture);
        }
    }
}

#include "protocol/ProtocolItem.h"

#include "analyzer/AnalyzerManager.h"
#include "analyzer/ChannelUsage.h"
#include "analyzer/DisplayFormat.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/PopupPlace.h"
#include "measure/SectionParts.h"
#include "protocol/DecodeProgress.h"
#include "settings/Language.h"

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <array>
#include <utility>

namespace {

constexpr int formatCount = 5;
constexpr int stepsBeforeLine = 300 / ProtocolItem::progressStepMs;
constexpr int signSide = 13; // units

/// A warning triangle.
QPixmap warningSign()
{
    const int side = dp(signSide);
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing, true);
    const double unit = side / double(signSide);
    painter.scale(unit, unit);
    QPainterPath triangle;
    triangle.moveTo(6.5, 1.0);
    triangle.lineTo(12.5, 12.0);
    triangle.lineTo(0.5, 12.0);
    triangle.closeSubpath();
    painter.fillPath(triangle, QColor(0xe8, 0xb0, 0x30));
    painter.fillRect(QRectF(5.75, 4.5, 1.5, 4.0), gGreys[8]);
    painter.fillRect(QRectF(5.75, 9.3, 1.5, 1.5), gGreys[8]);
    return pixmap;
}

} // namespace

ProtocolItem::ProtocolItem(AnalyzerManager *manager_, int index, MenuExtension extend, QWidget *parent)
    : QWidget(parent), manager(manager_), itemIndex(index), m_extend(std::move(extend))
{
    setObjectName(manager->fileNameAt(index));
    const QString name = manager->analyzerTitle(index);
    m_sign = new QLabel(this);
    m_sign->setObjectName(QStringLiteral("sign"));
    m_sign->setPixmap(warningSign());
    m_sign->hide();
    m_title = makeElidedLabel(name, this);
    m_title->setStyleSheet(QStringLiteral("QLabel{color:#f7f7f7;}"));
    m_title->setObjectName(QStringLiteral("title"));
    const QString channelLine = channelTexts().join(QStringLiteral("   "));
    QLabel *channels = makeElidedLabel(channelLine, this);
    channels->setFont(gFontSmall);
    channels->setStyleSheet(QStringLiteral("QLabel{color:#9f9f9f;}"));
    channels->setObjectName(QStringLiteral("channels"));
    channels->setVisible(!channelLine.isEmpty());
    btnSetting = makeIconButton(QStringLiteral(":/res/btnSetting"), ::tr("Settings of %1").arg(name), this);
    btnSetting->setObjectName(QStringLiteral("setting"));
    btnRemove = makeIconButton(QStringLiteral(":/res/btnRemove"), ::tr("Remove %1").arg(name), this);
    btnRemove->setObjectName(QStringLiteral("remove"));
    m_progress = new DecodeProgress(this);

    auto *line = new QHBoxLayout;
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(dp(2));
    line->addWidget(m_sign);
    line->addWidget(m_title, 1);
    line->addWidget(btnSetting);
    line->addWidget(btnRemove);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(4), 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(line);
    column->addWidget(channels);
    column->addWidget(m_progress);

    connect(btnSetting, &QPushButton::clicked, this, &ProtocolItem::slotMenuPopup);
    connect(btnRemove, &QPushButton::clicked, this, &ProtocolItem::slotBtnRemove);
    showEnd();
}

QStringList ProtocolItem::channelTexts() const
{
    QStringList texts;
    for (const ChannelUsage::Use &use : ChannelUsage::ofAnalyzer(*manager->analyzerAt(itemIndex), QString())) {
        bool isChannel = false;
        const uint number = use.first.toUInt(&isChannel);
        if (isChannel && number != ~0U) {
            const QString title = use.second.mid(use.second.indexOf(QLatin1String(" - ")) + 3);
            texts.append(title + QLatin1Char(' ') + use.first);
        }
    }
    return texts;
}

void ProtocolItem::refresh()
{
    const bool runs = manager->isWorkerRunning(itemIndex);
    m_steps = runs ? m_steps + 1 : 0;
    m_progress->setShare(m_steps >= stepsBeforeLine ? manager->progress(itemIndex) : -1.0);
    showEnd();
}

void ProtocolItem::showEnd()
{
    const bool early = manager->endedEarly(itemIndex);
    m_sign->setVisible(early);
    QStringList tip{manager->analyzerTitle(itemIndex)};
    tip += channelTexts();
    const QString message = manager->message(itemIndex);
    if (!message.isEmpty()) {
        tip.append(message);
    } else if (early) {
        tip.append(::tr("The decode ended early."));
    }
    const QString text = tip.join(QLatin1Char('\n'));
    setToolTip(text);
    m_sign->setToolTip(text);
    m_title->setToolTip(text);
    m_title->setAccessibleDescription(tip.mid(1).join(QLatin1Char('\n')));
}

void ProtocolItem::slotBtnRemove()
{
    manager->removeAnalyzer(itemIndex);
}

void ProtocolItem::slotMenuPopup()
{
    openMenu(popupPlace(*btnSetting));
}

void ProtocolItem::contextMenuEvent(QContextMenuEvent *event)
{
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    openMenu(byKey ? popupPlace(*btnSetting) : event->globalPos());
}

void ProtocolItem::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        // Queued, as in the menu.
        QMetaObject::invokeMethod(
            this, [this] { emit editWanted(itemIndex); }, Qt::QueuedConnection);
    }
}

void ProtocolItem::openMenu(const QPoint &place)
{
    delete popupMenu;
    buildMenu(); // anew: another analyzer may stand in the row's place
    const int format = int(displayBaseOf(manager->displayFormat(itemIndex)));
    for (QAction *action : formatGroup->actions()) {
        action->setChecked(action->data().toInt() == format);
    }
    popupMenu->popup(place);
}

void ProtocolItem::buildMenu()
{
    popupMenu = new QMenu(this);
    popupMenu->setAccessibleName(btnSetting->accessibleName());
    const QAction *edit = popupMenu->addAction(::tr("Edit"));
    // Queued: the dialog may replace this row, and the menu with it.
    connect(
        edit, &QAction::triggered, this, [this] { emit editWanted(itemIndex); }, Qt::QueuedConnection);

    QMenu *formats = popupMenu->addMenu(::tr("Display Format"));
    formatGroup = new QActionGroup(popupMenu);
    const std::array<QString, formatCount> names = {::tr("Bin"), ::tr("Dec"), ::tr("Hex"), QStringLiteral("ASCII"),
                                                    QStringLiteral("ASCII && ") + ::tr("Hex")};
    for (int format = 0; format < formatCount; ++format) {
        QAction *action = formats->addAction(names[std::size_t(format)]);
        action->setCheckable(true);
        action->setData(format);
        formatGroup->addAction(action);
    }
    connect(formatGroup, &QActionGroup::triggered, this, &ProtocolItem::slotDisplyFormat);
    if (m_extend) {
        m_extend(*popupMenu, itemIndex);
    }
}

void ProtocolItem::slotDisplyFormat(QAction *action)
{
    const int format = action->data().toInt();
    if (format != manager->displayFormat(itemIndex)) { // the list of results would forget its marked row for nothing
        manager->setDisplayFormat(itemIndex, format);
    }
}

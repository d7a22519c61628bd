#include "wave/ItemChnSidebar.h"

#include "controls/ElidedEdit.h"
#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/MyButton.h"
#include "controls/Style.h"
#include "settings/Language.h"
#include "store/SmpTrigCode.h"
#include "wave/LabelMove.h"
#include "wave/SidebarLook.h"

#include <QFontInfo>
#include <QFrame>
#include <QGridLayout>
#include <QLineEdit>
#include <QPainter>

#include <array>

namespace {

/// Letters of a name. All names of all channels have to fit in the head of a data file, which is read to 32,768 bytes.
constexpr int nameLimit = 200;

/// The buttons of the trigger, from left to right.
struct Trigger {
    int code;
    const char *icon;
};
constexpr std::array<Trigger, 4> triggers{{{smpTrigCode::risingEdge, ":/res/btnPosEdge"},
                                           {smpTrigCode::highLevel, ":/res/btnHighLevel"},
                                           {smpTrigCode::fallingEdge, ":/res/btnNegEdge"},
                                           {smpTrigCode::lowLevel, ":/res/btnLowLevel"}}};

QString triggerText(int code)
{
    switch (code) {
    case smpTrigCode::risingEdge:
        return ::tr("Rising edge trigger");
    case smpTrigCode::fallingEdge:
        return ::tr("Falling edge trigger");
    case smpTrigCode::highLevel:
        return ::tr("High level trigger");
    default:
        return ::tr("Low level trigger");
    }
}

int triggerWidth()
{
    return (uiScale() + 2 * dp(16)) * 2;
}

/// The largest font of at most 12 units in which a default name of two digits fits, but not below 9 units.
QFont nameFont(QFont font, int room)
{
    const QString longest = ::tr("Channel") + QStringLiteral(" 00");
    font = atMost(font, dp(12));
    for (int pixels = QFontInfo(font).pixelSize(); pixels > dp(9); --pixels) {
        font.setPixelSize(pixels);
        if (QFontMetrics(font).horizontalAdvance(longest) <= room) {
            break;
        }
    }
    return font;
}

/// Small enough for two digits in the number's column.
QFont numberFont(QFont font)
{
    font.setPixelSize(dp(11));
    font.setBold(true);
    return font;
}

} // namespace

ItemChnSidebar::ItemChnSidebar(int channel, int row, int multiplier, QWidget *parent)
    : QWidget(parent),
      chnIndex(channel),
      showIndex(row),
      showMultip(multiplier),
      numberLabel(new LabelMove(channel, this)),
      nameEdit(new ElidedEdit(this)),
      settingBtn(new MyButton(this)),
      trigFrame(new QFrame(this)),
      analyzerEdit(new ElidedEdit(this)),
      layout(new QGridLayout(this))
{
    setFixedWidth(dp(columnWidth));
    buildNumber();
    buildName();
    buildSetting();
    buildTrigger();
    buildAnalyzer();
    setChnName(defaultName());
    buildGrid();
    for (QWidget *stop : tabStops()) {
        stop->installEventFilter(this);
    }
}

ItemChnSidebar::~ItemChnSidebar()
{
    // A field that goes away gives up its focus: that is no end of an edit.
    nameEdit->disconnect(this);
}

QColor ItemChnSidebar::chnColor() const
{
    return gChnColors[chnIndex % gChnColors.size()];
}

QString ItemChnSidebar::defaultName() const
{
    return ::tr("Channel") + QLatin1Char(' ') + QString::number(chnIndex);
}

QString ItemChnSidebar::spoken(const QString &control) const
{
    // Two channels may have the same name of one's own.
    const bool isOwn = !m_name.isEmpty() && m_name != defaultName();
    const QString channel = isOwn ? m_name + QStringLiteral(" (%1)").arg(defaultName()) : defaultName();
    return channel + QStringLiteral(", ") + control;
}

void ItemChnSidebar::nameControls()
{
    numberLabel->setAccessibleName(spoken(::tr("Drag to move")));
    nameEdit->setAccessibleName(spoken(::tr("Name")));
    settingBtn->setAccessibleName(spoken(::tr("Channel Height")));
    for (MyButton *button : trigBtns) {
        button->setAccessibleName(spoken(triggerText(button->value)));
    }
    analyzerEdit->setAccessibleName(spoken(::tr("Decoder")));
}

int ItemChnSidebar::nameRoom()
{
    const int controls = dp(18) + sidebarLine() + triggerWidth() + 4 * dp(3);
    return dp(columnWidth) - controls - 2 * dp(5); // less the field's own margins
}

void ItemChnSidebar::buildNumber()
{
    numberLabel->setObjectName(QStringLiteral("number"));
    numberLabel->setFixedWidth(dp(18));
    numberLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    numberLabel->setContentsMargins(0, 0, uiScale(), 0);
    numberLabel->setFont(numberFont(font()));
    numberLabel->setToolTip(::tr("Drag to move") + QStringLiteral(" (Ctrl+\u2191, Ctrl+\u2193)"));
}

void ItemChnSidebar::buildName()
{
    nameEdit->setObjectName(QStringLiteral("name"));
    nameEdit->setFont(nameFont(font(), nameRoom()));
    nameEdit->setStyleSheet(lineEditStyle() + QStringLiteral("QLineEdit{padding:0 %1px;}").arg(dp(2)));
    nameEdit->setMaxLength(nameLimit);
    nameEdit->setFixedHeight(sidebarLine());
    connect(nameEdit, &QLineEdit::editingFinished, this, &ItemChnSidebar::leChnNameChangedSlot);
}

void ItemChnSidebar::buildSetting()
{
    settingBtn->setObjectName(QStringLiteral("setting"));
    settingBtn->setIcon(sharedIcon(QStringLiteral(":/res/btnSetting")));
    dressFlat(*settingBtn);
    settingBtn->setRadius(dp(3));
    settingBtn->setFixedSize(sidebarLine(), sidebarLine());
    settingBtn->setCursor(Qt::SizeVerCursor);
    settingBtn->setToolTip(::tr("Channel Height"));
    connect(settingBtn, &QPushButton::clicked, this, &ItemChnSidebar::openMenuDig);
}

void ItemChnSidebar::buildTrigger()
{
    trigFrame->setObjectName(QStringLiteral("trigger"));
    trigFrame->setFixedSize(triggerWidth(), sidebarLine());
    trigFrame->setStyleSheet(triggerFrameStyle(trigFrame->objectName()));
    for (int i = 0; i < int(triggers.size()); ++i) {
        trigBtns.append(addTrigger(i));
    }
    trigBtns.first()->radii.topLeft = trigBtns.first()->radii.bottomLeft = dp(3);
    trigBtns.last()->radii.topRight = trigBtns.last()->radii.bottomRight = dp(3);
}

MyButton *ItemChnSidebar::addTrigger(int place)
{
    const auto [code, icon] = triggers[std::size_t(place)];
    const QString path = QLatin1String(icon);
    auto *button = new MyButton(sharedIcon(path), triggerText(code), trigFrame);
    dressFlat(*button);
    button->checkedIcon = sharedIcon(path + QStringLiteral("_s"));
    button->value = code;
    button->setObjectName(path.section(QLatin1Char('/'), -1));
    button->setCheckable(true); // a screen reader tells which one is set; setTrigCode() decides
    button->setGeometry(uiScale() + place * dp(16), uiScale(), dp(16), dp(16));
    connect(button, &QPushButton::clicked, this, &ItemChnSidebar::slotTrigMouseClicked);
    return button;
}

void ItemChnSidebar::buildAnalyzer()
{
    analyzerEdit->setObjectName(QStringLiteral("analyzer"));
    analyzerEdit->setEnabled(false);
    analyzerEdit->setFocusPolicy(Qt::NoFocus);
    analyzerEdit->setFont(atMost(gFontSmall, dp(11)));
    analyzerEdit->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    analyzerEdit->setStyleSheet(QStringLiteral("QLineEdit{border:0; background-color:transparent; color:#afafaf;}"));
    // It takes what the lowest row leaves below the name.
    analyzerEdit->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    analyzerEdit->setMinimumHeight(1);
    analyzerEdit->setTextMargins(0, -1, 0, 0); // takes back the field's own margin
}

void ItemChnSidebar::buildGrid()
{
    layout->setSpacing(dp(3));
    layout->setContentsMargins(0, dp(3) + uiScale(), dp(3), dp(3));
    layout->addWidget(numberLabel, 0, 0, 2, 1);
    layout->addWidget(nameEdit, 0, 1);
    layout->addWidget(settingBtn, 0, 2);
    layout->addWidget(trigFrame, 0, 3);
    layout->addWidget(analyzerEdit, 1, 1, 1, 3);
    layout->setRowStretch(0, 0);
    layout->setRowStretch(1, 1);
    layout->setColumnStretch(1, 1);
}

QVector<QWidget *> ItemChnSidebar::tabStops() const
{
    QVector<QWidget *> stops{numberLabel, nameEdit, settingBtn};
    for (MyButton *button : trigBtns) {
        stops.append(button);
    }
    return stops;
}

void ItemChnSidebar::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    paintSidebar(painter, size(), numberLabel->width(), chnColor());
}

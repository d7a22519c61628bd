#include "controls/Style.h"

#include "controls/ComboKeys.h"
#include "controls/Look.h"

#include <QComboBox>
#include <QFontMetrics>
#include <QStyledItemDelegate>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace {

/// Fills a sheet: "@0" to "@9" become the greys, "#N#" becomes dp(N) with its unit; other signs '#' begin a colour.
/// Cost: one pass, since it is done for each of the widgets of a window.
QString filled(const char *sheet)
{
    QString text;
    for (std::string_view rest(sheet); !rest.empty();) {
        const std::size_t sign = rest.find_first_of("@#");
        text += QLatin1String(rest.data(), int(std::min(sign, rest.size())));
        if (sign == std::string_view::npos) {
            break;
        }
        rest.remove_prefix(sign);
        int number = 0;
        const auto end = std::from_chars(rest.data() + 1, rest.data() + rest.size(), number).ptr;
        const auto taken = std::size_t(end - rest.data());
        if (rest.front() == '@') {
            text += gGreys.value(number).name();
            rest.remove_prefix(taken);
        } else if (taken > 1 && taken < rest.size() && *end == '#') {
            text += QString::number(dp(number)) + QStringLiteral("px");
            rest.remove_prefix(taken + 1);
        } else {
            text += QLatin1Char('#');
            rest.remove_prefix(1);
        }
    }
    return text;
}

/// The radius of a round indicator: a style sheet draws square corners where twice the radius is more than the side. So
/// it is half of the side that is drawn, which is a sum of parts that are truncated each by itself.
/// @param width, border  of the indicator's rule, pixels at 96 dpi
QString roundBy(int width, int border)
{
    return QStringLiteral("border-radius:%1px;").arg((dp(width) + 2 * dp(border)) / 2);
}

} // namespace

QString comboBoxStyle()
{
    return filled(
        "QComboBox{background-color:@8;color:@0;border:#1# solid @2;border-radius:#3#;"
        "padding:0 #4# 0 #6#;combobox-popup:0;}"
        "QComboBox:hover{background-color:@6;}"
        "QComboBox:focus{border:#2# solid @0;padding:0 #3# 0 #5#;}"
        "QComboBox:disabled{color:@3;border-color:@4;}"
        "QComboBox::drop-down{subcontrol-origin:padding;subcontrol-position:right center;width:#16#;border:0;}"
        "QComboBox::down-arrow{image:url(:/res/icoDropDown.svg);width:#10#;height:#10#;}"
        "QComboBox QAbstractItemView{background-color:@7;color:@0;border:#1# solid @3;outline:0;"
        "selection-background-color:@5;selection-color:@0;}"
        "QComboBox QAbstractItemView::item{min-height:#20#;padding:0 #6#;border:0;background:transparent;}"
        "QComboBox QAbstractItemView::item:selected{background-color:@5;color:@0;}");
}

void dressComboBox(QComboBox &box)
{
    dressClosedComboBox(box);
    dressComboList(box);
}

void dressClosedComboBox(QComboBox &box)
{
    box.setMaxVisibleItems(20);
    new ComboKeys(&box);
    box.ensurePolished();
    box.setFixedHeight(controlHeight(box.fontMetrics()));
}

void dressComboList(QComboBox &box)
{
    box.setItemDelegate(new QStyledItemDelegate(&box)); // the box's own delegate does not know style sheets
}

int controlHeight(const QFontMetrics &metrics)
{
    return std::max(dp(22), metrics.height() + dp(2));
}

QString lineEditStyle()
{
    return filled("QLineEdit{background-color:@8;color:@0;border:#1# solid @2;border-radius:#3#;padding:0 #4#;"
                  "selection-background-color:@3;selection-color:@9;}"
                  "QLineEdit:focus{border:#2# solid @0;padding:0 #3#;}"
                  "QLineEdit[fault=\"true\"]{border:#2# solid #dfdf1f;padding:0 #3#;}"
                  "QLineEdit:disabled{color:@3;border-color:@4;}");
}

QString spinBoxStyle()
{
    // Without a border of its own: the arrows stay those of the system's style.
    return filled("QAbstractSpinBox{background-color:@8;color:@0;"
                  "selection-background-color:@3;selection-color:@9;}"
                  "QAbstractSpinBox:disabled{color:@3;}");
}

QString labelStyle()
{
    return filled("QLabel{color:@0;background:transparent;border:0;}"
                  "QLabel:disabled{color:@1;}");
}

QString checkBoxStyle()
{
    return filled("QCheckBox,QRadioButton{color:@0;background:transparent;spacing:#6#;padding:#2#;"
                  "border:#1# solid transparent;border-radius:#3#;outline:0;}" // the border tells of the focus
                  "QCheckBox:focus,QRadioButton:focus{border-color:@2;}"
                  "QCheckBox:disabled,QRadioButton:disabled{color:@1;}"
                  "QCheckBox::indicator,QRadioButton::indicator{width:#12#;height:#12#;background-color:@8;"
                  "border:#1# solid @2;}"
                  "QCheckBox::indicator{border-radius:#2#;}"
                  "QCheckBox::indicator:hover,QRadioButton::indicator:hover{background-color:@6;}"
                  "QCheckBox::indicator:checked{background-color:@1;image:url(:/res/icoCheck.svg);}"
                  "QRadioButton::indicator:checked{background-color:qradialgradient(cx:0.5,cy:0.5,radius:0.5,fx:0.5,"
                  "fy:0.5,stop:0 @0,stop:0.5 @0,stop:0.6 @8,stop:1 @8);}"
                  "QCheckBox::indicator:disabled,QRadioButton::indicator:disabled{border-color:@4;}"
                  "QCheckBox::indicator:checked:disabled{background-color:@3;}") +
           QStringLiteral("QRadioButton::indicator{%1}").arg(roundBy(12, 1));
}

QString groupBoxStyle()
{
    return filled("QGroupBox{color:@0;border:#1# solid @4;border-radius:#4#;margin-top:#8#;padding-top:#8#;}"
                  "QGroupBox::title{subcontrol-origin:margin;subcontrol-position:top left;left:#8#;padding:0 #3#;}");
}

QString pushButtonStyle()
{
    // The dot leaves out derived buttons: MyButton paints itself, and a sheet would change its size.
    return filled(".QPushButton{background-color:@7;color:@0;border:#1# solid @2;border-radius:#3#;padding:0 #4#;"
                  "outline:0;}" // the border tells of the focus
                  ".QPushButton:hover{background-color:@6;}"
                  ".QPushButton:pressed{background-color:@9;}"
                  ".QPushButton:focus{border:#2# solid @0;padding:0 #3#;}"
                  ".QPushButton:disabled{color:@3;border-color:@4;}"
                  "QDialog .QPushButton{padding:0 #12#;min-height:#22#;min-width:#64#;}"
                  "QDialog .QPushButton:focus{padding:0 #11#;min-height:#20#;}");
}

QString progressBarStyle()
{
    // No grey of the palette is told from the ground and leaves the text readable: one between @4 and @5.
    return filled("QProgressBar{background-color:@8;color:@0;border:#1# solid @2;border-radius:#3#;text-align:center;}"
                  "QProgressBar::chunk{background-color:#6b6b6b;border-radius:#2#;}");
}

QString sliderStyle()
{
    return filled("QSlider::groove:horizontal{height:#4#;background-color:@8;border-radius:#2#;}"
                  "QSlider::sub-page:horizontal{background-color:@3;border-radius:#2#;}"
                  "QSlider::handle:horizontal{width:#10#;margin:-#5# 0;background-color:@2;border:#1# solid @8;"
                  "border-radius:#3#;}"
                  "QSlider::handle:horizontal:hover,QSlider::handle:horizontal:focus{background-color:@0;}"
                  "QSlider:horizontal{min-height:#20#;}");
}

QString scrollBarStyle()
{
    return filled("QScrollBar{background-color:@7;border:0;margin:0;}"
                  "QScrollBar:horizontal{height:#12#;}"
                  "QScrollBar:vertical{width:#12#;}"
                  "QScrollBar::handle{background-color:@4;border:#1# solid @7;border-radius:#4#;}"
                  "QScrollBar::handle:horizontal{min-width:#16#;}"
                  "QScrollBar::handle:vertical{min-height:#16#;}"
                  "QScrollBar::handle:hover{background-color:@3;}"
                  "QScrollBar::handle:focus{border-color:@0;}"
                  "QScrollBar::add-line,QScrollBar::sub-line{width:0;height:0;border:0;}"
                  "QScrollBar::add-page,QScrollBar::sub-page{background:transparent;}");
}

QString toolTipStyle()
{
    return filled("QToolTip{background-color:@8;color:@0;border:#1# solid @4;padding:#2#;}");
}

QString menuStyle()
{
    return filled("QMenu{background-color:@7;color:@0;border:#1# solid @3;padding:#2# 0;}"
                  "QMenu::item{padding:#4# #26# #4# #26#;background:transparent;}"
                  "QMenu::item:selected{background-color:@5;}"
                  "QMenu::item:disabled{color:@3;}"
                  "QMenu::indicator{width:#10#;height:#10#;left:#6#;border-radius:#2#;border:#1# solid @2;}"
                  "QMenu::indicator:checked{background-color:@1;image:url(:/res/icoCheck.svg);}"
                  "QMenu::right-arrow{width:#10#;height:#10#;right:#6#;}"
                  "QMenu::separator{height:#1#;background-color:@5;margin:#2# #8#;}");
}

QString listStyle()
{
    return filled("QListView,QTreeView{background-color:@8;color:@0;border:#1# solid @2;outline:0;"
                  "selection-background-color:@5;selection-color:@0;}"
                  "QListView:focus,QTreeView:focus{border-color:@0;}"
                  "QListView::item,QTreeView::item{min-height:#20#;}"
                  "QListView::item:selected,QTreeView::item:selected{background-color:@5;color:@0;}");
}

QString fileDialogStyle()
{
    return listStyle() + filled("QHeaderView{background-color:@7;}"
                                "QHeaderView::section{background-color:@7;color:@0;border:0;border-right:#1# solid @5;"
                                "padding:#2# #6#;}");
}

QString messageBoxStyle()
{
    return filled("QMessageBox,QDialog{background-color:@5;}");
}

QString programStyle()
{
    // A tool tip is a label too: its own rules come last, so that they win.
    return messageBoxStyle() + labelStyle() + lineEditStyle() + comboBoxStyle() + spinBoxStyle() + checkBoxStyle() +
           groupBoxStyle() + pushButtonStyle() + progressBarStyle() + sliderStyle() + scrollBarStyle() + listStyle() +
           menuStyle() + toolTipStyle();
}

QString menuDialogStyle()
{
    // The two colours of the panel are the only ones outside the palette: a form in it is a light sheet of its own.
    return sliderStyle() +
           filled("QMenu{background-color:#F0F0F0; color:black;}"
                  "QMenu QWidget{color:black;}"
                  "QMenu QLabel,QMenu QCheckBox,QMenu QRadioButton{color:black;background:transparent;}"
                  "QMenu QCheckBox:disabled,QMenu QRadioButton:disabled,QMenu QLabel:disabled{color:@5;}"
                  "QMenu QCheckBox:focus,QMenu QRadioButton:focus{border-color:@6;}"
                  "QMenu QGroupBox{border:#1# solid black;border-radius:#4#;margin-top:#8#;padding-top:#8#;}"
                  "QMenu QGroupBox::title{subcontrol-origin:margin;subcontrol-position:top left;left:#8#;"
                  "padding:0 #3#;}"
                  "QMenu QLineEdit,QMenu QComboBox,QMenu QAbstractSpinBox{background-color:white;color:black;"
                  "border:#1# solid @4;}"
                  "QMenu QLineEdit:focus,QMenu QComboBox:focus,QMenu QAbstractSpinBox:focus{border:#2# solid black;}"
                  "QMenu QLineEdit[fault=\"true\"]{border:#2# solid #9f2f07;}"
                  "QMenu QLineEdit:disabled,QMenu QComboBox:disabled,QMenu QAbstractSpinBox:disabled{"
                  "background-color:@1;color:@5;}"
                  "QMenu QComboBox::drop-down{background-color:@5;}"
                  "QMenu QComboBox QAbstractItemView{background-color:white;color:black;"
                  "selection-background-color:@1;selection-color:black;}"
                  "QMenu QComboBox QAbstractItemView::item:selected{background-color:@1;color:black;}"
                  "QMenu QCheckBox::indicator,QMenu QRadioButton::indicator{width:#12#;height:#12#;"
                  "border:#1# solid @6;background-color:white;}"
                  "QMenu QCheckBox::indicator{border-radius:#2#;}"
                  "QMenu QCheckBox::indicator:checked{background-color:white;image:url(:/res/icoCheck.svg);}"
                  "QMenu QCheckBox::indicator:checked:disabled{background-color:@1;}"
                  "QMenu "
                  "QRadioButton::indicator:checked{background-color:qradialgradient(cx:0.5,cy:0.5,radius:0.5,fx:0.5,fy:"
                  "0.5,"
                  "stop:0 black,stop:0.5 black,stop:0.6 white,stop:1 white);}"
                  "QMenu QCheckBox::indicator:disabled,QMenu QRadioButton::indicator:disabled{border-color:@4;}"
                  "QMenu QPushButton{background-color:@1;color:black;border:#1# solid @4;border-radius:#3#;"
                  "padding:0 #12#;min-height:#22#;outline:0;}"
                  "QMenu QPushButton:hover{background-color:white;}"
                  "QMenu QPushButton:focus{border:#2# solid black;padding:0 #11#;min-height:#20#;}") +
           QStringLiteral("QMenu QRadioButton::indicator{%1}").arg(roundBy(12, 1));
}

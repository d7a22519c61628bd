#include "protocol/SearchEdit.h"

#include "controls/Icons.h"
#include "controls/Look.h"
#include "controls/Style.h"
#include "settings/Language.h"

#include <QKeyEvent>
#include <QLabel>

namespace {

constexpr int glassSide = 14; // units, as the one below
constexpr int glassGap = 4;

QString searchStyle(const SearchEdit::Colors &colors)
{
    return QStringLiteral("QLineEdit{background-color:%1;border:%4px solid %2;border-radius:%5px;color:%3;}"
                          "QLineEdit:focus{border:%4px solid %6;}"
                          "QLabel{background:transparent;border:0;color:%7;}")
        .arg(colors.background.name(), colors.border.name(), colors.text.name())
        .arg(dp(1))
        .arg(dp(3))
        .arg(gGreys[0].name(), gGreys[1].name());
}

bool isMove(const QKeyEvent &event)
{
    return event.key() == Qt::Key_Up || event.key() == Qt::Key_Down;
}

} // namespace

SearchEdit::SearchEdit(const Colors &colors, QWidget *parent)
    : QLineEdit(parent), m_glass(new QLabel(this)), m_count(new QLabel(this))
{
    setStyleSheet(searchStyle(colors));
    setPlaceholderText(::tr("Search"));
    setAccessibleName(::tr("Search"));
    setFixedHeight(controlHeight(fontMetrics()));
    m_glass->setPixmap(sharedIcon(QStringLiteral(":/res/btnSearch")).pixmap(dp(glassSide), dp(glassSide)));
    m_count->setTextFormat(Qt::PlainText);
    for (QLabel *label : {m_glass, m_count}) {
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    placeLabels();
}

void SearchEdit::setCount(qlonglong count)
{
    m_count->setText(count > 0 ? QString::number(count) : QString());
    placeLabels();
}

QString SearchEdit::countText() const
{
    return m_count->text();
}

void SearchEdit::placeLabels()
{
    const int countWidth = m_count->text().isEmpty() ? 0 : m_count->sizeHint().width() + dp(glassGap);
    m_glass->setGeometry(dp(glassGap), (height() - dp(glassSide)) / 2, dp(glassSide), dp(glassSide));
    m_count->setGeometry(width() - countWidth, 0, countWidth, height());
    setTextMargins(dp(glassSide) + dp(glassGap), 0, countWidth, 0);
}

bool SearchEdit::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && isMove(static_cast<const QKeyEvent &>(*event))) {
        event->accept();
        return true;
    }
    return QLineEdit::event(event);
}

void SearchEdit::resizeEvent(QResizeEvent *event)
{
    QLineEdit::resizeEvent(event);
    placeLabels();
}

void SearchEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear(); // the first Escape is for the search, the next for the window
    } else if (isMove(*event)) {
        emit keyMoved(event->key());
    } else {
        QLineEdit::keyPressEvent(event);
    }
}

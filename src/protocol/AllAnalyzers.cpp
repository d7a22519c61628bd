#include "protocol/AllAnalyzers.h"

#include "controls/Look.h"
#include "controls/Style.h"
#include "protocol/SearchEdit.h"
#include "settings/Language.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace {

constexpr int listWidth = 380;  // units
constexpr int listHeight = 320; // units
constexpr int searchWidth = 180;

} // namespace

AllAnalyzers::AllAnalyzers(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      m_search(new SearchEdit({}, this)),
      m_list(new QListWidget(this))
{
    setWindowTitle(::tr("All Protocol Analyzers"));
    setStyleSheet(messageBoxStyle() + listStyle() + pushButtonStyle() + scrollBarStyle());
    m_search->setAccessibleName(::tr("Search"));
    m_list->setAccessibleName(windowTitle());
    m_list->setMinimumSize(dp(listWidth), dp(listHeight));

    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(dp(10), dp(10), dp(10), dp(10));
    column->setSpacing(dp(8));
    column->addWidget(makeTop());
    column->addWidget(m_list);
    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(::tr("OK"), QDialogButtonBox::AcceptRole);
    m_ok->setDefault(true);
    m_ok->setEnabled(false);
    buttons->addButton(::tr("Cancel"), QDialogButtonBox::RejectRole);
    column->addWidget(buttons);
    column->setSizeConstraint(QLayout::SetFixedSize);

    connect(m_search, &QLineEdit::textChanged, this, &AllAnalyzers::slotSearchChanged);
    connect(m_search, &SearchEdit::keyMoved, this, &AllAnalyzers::moveByKey);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &AllAnalyzers::slotListWidgetClicked);
    connect(m_list, &QListWidget::currentItemChanged, this, [](QListWidgetItem *item) {
        if (item != nullptr) {
            item->setSelected(true); // the first, when a key brings the focus here, which marks it no further
        }
    });
    connect(m_list, &QListWidget::itemDoubleClicked, this, &AllAnalyzers::slotListWidgetDoubleClicked);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(this, &QDialog::finished, this, &AllAnalyzers::finish);
}

QWidget *AllAnalyzers::makeTop()
{
    auto *top = new QWidget(this);
    auto *line = new QHBoxLayout(top);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(dp(8));
    m_search->setMinimumWidth(dp(searchWidth));
    line->addWidget(m_search, 1);
    auto *support = new QPushButton(::tr("Device Supported List"), top);
    support->setAutoDefault(false);
    line->addWidget(support);
    connect(support, &QPushButton::clicked, this, &AllAnalyzers::supportWanted);
    return top;
}

void AllAnalyzers::setNames(const QStringList &names)
{
    m_names = names;
    slotSearchChanged(m_search->text());
}

int AllAnalyzers::choose()
{
    selectPicked();
    m_search->setFocus();
    return exec() == QDialog::Accepted && m_picked < m_names.size() ? m_picked : -1;
}

void AllAnalyzers::selectPicked()
{
    for (int row = 0; row < m_list->count(); ++row) {
        if (m_list->item(row)->data(Qt::UserRole).toInt() == m_picked) {
            m_list->setCurrentRow(row);
            return;
        }
    }
}

void AllAnalyzers::slotSearchChanged(const QString &text)
{
    const QSignalBlocker quiet(m_list);
    m_list->clear();
    for (int i = 0; i < m_names.size(); ++i) {
        if (text.isEmpty() || m_names.at(i).contains(text, Qt::CaseInsensitive)) {
            auto *item = new QListWidgetItem(m_names.at(i), m_list);
            item->setData(Qt::UserRole, i);
        }
    }
    selectPicked();
    const bool isToBePicked = m_ok->isEnabled() || !text.isEmpty();
    if (isToBePicked && m_list->count() > 0 && m_list->currentRow() < 0) {
        m_list->setCurrentRow(0); // Enter and the button take what is seen, and nothing else
        slotListWidgetClicked();
    }
}

void AllAnalyzers::slotListWidgetClicked()
{
    const QList<QListWidgetItem *> chosen = m_list->selectedItems();
    if (!chosen.isEmpty()) {
        m_picked = chosen.constFirst()->data(Qt::UserRole).toInt();
        m_ok->setEnabled(true);
    }
}

void AllAnalyzers::slotListWidgetDoubleClicked()
{
    slotListWidgetClicked();
    accept();
}

void AllAnalyzers::moveByKey(int key)
{
    const int row = m_list->currentRow() + (key == Qt::Key_Down ? 1 : -1);
    m_list->setCurrentRow(qBound(0, row, m_list->count() - 1));
}

void AllAnalyzers::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!isEnter || !m_search->hasFocus() || m_list->count() > 0) { // the button stands for one that is not seen
        QDialog::keyPressEvent(event);
    }
}

void AllAnalyzers::finish(int /*result*/)
{
    m_search->clear();
}
